#include <algorithm>

#include "jet/format/text.h"
#include "jet/sql/case_table.h"
#include "jet/sql/format_parts.h"
#include "jet/sql/functions.h"
#include "jet/sql/locale.h"
#include "jet/sql/numbers.h"

namespace jet::sql {

namespace {

enum class PatternKind { Literal, Number, Date, Text };

// The first character that means something only in one kind of pattern decides.
PatternKind kindOf(std::u16string_view pattern) {
  std::u16string ignored;
  for (size_t at = 0; at < pattern.size();) {
    if (readLiteral(pattern, at, ignored)) continue;
    const char16_t c = lowerUnit(pattern[at]);
    if (c == u'0' || c == u'#') return PatternKind::Number;
    if (std::u16string_view(u"@&<>!").find(c) != std::u16string_view::npos) return PatternKind::Text;
    if (std::u16string_view(u"dmyhnsqwct").find(c) != std::u16string_view::npos) return PatternKind::Date;
    if (c == u'a' && (lowerText(pattern.substr(at)).starts_with(u"am/pm") ||
                      lowerText(pattern.substr(at)).starts_with(u"a/p")))
      return PatternKind::Date;
    ++at;
  }
  return PatternKind::Literal;
}

// Named formats that are other patterns.
struct NamedPattern {
  std::u16string_view name, pattern;
};
const NamedPattern kNumberNames[] = {
    {u"fixed", u"0.00"},          {u"standard", u"#,##0.00"}, {u"percent", u"0.00%"},
    {u"scientific", u"0.00E+00"}, {u"currency", u"#,##0.00"},
};
const NamedPattern kDateNames[] = {
    {u"long date", kLocale.longDate},     {u"medium date", kLocale.mediumDate},
    {u"short date", kLocale.shortDate},   {u"long time", kLocale.longTime},
    {u"medium time", kLocale.mediumTime}, {u"short time", kLocale.shortTime},
};
struct NamedBoolean {
  std::u16string_view name, yes, no;
};
const NamedBoolean kBooleanNames[] = {
    {u"yes/no", u"Yes", u"No"}, {u"true/false", u"True", u"False"}, {u"on/off", u"On", u"Off"}};

// The value as a number for a number pattern; nullopt leaves it as it is.
std::optional<Value> numberOf(const Value& v) {
  if (isNumberType(v.type())) return v;
  if (const Date* date = v.getIf<Date>()) return Value(date->days);
  const Text* text = v.getIf<Text>();
  if (!text) return std::nullopt;
  if (const auto number = numberFromText(*text)) return Value(*number);
  if (const auto date = parseDate(*text)) return Value(date->days);
  return std::nullopt;
}

std::u16string asDate(const Value& v, std::u16string_view pattern, const EvalContext& c) {
  const auto date = dateFromValue(v);
  if (!date) return toText(v, c);
  if (!isValidDate(*date)) expressionError(6);
  return formatDateParts(dateParts(*date), pattern);
}

std::optional<std::u16string> named(const Value& v, const std::u16string& name, const EvalContext& c) {
  const auto number = numberOf(v);
  if (name == u"general number") return number ? toText(*number, c) : toText(v, c);
  if (name == u"general date") {
    const auto date = dateFromValue(v);
    return date ? generalDate(*date, c) : toText(v, c);
  }
  for (const NamedPattern& n : kNumberNames) {
    if (n.name != name) continue;
    if (!number) return toText(v, c);
    std::u16string text = formatNumber(*number, n.pattern, c);
    return name == u"currency" ? text.append(kLocale.currencySuffix) : text;
  }
  for (const NamedPattern& n : kDateNames)
    if (n.name == name) return asDate(v, n.pattern, c);
  for (const NamedBoolean& n : kBooleanNames) {
    if (n.name != name) continue;
    const Text* text = v.getIf<Text>();
    const auto word = text ? booleanWord(*text) : std::nullopt;
    if (word) return std::u16string(*word ? n.yes : n.no);
    if (!number) return toText(v, c);
    return std::u16string(toDouble(*number) != 0 ? n.yes : n.no);
  }
  return std::nullopt;
}

std::u16string literalText(std::u16string_view section) {
  std::u16string out;
  for (size_t at = 0; at < section.size();)
    if (!readLiteral(section, at, out)) out += section[at++];
  return out;
}

// Null shows the section made for it: the fourth of a number pattern, the second of a text pattern.
std::u16string formatNull(std::u16string_view pattern) {
  const auto sections = formatSections(pattern);
  const size_t index = kindOf(pattern) == PatternKind::Text ? 1 : 3;
  return index < sections.size() ? literalText(sections[index]) : std::u16string();
}

}  // namespace

std::vector<std::u16string_view> formatSections(std::u16string_view pattern) {
  std::vector<std::u16string_view> sections;
  std::u16string ignored;
  size_t start = 0, at = 0;
  while (at < pattern.size()) {
    if (readLiteral(pattern, at, ignored)) continue;
    if (pattern[at++] != u';') continue;
    sections.push_back(pattern.substr(start, at - 1 - start));
    start = at;
  }
  sections.push_back(pattern.substr(start));
  return sections;
}

bool readLiteral(std::u16string_view pattern, size_t& at, std::u16string& out) {
  if (pattern[at] == u'\\') {
    if (++at < pattern.size()) out += pattern[at++];
    return true;
  }
  if (pattern[at] != u'"') return false;
  const size_t end = std::min(pattern.find(u'"', at + 1), pattern.size());
  out += pattern.substr(at + 1, end - at - 1);
  at = std::min(end + 1, pattern.size());
  return true;
}

// Placeholders are filled from the right, or from the left after "!"; what does not fit goes to the
// outermost.
std::u16string formatText(std::u16string_view text, std::u16string_view pattern) {
  const auto sections = formatSections(pattern);
  if (text.empty() && sections.size() > 1) return literalText(sections[1]);
  const std::u16string_view section = sections[0];
  std::u16string ignored;
  size_t places = 0;
  bool fromLeft = false, lower = false, upper = false;
  for (size_t at = 0; at < section.size();) {
    if (readLiteral(section, at, ignored)) continue;
    const char16_t c = section[at++];
    places += c == u'@' || c == u'&';
    fromLeft |= c == u'!';
    lower |= c == u'<';
    upper |= c == u'>';
  }
  const std::u16string content = upper ? upperText(text) : lower ? lowerText(text) : std::u16string(text);
  const size_t missing = places > content.size() ? places - content.size() : 0;
  const size_t extra = content.size() > places ? content.size() - places : 0;
  std::u16string out;
  size_t taken = 0, place = 0;
  for (size_t at = 0; at < section.size();) {
    if (readLiteral(section, at, out)) continue;
    const char16_t c = section[at++];
    if (c == u'!' || c == u'<' || c == u'>') continue;
    if (c != u'@' && c != u'&') {
      out += c;
      continue;
    }
    const bool isEmpty = fromLeft ? place >= content.size() : place < missing;
    size_t count = isEmpty ? 0 : 1;
    if (!fromLeft && place == 0) count += extra;
    if (isEmpty && c == u'@') out += u' ';
    out += content.substr(taken, count);
    taken += count;
    ++place;
  }
  return out + content.substr(taken);
}

std::u16string format(const Value& v, std::u16string_view pattern, const EvalContext& c) {
  if (v.isNull()) return formatNull(pattern);
  if (pattern.empty()) {
    if (const bool* b = v.getIf<bool>()) return *b ? u"True" : u"False";
    return toText(v, c);
  }
  if (const auto text = named(v, lowerText(pattern), c)) return *text;
  const PatternKind kind = kindOf(pattern);
  const Text* text = v.getIf<Text>();
  switch (kind) {
    case PatternKind::Number:
      if (const auto number = numberOf(v)) return formatNumber(*number, pattern, c);
      return toText(v, c);
    case PatternKind::Date:
      return asDate(v, pattern, c);
    case PatternKind::Text:
      return formatText(toText(v, c), pattern);
    case PatternKind::Literal:
      break;
  }
  return !text && numberOf(v) ? formatNumber(*numberOf(v), pattern, c)
                              : literalText(formatSections(pattern)[0]);
}

}  // namespace jet::sql
