#pragma once

#include <string>
#include <string_view>

#include "jet/format/bytes.h"

// Bytes in tests are written as dumps: "01 FF", upper case, blanks between.
namespace jet {

inline std::string fromHex(std::string_view hex) {
  std::string bytes;
  int high = -1;
  for (const char c : hex) {
    const int digit = c >= '0' && c <= '9' ? c - '0' : c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
    if (digit < 0) continue;
    if (high < 0) {
      high = digit;
    } else {
      bytes += static_cast<char>(high << 4 | digit);
      high = -1;
    }
  }
  return bytes;
}

inline std::string toHex(Bytes bytes) {
  static constexpr char kDigits[] = "0123456789ABCDEF";
  std::string hex;
  for (const uint8_t b : bytes) {
    if (!hex.empty()) hex += ' ';
    hex += kDigits[b >> 4];
    hex += kDigits[b & 15];
  }
  return hex;
}

}  // namespace jet
