#include "jet/format/layout.h"

namespace jet {

namespace {

constexpr FileLayout kJet3{
    .version = Version::Jet3, .pageSize = 2048, .maxFileSize = 1u << 30,
    .dataOwner = 4, .dataSlotCount = 8, .dataSlots = 10, .maxRow = 2012, .maxSlots = 255,
    .mapRowSize = 133,
    .tdefRowCount = 12, .tdefAutoNumber = 16, .tdefType = 20, .tdefNextColumn = 21, .tdefVarColumns = 23,
    .tdefColumns = 25, .tdefLogicalIndexes = 27, .tdefRealIndexes = 31, .tdefOwnedMap = 35, .tdefFreeMap = 39,
    .tdefBlocks = 43,
    .indexStatSize = 8, .columnSize = 18, .realIndexSize = 39, .logicalIndexSize = 20,
    .indexPrev = 8, .indexNext = 12, .indexTail = 16, .indexPrefix = 20, .indexLevel = 21, .indexMask = 22,
    .indexEntries = 248,
    .maxLongValuePart = 2032, .maxInlineBytes = 32,
    .commitTable = 0x600,
};

constexpr FileLayout kJet4{
    .version = Version::Jet4, .pageSize = 4096, .maxFileSize = 1u << 31,
    .dataOwner = 4, .dataSlotCount = 12, .dataSlots = 14, .maxRow = 4060, .maxSlots = 255,
    .mapRowSize = 69,
    .tdefRowCount = 0x10, .tdefAutoNumber = 0x14, .tdefType = 0x28, .tdefNextColumn = 0x29,
    .tdefVarColumns = 0x2B, .tdefColumns = 0x2D, .tdefLogicalIndexes = 0x2F, .tdefRealIndexes = 0x33,
    .tdefOwnedMap = 0x37, .tdefFreeMap = 0x3B, .tdefBlocks = 0x3F,
    .indexStatSize = 12, .columnSize = 25, .realIndexSize = 52, .logicalIndexSize = 28,
    .indexPrev = 12, .indexNext = 16, .indexTail = 20, .indexPrefix = 24, .indexLevel = 26, .indexMask = 27,
    .indexEntries = 480,
    .maxLongValuePart = 4072, .maxInlineBytes = 64,
    .commitTable = 0xE00,
};

}  // namespace

const FileLayout& FileLayout::of(Version version) { return version == Version::Jet3 ? kJet3 : kJet4; }

}  // namespace jet
