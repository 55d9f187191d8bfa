#pragma once

#include "jet/sql/rows.h"

namespace jet::sql {

// TRANSFORM ... PIVOT: a row for each row heading, a column for each value of the pivot expression. Runs when
// it is made, since its columns depend on the rows.
class CrosstabRows : public Rows {
 public:
  // `headings`: the select list and behind it `keys` grouping columns; `cells`: the grouping columns, the
  // pivot value, the cell's value. `wanted`: the pivot values to show; empty: all, sorted.
  CrosstabRows(std::unique_ptr<Rows> headings, std::unique_ptr<Rows> cells, size_t keys,
               const std::vector<Value>& wanted, EvalContext& c);
  void open(EvalContext&) override { at_ = 0; }
  bool next(EvalContext&) override;
  const Value& value(size_t column, EvalContext&) override { return rows_[at_ - 1][column]; }
  void explain(PlanText& text, int depth) const override;

 private:
  std::unique_ptr<Rows> headings_, cells_;
  std::vector<std::vector<Value>> rows_;
  size_t at_ = 0;
};

}  // namespace jet::sql
