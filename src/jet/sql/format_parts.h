#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "jet/sql/dates.h"
#include "jet/sql/operators.h"

// The pieces that Format and the conversions share.
namespace jet::sql {

// Plain number text with the context's decimal separator.
std::u16string localNumber(std::string_view plain, const EvalContext& c);
// Short date and long time, without the date of day 0 and without a time of midnight; a number when the date
// is out of range.
std::u16string generalDate(Date date, const EvalContext& c);

std::optional<bool> booleanWord(std::u16string_view text);  // True, Yes, On / False, No, Off
bool isValidDate(Date d);                                   // 0100-01-01 .. 9999-12-31
std::optional<Date> dateFromValue(const Value& v);          // any number or date text; not checked for range

// A pattern's sections, split at ';' outside of quotes and escapes.
std::vector<std::u16string_view> formatSections(std::u16string_view pattern);
// Reads a literal ("..." or \x) at `at`, appends it and moves behind it; false when there is none.
bool readLiteral(std::u16string_view pattern, size_t& at, std::u16string& out);

std::u16string formatDateParts(const DateParts& p, std::u16string_view pattern);
std::u16string formatNumber(const Value& number, std::u16string_view pattern, const EvalContext& c);
std::u16string formatText(std::u16string_view text, std::u16string_view pattern);

}  // namespace jet::sql
