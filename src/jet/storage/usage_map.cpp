#include "jet/storage/usage_map.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <string>

#include "jet/format/error.h"
#include "jet/format/header_mask.h"
#include "jet/storage/data_page.h"

namespace jet {

namespace {

constexpr size_t kInlineHead = 5;         // kind and start page
constexpr size_t kBitmapHead = 4;         // of a bitmap page
constexpr PageNumber kFirstFreePage = 6;  // the pages before it have fixed places
constexpr PageNumber kNoBound = ~PageNumber{0};

bool bitAt(Bytes bitmap, uint64_t bit) { return bitmap[bit / 8] >> (bit % 8) & 1; }

void setBit(uint8_t* bitmap, uint64_t bit) { bitmap[bit / 8] |= static_cast<uint8_t>(1u << bit % 8); }

// The first set bit at or after `from`, or the number of bits.
uint64_t nextBit(Bytes bitmap, uint64_t from) {
  const uint64_t count = bitmap.size() * 8;
  if (from >= count) return count;
  size_t i = from / 8;
  unsigned byte = bitmap[i] & (0xFFu << from % 8);
  while (byte == 0) {
    if (++i == bitmap.size()) return count;
    while (i + 8 < bitmap.size() && get64(bitmap.data() + i) == 0) i += 8;
    byte = bitmap[i];
  }
  return i * 8 + static_cast<unsigned>(std::countr_zero(byte));
}

// The last set bit before `end`, or `end` itself when there is none.
uint64_t lastBit(Bytes bitmap, uint64_t end) {
  for (uint64_t bit = std::min<uint64_t>(end, bitmap.size() * 8); bit > 0;) {
    if (bit % 64 == 0 && get64(bitmap.data() + bit / 8 - 8) == 0) {
      bit -= 64;
    } else if (bit % 8 == 0 && bitmap[bit / 8 - 1] == 0) {
      bit -= 8;
    } else if (bitAt(bitmap, --bit)) {
      return bit;
    }
  }
  return end;
}

}  // namespace

struct UsageMap::Row {
  PageView page;
  Bytes bytes;
  bool isInline() const { return bytes[0] == 0; }
  PageNumber start() const { return get32(bytes.data() + 1); }
  Bytes bitmap() const { return bytes.subspan(kInlineHead); }
  size_t entries() const { return (bytes.size() - 1) / 4; }
  PageNumber entry(size_t j) const { return get32(bytes.data() + 1 + 4 * j); }
};

// Pages first ... end-1 with one bit each, or (bitmap empty) all of them outside the map.
struct UsageMap::Segment {
  PageNumber first = 0;
  uint64_t end = 0;
  Bytes bitmap;
  PageView page;  // pins a bitmap page
};

UsageMap::Row UsageMap::load() const {
  Row row;
  row.page = pager_.read(row_.page);
  const Bytes page = row.page.bytes();
  if (page[0] != static_cast<uint8_t>(PageKind::Data))
    throwDamaged(u"usage map on a page of another kind", row_.page);
  if (data_page::slotWord(page, pager_.layout(), row_.page, row_.slot) & ~kSlotOffsetMask)
    throwDamaged(u"usage map deleted", row_.page);
  row.bytes = data_page::slotBytes(page, pager_.layout(), row_.page, row_.slot);
  if (row.bytes.size() < kInlineHead || row.bytes[0] > 1)
    throwDamaged(u"usage map of unknown kind", row_.page);
  return row;
}

UsageMap::Segment UsageMap::segment(const Row& row, PageNumber page) const {
  Segment segment;
  if (row.isInline()) {
    const uint64_t end = uint64_t{row.start()} + row.bitmap().size() * 8;
    if (page < row.start()) {
      segment.end = row.start();
    } else if (page >= end) {
      segment.first = static_cast<PageNumber>(end), segment.end = kNoBound;
    } else {
      segment.first = row.start(), segment.end = end, segment.bitmap = row.bitmap();
    }
    return segment;
  }
  const PageNumber span = pagesPerBitmap();
  const size_t j = page / span;
  segment.first = static_cast<PageNumber>(j) * span;
  segment.end = uint64_t{segment.first} + span;
  const PageNumber bitmapPage = j < row.entries() ? row.entry(j) : 0;
  // An entry behind the end of the file is what a lost page leaves: nothing is stored there.
  if (bitmapPage == 0 || bitmapPage >= pager_.pageCount()) return segment;
  segment.page = pager_.read(bitmapPage);
  if (segment.page.data()[0] != static_cast<uint8_t>(PageKind::UsageBitmap))
    throwDamaged(u"usage bitmap on a page of another kind", bitmapPage);
  segment.bitmap = segment.page.bytes().subspan(kBitmapHead);
  return segment;
}

bool UsageMap::contains(PageNumber page) const {
  const Segment found = segment(load(), page);
  return found.bitmap.empty() ? outside_ : bitAt(found.bitmap, page - found.first);
}

PageNumber UsageMap::next(PageNumber from) const {
  const uint64_t count = pager_.pageCount();
  const Row row = load();
  for (uint64_t page = std::max<PageNumber>(from, 1); page < count;) {
    const Segment at = segment(row, static_cast<PageNumber>(page));
    if (at.bitmap.empty()) {
      if (outside_) return static_cast<PageNumber>(page);
      page = at.end;
    } else {
      page = at.first + nextBit(at.bitmap, page - at.first);
      if (page < std::min(at.end, count)) return static_cast<PageNumber>(page);
    }
  }
  return 0;
}

PageNumber UsageMap::last() const {
  const Row row = load();
  for (uint64_t end = pager_.pageCount(); end > 1;) {
    const Segment at = segment(row, static_cast<PageNumber>(end - 1));
    if (at.bitmap.empty()) {
      if (outside_) return static_cast<PageNumber>(end - 1);
    } else if (const uint64_t bit = lastBit(at.bitmap, end - at.first); bit != end - at.first) {
      return static_cast<PageNumber>(at.first + bit);
    }
    end = at.first;
  }
  return 0;
}

std::vector<PageNumber> UsageMap::pages() const {
  std::vector<PageNumber> all;
  const uint64_t count = pager_.pageCount();
  const Row row = load();
  for (uint64_t page = 1; page < count;) {
    const Segment at = segment(row, static_cast<PageNumber>(page));
    const uint64_t end = std::min(at.end, count);
    if (!at.bitmap.empty()) {
      while ((page = at.first + nextBit(at.bitmap, page - at.first)) < end)
        all.push_back(static_cast<PageNumber>(page++));
    } else if (outside_) {
      for (; page < end; ++page) all.push_back(static_cast<PageNumber>(page));
    }
    page = at.end;
  }
  return all;
}

std::vector<PageNumber> UsageMap::bitmapPages() const {
  std::vector<PageNumber> all;
  const Row row = load();
  if (row.isInline()) return all;
  for (size_t j = 0; j < row.entries(); ++j) {
    const PageNumber page = row.entry(j);
    if (page != 0 && page < pager_.pageCount()) all.push_back(page);
  }
  return all;
}

void UsageMap::assign(PageNumber page, bool member) {
  for (int attempt = 0; attempt < 3; ++attempt) {
    const Row row = load();
    const Segment at = segment(row, page);
    if (at.bitmap.empty()) {
      if (member == outside_) return;
      extend(page);  // an inline map may be converted first and given its bitmap page in the next round
      continue;
    }
    const uint32_t bit = page - at.first;
    if (bitAt(at.bitmap, bit) == member) return;
    const PageView& holder = at.page ? at.page : row.page;
    const auto offset = static_cast<size_t>(at.bitmap.data() - holder.data());
    PageEdit edit = pager_.write(holder.number());
    edit.data()[offset + bit / 8] ^= static_cast<uint8_t>(1u << bit % 8);
    return;
  }
  throwDamaged(u"usage map cannot grow", row_.page);
}

// Makes the map cover `page`. The global map always begins at page 0 and grows; another one is first moved
// to the window that its pages need.
void UsageMap::extend(PageNumber page) {
  const Row row = load();
  if (!row.isInline()) {
    addBitmapPage(page);
    return;
  }
  uint64_t start = row.start(), end = uint64_t{page} + 1;
  if (outside_) {
    if (page < start) return convert(row);
  } else {
    const uint64_t bits = row.bitmap().size() * 8;
    const uint64_t low = nextBit(row.bitmap(), 0), high = lastBit(row.bitmap(), bits);
    if (high != bits) end = std::max(end, start + high + 1);
    start = (low == bits ? page : std::min<uint64_t>(page, start + low)) / 8 * 8;
  }
  const size_t needed = static_cast<size_t>((end - start + 31) / 32 * 4);
  const size_t length = std::max(row.bitmap().size(), needed);
  if (kInlineHead + length > pager_.layout().maxRow) return convert(row);

  std::string grown(kInlineHead + length, outside_ ? '\xFF' : '\0');
  auto* bytes = reinterpret_cast<uint8_t*>(grown.data());
  bytes[0] = 0;
  put32(bytes + 1, static_cast<uint32_t>(start));
  if (outside_) {
    std::copy(row.bitmap().begin(), row.bitmap().end(), bytes + kInlineHead);
  } else {
    const uint64_t bits = row.bitmap().size() * 8;
    for (uint64_t bit = nextBit(row.bitmap(), 0); bit < bits; bit = nextBit(row.bitmap(), bit + 1))
      setBit(bytes + kInlineHead, row.start() + bit - start);
  }
  PageEdit edit = pager_.write(row_.page);
  if (!data_page::replace(edit.bytes(), pager_.layout(), row_.page, row_.slot, asBytes(grown))) convert(row);
}

// Turns an inline row into one of bitmap pages with the same members.
void UsageMap::convert(const Row& row) {
  const PageNumber start = row.start();
  const std::string bitmap(asChars(row.bitmap()));
  const std::string empty = '\1' + std::string(pager_.layout().mapRowSize - 1, '\0');
  {
    PageEdit edit = pager_.write(row_.page);
    if (!data_page::replace(edit.bytes(), pager_.layout(), row_.page, row_.slot, asBytes(empty)))
      throwDamaged(u"no room for a usage map", row_.page);
  }
  for (uint64_t bit = 0; bit < bitmap.size() * 8; ++bit)
    if (bitAt(asBytes(bitmap), bit) != outside_) assign(static_cast<PageNumber>(start + bit), !outside_);
}

// The bitmap page of a map of type 1 that covers `page` is made and entered.
PageNumber UsageMap::addBitmapPage(PageNumber page) {
  const size_t j = page / pagesPerBitmap();
  if (j >= load().entries()) throw Error(3036);
  // The global map cannot be asked for a page while it is being extended.
  PageEdit bitmap = outside_ ? pager_.append() : PageAllocator(pager_).allocate();
  std::memset(bitmap.data(), outside_ ? 0xFF : 0, pager_.pageSize());
  put32(bitmap.data(), 0x0105);
  const PageNumber number = bitmap.number();
  {
    const Row row = load();
    const auto offset = static_cast<size_t>(row.bytes.data() - row.page.data()) + 1 + 4 * j;
    PageEdit edit = pager_.write(row_.page);
    put32(edit.data() + offset, number);
  }
  if (outside_) assign(number, false);
  return number;
}

namespace {

RowId globalMapRow(Pager& pager) {
  const PageView header = pager.read(0);
  const RowId row = RowId::fromStored(headerField32(header.bytes(), kHeaderGlobalMap));
  if (row.page == 0 || row.page >= pager.pageCount()) throwDamaged(u"no map of free pages", 0);
  return row;
}

}  // namespace

PageAllocator::PageAllocator(Pager& pager) : pager_(pager), map_(pager, globalMapRow(pager), true) {}

PageEdit PageAllocator::allocate() {
  if (const PageNumber reused = map_.next(kFirstFreePage)) {
    map_.erase(reused);
    PageEdit page = pager_.write(reused);
    std::memset(page.data(), 0, pager_.pageSize());
    return page;
  }
  PageEdit page = pager_.append();
  map_.erase(page.number());
  return page;
}

void PageAllocator::free(PageNumber page) {
  if (page < kFirstFreePage || page >= pager_.pageCount()) throwDamaged(u"page cannot be freed", page);
  map_.insert(page);
}

RowId createUsageMap(Pager& pager, PageNumber& near, PageNumber first) {
  const FileLayout& layout = pager.layout();
  std::string row(layout.mapRowSize, '\0');
  if (first != 0) {
    auto* bytes = reinterpret_cast<uint8_t*>(row.data());
    put32(bytes + 1, first / 8 * 8);
    setBit(bytes + kInlineHead, first % 8);
  }
  PageEdit page;
  if (near != 0 && data_page::hasRoom(pager.read(near).bytes(), layout, row.size())) {
    page = pager.write(near);
  } else {
    page = PageAllocator(pager).allocate();
    data_page::initialise(page.bytes(), layout, 0);
    near = page.number();
  }
  const int slot = data_page::insert(page.bytes(), layout, asBytes(row));
  return {near, static_cast<uint8_t>(slot)};
}

void dropUsageMap(Pager& pager, RowId row) {
  PageAllocator allocator(pager);
  for (const PageNumber page : UsageMap(pager, row).bitmapPages()) allocator.free(page);
  PageEdit edit = pager.write(row.page);
  data_page::erase(edit.bytes(), pager.layout(), row.page, row.slot);
  if (data_page::isEmpty(edit.bytes(), pager.layout())) allocator.free(row.page);
}

}  // namespace jet
