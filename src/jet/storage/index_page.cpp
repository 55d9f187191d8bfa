#include "jet/storage/index_page.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "jet/format/bytes.h"
#include "jet/format/error.h"

namespace jet {

int EntryView::compare(const IndexTarget& target) const {
  const size_t mine = keyLength(), common = std::min(mine, target.key.size());
  const size_t inHead = std::min(common, headLength_);
  if (inHead > 0)
    if (const int order = std::memcmp(head_, target.key.data(), inHead)) return order;
  if (common > inHead)
    if (const int order = std::memcmp(tail_, target.key.data() + inHead, common - inHead)) return order;
  if (target.behind) return -1;  // begins with the key, or is part of it
  if (mine != target.key.size()) return mine < target.key.size() ? -1 : 1;
  const uint32_t theirs = target.row, ours = row();
  return ours < theirs ? -1 : ours > theirs;
}

void EntryView::copy(size_t length, std::string& to) const {
  const size_t inHead = std::min(length, headLength_);
  to.assign(reinterpret_cast<const char*>(head_), inHead);
  to.append(reinterpret_cast<const char*>(tail_), length - inHead);
}

IndexPage::IndexPage(const FileLayout& layout, const uint8_t* page, PageNumber number, PageNumber definition)
    : layout_(&layout), page_(page), number_(number) {
  const bool leaf = page[0] == static_cast<uint8_t>(PageKind::IndexLeaf);
  level_ = page[layout.indexLevel];
  if (!leaf && page[0] != static_cast<uint8_t>(PageKind::IndexNode))
    throwDamaged(u"not an index page", number);
  if (get32(page + 4) != definition) throwDamaged(u"index page of another table", number);
  if (leaf != (level_ == 0) || level_ > kMaxIndexDepth) throwDamaged(u"level of an index page", number);
  const uint32_t free = get16(page + 2);
  if (free > capacity(layout)) throwDamaged(u"free space of an index page", number);
  used_ = capacity(layout) - free;
  if (used_ == 0) return;
  if (!(page[layout.indexMask + used_ / 8] >> used_ % 8 & 1))
    throwDamaged(u"entry mask of an index page", number);
  prefix_ = layout.version == Version::Jet3 ? page[layout.indexPrefix] : get16(page + layout.indexPrefix);
  if (prefix_ != 0 && prefix_ >= entryEnd(0)) throwDamaged(u"prefix of an index page", number);
}

// 64 bits of the mask; the last word reaches into the entry area, but nothing asks behind used().
uint64_t IndexPage::maskWord(uint32_t word) const { return get64(page_ + layout_->indexMask + 8 * word); }

// The bit at used() is set, which bounds the search.
uint32_t IndexPage::firstEndBehind(uint32_t offset) const {
  uint32_t word = (offset + 1) / 64;
  uint64_t bits = maskWord(word) & ~uint64_t{0} << (offset + 1) % 64;
  while (bits == 0) bits = maskWord(++word);
  return 64 * word + static_cast<uint32_t>(std::countr_zero(bits));
}

// 0, where the first entry starts, when there is none.
uint32_t IndexPage::lastEndUpTo(uint32_t offset) const {
  uint32_t word = offset / 64;
  uint64_t bits = maskWord(word) & ~uint64_t{0} >> (63 - offset % 64);
  while (bits == 0) {
    if (word == 0) return 0;
    bits = maskWord(--word);
  }
  return 64 * word + 63 - static_cast<uint32_t>(std::countl_zero(bits));
}

uint32_t IndexPage::entryEnd(uint32_t start) const { return firstEndBehind(start); }
uint32_t IndexPage::entryStart(uint32_t end) const { return lastEndUpTo(end - 1); }

EntryView IndexPage::entry(uint32_t start, uint32_t end) const {
  const uint8_t* area = page_ + layout_->indexEntries;
  const uint32_t head = start == 0 ? 0 : prefix_;
  const size_t suffix = kEntryRowBytes + (isLeaf() ? 0 : kEntryChildBytes);
  if (head + (end - start) <= suffix) throwDamaged(u"entry of an index page", number_);
  return {area, head, area + start, end - start, suffix};
}

uint32_t IndexPage::find(const IndexTarget& target) const {
  uint32_t low = 0, high = used_;
  while (low < high) {
    const uint32_t start = lastEndUpTo((low + high) / 2), end = firstEndBehind(start);
    if (entry(start, end).compare(target) < 0)
      low = end;
    else
      high = start;
  }
  return low;
}

PageNumber IndexPage::child(uint32_t start) const { return start == used_ ? tail() : entry(start).child(); }

std::vector<uint16_t> IndexPage::entryEnds() const {
  std::vector<uint16_t> ends;
  for (uint32_t end = 0; end < used_;) ends.push_back(static_cast<uint16_t>(end = firstEndBehind(end)));
  return ends;
}

namespace index_page {

namespace {

// The mask as words. Its last bytes share a word with the entry area, hence the care when storing.
class MaskWords {
 public:
  MaskWords(uint8_t* mask, uint32_t bytes) : mask_(mask), bytes_(bytes), count_((bytes + 7) / 8) {
    for (uint32_t i = 0; i < count_; ++i) words_[i] = get64(mask + 8 * i);
    if (bytes % 8) words_[count_ - 1] &= ~uint64_t{0} >> (64 - bytes % 8 * 8);
  }

  // Moves the bits behind `from` by `distance`; the others stay, and those that get free are 0.
  void moveUp(uint32_t from, uint32_t distance) {
    const uint32_t words = distance / 64, bits = distance % 64;
    Words upper = takeBehind(from);
    for (uint32_t i = words; i < count_; ++i) {
      words_[i] |= upper[i - words] << bits;
      if (bits && i > words) words_[i] |= upper[i - words - 1] >> (64 - bits);
    }
  }
  void moveDown(uint32_t from, uint32_t distance) {
    const uint32_t words = distance / 64, bits = distance % 64;
    Words upper = takeBehind(from);
    for (uint32_t i = 0; i + words < count_; ++i) {
      words_[i] |= upper[i + words] >> bits;
      if (bits && i + words + 1 < count_) words_[i] |= upper[i + words + 1] << (64 - bits);
    }
  }
  void set(uint32_t bit) { words_[bit / 64] |= uint64_t{1} << bit % 64; }
  void clear(uint32_t bit) { words_[bit / 64] &= ~(uint64_t{1} << bit % 64); }

  void store() const {
    for (uint32_t i = 0; i < bytes_ / 8; ++i) put64(mask_ + 8 * i, words_[i]);
    for (uint32_t i = bytes_ / 8 * 8; i < bytes_; ++i)
      mask_[i] = static_cast<uint8_t>(words_[i / 8] >> i % 8 * 8);
  }

 private:
  static constexpr size_t kMaxWords = 57;
  using Words = std::array<uint64_t, kMaxWords>;

  Words takeBehind(uint32_t from) {
    Words upper{};
    const uint32_t word = (from + 1) / 64;
    for (uint32_t i = word; i < count_; ++i) upper[i] = std::exchange(words_[i], 0);
    const uint64_t below = (uint64_t{1} << (from + 1) % 64) - 1;
    words_[word] = upper[word] & below;
    upper[word] &= ~below;
    return upper;
  }

  uint8_t* mask_;
  uint32_t bytes_, count_;
  Words words_;
};

void setFree(uint8_t* page, const FileLayout& layout, uint32_t used) {
  put16(page + 2, IndexPage::capacity(layout) - used);
}

void setPrefix(uint8_t* page, const FileLayout& layout, uint32_t prefix) {
  if (layout.version == Version::Jet3)
    page[layout.indexPrefix] = static_cast<uint8_t>(prefix);
  else
    put16(page + layout.indexPrefix, prefix);
}

}  // namespace

void initialise(MutableBytes page, const FileLayout& layout, PageNumber definition, int level) {
  std::fill(page.begin(), page.end(), uint8_t{0});
  page[0] = static_cast<uint8_t>(level == 0 ? PageKind::IndexLeaf : PageKind::IndexNode);
  page[1] = 1;
  put32(&page[4], definition);
  page[layout.indexLevel] = static_cast<uint8_t>(level);
  setFree(page.data(), layout, 0);
}

void setPrevious(MutableBytes page, const FileLayout& layout, PageNumber previous) {
  put32(&page[layout.indexPrev], previous);
}
void setNext(MutableBytes page, const FileLayout& layout, PageNumber next) {
  put32(&page[layout.indexNext], next);
}
void setTail(MutableBytes page, const FileLayout& layout, PageNumber tail) {
  put32(&page[layout.indexTail], tail);
}

void setChild(MutableBytes page, const FileLayout& layout, const IndexPage& view, uint32_t start,
              PageNumber child) {
  if (start == view.used())
    setTail(page, layout, child);
  else
    put32be(&page[layout.indexEntries + view.entryEnd(start) - kEntryChildBytes], child);
}

bool insert(MutableBytes page, const FileLayout& layout, const IndexPage& view, uint32_t start, Bytes entry) {
  uint8_t* area = &page[layout.indexEntries];
  const uint32_t used = view.used(), prefix = view.prefix();
  if (entry.size() <= prefix || std::memcmp(area, entry.data(), prefix) != 0) return false;
  const uint32_t length = static_cast<uint32_t>(entry.size()) - prefix;
  if (length > IndexPage::capacity(layout) - used) return false;
  // A new first entry takes the prefix over: its own part goes between the prefix and the old one's part.
  const uint32_t at = start == 0 ? prefix : start;
  std::memmove(area + at + length, area + at, used - at);
  std::memcpy(area + at, entry.data() + prefix, length);
  uint8_t* mask = &page[layout.indexMask];
  if (at == used) {
    mask[(at + length) / 8] |= static_cast<uint8_t>(1 << (at + length) % 8);
  } else {
    MaskWords words(mask, layout.indexEntries - layout.indexMask);
    words.moveUp(at, length);
    words.set(at + length);
    words.store();
  }
  if (used == 0) setPrefix(page.data(), layout, 0);
  setFree(page.data(), layout, used + length);
  return true;
}

void erase(MutableBytes page, const FileLayout& layout, const IndexPage& view, uint32_t start) {
  uint8_t* area = &page[layout.indexEntries];
  const uint32_t used = view.used(), end = view.entryEnd(start);
  const bool alone = start == 0 && end == used;
  const uint32_t at = start == 0 && !alone ? view.prefix() : start;  // the next one takes the prefix over
  std::memmove(area + at, area + end, used - end);
  std::memset(area + used - (end - at), 0, end - at);
  MaskWords words(&page[layout.indexMask], layout.indexEntries - layout.indexMask);
  words.clear(end);
  words.moveDown(end, end - at);
  words.store();
  if (alone) setPrefix(page.data(), layout, 0);
  setFree(page.data(), layout, used - (end - at));
}

void storeEntries(MutableBytes page, const FileLayout& layout, std::span<const Bytes> entries,
                  uint32_t prefix) {
  uint8_t *area = &page[layout.indexEntries], *mask = &page[layout.indexMask];
  std::fill(mask, page.data() + page.size(), uint8_t{0});
  uint32_t used = 0;
  for (const Bytes entry : entries) {
    const uint32_t left = used == 0 ? 0 : prefix;
    std::memcpy(area + used, entry.data() + left, entry.size() - left);
    used += static_cast<uint32_t>(entry.size()) - left;
    mask[used / 8] |= static_cast<uint8_t>(1 << used % 8);
  }
  setPrefix(page.data(), layout, prefix);
  setFree(page.data(), layout, used);
}

}  // namespace index_page
}  // namespace jet
