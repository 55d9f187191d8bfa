#include <charconv>
#include <cmath>

#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/sql/format_parts.h"
#include "jet/sql/function_support.h"
#include "jet/sql/locale.h"
#include "jet/sql/numbers.h"

namespace jet::sql {

namespace {

// ---- Tests of a value's kind -----------------------------------------------------------------------------

Value isNull(Arguments a, EvalContext&) { return a[0].isNull(); }
Value isEmpty(Arguments, EvalContext&) { return false; }  // no value of the engine is uninitialised
Value isError(Arguments, EvalContext&) { return false; }

Value isNumeric(Arguments a, EvalContext&) {
  if (const Text* text = a[0].getIf<Text>()) return plainNumber(*text).has_value();
  return isNumberType(a[0].type());
}

Value isDate(Arguments a, EvalContext&) {
  if (const Text* text = a[0].getIf<Text>()) return parseDate(*text).has_value();
  return a[0].type() == Type::Date;
}

struct Kind {
  Type type;
  int16_t code;
  const char16_t* name;
};
constexpr Kind kKinds[] = {
    {Type::Null, 1, u"Null"},        {Type::Boolean, 11, u"Boolean"},  {Type::Byte, 17, u"Byte"},
    {Type::Integer, 2, u"Integer"},  {Type::Long, 3, u"Long"},         {Type::Single, 4, u"Single"},
    {Type::Double, 5, u"Double"},    {Type::Currency, 6, u"Currency"}, {Type::Date, 7, u"Date"},
    {Type::Decimal, 14, u"Decimal"}, {Type::Binary, 8209, u"Byte()"},  {Type::Text, 8, u"String"},
    {Type::Guid, 8, u"String"},
};

const Kind& kindOf(const Value& v) {
  for (const Kind& k : kKinds)
    if (k.type == v.type()) return k;
  expressionError(13);
}

Value varType(Arguments a, EvalContext&) { return kindOf(a[0]).code; }
Value typeName(Arguments a, EvalContext&) { return Text(kindOf(a[0]).name); }

// ---- Conversions: Null is error 94, what cannot be converted 13, what does not fit 6 ---------------------

// Throws 94 and 13 for a value that is no number.
const Value& checkedNumber(const Value& v) {
  numberArgument(v);
  return v;
}

template <typename Result>
Value toWhole(Arguments a, EvalContext&) {
  const int64_t i = integerArgument(a[0]);
  if (i < std::numeric_limits<Result>::min() || i > std::numeric_limits<Result>::max()) expressionError(6);
  return static_cast<Result>(i);
}

Value cBool(Arguments a, EvalContext&) {
  if (const Text* text = a[0].getIf<Text>())
    if (const auto word = booleanWord(*text)) return *word;
  return numberArgument(a[0]) != 0;
}

Value cSng(Arguments a, EvalContext&) {
  const float f = static_cast<float>(numberArgument(a[0]));
  checkedDouble(f);
  return f;
}

Value cDbl(Arguments a, EvalContext&) { return numberArgument(a[0]); }
Value cCur(Arguments a, EvalContext&) { return toCurrency(checkedNumber(a[0])); }
Value cDec(Arguments a, EvalContext&) { return toDecimal(checkedNumber(a[0])); }
Value cDate(Arguments a, EvalContext&) { return dateArgument(a[0]); }
Value cvDate(Arguments a, EvalContext&) { return a[0].isNull() ? Value() : Value(dateArgument(a[0])); }
Value cVar(Arguments a, EvalContext&) { return a[0]; }

Value cStr(Arguments a, EvalContext& c) {
  if (const bool* b = a[0].getIf<bool>()) return Text(*b ? u"True" : u"False");
  return textArgument(a[0], c);
}

// ---- Numbers and text ------------------------------------------------------------------------------------

// The longest number at the start, blanks left out anywhere, always with a decimal point.
Value val(Arguments a, EvalContext& c) {
  std::string text;
  std::u16string converted;
  const Text* given = a[0].getIf<Text>();
  if (!given) converted = textArgument(a[0], c);
  for (char16_t unit : given ? std::u16string_view(*given) : std::u16string_view(converted)) {
    if (unit == u' ' || unit == u'\t' || unit == u'\n') continue;
    if (unit > 0x7F) break;
    text += static_cast<char>(unit);
  }
  if (text.size() > 2 && text[0] == '&') {
    const bool hex = text[1] == 'H' || text[1] == 'h';
    const size_t end = text.find_first_not_of(hex ? "0123456789ABCDEFabcdef" : "01234567", 2);
    const auto number = numberFromText(widen(text.substr(0, end)));
    return number.value_or(0);
  }
  for (char& x : text)
    if (x == 'd' || x == 'D') x = 'E';
  size_t start = 0;
  if (!text.empty() && text[0] == '+') start = 1;
  // "inf" and "nan" are no numbers here.
  const size_t digit = text.find_first_not_of("+-", 0);
  if (digit == std::string::npos || digit > 1 ||
      !(text[digit] == '.' || (text[digit] >= '0' && text[digit] <= '9')))
    return 0.0;
  double d = 0;
  if (std::from_chars(text.data() + start, text.data() + text.size(), d).ec == std::errc::result_out_of_range)
    expressionError(6);
  return d;
}

// A number with a point and, where the sign would stand, a blank; no zero before the point.
Value str(Arguments a, EvalContext& c) {
  if (anyNull(a)) return {};
  if (const bool* b = a[0].getIf<bool>()) return Text(*b ? u"True" : u"False");
  if (a[0].type() == Type::Date) return toText(a[0], c);
  numberArgument(a[0]);
  EvalContext plain = c;
  plain.decimalSeparator = u'.';
  const Value number = a[0].type() == Type::Text ? Value(numberArgument(a[0])) : a[0];
  std::u16string text = toText(number, plain);
  const bool negative = text[0] == u'-';
  if (negative) text.erase(0, 1);
  if (text.starts_with(u"0.")) text.erase(0, 1);
  return (negative ? u"-" : u" ") + text;
}

// Digits of the two's complement: 16 bits of small negative types, 32 of the others.
Value digits(const Value& v, int base) {
  if (v.isNull()) return {};
  const int64_t i = integerArgument(v);
  if (i < INT32_MIN || i > INT32_MAX) expressionError(6);
  const bool isShort = v.type() == Type::Boolean || v.type() == Type::Integer;
  const uint32_t bits = isShort ? static_cast<uint16_t>(i) : static_cast<uint32_t>(i);
  char buffer[40];
  std::string text(buffer, std::to_chars(buffer, buffer + sizeof buffer, bits, base).ptr);
  for (char& x : text)
    if (x >= 'a') x = static_cast<char>(x - 'a' + 'A');
  return widen(text);
}

Value hex(Arguments a, EvalContext&) { return digits(a[0], 16); }
Value oct(Arguments a, EvalContext&) { return digits(a[0], 8); }

char16_t firstUnit(const Value& v, const EvalContext& c) {
  const std::u16string text = textArgument(v, c);
  if (text.empty()) expressionError(5);
  return text[0];
}

// The code in the locale's code page, that of "?" for a character it lacks.
Value asc(Arguments a, EvalContext& c) {
  const char16_t unit = firstUnit(a[0], c);
  std::string byte;
  try {
    encodeAnsi({&unit, 1}, kLocale.codePage, byte);
  } catch (const Error&) {
    byte = "?";
  }
  return static_cast<int16_t>(static_cast<uint8_t>(byte[0]));
}

Value ascW(Arguments a, EvalContext& c) { return static_cast<int16_t>(firstUnit(a[0], c)); }

Value chr(Arguments a, EvalContext&) {
  const uint8_t byte = static_cast<uint8_t>(integerArgument(a[0], 0, 255));
  return decodeAnsi({&byte, 1}, kLocale.codePage);
}

Value chrW(Arguments a, EvalContext&) {
  return Text(1, static_cast<char16_t>(integerArgument(a[0], -32768, 65535)));
}

}  // namespace

std::span<const Function> conversionFunctions() {
  static const Function kFunctions[] = {
      {u"isnull", 1, 1, Type::Boolean, true, isNull},
      {u"isempty", 1, 1, Type::Boolean, true, isEmpty},
      {u"iserror", 1, 1, Type::Boolean, true, isError},
      {u"isnumeric", 1, 1, Type::Boolean, true, isNumeric},
      {u"isdate", 1, 1, Type::Boolean, true, isDate},
      {u"vartype", 1, 1, Type::Integer, true, varType},
      {u"typename", 1, 1, Type::Text, true, typeName},
      {u"cbool", 1, 1, Type::Boolean, true, cBool},
      {u"cbyte", 1, 1, Type::Byte, true, toWhole<uint8_t>},
      {u"cint", 1, 1, Type::Integer, true, toWhole<int16_t>},
      {u"clng", 1, 1, Type::Long, true, toWhole<int32_t>},
      {u"csng", 1, 1, Type::Single, true, cSng},
      {u"cdbl", 1, 1, Type::Double, true, cDbl},
      {u"ccur", 1, 1, Type::Currency, true, cCur},
      {u"cdec", 1, 1, Type::Decimal, true, cDec},
      {u"cdate", 1, 1, Type::Date, true, cDate},
      {u"cvdate", 1, 1, Type::Date, true, cvDate},
      {u"cvar", 1, 1, Type::Null, true, cVar},
      {u"cstr", 1, 1, Type::Text, true, cStr},
      {u"val", 1, 1, Type::Double, true, val},
      {u"str", 1, 1, Type::Text, true, str},
      {u"str$", 1, 1, Type::Text, true, strict<str>},
      {u"hex", 1, 1, Type::Text, true, hex},
      {u"hex$", 1, 1, Type::Text, true, strict<hex>},
      {u"oct", 1, 1, Type::Text, true, oct},
      {u"oct$", 1, 1, Type::Text, true, strict<oct>},
      {u"asc", 1, 1, Type::Integer, true, asc},
      {u"ascw", 1, 1, Type::Integer, true, ascW},
      {u"chr", 1, 1, Type::Text, true, chr},
      {u"chr$", 1, 1, Type::Text, true, chr},
      {u"chrw", 1, 1, Type::Text, true, chrW},
      {u"chrw$", 1, 1, Type::Text, true, chrW},
  };
  return kFunctions;
}

}  // namespace jet::sql
