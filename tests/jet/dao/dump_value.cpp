#include "dump_value.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdio>

#include "jet/format/text.h"

namespace {

std::string printed(const char* format, auto... arguments) {
  char text[100];
  std::snprintf(text, sizeof text, format, arguments...);
  return text;
}

std::string hex(const uint8_t* bytes, size_t count) {
  std::string text;
  for (size_t i = 0; i < count; ++i) text += printed("%02X", unsigned{bytes[i]});
  return text;
}

uint32_t crc32(const jet::Binary& bytes) {
  uint32_t crc = 0xFFFFFFFF;
  for (const uint8_t byte : bytes) {
    crc ^= byte;
    for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (crc & 1 ? 0xEDB88320 : 0);
  }
  return ~crc;
}

template <typename Real>
std::string shortest(Real number) {
  char text[400];
  const auto end = std::to_chars(text, text + sizeof text, number == 0 ? Real{0} : number, std::chars_format::fixed).ptr;
  return {text, end};
}

std::string scaled(bool negative, std::string digits, size_t scale) {
  if (digits.size() <= scale) digits.insert(0, scale + 1 - digits.size(), '0');
  if (scale > 0) {
    digits.insert(digits.size() - scale, ".");
    digits.erase(digits.find_last_not_of('0') + 1);
    if (digits.back() == '.') digits.pop_back();
  }
  return (negative && digits != "0" ? "-" : "") + digits;
}

std::string decimal(const jet::Decimal& number) {
  std::array<uint32_t, 4> words = number.magnitude;
  std::string digits;
  do {
    uint64_t rest = 0;
    for (uint32_t& word : words) {
      const uint64_t dividend = rest << 32 | word;
      word = static_cast<uint32_t>(dividend / 10);
      rest = dividend % 10;
    }
    digits.insert(digits.begin(), static_cast<char>('0' + rest));
  } while (words != std::array<uint32_t, 4>{});
  return scaled(number.negative, digits, number.scale);
}

std::string date(double days) {
  const double whole = std::trunc(days);
  long long milliseconds = std::llround(std::abs(days - whole) * 86'400'000);
  long long day = static_cast<long long>(whole) + milliseconds / 86'400'000;
  milliseconds %= 86'400'000;
  // Step by step through years and months: slow and plain, unlike the code under test.
  int year = 1899, month = 12, dayOfMonth = 30;
  const auto leap = [](int y) { return (y % 4 == 0 && y % 100 != 0) || y % 400 == 0; };
  const auto length = [&](int y, int m) {
    static constexpr int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    return m == 2 && leap(y) ? 29 : kDays[m - 1];
  };
  for (; day > 0; --day)
    if (++dayOfMonth > length(year, month)) {
      dayOfMonth = 1;
      if (++month == 13) month = 1, ++year;
    }
  for (; day < 0; ++day)
    if (--dayOfMonth == 0) {
      if (--month == 0) month = 12, --year;
      dayOfMonth = length(year, month);
    }
  std::string text = printed("%04d-%02d-%02dT%02d:%02d:%02d", year, month, dayOfMonth,
                             static_cast<int>(milliseconds / 3'600'000), static_cast<int>(milliseconds / 60'000 % 60),
                             static_cast<int>(milliseconds / 1000 % 60));
  if (milliseconds % 1000 != 0) text += printed(".%03d", static_cast<int>(milliseconds % 1000));
  return text;
}

struct Dumper {
  std::string operator()(std::monostate) const { return "null"; }
  std::string operator()(bool v) const { return v ? "true" : "false"; }
  std::string operator()(uint8_t v) const { return std::to_string(v); }
  std::string operator()(int16_t v) const { return std::to_string(v); }
  std::string operator()(int32_t v) const { return std::to_string(v); }
  std::string operator()(float v) const { return shortest(v); }
  std::string operator()(double v) const { return shortest(v); }
  std::string operator()(jet::Currency v) const {
    return scaled(v.scaled < 0, std::to_string(v.scaled < 0 ? 0 - static_cast<uint64_t>(v.scaled) : static_cast<uint64_t>(v.scaled)), 4);
  }
  std::string operator()(jet::Date v) const { return date(v.days); }
  std::string operator()(const jet::Text& v) const { return dumpText(v); }
  std::string operator()(const jet::Decimal& v) const { return decimal(v); }
  std::string operator()(const jet::Guid& v) const {
    const auto& b = v.bytes;
    return printed("{%08X-%04X-%04X-%s-%s}", b[0] | b[1] << 8 | b[2] << 16 | static_cast<unsigned>(b[3]) << 24,
                   b[4] | b[5] << 8, b[6] | b[7] << 8, hex(&b[8], 2).c_str(), hex(&b[10], 6).c_str());
  }
  std::string operator()(const jet::Binary& v) const {
    if (v.size() <= 64) return "0x" + hex(v.data(), v.size());
    return "0x" + hex(v.data(), 16) + printed("..(%zu bytes, crc32=%08x)", v.size(), crc32(v));
  }
};

}  // namespace

std::string dumpText(std::u16string_view text) {
  std::string out = "\"";
  for (size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    const bool pair = c >= 0xD800 && c < 0xDC00 && i + 1 < text.size() && text[i + 1] >= 0xDC00 && text[i + 1] < 0xE000;
    if (pair)
      out += jet::toUtf8(text.substr(i++, 2));
    else if (c == u'"' || c == u'\\')
      out += '\\', out += static_cast<char>(c);
    else if (c == u'\n')
      out += "\\n";
    else if (c == u'\r')
      out += "\\r";
    else if (c == u'\t')
      out += "\\t";
    else if (c < 0x20 || (c >= 0x7F && c < 0xA0) || c == 0x2028 || c == 0x2029 || c == 0xFEFF || c >= 0xFFFE ||
             (c >= 0xD800 && c < 0xE000))
      out += printed("\\u%04x", unsigned{c});
    else
      out += jet::toUtf8(text.substr(i, 1));
  }
  return out + '"';
}

std::string dumpValue(const jet::Value& value) { return std::visit(Dumper{}, value.storage()); }
