#pragma once

#include <string_view>

#include "jet/catalog/catalog.h"

namespace jet {

// Page 0. Bytes 0-3 are 00 01 00 00, 4-19 the signature, 20 the version; from 0x18 a region of 128 bytes (Jet
// 4) or 126 (Jet 3) is masked with a constant:
//
//   0x18 u32 row of the free-page map      0x1C u32 row of the second map
//   0x20 u32 x 4: definitions of MSysObjects, MSysACEs, MSysQueries, MSysRelationships
//   0x3A u16 sort order (Jet 3)            0x3C u16 code page      0x3E u32 encryption key
//   0x42 password: 20 UTF-16 units, further masked with the creation day (Jet 4); 20 bytes (Jet 3)
//   0x6A u32 build (Jet 4)                 0x6E u16 sort order (Jet 4)
//   0x72 f64 creation date (Jet 4)
//
// Throws Error 3343 when the page does not begin like a database, 3049 when its fields cannot be right.
FileHeader parseHeader(Bytes page);

// Fills a zero page as a new Jet 4 file has it. Without a creation date (0) the file gets one whose effect on
// the stored security identifiers is known; `header.created` receives it.
void writeHeader(MutableBytes page, FileHeader& header);

constexpr size_t kMaxPasswordLength = 20;

// Replaces the password on an existing page 0. Throws Error 3001 when it is too long.
void replacePassword(MutableBytes page, const FileHeader& header, std::u16string_view password);

// What a new Jet 4 file's creation date does to the two-byte identifiers of users and groups: XOR with these.
constexpr uint8_t kNewFileSidMask[2] = {0x67, 0x8A};

}  // namespace jet
