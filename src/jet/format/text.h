#pragma once

#include <string>
#include <string_view>

#include "jet/format/bytes.h"

namespace jet {

// UTF-8 <-> UTF-16. A lone surrogate becomes its three-byte form and back; a malformed byte U+FFFD.
std::string toUtf8(std::u16string_view text);
std::u16string fromUtf8(std::string_view text);

// Simple lower-casing of names (one unit to one unit), for comparing object and field names, which
// ignore case. Covers Latin, Greek and Cyrillic letters.
std::u16string foldName(std::u16string_view name);
bool sameName(std::u16string_view a, std::u16string_view b);

// Text as a Jet 4 row holds it: UTF-16LE, or FF FE and the compressed form when the column allows it
// and the compressed form is not longer.
void encodeText(std::u16string_view text, bool compress, std::string& out);
// Reads either form, whatever the column's flag says. An odd trailing byte is ignored.
std::u16string decodeText(Bytes stored);

// Text as a Jet 3 row holds it: one byte a character in the file's code page (1250 and 1252 are known,
// others read as 1252). encode throws Error 3421 for a character that the code page lacks.
std::u16string decodeAnsi(Bytes stored, int codePage);
void encodeAnsi(std::u16string_view text, int codePage, std::string& out);

}  // namespace jet
