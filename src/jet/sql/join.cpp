#include "jet/sql/join.h"

#include <algorithm>

namespace jet::sql {

void SlotBuffer::clear() {
  if (parts_.empty()) {
    for (Slot* slot : slots_) {
      Part part{slot, {}, std::vector<int>(slot->columns().size(), -1), width_};
      for (int i = 0; i < static_cast<int>(slot->columns().size()); ++i) {
        if (slot->uses(i) == 0) continue;
        part.place[static_cast<size_t>(i)] = static_cast<int>(part.columns.size());
        part.columns.push_back(i);
      }
      width_ += part.columns.size();
      parts_.push_back(std::move(part));
    }
  }
  values_.clear();
  ids_.clear();
  nullRows_.clear();
  rows_ = 0;
}

void SlotBuffer::append(EvalContext& c) {
  for (const Part& part : parts_) {
    ids_.push_back(part.slot->rowId());
    nullRows_.push_back(part.slot->isNullRow());
    for (const int column : part.columns) values_.push_back(part.slot->column(column, c));
  }
  ++rows_;
}

void SlotBuffer::restore(size_t row) const {
  for (size_t i = 0; i < parts_.size(); ++i) {
    const Part& part = parts_[i];
    const size_t at = row * parts_.size() + i;
    if (nullRows_[at])
      part.slot->setNull();
    else
      part.slot->setValues(values_.data() + row * width_ + part.first, part.place.data(), ids_[at]);
  }
}

void KeyTable::clear(bool integers) {
  places_.assign(integers ? 16 : 0, {});
  used_ = 0;
  bytes_.clear();
  next_.clear();
}

size_t KeyTable::bucket(int64_t key) const {
  return static_cast<size_t>((static_cast<uint64_t>(key) * 0x9E3779B97F4A7C15u) >> 20) & (places_.size() - 1);
}

void KeyTable::link(Place& place, uint32_t row) {
  next_.resize(std::max<size_t>(next_.size(), size_t{row} + 1), kNone);
  if (place.first == kNone)
    place.first = row;
  else
    next_[place.last] = row;
  place.last = row;
}

void KeyTable::grow() {
  std::vector<Place> old(places_.size() * 2);
  old.swap(places_);
  for (const Place& place : old) {
    if (place.first == kNone) continue;
    size_t at = bucket(place.key);
    while (places_[at].first != kNone) at = (at + 1) & (places_.size() - 1);
    places_[at] = place;
  }
}

void KeyTable::insert(int64_t key, uint32_t row) {
  if (used_ * 2 >= places_.size()) grow();
  size_t at = bucket(key);
  while (places_[at].first != kNone && places_[at].key != key) at = (at + 1) & (places_.size() - 1);
  if (places_[at].first == kNone) ++used_;
  places_[at].key = key;
  link(places_[at], row);
}

void KeyTable::insert(const std::string& key, uint32_t row) { link(bytes_[key], row); }

uint32_t KeyTable::find(int64_t key) const {
  size_t at = bucket(key);
  while (places_[at].first != kNone) {
    if (places_[at].key == key) return places_[at].first;
    at = (at + 1) & (places_.size() - 1);
  }
  return kNone;
}

uint32_t KeyTable::find(const std::string& key) const {
  const auto found = bytes_.find(key);
  return found == bytes_.end() ? kNone : found->second.first;
}

namespace {

std::vector<Slot*> both(const std::vector<Slot*>& a, const std::vector<Slot*>& b) {
  std::vector<Slot*> all = a;
  all.insert(all.end(), b.begin(), b.end());
  return all;
}

// A whole number, whichever of the integer types holds it.
int64_t integerOf(const Value& v) {
  if (const auto* n = v.getIf<int32_t>()) return *n;
  if (const auto* n = v.getIf<int16_t>()) return *n;
  return v.get<uint8_t>();
}

// Only a column's value is certain to be of its static type.
bool isIntegerColumn(const Expression* e) {
  return isInteger(e->type) && dynamic_cast<const ColumnExpression*>(e) != nullptr;
}

void setNull(const PlanNode& node) {
  for (Slot* slot : node.slots) slot->setNull();
}

}  // namespace

Join::Join(PlanNodePtr left, PlanNodePtr right, bool outer)
    : left_(std::move(left)), right_(std::move(right)), outer_(outer) {
  slots = both(left_->slots, right_->slots);
  isStatic = left_->isStatic && right_->isStatic;
}

void Join::open(EvalContext& c) {
  left_->open(c);
  haveLeft_ = false;
}

bool Join::advance(EvalContext& c) {
  for (;;) {
    if (!haveLeft_) {
      if (!left_->next(c)) return false;
      haveLeft_ = true;
      matched_ = false;
      startCandidates(c);
    }
    while (nextCandidate(c)) {
      if (!passes(conditions, c)) continue;
      matched_ = true;
      return true;
    }
    haveLeft_ = false;
    if (outer_ && !matched_) {
      setNull(*right_);
      return true;
    }
  }
}

void Join::explain(PlanText& text, int depth) const {
  text.line(depth, (outer_ ? u"outer " : u"") + std::u16string(name()) +
                       (conditions.empty() ? u"" : u", condition") + filterNote());
  left_->explain(text, depth + 1);
  right_->explain(text, depth + 1);
}

HashJoin::HashJoin(PlanNodePtr left, PlanNodePtr right, std::vector<Key> keys, bool outer)
    : Join(std::move(left), std::move(right), outer), keys_(std::move(keys)), buffer_(right_->slots) {
  integers_ = keys_.size() == 1 && isIntegerColumn(keys_[0].left) && isIntegerColumn(keys_[0].right);
}

void HashJoin::open(EvalContext& c) {
  if (!built_ || !right_->isStatic) build(c);
  Join::open(c);
}

// False when a part of the key is Null: nothing is equal to it.
bool HashJoin::appendKey(bool leftSide, EvalContext& c) {
  key_.clear();
  Value scratch;
  for (const Key& key : keys_) {
    const Value& v = (leftSide ? key.left : key.right)->view(c, scratch);
    if (v.isNull()) return false;
    appendSortKey(v, key.type, *c.collation, false, key_);
  }
  return true;
}

void HashJoin::build(EvalContext& c) {
  built_ = true;
  buffer_.clear();
  table_.clear(integers_);
  Value scratch;
  for (right_->open(c); right_->next(c);) {
    const auto row = static_cast<uint32_t>(buffer_.size());
    if (integers_) {
      const Value& v = keys_[0].right->view(c, scratch);
      if (v.isNull()) continue;
      table_.insert(integerOf(v), row);
    } else {
      if (!appendKey(false, c)) continue;
      table_.insert(key_, row);
    }
    buffer_.append(c);
  }
}

uint32_t HashJoin::probe(EvalContext& c) {
  if (buffer_.size() == 0) return KeyTable::kNone;
  if (!integers_) return appendKey(true, c) ? table_.find(key_) : KeyTable::kNone;
  Value scratch;
  const Value& v = keys_[0].left->view(c, scratch);
  return v.isNull() ? KeyTable::kNone : table_.find(integerOf(v));
}

bool HashJoin::advance(EvalContext& c) { return (outer_ || buffer_.size() != 0) && Join::advance(c); }

void HashJoin::startCandidates(EvalContext& c) { match_ = probe(c); }

bool HashJoin::nextCandidate(EvalContext&) {
  if (match_ == KeyTable::kNone) return false;
  buffer_.restore(match_);
  match_ = table_.nextOf(match_);
  return true;
}

Kept::Kept(PlanNodePtr input) : input_(std::move(input)), buffer_(input_->slots) {
  slots = input_->slots;
  isStatic = input_->isStatic;
}

void Kept::open(EvalContext& c) {
  row_ = 0;
  if (filled_ && isStatic) return;
  filled_ = true;
  buffer_.clear();
  for (input_->open(c); input_->next(c);) buffer_.append(c);
}

bool Kept::advance(EvalContext&) {
  if (row_ == buffer_.size()) return false;
  buffer_.restore(row_++);
  return true;
}

void Kept::explain(PlanText& text, int depth) const {
  text.line(depth, u"kept" + filterNote());
  input_->explain(text, depth + 1);
}

}  // namespace jet::sql
