#pragma once

#include <memory>
#include <vector>

#include "jet/sql/functions.h"
#include "jet/sql/slot.h"
#include "jet/sql/types.h"

// Expressions with every name resolved, ready to be evaluated against the rows that the slots stand on.
namespace jet::sql {

class Expression {
 public:
  virtual ~Expression() = default;

  virtual Value value(EvalContext& c) = 0;
  // Without copying when the value exists somewhere; `scratch` may hold it otherwise. Holds until a slot
  // moves.
  virtual const Value& view(EvalContext& c, Value& scratch) { return scratch = value(c); }
  // As a condition.
  virtual Truth test(EvalContext& c) {
    Value scratch;
    return truth(view(c, scratch));
  }
  // The value for a result row, evaluated once.
  virtual Value take(EvalContext& c) { return value(c); }
  virtual void pack(RowStore& store, EvalContext& c) {
    Value scratch;
    store.add(view(c, scratch));
  }

  // Slots that the value depends on, those of outer queries included (with repetitions).
  virtual void collectSlots(std::vector<const Slot*>& slots) const = 0;
  // The same value for every row of a statement that the collected slots do not change.
  virtual bool isStable() const { return true; }

  Type type = Type::Null;  // Null: unknown
  int size = 0;            // characters of text, 0: unknown
};

using ExpressionPtr = std::unique_ptr<Expression>;

inline bool isTrue(Truth t) { return t && *t; }

class Constant : public Expression {
 public:
  explicit Constant(Value v) : value_(std::move(v)) { type = value_.type(); }
  Value value(EvalContext&) override { return value_; }
  const Value& view(EvalContext&, Value&) override { return value_; }
  void collectSlots(std::vector<const Slot*>&) const override {}
  const Value& get() const { return value_; }

 private:
  Value value_;
};

class ColumnExpression : public Expression {
 public:
  ColumnExpression(Slot& s, int column) : slot(&s), ordinal(column) {
    s.use(column);
    const ResultColumn& described = s.columns()[static_cast<size_t>(column)];
    type = described.type;
    size = described.size;
  }
  Value value(EvalContext& c) override { return slot->column(ordinal, c); }
  const Value& view(EvalContext& c, Value&) override { return slot->column(ordinal, c); }
  Value take(EvalContext& c) override { return slot->take(ordinal, c); }
  void pack(RowStore& store, EvalContext& c) override { slot->pack(ordinal, store, c); }
  void collectSlots(std::vector<const Slot*>& slots) const override { slots.push_back(slot); }

  Slot* slot;
  int ordinal;
};

// Base of everything with operands.
class Operation : public Expression {
 public:
  void collectSlots(std::vector<const Slot*>& slots) const override {
    for (const auto& operand : operands) operand->collectSlots(slots);
  }
  bool isStable() const override {
    for (const auto& operand : operands)
      if (!operand->isStable()) return false;
    return true;
  }
  std::vector<ExpressionPtr> operands;
};

// Arithmetic, &, and the logical operators other than And and Or: left to right.
class Chain : public Operation {
 public:
  Value value(EvalContext& c) override;
  std::vector<ast::Op> ops;
};

// And, Or over any number of conditions; stops as soon as the result is known.
class Junction : public Operation {
 public:
  explicit Junction(bool conjunction) : isAnd(conjunction) { type = Type::Boolean; }
  Value value(EvalContext& c) override { return fromTruth(test(c)); }
  Truth test(EvalContext& c) override;
  const bool isAnd;
};

class Comparison : public Operation {
 public:
  explicit Comparison(ast::Op o) : op(o) { type = Type::Boolean; }
  Value value(EvalContext& c) override { return fromTruth(test(c)); }
  Truth test(EvalContext& c) override;
  ast::Op op;
};

class Negation : public Operation {
 public:
  Value value(EvalContext& c) override { return negate(operands[0]->value(c), c); }
};

class NotExpression : public Operation {
 public:
  Value value(EvalContext& c) override { return logicalNot(operands[0]->value(c)); }
  Truth test(EvalContext& c) override;
};

class LikeExpression : public Operation {
 public:
  explicit LikeExpression(bool negate, bool sql) : negated(negate), sqlWildcards(sql) {
    type = Type::Boolean;
  }
  Value value(EvalContext& c) override { return fromTruth(test(c)); }
  Truth test(EvalContext& c) override;
  // The pattern compiled; nullptr when it is Null.
  const LikePattern* pattern(EvalContext& c);
  const bool negated, sqlWildcards;

 private:
  std::u16string text_;
  std::unique_ptr<LikePattern> compiled_;
};

class BetweenExpression : public Operation {
 public:
  explicit BetweenExpression(bool negate) : negated(negate) { type = Type::Boolean; }
  Value value(EvalContext& c) override { return fromTruth(test(c)); }
  Truth test(EvalContext& c) override;
  const bool negated;
};

class InListExpression : public Operation {
 public:
  explicit InListExpression(bool negate) : negated(negate) { type = Type::Boolean; }
  Value value(EvalContext& c) override { return fromTruth(test(c)); }
  Truth test(EvalContext& c) override;
  const bool negated;
};

class IsNullExpression : public Operation {
 public:
  explicit IsNullExpression(bool negate) : negated(negate) { type = Type::Boolean; }
  Value value(EvalContext& c) override { return *test(c); }
  Truth test(EvalContext& c) override;
  const bool negated;
};

class FunctionCall : public Operation {
 public:
  explicit FunctionCall(const Function& f) : function(&f) {}
  Value value(EvalContext& c) override;
  bool isStable() const override { return function->constant && Operation::isStable(); }
  const Function* function;

 private:
  std::vector<Value> arguments_;
};

// IIf, Choose, Switch evaluate only what they need.
class Choice : public Operation {
 public:
  enum class Kind : uint8_t { IIf, Choose, Switch };
  explicit Choice(Kind k) : kind(k) {}
  Value value(EvalContext& c) override;
  const Kind kind;

 private:
  Expression* choose(EvalContext& c);  // nullptr: nothing applies
};

// Appends the parts of a condition that are joined by And.
void splitConjunction(ExpressionPtr condition, std::vector<ExpressionPtr>& parts);

// Slots of an expression without repetitions.
std::vector<const Slot*> slotsOf(const Expression& e);

// Comparison by an operator of the result of compare().
bool holds(ast::Op op, int order);

// As the language's own run-time errors (division by zero, overflow, ...): in a select list they show as
// Null.
bool isValueError(int number);

}  // namespace jet::sql
