#pragma once

#include <memory>
#include <span>

#include "jet/sql/operators.h"

namespace jet::sql {

// A scalar function of the dialect. IIf, Choose, Switch are not here: they evaluate only what they need
// and belong to the expression evaluator.
struct Function {
  std::u16string_view name;  // lower case, without $
  int minArguments, maxArguments;
  Type resultType;           // Type::Null: depends on the arguments
  bool constant;             // same arguments, same result within a statement (not Rnd)
  Value (*call)(std::span<const Value> arguments, EvalContext& context);
};

// nullptr when the name (case ignored, a trailing $ dropped) is unknown.
const Function* findFunction(std::u16string_view name);

// One group's running aggregate.
class Aggregate {
 public:
  virtual ~Aggregate() = default;
  virtual void add(const Value& v, const EvalContext& c) = 0;  // Null is ignored (Count(*) adds true)
  virtual Value result() const = 0;
};
enum class AggregateKind { Count, Sum, Avg, Min, Max, First, Last, StDev, StDevP, Var, VarP };
std::optional<AggregateKind> findAggregate(std::u16string_view name);
std::unique_ptr<Aggregate> makeAggregate(AggregateKind kind, Type argumentType);
Type aggregateType(AggregateKind kind, Type argumentType);

// Format(value, pattern), see the dialect's description.
std::u16string format(const Value& v, std::u16string_view pattern, const EvalContext& c);

}  // namespace jet::sql
