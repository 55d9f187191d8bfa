#pragma once

#include <span>
#include <string>
#include <vector>

#include "jet/sql/engine.h"
#include "jet/sql/row_store.h"

namespace jet::sql {

class Slot;

// What EXPLAIN-like texts are made of: one line a step, indented by depth.
class PlanText {
 public:
  void line(int depth, const std::u16string& text) {
    text_ += std::u16string(2 * depth, u' ') + text + u"\n";
  }
  const std::u16string& text() const { return text_; }

 private:
  std::u16string text_;
};

// A query that can be run, row by row and any number of times.
class Rows {
 public:
  virtual ~Rows() = default;
  const std::vector<ResultColumn>& columns() const { return columns_; }

  // Back before the first row; outer rows that the query refers to are read afresh.
  virtual void open(EvalContext& c) = 0;
  virtual bool next(EvalContext& c) = 0;
  // A column of the current row; the reference holds until next().
  virtual const Value& value(size_t column, EvalContext& c) = 0;
  // Moves the value out; the column is not asked for again until next().
  virtual Value take(size_t column, EvalContext& c) { return value(column, c); }
  virtual void pack(size_t column, RowStore& store, EvalContext& c) { store.add(value(column, c)); }
  // The complete rows after the first open(), when the query has to build them anyway.
  virtual std::shared_ptr<const RowStore> store() const { return nullptr; }
  // Of store(): its row numbers in result order.
  virtual std::span<const uint32_t> order() const { return {}; }
  virtual void explain(PlanText& text, int depth) const = 0;

  // Rows of outer queries that this one looks at.
  std::vector<const Slot*> outerSlots;

 protected:
  std::vector<ResultColumn> columns_;
};

}  // namespace jet::sql
