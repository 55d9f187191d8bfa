#include "jet/storage/data_page.h"

#include <algorithm>
#include <cstring>

namespace jet::data_page {

namespace {

uint8_t* slotAt(MutableBytes page, const FileLayout& layout, int slot) {
  return page.data() + layout.dataSlots + 2 * slot;
}

uint32_t startOf(Bytes page, const FileLayout& layout, int slot) {
  return get16(page.data() + layout.dataSlots + 2 * slot) & kSlotOffsetMask;
}

// Before bytes are moved every slot must lie in its place; a wrong one would be spread over its neighbours.
void checkSlots(Bytes page, const FileLayout& layout, PageNumber number) {
  const int count = slotCount(page, layout, number);
  for (int slot = 0; slot < count; ++slot) slotBytes(page, layout, number, slot);
}

// Gives the slot's space `length` bytes, moving the rows behind it; the space's content is lost when it
// grows or shrinks. The caller has checked the room.
uint8_t* resize(MutableBytes page, const FileLayout& layout, int slot, size_t length) {
  const int count = get16(page.data() + layout.dataSlotCount);
  const uint32_t start = startOf(page, layout, slot);
  const uint32_t end = slot == 0 ? layout.pageSize : startOf(page, layout, slot - 1);
  const uint32_t last = startOf(page, layout, count - 1);
  const int shift = static_cast<int>(end - start) - static_cast<int>(length);
  if (shift != 0) {
    std::memmove(page.data() + last + shift, page.data() + last, start - last);
    for (int s = slot; s < count; ++s)
      put16(slotAt(page, layout, s), static_cast<uint32_t>(get16(slotAt(page, layout, s)) + shift));
    put16(page.data() + 2, room(page, layout));
  }
  return page.data() + end - length;
}

}  // namespace

void initialise(MutableBytes page, const FileLayout& layout, uint32_t owner) {
  std::fill(page.begin(), page.end(), uint8_t{0});
  page[0] = static_cast<uint8_t>(PageKind::Data);
  page[1] = 1;
  put16(page.data() + 2, layout.pageSize - layout.dataSlots);
  put32(page.data() + layout.dataOwner, owner);
}

uint32_t room(Bytes page, const FileLayout& layout) {
  const uint32_t count = get16(page.data() + layout.dataSlotCount);
  if (count > layout.maxSlots) return 0;
  const uint32_t slotsEnd = layout.dataSlots + 2 * count;
  const uint32_t start = count == 0 ? layout.pageSize : startOf(page, layout, static_cast<int>(count) - 1);
  return start < slotsEnd || start > layout.pageSize ? 0 : start - slotsEnd;
}

bool hasRoom(Bytes page, const FileLayout& layout, size_t rowLength) {
  return page[0] == static_cast<uint8_t>(PageKind::Data) &&
         get16(page.data() + layout.dataSlotCount) < layout.maxSlots && rowLength + 2 <= room(page, layout);
}

bool isEmpty(Bytes page, const FileLayout& layout) {
  const int count = get16(page.data() + layout.dataSlotCount);
  return count == 0 || startOf(page, layout, count - 1) == layout.pageSize;
}

int insert(MutableBytes page, const FileLayout& layout, Bytes row, uint16_t flags) {
  const int slot = get16(page.data() + layout.dataSlotCount);
  const uint32_t end = slot == 0 ? layout.pageSize : startOf(page, layout, slot - 1);
  const uint32_t start = end - static_cast<uint32_t>(row.size());
  std::copy(row.begin(), row.end(), page.begin() + start);
  put16(slotAt(page, layout, slot), start | flags);
  put16(page.data() + layout.dataSlotCount, static_cast<uint32_t>(slot + 1));
  put16(page.data() + 2, room(page, layout));
  return slot;
}

bool replace(MutableBytes page, const FileLayout& layout, PageNumber number, int slot, Bytes row) {
  checkSlots(page, layout, number);
  const size_t length = slotBytes(page, layout, number, slot).size();
  if (row.size() > length + room(page, layout)) return false;
  std::copy(row.begin(), row.end(), resize(page, layout, slot, row.size()));
  return true;
}

void setFlags(MutableBytes page, const FileLayout& layout, int slot, uint16_t flags) {
  put16(slotAt(page, layout, slot), startOf(page, layout, slot) | flags);
}

void erase(MutableBytes page, const FileLayout& layout, PageNumber number, int slot) {
  replace(page, layout, number, slot, {});
  setFlags(page, layout, slot, kSlotDeleted);
}

}  // namespace jet::data_page
