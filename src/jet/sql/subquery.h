#pragma once

#include <unordered_set>

#include "jet/sql/expression.h"

// Queries inside of expressions. One that refers to no outer row is run once.
namespace jet::sql {

class Subquery : public Operation {
 public:
  explicit Subquery(std::unique_ptr<Rows> rows) : rows_(std::move(rows)) {}
  void collectSlots(std::vector<const Slot*>& slots) const override {
    Operation::collectSlots(slots);
    slots.insert(slots.end(), rows_->outerSlots.begin(), rows_->outerSlots.end());
  }
  const Rows& rows() const { return *rows_; }

 protected:
  bool isCorrelated() const { return !rows_->outerSlots.empty(); }
  std::unique_ptr<Rows> rows_;
  bool isDone_ = false;  // the only evaluation of an uncorrelated query
};

// (SELECT ...): Null without a row; 3354 with more than one.
class ScalarSubquery : public Subquery {
 public:
  explicit ScalarSubquery(std::unique_ptr<Rows> rows);
  Value value(EvalContext& c) override {
    Value scratch;
    return view(c, scratch);
  }
  const Value& view(EvalContext& c, Value& scratch) override;

 private:
  Value result_;
};

class ExistsSubquery : public Subquery {
 public:
  explicit ExistsSubquery(std::unique_ptr<Rows> rows) : Subquery(std::move(rows)) { type = Type::Boolean; }
  Value value(EvalContext& c) override { return *test(c); }
  Truth test(EvalContext& c) override;

 private:
  bool result_ = false;
};

// operand [Not] In (SELECT ...); a set of keys when the query is uncorrelated.
class InSubquery : public Subquery {
 public:
  InSubquery(ExpressionPtr operand, std::unique_ptr<Rows> rows, bool negated);
  Value value(EvalContext& c) override { return fromTruth(test(c)); }
  Truth test(EvalContext& c) override;

 private:
  Truth search(const Value& v, EvalContext& c);
  void fill(EvalContext& c);

  const bool negated_;
  Type keyType_;
  bool sawNull_ = false;
  std::unordered_set<std::string> keys_;
  std::unordered_set<int32_t> integers_;  // instead, when both sides are Long columns
  bool useIntegers_ = false;
  std::string key_;
};

// operand op ANY|ALL (SELECT ...)
class QuantifiedSubquery : public Subquery {
 public:
  QuantifiedSubquery(ExpressionPtr operand, std::unique_ptr<Rows> rows, ast::Op op, bool all);
  Value value(EvalContext& c) override { return fromTruth(test(c)); }
  Truth test(EvalContext& c) override;

 private:
  const ast::Op op_;
  const bool all_;
  std::vector<Value> values_;
};

}  // namespace jet::sql
