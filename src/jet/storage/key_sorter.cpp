#include "jet/storage/key_sorter.h"

#include <algorithm>
#include <cstring>

#include "jet/format/bytes.h"
#include "jet/format/error.h"

namespace jet {

namespace {

constexpr size_t kRecordHead = 6;
constexpr uint16_t kSomeNull = 0x8000;
constexpr size_t kBlock = 64 * 1024;  // of reading and writing a run

Bytes keyIn(const uint8_t* record) {
  return {record + kRecordHead, static_cast<size_t>(get16(record) & ~kSomeNull)};
}

int compareKeys(Bytes a, Bytes b) {
  const int order = std::memcmp(a.data(), b.data(), std::min(a.size(), b.size()));
  if (order != 0) return order;
  return a.size() < b.size() ? -1 : a.size() > b.size();
}

uint64_t prefixOf(Bytes key) {
  uint64_t prefix = 0;
  for (size_t i = 0; i < 8; ++i) prefix = prefix << 8 | (i < key.size() ? key[i] : 0);
  return prefix;
}

bool recordLess(const uint8_t* a, const uint8_t* b) {
  const int order = compareKeys(keyIn(a), keyIn(b));
  return order != 0 ? order < 0 : get32(a + 2) < get32(b + 2);
}

}  // namespace

// The records of one run, a block at a time.
struct KeySorter::Reader {
  File& file;
  uint64_t at, end;
  std::string buffer;
  size_t used = 0;

  const uint8_t* record() const { return asBytes(buffer).data() + used; }

  // Steps over `size` bytes and makes the next record available; false at the end.
  bool advance(size_t size) {
    used += size;
    if (buffer.size() - used < kRecordHead || buffer.size() - used < kRecordHead + keyIn(record()).size())
      fill();
    return used < buffer.size();
  }

 private:
  void fill() {
    buffer.erase(0, used);
    used = 0;
    const size_t kept = buffer.size();
    const size_t count = static_cast<size_t>(std::min<uint64_t>(kBlock, end - at));
    buffer.resize(kept + count);
    const MutableBytes room{reinterpret_cast<uint8_t*>(buffer.data()) + kept, count};
    if (file.read(at, room) != count) throw Error(3043, {}, "DAO.Workspace");
    at += count;
  }
};

KeySorter::KeySorter(Environment& env, std::filesystem::path scratch, size_t memory)
    : env_(env), scratch_(std::move(scratch)), memory_(memory) {}

KeySorter::~KeySorter() {
  if (!file_) return;
  readers_.clear();
  file_.reset();
  try {
    env_.remove(scratch_);
  } catch (const std::exception&) {
    // A scratch file that stays harms nothing.
  }
}

bool KeySorter::less(const Item& a, const Item& b) const {
  if (a.prefix != b.prefix) return a.prefix < b.prefix;
  if (a.length != kLonger && b.length != kLonger) {
    if (a.length != b.length) return a.length < b.length;
    if (rowsRise_) return a.at < b.at;
  }
  const uint8_t* arena = asBytes(arena_).data();
  return recordLess(arena + a.at, arena + b.at);
}

void KeySorter::add(Bytes key, RowId row, bool someNull) {
  if (used() >= memory_) writeRun();
  const Item item{prefixOf(key), arena_.size(), std::min<uint64_t>(key.size(), kLonger)};
  arena_.resize(arena_.size() + kRecordHead);
  uint8_t* head = reinterpret_cast<uint8_t*>(arena_.data()) + item.at;
  put16(head, static_cast<uint32_t>(key.size()) | (someNull ? kSomeNull : 0u));
  put32(head + 2, row.stored());
  arena_ += asChars(key);
  if (!items_.empty() && rowsRise_)
    rowsRise_ = get32(asBytes(arena_).data() + items_.back().at + 2) < row.stored();
  inOrder_ = inOrder_ && (items_.empty() || less(items_.back(), item));
  items_.push_back(item);
}

void KeySorter::clear() {
  arena_.clear();
  items_.clear();
  inOrder_ = rowsRise_ = true;
  runs_.clear();
  readers_.clear();
  fileEnd_ = nextItem_ = 0;
}

void KeySorter::sortItems() {
  if (!inOrder_)
    std::sort(items_.begin(), items_.end(), [this](const Item& a, const Item& b) { return less(a, b); });
  inOrder_ = true;
}

void KeySorter::writeRun() {
  if (items_.empty()) return;
  sortItems();
  if (!file_) {
    env_.remove(scratch_);
    file_ = env_.open(scratch_, Environment::Open::CreateNew);
  }
  Run run{fileEnd_, fileEnd_};
  std::string block;
  const auto flush = [&] {
    file_->write(run.end, asBytes(block));
    run.end += block.size();
    block.clear();
  };
  for (const Item& item : items_) {
    const uint8_t* record = asBytes(arena_).data() + item.at;
    block += asChars({record, kRecordHead + keyIn(record).size()});
    if (block.size() >= kBlock) flush();
  }
  flush();
  fileEnd_ = run.end;
  runs_.push_back(run);
  arena_.clear();
  items_.clear();
  rowsRise_ = true;
}

void KeySorter::startReading() {
  if (!runs_.empty()) writeRun();
  sortItems();
  nextItem_ = 0;
  readers_.clear();
  for (const Run& run : runs_) {
    auto reader = std::make_unique<Reader>(Reader{*file_, run.begin, run.end, {}});
    if (reader->advance(0)) readers_.push_back(std::move(reader));
  }
  const auto greater = [](const auto& a, const auto& b) { return recordLess(b->record(), a->record()); };
  std::make_heap(readers_.begin(), readers_.end(), greater);
}

bool KeySorter::next(Entry& entry) {
  const auto take = [&](const uint8_t* record) {
    const Bytes key = keyIn(record);
    entry.key.assign(asChars(key));
    entry.row = RowId::fromStored(get32(record + 2));
    entry.someNull = (get16(record) & kSomeNull) != 0;
    return kRecordHead + key.size();
  };
  if (runs_.empty()) {
    if (nextItem_ == items_.size()) return false;
    take(asBytes(arena_).data() + items_[nextItem_++].at);
    return true;
  }
  if (readers_.empty()) return false;
  const auto greater = [](const auto& a, const auto& b) { return recordLess(b->record(), a->record()); };
  std::pop_heap(readers_.begin(), readers_.end(), greater);
  Reader& least = *readers_.back();
  if (least.advance(take(least.record())))
    std::push_heap(readers_.begin(), readers_.end(), greater);
  else
    readers_.pop_back();
  return true;
}

}  // namespace jet
