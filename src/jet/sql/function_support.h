#pragma once

#include <span>

#include "jet/sql/functions.h"

// What the function groups share. Arguments that may not be Null throw 94, text that is not the number or
// date it should be 13.
namespace jet::sql {

using Arguments = std::span<const Value>;

std::span<const Function> textFunctions();
std::span<const Function> numberFunctions();
std::span<const Function> dateFunctions();
std::span<const Function> conversionFunctions();

bool anyNull(Arguments a);
std::u16string textArgument(const Value& v, const EvalContext& c);
double numberArgument(const Value& v);
int64_t integerArgument(const Value& v);
int integerArgument(const Value& v, int low, int high);  // 5 out of range
Date dateArgument(const Value& v);

// The $ form of a function: the same, but Null is error 94.
template <Value (*call)(Arguments, EvalContext&)>
Value strict(Arguments a, EvalContext& c) {
  for (const Value& v : a) textArgument(v, c);
  return call(a, c);
}

}  // namespace jet::sql
