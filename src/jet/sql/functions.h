#pragma once

#include <memory>
#include <span>

#include "jet/sql/operators.h"

namespace jet::sql {

// A scalar function of the dialect. IIf, Choose, Switch are not here: they evaluate only what they need
// and belong to the expression evaluator.
struct Function {
  std::u16string_view name;  // lower case; the $ form of a text function is one of its own: Null is error 94
  int minArguments, maxArguments;
  Type resultType;  // Type::Null: depends on the arguments
  bool constant;    // same arguments, same result within a statement (all but Rnd)
  // As many arguments as allowed. Throws 94 for Null where the function has no value for it, 13 for text that
  // is no number or date, 5 for arguments outside of their range, 6 when the result does not fit.
  Value (*call)(std::span<const Value> arguments, EvalContext& context);
};

// nullptr when the name (case ignored) is unknown.
const Function* findFunction(std::u16string_view name);

// One group's running aggregate. Over no values Count is 0, the others Null.
class Aggregate {
 public:
  virtual ~Aggregate() = default;
  virtual void add(const Value& v, const EvalContext& c) = 0;  // Null is ignored; Count(*) adds True
  virtual Value result() const = 0;
};
enum class AggregateKind { Count, Sum, Avg, Min, Max, First, Last, StDev, StDevP, Var, VarP };
std::optional<AggregateKind> findAggregate(std::u16string_view name);
std::unique_ptr<Aggregate> makeAggregate(AggregateKind kind, Type argumentType);
Type aggregateType(AggregateKind kind, Type argumentType);

// Format(value, pattern): a named format ("Short Date", "Standard", ...) or a pattern for numbers (0 # . , %
// E+ and sections "positive;negative;zero;Null"), dates (d m y h n s q w and AM/PM) or text (@ & < > !). The
// first character that belongs to one kind decides; values of another kind are converted or left as they are.
// Numbers round half away from zero. Null gives the section for Null or "".
std::u16string format(const Value& v, std::u16string_view pattern, const EvalContext& c);

}  // namespace jet::sql
