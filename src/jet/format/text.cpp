#include "jet/format/text.h"

#include <algorithm>
#include <iterator>

#include "jet/format/error.h"

namespace jet {

namespace {

constexpr char32_t kReplacement = 0xFFFD;

// Code page 1250 from 0x80; bytes without a character keep their value.
constexpr char16_t kCodePage1250[128] = {
    0x20AC, 0x0081, 0x201A, 0x0083, 0x201E, 0x2026, 0x2020, 0x2021, 0x0088, 0x2030, 0x0160, 0x2039, 0x015A,
    0x0164, 0x017D, 0x0179, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014, 0x0098, 0x2122,
    0x0161, 0x203A, 0x015B, 0x0165, 0x017E, 0x017A, 0x00A0, 0x02C7, 0x02D8, 0x0141, 0x00A4, 0x0104, 0x00A6,
    0x00A7, 0x00A8, 0x00A9, 0x015E, 0x00AB, 0x00AC, 0x00AD, 0x00AE, 0x017B, 0x00B0, 0x00B1, 0x02DB, 0x0142,
    0x00B4, 0x00B5, 0x00B6, 0x00B7, 0x00B8, 0x0105, 0x015F, 0x00BB, 0x013D, 0x02DD, 0x013E, 0x017C, 0x0154,
    0x00C1, 0x00C2, 0x0102, 0x00C4, 0x0139, 0x0106, 0x00C7, 0x010C, 0x00C9, 0x0118, 0x00CB, 0x011A, 0x00CD,
    0x00CE, 0x010E, 0x0110, 0x0143, 0x0147, 0x00D3, 0x00D4, 0x0150, 0x00D6, 0x00D7, 0x0158, 0x016E, 0x00DA,
    0x0170, 0x00DC, 0x00DD, 0x0162, 0x00DF, 0x0155, 0x00E1, 0x00E2, 0x0103, 0x00E4, 0x013A, 0x0107, 0x00E7,
    0x010D, 0x00E9, 0x0119, 0x00EB, 0x011B, 0x00ED, 0x00EE, 0x010F, 0x0111, 0x0144, 0x0148, 0x00F3, 0x00F4,
    0x0151, 0x00F6, 0x00F7, 0x0159, 0x016F, 0x00FA, 0x0171, 0x00FC, 0x00FD, 0x0163, 0x02D9,
};

// Code page 1252 from 0x80 to 0x9F; the rest is U+00A0 to U+00FF.
constexpr char16_t kCodePage1252[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178,
};

char16_t ansiUnit(uint8_t byte, int codePage) {
  if (byte < 0x80) return byte;
  if (codePage == 1250) return kCodePage1250[byte - 0x80];
  return byte < 0xA0 ? kCodePage1252[byte - 0x80] : byte;
}

// The byte of a unit above 0x7F; 0 when the code page lacks it.
uint8_t ansiByte(char16_t unit, int codePage) {
  const bool polish = codePage == 1250;
  if (!polish && unit >= 0xA0 && unit <= 0xFF) return static_cast<uint8_t>(unit);
  const char16_t* begin = polish ? kCodePage1250 : kCodePage1252;
  const char16_t* end = polish ? std::end(kCodePage1250) : std::end(kCodePage1252);
  const char16_t* found = std::find(begin, end, unit);
  return found == end ? 0 : static_cast<uint8_t>(0x80 + (found - begin));
}

void appendUtf8(char32_t c, std::string& out) {
  const auto put = [&](char32_t byte) { out += static_cast<char>(byte); };
  if (c < 0x80) {
    put(c);
  } else if (c < 0x800) {
    put(0xC0 | c >> 6), put(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    put(0xE0 | c >> 12), put(0x80 | (c >> 6 & 0x3F)), put(0x80 | (c & 0x3F));
  } else {
    put(0xF0 | c >> 18), put(0x80 | (c >> 12 & 0x3F)), put(0x80 | (c >> 6 & 0x3F)), put(0x80 | (c & 0x3F));
  }
}

// Decodes the character at `at` and moves past it, or past one byte when it is malformed. Surrogates are
// let through so that a lone one survives the trip.
char32_t nextUtf8(std::string_view text, size_t& at) {
  const auto byte = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
  const uint8_t first = byte(at++);
  if (first < 0x80) return first;
  const int more = first >= 0xF0 && first <= 0xF4 ? 3 : first >= 0xE0 ? 2 : first >= 0xC2 ? 1 : 0;
  if (more == 0 || first > 0xF4 || text.size() - at < static_cast<size_t>(more)) return kReplacement;
  char32_t c = first & (0x3F >> more);
  for (int i = 0; i < more; ++i) {
    const uint8_t next = byte(at + static_cast<size_t>(i));
    if ((next & 0xC0) != 0x80) return kReplacement;
    c = c << 6 | (next & 0x3F);
  }
  static constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
  if (c < kSmallest[more] || c > 0x10FFFF) return kReplacement;
  at += static_cast<size_t>(more);
  return c;
}

enum class Pairs : uint8_t { Shifted, EvenIsUpper, OddIsUpper };

// Ranges of capitals: a constant distance to the small letters, or neighbours in pairs.
struct CaseRange {
  char16_t first, last;
  Pairs kind;
  uint16_t shift;
};
constexpr CaseRange kCapitals[] = {
    {0x0041, 0x005A, Pairs::Shifted, 32},    {0x00C0, 0x00D6, Pairs::Shifted, 32},
    {0x00D8, 0x00DE, Pairs::Shifted, 32},    {0x0100, 0x012F, Pairs::EvenIsUpper, 1},
    {0x0132, 0x0137, Pairs::EvenIsUpper, 1}, {0x0139, 0x0148, Pairs::OddIsUpper, 1},
    {0x014A, 0x0177, Pairs::EvenIsUpper, 1}, {0x0179, 0x017E, Pairs::OddIsUpper, 1},
    {0x01CD, 0x01DC, Pairs::OddIsUpper, 1},  {0x01DE, 0x01EF, Pairs::EvenIsUpper, 1},
    {0x01F8, 0x021F, Pairs::EvenIsUpper, 1}, {0x0222, 0x0233, Pairs::EvenIsUpper, 1},
    {0x0386, 0x0386, Pairs::Shifted, 38},    {0x0388, 0x038A, Pairs::Shifted, 37},
    {0x038C, 0x038C, Pairs::Shifted, 64},    {0x038E, 0x038F, Pairs::Shifted, 63},
    {0x0391, 0x03A1, Pairs::Shifted, 32},    {0x03A3, 0x03AB, Pairs::Shifted, 32},
    {0x03D8, 0x03EF, Pairs::EvenIsUpper, 1}, {0x0400, 0x040F, Pairs::Shifted, 80},
    {0x0410, 0x042F, Pairs::Shifted, 32},    {0x0460, 0x0481, Pairs::EvenIsUpper, 1},
    {0x048A, 0x04BF, Pairs::EvenIsUpper, 1}, {0x04C1, 0x04CE, Pairs::OddIsUpper, 1},
    {0x04D0, 0x052F, Pairs::EvenIsUpper, 1}, {0x1E00, 0x1E95, Pairs::EvenIsUpper, 1},
    {0x1EA0, 0x1EFF, Pairs::EvenIsUpper, 1},
};

char16_t lowerUnit(char16_t unit) {
  if (unit < 0x80) return unit >= u'A' && unit <= u'Z' ? unit + 32 : unit;
  if (unit == 0x0178) return 0x00FF;
  const auto range = std::lower_bound(std::begin(kCapitals), std::end(kCapitals), unit,
                                      [](const CaseRange& r, char16_t u) { return r.last < u; });
  if (range == std::end(kCapitals) || unit < range->first) return unit;
  const bool odd = unit & 1;
  if (range->kind == Pairs::EvenIsUpper && odd) return unit;
  if (range->kind == Pairs::OddIsUpper && !odd) return unit;
  return static_cast<char16_t>(unit + range->shift);
}

// Length of the compressed form, 0 when a unit cannot be expressed in it: a low byte of 0 means a switch.
size_t compressedLength(std::u16string_view text) {
  size_t length = 2;
  bool wide = false;
  for (const char16_t unit : text) {
    if ((unit & 0xFF) == 0) return 0;
    const bool unitWide = unit > 0xFF;
    if (unitWide != wide) ++length, wide = unitWide;
    length += wide ? 2 : 1;
  }
  return length;
}

std::u16string decompress(Bytes stored) {
  std::u16string text(stored.size(), u'\0');
  char16_t* out = text.data();
  const uint8_t* p = stored.data();
  const uint8_t* end = p + stored.size();
  while (p != end) {
    while (p != end && *p != 0) *out++ = *p++;
    if (p == end) break;
    for (++p; end - p >= 2 && *p != 0; p += 2) *out++ = get16(p);
    if (p == end) break;
    ++p;  // the switch back, or half a unit at the end
  }
  text.resize(static_cast<size_t>(out - text.data()));
  return text;
}

}  // namespace

std::string toUtf8(std::u16string_view text) {
  std::string out;
  out.reserve(text.size() + text.size() / 8);
  for (size_t i = 0; i < text.size(); ++i) {
    const char32_t unit = text[i];
    const bool pair = unit >= 0xD800 && unit < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
                      text[i + 1] < 0xE000;
    if (pair)
      appendUtf8(0x10000 + ((unit - 0xD800) << 10) + (text[++i] - 0xDC00u), out);
    else
      appendUtf8(unit, out);
  }
  return out;
}

std::u16string fromUtf8(std::string_view text) {
  std::u16string out;
  out.reserve(text.size());
  for (size_t at = 0; at < text.size();) {
    const char32_t c = nextUtf8(text, at);
    if (c < 0x10000) {
      out += static_cast<char16_t>(c);
    } else {
      out += static_cast<char16_t>(0xD800 + ((c - 0x10000) >> 10));
      out += static_cast<char16_t>(0xDC00 + ((c - 0x10000) & 0x3FF));
    }
  }
  return out;
}

std::u16string foldName(std::u16string_view name) {
  std::u16string folded(name);
  for (char16_t& unit : folded) unit = lowerUnit(unit);
  return folded;
}

bool sameName(std::u16string_view a, std::u16string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char16_t x, char16_t y) {
           return x == y || lowerUnit(x) == lowerUnit(y);
         });
}

void encodeText(std::u16string_view text, bool compress, std::string& out) {
  const size_t length = compress && text.size() > 2 ? compressedLength(text) : 0;
  const size_t start = out.size();
  if (length == 0 || length > 2 * text.size()) {
    out.resize(start + 2 * text.size());
    auto* p = reinterpret_cast<uint8_t*>(out.data() + start);
    for (size_t i = 0; i < text.size(); ++i) put16(p + 2 * i, text[i]);
    return;
  }
  out.resize(start + length);
  char* p = out.data() + start;
  *p++ = '\xFF';
  *p++ = '\xFE';
  bool wide = false;
  for (const char16_t unit : text) {
    if ((unit > 0xFF) != wide) *p++ = '\0', wide = !wide;
    *p++ = static_cast<char>(unit & 0xFF);
    if (wide) *p++ = static_cast<char>(unit >> 8);
  }
}

std::u16string decodeText(Bytes stored) {
  if (stored.size() >= 2 && stored[0] == 0xFF && stored[1] == 0xFE) return decompress(stored.subspan(2));
  std::u16string text(stored.size() / 2, u'\0');
  for (size_t i = 0; i < text.size(); ++i) text[i] = get16(stored.data() + 2 * i);
  return text;
}

std::u16string decodeAnsi(Bytes stored, int codePage) {
  std::u16string text(stored.size(), u'\0');
  for (size_t i = 0; i < stored.size(); ++i) text[i] = ansiUnit(stored[i], codePage);
  return text;
}

void encodeAnsi(std::u16string_view text, int codePage, std::string& out) {
  for (const char16_t unit : text) {
    const uint8_t byte = unit < 0x80 ? static_cast<uint8_t>(unit) : ansiByte(unit, codePage);
    if (byte == 0 && unit != 0) throw Error(3421, {}, "DAO.Field");
    out += static_cast<char>(byte);
  }
}

}  // namespace jet
