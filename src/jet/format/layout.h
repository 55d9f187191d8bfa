#pragma once

#include <cstddef>
#include <compare>
#include <cstdint>

namespace jet {

enum class Version : uint8_t { Jet3 = 0, Jet4 = 1 };

using PageNumber = uint32_t;

// Addresses a row slot: the row's identity, also in indexes. In the file: u8 slot, u24 page.
struct RowId {
  PageNumber page = 0;
  uint8_t slot = 0;
  auto operator<=>(const RowId&) const = default;
  bool isNull() const { return page == 0; }
  static RowId fromStored(uint32_t stored) { return {stored >> 8, static_cast<uint8_t>(stored & 0xFF)}; }
  uint32_t stored() const { return page << 8 | slot; }
};

// Sizes and offsets that differ between the two file versions. `FileLayout::of(version)` is the table;
// page kinds and row flags, which do not differ, are constants below.
struct FileLayout {
  Version version;
  uint32_t pageSize;
  uint64_t maxFileSize;
  // data pages
  uint32_t dataOwner, dataSlotCount, dataSlots, maxRow, maxSlots;
  // usage maps
  uint32_t mapRowSize;  // of a fresh map row
  // table definitions
  uint32_t tdefRowCount, tdefAutoNumber, tdefType, tdefNextColumn, tdefVarColumns, tdefColumns,
      tdefLogicalIndexes, tdefRealIndexes, tdefOwnedMap, tdefFreeMap, tdefBlocks;
  uint32_t indexStatSize, columnSize, realIndexSize, logicalIndexSize;
  // index pages
  uint32_t indexPrev, indexNext, indexTail, indexPrefix, indexLevel, indexMask, indexEntries;
  // long values
  uint32_t maxLongValuePart;  // data bytes of one full part of a chain
  uint32_t maxInlineBytes;    // a longer value does not stay in the row
  uint32_t commitTable;       // offset of the 256 u16 commit counters on page 0

  static const FileLayout& of(Version version);
};

enum class PageKind : uint8_t { Header = 0, Data = 1, TableDef = 2, IndexNode = 3, IndexLeaf = 4, UsageBitmap = 5 };

constexpr uint16_t kSlotOffsetMask = 0x1FFF;
constexpr uint16_t kSlotMoved = 0x4000;    // the slot's space begins with a row pointer
constexpr uint16_t kSlotTarget = 0x8000;   // only reached through such a pointer
constexpr uint16_t kSlotDeleted = 0xC000;
constexpr uint32_t kLvalOwner = 0x4C41564C;  // "LVAL" in the owner field of a long-value page
constexpr uint32_t kDefinitionMark = 1625;
constexpr uint32_t kIndexMark = 1923;

// Limits of the engine; counts read from a file are checked against them.
constexpr int kMaxColumns = 255;
constexpr int kMaxIndexes = 32;
constexpr int kMaxIndexColumns = 10;
constexpr int kMaxNameLength = 64;

}  // namespace jet
