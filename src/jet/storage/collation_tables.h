#pragma once

#include <cstdint>

// The orders' codes as data; collation.cpp is their only reader.
namespace jet::collation_tables {

enum RunKind : uint8_t {
  kIgnored = 0,      // units that no run covers
  kLetter = 1,       // one element: `code` (two bytes, or one in the high byte) with `weight`
  kMark = 2,         // adds `weight` to the element before it
  kUnprintable = 3,  // `code` goes to the end of the key, with its position
  kSeveral = 4,      // several elements: kSeveralTable[code]
  kKindMask = 7,
  kStep = 8,         // `code` grows by one a unit (after low byte FF comes 02 with the next high byte)
  kKanaShift = 4,    // the kana value, 0, 2 or 3, lies above this bit
};

// Units of one behaviour; ascending, without overlap.
struct CodeRun {
  uint16_t first, last;
  uint16_t code;
  uint8_t weight;
  uint8_t flags;
};
extern const CodeRun kGeneral[];
extern const int kGeneralCount;

// A character of several elements has a weight for each, but only one in a key that has had a weight other
// than the neutral 02 before.
struct SeveralElements {
  uint8_t codeLength;
  uint8_t codes[4];
  uint8_t elements;
  uint8_t weights[3];
};
extern const SeveralElements kSeveralTable[];

// Jet 3: one byte of code page 1252.
struct ByteCode {
  uint8_t code, second;  // second 0: a code of one byte
  uint8_t nibble;        // 0: none
  uint8_t significant;   // neutral nibbles it stands for before a later nibble
};
extern const ByteCode kGeneral97[256];

}  // namespace jet::collation_tables
