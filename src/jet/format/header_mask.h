#pragma once

#include "jet/format/bytes.h"
#include "jet/format/layout.h"

namespace jet {

constexpr uint32_t kMaskStart = 0x18;  // of the masked region of page 0

// Fields of the masked region (offsets into page 0), as they read once unmasked.
constexpr uint32_t kHeaderGlobalMap = 0x18;  // u32 row pointer of the map of free pages
constexpr uint32_t kHeaderSecondMap = 0x1C;
constexpr uint32_t kHeaderObjects = 0x20;   // u32 definition page of MSysObjects
constexpr uint32_t kHeaderCodePage = 0x3C;  // u16
constexpr uint32_t kHeaderKey = 0x3E;       // u32, 0: pages are not encrypted
constexpr uint32_t kHeaderPassword = 0x42;

// The bytes that page 0 is XORed with from kMaskStart on: 128 in Jet 4, 126 in Jet 3.
Bytes headerMask(Version version);

// Masks or unmasks (the same thing) a copy of page 0, which must be at least kMaskStart + 128 bytes long.
void toggleHeaderMask(MutableBytes page0, Version version);

// One field of the masked region, read from the page as stored.
uint32_t headerField32(Bytes page0, uint32_t offset);
uint16_t headerField16(Bytes page0, uint32_t offset);

}  // namespace jet
