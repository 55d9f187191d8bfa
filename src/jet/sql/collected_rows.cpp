#include <algorithm>
#include <cstring>
#include <numeric>
#include <utility>

#include "jet/sql/select_rows.h"

namespace jet::sql {

// Rows by their sort keys. With a limit, rows that cannot be among the first ones are dropped early.
class CollectedRows::Sorter {
 public:
  explicit Sorter(std::optional<size_t> limit) : limit_(limit) {}

  std::string& keyBuffer() {
    key_.clear();
    return key_;
  }
  // Whether a row with the key in the buffer may still be shown.
  bool mayShow() const { return !hasBound_ || key_ <= bound_; }
  void add(uint32_t row) {
    entries_.push_back({prefixOf(key_), keys_.size(), static_cast<uint32_t>(key_.size()), row});
    keys_ += key_;
    if (limit_ && entries_.size() >= trimAt_) trim();
  }

  // Row numbers in order; with a limit its first rows and those equal to the last of them.
  std::vector<uint32_t> finish(std::optional<size_t> limit) {
    const auto less = [this](const Entry& a, const Entry& b) { return isLess(a, b); };
    size_t shown = entries_.size();
    if (limit && *limit < shown) {
      const auto last = entries_.begin() + static_cast<std::ptrdiff_t>(*limit);
      std::partial_sort(entries_.begin(), last, entries_.end(), less);
      shown = *limit;
      if (shown > 0) {
        // Ties of the last row, in their own order.
        const Entry edge = entries_[shown - 1];
        const auto ties =
            std::partition(last, entries_.end(), [&](const Entry& e) { return sameKey(e, edge); });
        std::sort(last, ties, less);
        shown = static_cast<size_t>(ties - entries_.begin());
      }
    } else {
      std::sort(entries_.begin(), entries_.end(), less);
    }
    std::vector<uint32_t> order(shown);
    for (size_t i = 0; i < shown; ++i) order[i] = entries_[i].row;
    return order;
  }

 private:
  struct Entry {
    uint64_t prefix;  // first eight bytes of the key as a number
    size_t begin;
    uint32_t size, row;
  };
  static uint64_t prefixOf(std::string_view key) {
    uint64_t prefix = 0;
    for (size_t i = 0; i < 8; ++i) prefix = prefix << 8 | (i < key.size() ? static_cast<uint8_t>(key[i]) : 0);
    return prefix;
  }
  std::string_view keyOf(const Entry& e) const { return std::string_view(keys_).substr(e.begin, e.size); }
  bool sameKey(const Entry& a, const Entry& b) const { return a.prefix == b.prefix && keyOf(a) == keyOf(b); }
  bool isLess(const Entry& a, const Entry& b) const {
    if (a.prefix != b.prefix) return a.prefix < b.prefix;
    const int order = keyOf(a).compare(keyOf(b));
    return order != 0 ? order < 0 : a.row < b.row;
  }

  void trim() {
    const auto less = [this](const Entry& a, const Entry& b) { return isLess(a, b); };
    const auto edge = entries_.begin() + static_cast<std::ptrdiff_t>(*limit_ - 1);
    std::nth_element(entries_.begin(), edge, entries_.end(), less);
    bound_ = keyOf(*edge);
    hasBound_ = true;
    std::erase_if(entries_, [&](const Entry& e) { return keyOf(e) > bound_; });
    std::string kept;
    for (Entry& e : entries_) {
      const std::string_view key = keyOf(e);
      e.begin = kept.size();
      kept += key;
    }
    keys_ = std::move(kept);
    trimAt_ = std::max(trimAt_, entries_.size() * 2);
  }

  std::optional<size_t> limit_;
  size_t trimAt_ = limit_ ? *limit_ * 2 + 1024 : 0;
  std::vector<Entry> entries_;
  std::string keys_, key_, bound_;
  bool hasBound_ = false;
};

// Finds rows that were there before. Most rows differ in a number already; the full key, with its costly text
// parts, is built for rows with equal numbers only.
class CollectedRows::Duplicates {
 public:
  Duplicates(const RowStore& store, const std::vector<ResultColumn>& columns, const Collation& collation)
      : store_(store), collation_(collation) {
    for (const ResultColumn& column : columns) types_.push_back(column.type);
  }

  bool seenBefore(uint32_t row) {
    if (used_ * 2 >= places_.size()) grow();
    Place& place = find(store_.scalarHash(row, types_));
    if (place.row == kFree) {
      place.row = row;
      ++used_;
      return false;
    }
    if (place.row != kExpanded) keys_.insert(fullKey(std::exchange(place.row, kExpanded)));
    return !keys_.insert(fullKey(row)).second;
  }

 private:
  // The only row so far that has the hash of the numbers, or kExpanded: the full keys of its rows are kept.
  struct Place {
    uint64_t hash = 0;
    uint32_t row = kFree;
  };
  static constexpr uint32_t kFree = UINT32_MAX, kExpanded = UINT32_MAX - 1;

  Place& find(uint64_t hash) {
    size_t at = hash & (places_.size() - 1);
    while (places_[at].row != kFree && places_[at].hash != hash) at = (at + 1) & (places_.size() - 1);
    places_[at].hash = hash;
    return places_[at];
  }
  void grow() {
    std::vector<Place> old(std::max<size_t>(64, places_.size() * 4));
    old.swap(places_);
    for (const Place& place : old)
      if (place.row != kFree) find(place.hash).row = place.row;
  }

  std::string fullKey(uint32_t row) const {
    std::string key;
    for (size_t i = 0; i < types_.size(); ++i)
      appendSortKey(store_.value(row, i), types_[i], collation_, false, key);
    return key;
  }

  const RowStore& store_;
  const Collation& collation_;
  std::vector<Type> types_;
  std::vector<Place> places_;  // open addressing
  size_t used_ = 0;
  std::unordered_set<std::string> keys_;
};

void CollectedRows::open(EvalContext& c) {
  store_ = std::make_shared<RowStore>(columns_.size());
  order_.clear();
  at_ = 0;
  cache_.assign(columns_.size(), {});
  stamps_.assign(columns_.size(), 0);
  std::optional<size_t> limit;
  if (top && !top->percent) limit = static_cast<size_t>(top->count);
  if (limit == 0u) return;
  Sorter sorter(sort.empty() ? std::nullopt : limit);
  Duplicates duplicates(*store_, columns_, *c.collation);
  for (size_t part = 0; part < parts_.size(); ++part) collect(part, duplicates, sorter, c);

  if (top && top->percent) limit = (store_->rowCount() * static_cast<size_t>(top->count) + 99) / 100;
  if (!sort.empty()) {
    order_ = sorter.finish(limit);
  } else {
    order_.resize(limit ? std::min(*limit, store_->rowCount()) : store_->rowCount());
    std::iota(order_.begin(), order_.end(), 0u);
  }
}

void CollectedRows::appendSortKeys(Rows& rows, std::string& key, EvalContext& c) {
  Value scratch;
  for (const SortItem& item : sort) {
    const Value& v = item.column >= 0
                         ? rows.value(static_cast<size_t>(item.column), c)
                         : onlySelect->sortValue(static_cast<size_t>(item.expression), c, scratch);
    appendSortKey(v, item.type, *c.collation, item.descending, key);
  }
}

std::vector<RowId> CollectedRows::rowIds(const Slot& table, EvalContext& c) {
  std::vector<RowId> ids, ordered;
  std::optional<size_t> limit;
  if (top && !top->percent) limit = static_cast<size_t>(top->count);
  if (limit == 0u) return ids;
  Sorter sorter(limit);
  for (onlySelect->open(c); onlySelect->next(c);) {
    appendSortKeys(*onlySelect, sorter.keyBuffer(), c);
    if (!sorter.mayShow()) continue;
    sorter.add(static_cast<uint32_t>(ids.size()));
    ids.push_back(table.rowId());
  }
  if (top && top->percent) limit = (ids.size() * static_cast<size_t>(top->count) + 99) / 100;
  for (const uint32_t row : sorter.finish(limit)) ordered.push_back(ids[row]);
  return ordered;
}

void CollectedRows::collect(size_t part, Duplicates& duplicates, Sorter& sorter, EvalContext& c) {
  Rows& rows = *parts_[part];
  const bool distinct = part < distinctParts;
  const bool stopsEarly = sort.empty() && top && !top->percent;
  std::vector<bool> converts(columns_.size());
  for (size_t i = 0; i < columns_.size(); ++i)
    converts[i] =
        columns_[i].type != Type::Null && heldType(rows.columns()[i].type) != heldType(columns_[i].type);

  for (rows.open(c); rows.next(c);) {
    if (stopsEarly && store_->rowCount() == static_cast<size_t>(top->count)) return;
    if (!sort.empty()) {
      appendSortKeys(rows, sorter.keyBuffer(), c);
      if (!sorter.mayShow()) continue;
    }
    store_->begin();
    for (size_t i = 0; i < columns_.size(); ++i) {
      if (converts[i])
        store_->add(unifiedValue(rows.value(i, c), heldType(columns_[i].type), c));
      else
        rows.pack(i, *store_, c);
    }
    store_->end();
    const auto row = static_cast<uint32_t>(store_->rowCount() - 1);
    if (distinct && duplicates.seenBefore(row)) {
      store_->dropLast();
      continue;
    }
    if (!sort.empty()) sorter.add(row);
  }
}

bool CollectedRows::next(EvalContext&) {
  if (at_ == order_.size()) return false;
  ++at_;
  return true;
}

const Value& CollectedRows::value(size_t column, EvalContext&) {
  if (stamps_[column] != at_) {
    cache_[column] = store_->value(order_[at_ - 1], column);
    stamps_[column] = at_;
  }
  return cache_[column];
}

void CollectedRows::explain(PlanText& text, int depth) const {
  if (top) text.line(depth++, u"top");
  if (!sort.empty()) text.line(depth++, u"sort");
  if (distinctParts > 0) text.line(depth++, u"distinct");
  if (parts_.size() > 1) text.line(depth++, u"union");
  for (const auto& part : parts_) part->explain(text, depth);
}

}  // namespace jet::sql
