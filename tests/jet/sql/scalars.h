#pragma once

#include <functional>
#include <string>

#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/sql/functions.h"
#include "jet/sql/numbers.h"

// Values written so that a table of expected results shows type and content: "Long 5", "Text abc", "Null".
namespace jet::sql::test {

inline EvalContext polish() {
  EvalContext c;
  c.collation = &Collation::get(0x0415);
  c.now = *parseDate(u"2026-11-22 10:30:15");
  return c;
}

inline std::string show(const Value& v) {
  EvalContext c;
  c.decimalSeparator = u'.';
  const char* names[] = {"Null",   "Boolean", "Byte",   "Integer", "Long", "Currency", "Single",
                         "Double", "Date",    "Binary", "Text",    "Guid", "Decimal"};
  if (v.isNull()) return "Null";
  if (const bool* b = v.getIf<bool>()) return *b ? "True" : "False";
  return std::string(names[v.storage().index()]) + " " + toUtf8(toText(v, c));
}

// The shown result, or "error N".
inline std::string outcome(const std::function<Value()>& calculation) {
  try {
    return show(calculation());
  } catch (const Error& e) {
    return "error " + std::to_string(e.number());
  }
}

inline Value money(double amount) { return toCurrency(Value(amount)); }
inline Value exact(const char* number) { return *decimalFromString(number); }
inline Value byte(int i) { return static_cast<uint8_t>(i); }
inline Value small(int i) { return static_cast<int16_t>(i); }
inline Value date(const char16_t* text) { return *parseDate(text); }

}  // namespace jet::sql::test
