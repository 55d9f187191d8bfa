#pragma once

#include <optional>

#include "jet/pager/pager.h"

namespace jet {

// Row slots of a data page. Every function checks what it reads and throws Error 3049 naming the page.
namespace data_page {

// Writes the header of an empty data page owned by table definition `owner` (0: usage maps, kLvalOwner).
void initialise(MutableBytes page, const FileLayout& layout, uint32_t owner);

uint32_t owner(Bytes page, const FileLayout& layout);
int slotCount(Bytes page, const FileLayout& layout, PageNumber number);
int freeBytes(Bytes page, const FileLayout& layout);
// The slot's word: offset and flags.
uint16_t slotWord(Bytes page, const FileLayout& layout, PageNumber number, int slot);
// The bytes of the slot's space, whatever its flags.
Bytes slotBytes(Bytes page, const FileLayout& layout, PageNumber number, int slot);

bool hasRoom(Bytes page, const FileLayout& layout, size_t rowLength);
// Appends a slot; the caller has checked hasRoom. Returns the slot number.
int insert(MutableBytes page, const FileLayout& layout, Bytes row, uint16_t flags = 0);
// Resizes the slot's space and stores `row` there, keeping the flags; false when the page lacks the room.
bool replace(MutableBytes page, const FileLayout& layout, PageNumber number, int slot, Bytes row);
void setFlags(MutableBytes page, const FileLayout& layout, int slot, uint16_t flags);
// Marks the slot deleted and reclaims its bytes.
void erase(MutableBytes page, const FileLayout& layout, PageNumber number, int slot);

}  // namespace data_page
}  // namespace jet
