#pragma once

#include "jet/format/error.h"
#include "jet/pager/pager.h"

namespace jet {

// Row slots of a data page. Every function checks what it reads and throws Error 3049 naming the page.
//
//   u8 1, u8 1, u16 free bytes, u32 owner, [Jet 4: u32 chain stamp,] u16 slot count n, n x u16 slot
//
// Rows are packed from the end of the page downwards in slot order; a slot word is the row's start and its
// flags (layout.h), a row ends where the row before it starts. Slots are never removed.
namespace data_page {

// Writes the header of an empty data page owned by table definition `owner` (0: usage maps, kLvalOwner).
void initialise(MutableBytes page, const FileLayout& layout, uint32_t owner);

// A page of this kind whose owner field is `owner`; anything else is not an error but false.
inline bool isOwnedBy(Bytes page, const FileLayout& layout, uint32_t owner) {
  return page[0] == static_cast<uint8_t>(PageKind::Data) && get32(page.data() + layout.dataOwner) == owner;
}
inline uint32_t owner(Bytes page, const FileLayout& layout) { return get32(page.data() + layout.dataOwner); }

inline int slotCount(Bytes page, const FileLayout& layout, PageNumber number) {
  const int count = get16(page.data() + layout.dataSlotCount);
  if (count > static_cast<int>(layout.maxSlots)) throwDamaged(u"too many row slots", number);
  return count;
}

// The header's count of free bytes, as stored.
inline int freeBytes(Bytes page, const FileLayout&) { return get16(page.data() + 2); }

// The slot's word: offset and flags. `slot` must be below slotCount().
inline uint16_t slotWord(Bytes page, const FileLayout& layout, PageNumber number, int slot) {
  if (slot < 0 || slot >= slotCount(page, layout, number)) throwDamaged(u"no such row slot", number);
  return get16(page.data() + layout.dataSlots + 2 * slot);
}

// The bytes of the slot's space, whatever its flags.
inline Bytes slotBytes(Bytes page, const FileLayout& layout, PageNumber number, int slot) {
  const int count = slotCount(page, layout, number);
  if (slot < 0 || slot >= count) throwDamaged(u"no such row slot", number);
  const uint8_t* word = page.data() + layout.dataSlots + 2 * slot;
  const uint32_t start = get16(word) & kSlotOffsetMask;
  const uint32_t end = slot == 0 ? layout.pageSize : get16(word - 2) & kSlotOffsetMask;
  if (start < layout.dataSlots + 2u * static_cast<uint32_t>(count) || start > end || end > layout.pageSize)
    throwDamaged(u"row outside its place", number);
  return page.subspan(start, end - start);
}

// Bytes between the slots and the rows, computed from the slots; 0 when they make no sense.
uint32_t room(Bytes page, const FileLayout& layout);
// False also for a page of another kind or with all slots used.
bool hasRoom(Bytes page, const FileLayout& layout, size_t rowLength);
// Room for rows that makes a page worth keeping in a free-space map.
constexpr uint32_t kUsefulRoom = 150;
inline bool isUseful(Bytes page, const FileLayout& layout) { return hasRoom(page, layout, kUsefulRoom - 2); }
// A page that has just failed to take a row is kept in the map only if it is roomy: rows of a table are
// alike, and a page that stays would be tried for each of them.
inline bool isWorthKeeping(Bytes page, const FileLayout& layout) {
  return hasRoom(page, layout, layout.pageSize / 4);
}
// No slot has bytes any more.
bool isEmpty(Bytes page, const FileLayout& layout);

// Appends a slot; the caller has checked hasRoom. Returns the slot number.
int insert(MutableBytes page, const FileLayout& layout, Bytes row, uint16_t flags = 0);
// Resizes the slot's space and stores `row` there, keeping the flags; false when the page lacks the room.
bool replace(MutableBytes page, const FileLayout& layout, PageNumber number, int slot, Bytes row);
// Replaces the slot's flags; its offset stays.
void setFlags(MutableBytes page, const FileLayout& layout, int slot, uint16_t flags);
// Marks the slot deleted and reclaims its bytes.
void erase(MutableBytes page, const FileLayout& layout, PageNumber number, int slot);

}  // namespace data_page
}  // namespace jet
