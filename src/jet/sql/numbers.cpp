#include "jet/sql/numbers.h"

#include <charconv>
#include <cmath>
#include <limits>

#include "jet/format/bytes.h"
#include "jet/format/error.h"
#include "jet/sql/dates.h"
#include "jet/sql/locale.h"

namespace jet::sql {

namespace {

bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }
bool isBlank(char16_t c) { return c == u' ' || c == u'\u00A0' || c == u'\u202F' || c == u'\t'; }

std::u16string_view trimmed(std::u16string_view s) {
  while (!s.empty() && isBlank(s.front())) s.remove_prefix(1);
  while (!s.empty() && isBlank(s.back())) s.remove_suffix(1);
  return s;
}

// &HFF, &O17: up to four hexadecimal digits are a signed 16-bit number, up to eight a 32-bit one.
std::optional<std::string> prefixedNumber(std::u16string_view s) {
  const bool hex = s[1] == u'H' || s[1] == u'h';
  if (!hex && s[1] != u'O' && s[1] != u'o') return std::nullopt;
  std::string digits;
  for (char16_t c : s.substr(2)) {
    if (c > 0x7F) return std::nullopt;
    digits += static_cast<char>(c);
  }
  uint32_t bits = 0;
  const char* end = digits.data() + digits.size();
  const auto read = std::from_chars(digits.data(), end, bits, hex ? 16 : 8);
  if (read.ec != std::errc() || read.ptr != end) return std::nullopt;
  const bool isShort = bits <= 0xFFFF && digits.size() <= (hex ? 4u : 6u);
  return std::to_string(isShort ? static_cast<int16_t>(bits) : static_cast<int32_t>(bits));
}

// Removes group separators from the digits before the decimals: the first group has one to three digits,
// the others three. False when the separators are placed otherwise.
bool dropGroups(std::u16string_view digits, std::string& out) {
  size_t run = 0;
  bool grouped = false;
  char16_t separator = 0;
  for (char16_t c : digits) {
    if (isDigit(c)) {
      out += static_cast<char>(c);
      ++run;
      continue;
    }
    if (run == 0 || (grouped ? run != 3 : run > 3) || (separator && separator != c)) return false;
    separator = c;
    grouped = true;
    run = 0;
  }
  return !grouped || run == 3;
}

}  // namespace

void expressionError(int number) { throw Error(number, {}, "DAO.Expression"); }

const Collation& collationOf(const EvalContext& c) {
  static const Collation& general = Collation::get(0x0409);
  return c.collation ? *c.collation : general;
}

int64_t integralValue(const Value& v) {
  const auto& s = v.storage();
  if (const auto* x = std::get_if<int32_t>(&s)) return *x;
  if (const auto* x = std::get_if<int16_t>(&s)) return *x;
  if (const auto* x = std::get_if<uint8_t>(&s)) return *x;
  return std::get<bool>(s) ? -1 : 0;
}

double checkedDouble(double d) {
  if (!std::isfinite(d)) expressionError(6);
  return d;
}

Value integerResult(int64_t v, Type narrowest) {
  if (narrowest == Type::Byte && v >= 0 && v <= 255) return static_cast<uint8_t>(v);
  if (narrowest != Type::Long && v >= INT16_MIN && v <= INT16_MAX) return static_cast<int16_t>(v);
  if (v >= INT32_MIN && v <= INT32_MAX) return static_cast<int32_t>(v);
  return static_cast<double>(v);
}

std::optional<std::string> plainNumber(std::u16string_view text) {
  std::u16string_view s = trimmed(text);
  if (s.size() > 2 && s[0] == u'&') return prefixedNumber(s);
  const std::u16string_view currency = kLocale.currencySuffix.substr(1);
  if (s.size() > currency.size() && s.ends_with(currency))
    s = trimmed(s.substr(0, s.size() - currency.size()));
  std::string out;
  if (!s.empty() && (s[0] == u'-' || s[0] == u'+')) {
    if (s[0] == u'-') out += '-';
    s = trimmed(s.substr(1));
  }
  std::string exponent;
  if (const size_t e = s.find_first_of(u"eE"); e != s.npos) {
    exponent = "E";
    size_t i = e + 1;
    if (i < s.size() && (s[i] == u'-' || s[i] == u'+')) exponent += static_cast<char>(s[i++]);
    const size_t first = i;
    for (; i < s.size() && isDigit(s[i]) && i < first + 4; ++i) exponent += static_cast<char>(s[i]);
    if (i == first || i < s.size()) return std::nullopt;
    s = s.substr(0, e);
  }
  const size_t point = s.find_last_of(u".,");
  const std::u16string_view whole = s.substr(0, point);
  const std::u16string_view fraction = point == s.npos ? std::u16string_view() : s.substr(point + 1);
  if (whole.empty() && fraction.empty()) return std::nullopt;
  for (char16_t c : whole)
    if (!isDigit(c) && !isBlank(c) && !((c == u'.' || c == u',') && c != s[point])) return std::nullopt;
  if (!dropGroups(whole, out)) return std::nullopt;
  if (whole.empty()) out += '0';
  if (!fraction.empty()) out += '.';
  for (char16_t c : fraction) {
    if (!isDigit(c)) return std::nullopt;
    out += static_cast<char>(c);
  }
  return out + exponent;
}

std::optional<double> numberFromText(std::u16string_view text) {
  const auto plain = plainNumber(text);
  if (!plain) return std::nullopt;
  double d = 0;
  const auto read = std::from_chars(plain->data(), plain->data() + plain->size(), d);
  if (read.ec == std::errc::result_out_of_range) {
    if (plain->find("E-") == std::string::npos) expressionError(6);
    return 0.0;
  }
  if (read.ec != std::errc()) return std::nullopt;
  return d;
}

Decimal toDecimal(const Value& v) {
  const Type type = v.type();
  if (isIntegral(type)) return decimalOf(integralValue(v));
  std::optional<Decimal> result;
  switch (type) {
    case Type::Currency:
      return decimalOf(v.get<Currency>().scaled, 4);
    case Type::Decimal:
      return v.get<Decimal>();
    case Type::Single:
      result = decimalFromString(doubleText(checkedDouble(v.get<float>()), 7));
      break;
    case Type::Double:
      result = decimalFromString(doubleText(checkedDouble(v.get<double>())));
      break;
    case Type::Date:
      result = decimalFromString(doubleText(checkedDouble(v.get<Date>().days)));
      break;
    case Type::Text: {
      const auto plain = plainNumber(v.get<Text>());
      if (!plain) expressionError(3464);
      result = decimalFromString(*plain);
      break;
    }
    default:
      expressionError(3464);
  }
  if (!result) expressionError(6);
  return *result;
}

Currency toCurrency(const Value& v) {
  if (const auto* x = v.getIf<Currency>()) return *x;
  if (isIntegral(v.type())) {
    return {integralValue(v) * 10000};
  }
  const auto scaled = toInt64(toDecimal(v), 4);
  if (!scaled) expressionError(6);
  return {*scaled};
}

std::string doubleText(double d, int digits) {
  if (d == 0) return "0";
  char buffer[40];
  const auto end = std::to_chars(buffer, buffer + sizeof buffer, d, std::chars_format::general, digits).ptr;
  std::string text(buffer, end);
  for (char& c : text)
    if (c == 'e') c = 'E';
  return text;
}

double toDouble(const Value& v) {
  struct Visitor {
    double operator()(std::monostate) const { expressionError(94); }
    double operator()(bool b) const { return b ? -1 : 0; }
    double operator()(uint8_t x) const { return x; }
    double operator()(int16_t x) const { return x; }
    double operator()(int32_t x) const { return x; }
    double operator()(Currency x) const { return static_cast<double>(x.scaled) / 10000; }
    double operator()(float x) const { return x; }
    double operator()(double x) const { return x; }
    double operator()(Date x) const { return x.days; }
    double operator()(const Binary&) const { expressionError(3464); }
    double operator()(const Text& text) const {
      const auto d = numberFromText(text);
      if (!d) expressionError(3464);
      return *d;
    }
    double operator()(const Guid&) const { expressionError(3464); }
    double operator()(const Decimal& d) const { return sql::toDouble(d); }
  };
  return std::visit(Visitor{}, v.storage());
}

int64_t toInteger(const Value& v) {
  const Type type = v.type();
  if (isIntegral(type)) return integralValue(v);
  if (type == Type::Currency || type == Type::Decimal) {
    const auto whole = toInt64(toDecimal(v), 0);
    if (!whole) expressionError(6);
    return *whole;
  }
  const double d = std::nearbyint(toDouble(v));
  constexpr double kLimit = 9223372036854775808.0;
  if (!(d >= -kLimit && d < kLimit)) expressionError(6);
  return static_cast<int64_t>(d);
}

std::u16string guidText(const Guid& guid) {
  static constexpr char16_t kHex[] = u"0123456789ABCDEF";
  static constexpr int kOrder[] = {3, 2, 1, 0, -1, 5, 4, -1, 7, 6, -1, 8, 9, -1, 10, 11, 12, 13, 14, 15};
  std::u16string out = u"{";
  for (int i : kOrder) {
    if (i < 0) {
      out += u'-';
    } else {
      out += kHex[guid.bytes[i] >> 4];
      out += kHex[guid.bytes[i] & 15];
    }
  }
  return out + u'}';
}

std::optional<Guid> guidFromText(std::u16string_view text) {
  static constexpr int kOrder[] = {3, 2, 1, 0, 5, 4, 7, 6, 8, 9, 10, 11, 12, 13, 14, 15};
  text = trimmed(text);
  if (text.size() > 6 && text.starts_with(u"{guid ") && text.ends_with(u"}"))
    text = text.substr(6, text.size() - 7);
  if (text.size() == 38 && text.front() == u'{' && text.back() == u'}') text = text.substr(1, 36);
  if (text.size() != 36) return std::nullopt;
  Guid guid;
  int nibble = 0;
  for (size_t i = 0; i < text.size(); ++i) {
    const char16_t c = text[i];
    if (i == 8 || i == 13 || i == 18 || i == 23) {
      if (c != u'-') return std::nullopt;
      continue;
    }
    const int value = isDigit(c)               ? c - u'0'
                      : c >= u'A' && c <= u'F' ? c - u'A' + 10
                      : c >= u'a' && c <= u'f' ? c - u'a' + 10
                                               : -1;
    if (value < 0) return std::nullopt;
    uint8_t& byte = guid.bytes[kOrder[nibble / 2]];
    byte = static_cast<uint8_t>(byte << 4 | value);
    ++nibble;
  }
  return guid;
}

std::u16string widen(std::string_view ascii) { return {ascii.begin(), ascii.end()}; }

}  // namespace jet::sql
