#include <algorithm>

#include "jet/sql/case_table.h"
#include "jet/sql/function_support.h"
#include "jet/sql/numbers.h"

namespace jet::sql {

namespace {

constexpr int kMaxUnits = 1 << 24;  // of a text that a function makes

size_t lengthArgument(const Value& v) { return static_cast<size_t>(integerArgument(v, 0, INT32_MAX)); }

// The comparison mode of the text functions: 0 exact, 1 and 2 without case.
bool isBinary(Arguments a, size_t index, bool byDefault) {
  return index < a.size() ? integerArgument(a[index], 0, 2) == 0 : byDefault;
}

Value len(Arguments a, EvalContext& c) {
  if (anyNull(a)) return {};
  if (const Text* text = a[0].getIf<Text>()) return static_cast<int32_t>(text->size());
  if (const Binary* bytes = a[0].getIf<Binary>()) return static_cast<int32_t>(bytes->size() / 2);
  return static_cast<int32_t>(toText(a[0], c).size());
}

Value left(Arguments a, EvalContext& c) {
  if (anyNull(a)) return {};
  return toText(a[0], c).substr(0, lengthArgument(a[1]));
}

Value right(Arguments a, EvalContext& c) {
  if (anyNull(a)) return {};
  const std::u16string text = toText(a[0], c);
  return text.substr(text.size() - std::min(lengthArgument(a[1]), text.size()));
}

Value mid(Arguments a, EvalContext& c) {
  if (anyNull(a)) return {};
  const std::u16string text = toText(a[0], c);
  const size_t start = static_cast<size_t>(integerArgument(a[1], 1, INT32_MAX)) - 1;
  const size_t count = a.size() > 2 ? lengthArgument(a[2]) : text.size();
  return start < text.size() ? text.substr(start, count) : std::u16string();
}

Value inStr(Arguments a, EvalContext& c) {
  if (anyNull(a)) return {};
  const size_t first = a.size() > 2 ? 1 : 0;
  std::u16string text = toText(a[first], c), wanted = toText(a[first + 1], c);
  const size_t start = first ? static_cast<size_t>(integerArgument(a[0], 1, INT32_MAX)) - 1 : 0;
  if (!isBinary(a, 3, false)) text = lowerText(text), wanted = lowerText(wanted);
  if (start >= text.size()) return int32_t{0};
  const size_t found = text.find(wanted, start);
  return static_cast<int32_t>(found == text.npos ? 0 : found + 1);
}

Value inStrRev(Arguments a, EvalContext& c) {
  if (anyNull(a)) return {};
  std::u16string text = toText(a[0], c), wanted = toText(a[1], c);
  const int start = a.size() > 2 ? integerArgument(a[2], -1, INT32_MAX) : -1;
  if (start == 0) expressionError(5);
  if (!isBinary(a, 3, true)) text = lowerText(text), wanted = lowerText(wanted);
  const size_t end = start < 0 ? text.size() : static_cast<size_t>(start);
  if (end > text.size() || wanted.size() > end || text.empty()) return int32_t{0};
  if (wanted.empty()) return static_cast<int32_t>(end);
  const size_t found = text.rfind(wanted, end - wanted.size());
  return static_cast<int32_t>(found == text.npos ? 0 : found + 1);
}

// Replace(text, find, replacement[, start[, count[, mode]]]): what stands before `start` is cut off.
Value replace(Arguments a, EvalContext& c) {
  const std::u16string whole = textArgument(a[0], c), wanted = textArgument(a[1], c),
                       with = textArgument(a[2], c);
  const size_t start = a.size() > 3 ? static_cast<size_t>(integerArgument(a[3], 1, INT32_MAX)) - 1 : 0;
  int count = a.size() > 4 ? integerArgument(a[4], -1, INT32_MAX) : -1;
  if (start >= whole.size()) return Text();
  const std::u16string text = whole.substr(start);
  if (wanted.empty()) return text;
  const bool exact = isBinary(a, 5, true);
  const std::u16string searched = exact ? text : lowerText(text), key = exact ? wanted : lowerText(wanted);
  Text out;
  size_t at = 0;
  for (; count != 0; --count) {
    const size_t found = searched.find(key, at);
    if (found == searched.npos) break;
    out.append(text, at, found - at).append(with);
    if (out.size() > static_cast<size_t>(kMaxUnits)) expressionError(5);
    at = found + key.size();
  }
  return out.append(text, at);
}

Value strReverse(Arguments a, EvalContext& c) {
  std::u16string text = textArgument(a[0], c);
  std::reverse(text.begin(), text.end());
  return text;
}

std::u16string trimmedText(std::u16string text, bool atLeft, bool atRight) {
  if (atRight) text.erase(text.find_last_not_of(u' ') + 1);
  if (atLeft) text.erase(0, text.find_first_not_of(u' '));
  return text;
}

Value trim(Arguments a, EvalContext& c) {
  if (anyNull(a)) return {};
  return trimmedText(toText(a[0], c), true, true);
}
Value lTrim(Arguments a, EvalContext& c) {
  if (anyNull(a)) return {};
  return trimmedText(toText(a[0], c), true, false);
}
Value rTrim(Arguments a, EvalContext& c) {
  if (anyNull(a)) return {};
  return trimmedText(toText(a[0], c), false, true);
}

Value uCase(Arguments a, EvalContext& c) {
  if (anyNull(a)) return {};
  return upperText(toText(a[0], c));
}
Value lCase(Arguments a, EvalContext& c) {
  if (anyNull(a)) return {};
  return lowerText(toText(a[0], c));
}

Value space(Arguments a, EvalContext&) {
  return Text(static_cast<size_t>(integerArgument(a[0], 0, kMaxUnits)), u' ');
}

// String(n, c): c is a text, of which the first character counts, or a character code.
Value string(Arguments a, EvalContext& c) {
  if (anyNull(a)) return {};
  const size_t count = static_cast<size_t>(integerArgument(a[0], 0, kMaxUnits));
  std::u16string unit;
  if (a[1].getIf<Text>())
    unit = toText(a[1], c);
  else
    unit = static_cast<char16_t>(integerArgument(a[1], 0, 0xFFFF) & 0xFF);
  if (unit.empty()) expressionError(5);
  return Text(count, unit[0]);
}

Value strComp(Arguments a, EvalContext& c) {
  if (anyNull(a)) return {};
  const std::u16string x = toText(a[0], c), y = toText(a[1], c);
  const int order = isBinary(a, 2, false) ? x.compare(y) : compareTexts(x, y, collationOf(c));
  return static_cast<int16_t>(order < 0 ? -1 : order > 0);
}

// 1 upper case, 2 lower case, 3 the first letter of each word upper case.
Value strConv(Arguments a, EvalContext& c) {
  if (anyNull(a)) return {};
  const std::u16string text = toText(a[0], c);
  const int mode = integerArgument(a[1], 1, 3);
  if (mode == 1) return upperText(text);
  std::u16string out = lowerText(text);
  if (mode == 2) return out;
  constexpr std::u16string_view kBetweenWords(u" \t\n\v\f\r\0\u00A0", 8);
  bool begins = true;
  for (char16_t& unit : out) {
    if (begins) unit = upperUnit(unit);
    begins = kBetweenWords.find(unit) != kBetweenWords.npos;
  }
  return out;
}

Value formatFunction(Arguments a, EvalContext& c) {
  const Value pattern = a.size() > 1 ? a[1] : Value(Text());
  if (a[0].isNull() && (pattern.isNull() || toText(pattern, c).empty())) return {};
  return format(a[0], toText(pattern, c), c);
}

}  // namespace

std::span<const Function> textFunctions() {
  static const Function kFunctions[] = {
      {u"len", 1, 1, Type::Long, true, len},
      {u"left", 2, 2, Type::Text, true, left},
      {u"left$", 2, 2, Type::Text, true, strict<left>},
      {u"right", 2, 2, Type::Text, true, right},
      {u"right$", 2, 2, Type::Text, true, strict<right>},
      {u"mid", 2, 3, Type::Text, true, mid},
      {u"mid$", 2, 3, Type::Text, true, strict<mid>},
      {u"instr", 2, 4, Type::Long, true, inStr},
      {u"instrrev", 2, 4, Type::Long, true, inStrRev},
      {u"replace", 3, 6, Type::Text, true, replace},
      {u"strreverse", 1, 1, Type::Text, true, strReverse},
      {u"trim", 1, 1, Type::Text, true, trim},
      {u"trim$", 1, 1, Type::Text, true, strict<trim>},
      {u"ltrim", 1, 1, Type::Text, true, lTrim},
      {u"ltrim$", 1, 1, Type::Text, true, strict<lTrim>},
      {u"rtrim", 1, 1, Type::Text, true, rTrim},
      {u"rtrim$", 1, 1, Type::Text, true, strict<rTrim>},
      {u"ucase", 1, 1, Type::Text, true, uCase},
      {u"ucase$", 1, 1, Type::Text, true, strict<uCase>},
      {u"lcase", 1, 1, Type::Text, true, lCase},
      {u"lcase$", 1, 1, Type::Text, true, strict<lCase>},
      {u"space", 1, 1, Type::Text, true, space},
      {u"space$", 1, 1, Type::Text, true, space},
      {u"string", 2, 2, Type::Text, true, string},
      {u"string$", 2, 2, Type::Text, true, strict<string>},
      {u"strcomp", 2, 3, Type::Integer, true, strComp},
      {u"strconv", 2, 3, Type::Text, true, strConv},
      {u"format", 1, 4, Type::Text, true, formatFunction},
      {u"format$", 1, 4, Type::Text, true, strict<formatFunction>},
  };
  return kFunctions;
}

}  // namespace jet::sql
