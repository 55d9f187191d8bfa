#include "jet/sql/subquery.h"

#include "jet/format/error.h"

namespace jet::sql {

ScalarSubquery::ScalarSubquery(std::unique_ptr<Rows> rows) : Subquery(std::move(rows)) {
  type = rows_->columns()[0].type;
  size = rows_->columns()[0].size;
}

const Value& ScalarSubquery::view(EvalContext& c, Value&) {
  if (isDone_) return result_;
  result_ = Value();
  rows_->open(c);
  if (rows_->next(c)) {
    result_ = rows_->take(0, c);
    if (rows_->next(c)) throw Error(3354, {}, "DAO.Database");
  }
  isDone_ = !isCorrelated();
  return result_;
}

Truth ExistsSubquery::test(EvalContext& c) {
  if (isDone_) return result_;
  rows_->open(c);
  result_ = rows_->next(c);
  isDone_ = !isCorrelated();
  return result_;
}

InSubquery::InSubquery(ExpressionPtr operand, std::unique_ptr<Rows> rows, bool negated)
    : Subquery(std::move(rows)), negated_(negated) {
  type = Type::Boolean;
  const ResultColumn& column = rows_->columns()[0];
  keyType_ = unifiedType(operand->type, column.type);
  useIntegers_ = operand->type == Type::Long && dynamic_cast<ColumnExpression*>(operand.get()) &&
                 column.type == Type::Long && !column.sourceColumn.empty();
  operands.push_back(std::move(operand));
}

void InSubquery::fill(EvalContext& c) {
  isDone_ = true;
  for (rows_->open(c); rows_->next(c);) {
    const Value& v = rows_->value(0, c);
    if (v.isNull()) {
      sawNull_ = true;
    } else if (useIntegers_) {
      integers_.insert(v.get<int32_t>());
    } else {
      key_.clear();
      appendSortKey(v, keyType_, *c.collation, false, key_);
      keys_.insert(key_);
    }
  }
}

Truth InSubquery::search(const Value& v, EvalContext& c) {
  bool sawNull = false;
  rows_->open(c);
  while (rows_->next(c)) {
    const auto order = compare(v, rows_->value(0, c), c);
    if (!order)
      sawNull = true;
    else if (*order == 0)
      return true;
  }
  return sawNull ? Truth() : Truth(false);
}

Truth InSubquery::test(EvalContext& c) {
  Value scratch;
  Truth found;
  if (isCorrelated()) {
    found = search(operands[0]->value(c), c);
  } else {
    if (!isDone_) fill(c);
    const Value& v = operands[0]->view(c, scratch);
    if (v.isNull()) {
      if (!sawNull_ && keys_.empty() && integers_.empty()) found = false;
    } else {
      bool isIn;
      if (useIntegers_) {
        isIn = integers_.count(v.get<int32_t>()) > 0;
      } else {
        key_.clear();
        appendSortKey(v, keyType_, *c.collation, false, key_);
        isIn = keys_.count(key_) > 0;
      }
      if (isIn || !sawNull_) found = isIn;
    }
  }
  return found && negated_ ? Truth(!*found) : found;
}

QuantifiedSubquery::QuantifiedSubquery(ExpressionPtr operand, std::unique_ptr<Rows> rows, ast::Op op,
                                       bool all)
    : Subquery(std::move(rows)), op_(op), all_(all) {
  type = Type::Boolean;
  operands.push_back(std::move(operand));
}

Truth QuantifiedSubquery::test(EvalContext& c) {
  if (!isDone_) {
    values_.clear();
    for (rows_->open(c); rows_->next(c);) values_.push_back(rows_->take(0, c));
    isDone_ = !isCorrelated();
  }
  const Value x = operands[0]->value(c);
  bool sawNull = false;
  for (const Value& v : values_) {
    const auto order = compare(x, v, c);
    if (!order)
      sawNull = true;
    else if (holds(op_, *order) != all_)
      return !all_;
  }
  return sawNull ? Truth() : Truth(all_);
}

}  // namespace jet::sql
