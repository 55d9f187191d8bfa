#include "jet/sql/functions.h"

#include <algorithm>
#include <unordered_map>

#include "jet/format/error.h"
#include "jet/sql/case_table.h"
#include "jet/sql/dates.h"
#include "jet/sql/format_parts.h"
#include "jet/sql/function_support.h"
#include "jet/sql/numbers.h"

namespace jet::sql {

bool anyNull(Arguments a) {
  return std::any_of(a.begin(), a.end(), [](const Value& v) { return v.isNull(); });
}

std::u16string textArgument(const Value& v, const EvalContext& c) {
  if (v.isNull()) expressionError(94);
  return toText(v, c);
}

namespace {

template <typename Convert>
auto converted(const Value& v, Convert convert) -> decltype(convert(v)) {
  if (v.isNull()) expressionError(94);
  try {
    return convert(v);
  } catch (const Error& e) {
    if (e.number() == 3464) expressionError(13);
    throw;
  }
}

}  // namespace

double numberArgument(const Value& v) {
  return converted(v, [](const Value& x) { return toDouble(x); });
}

int64_t integerArgument(const Value& v) {
  return converted(v, [](const Value& x) { return toInteger(x); });
}

int integerArgument(const Value& v, int low, int high) {
  const int64_t i = integerArgument(v);
  if (i < low || i > high) expressionError(5);
  return static_cast<int>(i);
}

Date dateArgument(const Value& v) {
  const auto date = converted(v, dateFromValue);
  if (!date) expressionError(13);
  if (!isValidDate(*date)) expressionError(6);
  return *date;
}

const Function* findFunction(std::u16string_view name) {
  static const auto index = [] {
    std::unordered_map<std::u16string_view, const Function*> map;
    for (auto group : {textFunctions(), numberFunctions(), dateFunctions(), conversionFunctions()})
      for (const Function& f : group) map.emplace(f.name, &f);
    return map;
  }();
  const auto found = index.find(lowerText(name));
  return found == index.end() ? nullptr : found->second;
}

}  // namespace jet::sql
