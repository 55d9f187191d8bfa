#include <algorithm>
#include <cmath>
#include <limits>

#include "jet/format/error.h"
#include "jet/sql/case_table.h"
#include "jet/sql/dates.h"
#include "jet/sql/format_parts.h"
#include "jet/sql/numbers.h"
#include "jet/sql/operators.h"

namespace jet::sql {

namespace {

std::u16string hexText(const Binary& bytes) {
  static constexpr char16_t kHex[] = u"0123456789ABCDEF";
  std::u16string out;
  for (uint8_t b : bytes) {
    out += kHex[b >> 4];
    out += kHex[b & 15];
  }
  return out;
}

// ---- Assignment: the same conversions with a column's errors -------------------------------------------

[[noreturn]] void notConvertible() { throw Error(3421, {}, "DAO.Field"); }
[[noreturn]] void outOfRange() { throw Error(3349, {}, "DAO.Field"); }
[[noreturn]] void tooLong() { throw Error(3163, {}, "DAO.Field"); }

// Calls a conversion of expressions and turns its errors into those of assignment.
template <typename Convert>
auto assigned(Convert convert) -> decltype(convert()) {
  try {
    return convert();
  } catch (const Error& e) {
    if (e.number() == 6) outOfRange();
    if (e.number() == 3464) notConvertible();
    throw;
  }
}

Value assignedInteger(Type type, const Value& v) {
  const int64_t i = assigned([&] { return toInteger(v); });
  const auto check = [&](int64_t low, int64_t high) {
    if (i < low || i > high) outOfRange();
  };
  switch (type) {
    case Type::Byte:
      check(0, 255);
      return static_cast<uint8_t>(i);
    case Type::Integer:
      check(INT16_MIN, INT16_MAX);
      return static_cast<int16_t>(i);
    default:
      check(INT32_MIN, INT32_MAX);
      return static_cast<int32_t>(i);
  }
}

Value assignedFloat(Type type, const Value& v) {
  const double d = assigned([&] { return toDouble(v); });
  if (type == Type::Double) return d;
  const float f = static_cast<float>(d);
  if (std::isinf(f) && !std::isinf(d)) outOfRange();
  return f;
}

Value assignedBoolean(const Value& v) {
  if (const Text* text = v.getIf<Text>())
    if (const auto word = booleanWord(*text)) return *word;
  return assigned([&] { return toDouble(v) != 0; });
}

Value assignedDate(const Value& v) {
  const auto date = dateFromValue(v);
  if (!date) notConvertible();
  if (!isValidDate(*date)) outOfRange();
  return *date;
}

Value assignedBinary(const Value& v, int size) {
  Binary bytes;
  if (const Binary* b = v.getIf<Binary>()) {
    bytes = *b;
  } else if (const Text* text = v.getIf<Text>()) {
    for (char16_t c : *text) {
      bytes.push_back(static_cast<uint8_t>(c));
      bytes.push_back(static_cast<uint8_t>(c >> 8));
    }
  } else if (const Guid* guid = v.getIf<Guid>()) {
    bytes.assign(guid->bytes.begin(), guid->bytes.end());
  } else {
    notConvertible();
  }
  if (size > 0 && bytes.size() > static_cast<size_t>(size)) tooLong();
  return bytes;
}

Value assignedGuid(const Value& v) {
  if (v.getIf<Guid>()) return v;
  if (const Text* text = v.getIf<Text>())
    if (const auto guid = guidFromText(*text)) return *guid;
  Guid guid;
  const Binary* bytes = v.getIf<Binary>();
  if (!bytes || bytes->size() != guid.bytes.size()) notConvertible();
  std::copy(bytes->begin(), bytes->end(), guid.bytes.begin());
  return guid;
}

}  // namespace

std::u16string localNumber(std::string_view plain, const EvalContext& c) {
  std::u16string text = widen(plain);
  std::replace(text.begin(), text.end(), u'.', c.decimalSeparator);
  return text;
}

std::u16string generalDate(Date date, const EvalContext& c) {
  if (!isValidDate(date)) return localNumber(doubleText(date.days), c);
  const DateParts p = dateParts(date);
  const bool hasTime = p.hour || p.minute || p.second;
  std::u16string text;
  if (p.dayNumber != 0) text = formatDateParts(p, kLocale.shortDate);
  if (hasTime && !text.empty()) text += u' ';
  if (hasTime || text.empty()) text += formatDateParts(p, kLocale.longTime);
  return text;
}

std::u16string toText(const Value& v, const EvalContext& c) {
  struct Visitor {
    const EvalContext& context;
    std::u16string operator()(std::monostate) const { return {}; }
    std::u16string operator()(bool b) const { return b ? u"-1" : u"0"; }
    std::u16string operator()(uint8_t x) const { return widen(std::to_string(x)); }
    std::u16string operator()(int16_t x) const { return widen(std::to_string(x)); }
    std::u16string operator()(int32_t x) const { return widen(std::to_string(x)); }
    std::u16string operator()(Currency x) const {
      return localNumber(toString(decimalOf(x.scaled, 4)), context);
    }
    std::u16string operator()(float x) const { return localNumber(doubleText(x, 7), context); }
    std::u16string operator()(double x) const { return localNumber(doubleText(x), context); }
    std::u16string operator()(Date x) const { return generalDate(x, context); }
    std::u16string operator()(const Binary& x) const { return hexText(x); }
    std::u16string operator()(const Text& x) const { return x; }
    std::u16string operator()(const Guid& x) const { return guidText(x); }
    std::u16string operator()(const Decimal& x) const { return localNumber(toString(x), context); }
  };
  return std::visit(Visitor{c}, v.storage());
}

std::optional<bool> booleanWord(std::u16string_view text) {
  const std::u16string word = lowerText(text);
  if (word == u"true" || word == u"yes" || word == u"on") return true;
  if (word == u"false" || word == u"no" || word == u"off") return false;
  return std::nullopt;
}

bool isValidDate(Date d) { return d.days > kFirstDay - 1 && d.days < kLastDay + 1; }

std::optional<Date> dateFromValue(const Value& v) {
  if (const Date* date = v.getIf<Date>()) return *date;
  if (const Text* text = v.getIf<Text>()) {
    if (const auto date = parseDate(*text)) return date;
    const auto number = numberFromText(*text);
    return number ? std::optional<Date>(Date{*number}) : std::nullopt;
  }
  if (isNumberType(v.type())) return Date{toDouble(v)};
  return std::nullopt;
}

Value convertFor(Type type, int size, const Value& v, const EvalContext& c, uint8_t scale) {
  if (v.isNull()) return {};
  switch (type) {
    case Type::Null:
      return v;
    case Type::Boolean:
      return assignedBoolean(v);
    case Type::Byte:
    case Type::Integer:
    case Type::Long:
      return assignedInteger(type, v);
    case Type::Currency:
      return assigned([&] { return toCurrency(v); });
    case Type::Single:
    case Type::Double:
      return assignedFloat(type, v);
    case Type::Date:
      return assignedDate(v);
    case Type::Text:
    case Type::Memo: {
      Text text = toText(v, c);
      if (size > 0 && text.size() > static_cast<size_t>(size)) tooLong();
      return text;
    }
    case Type::Guid:
      return assignedGuid(v);
    case Type::Decimal:
      return assigned([&] { return rounded(toDecimal(v), scale, true); });
    case Type::Binary:
    case Type::Ole:
    case Type::Internal:
      return assignedBinary(v, size);
  }
  notConvertible();
}

}  // namespace jet::sql
