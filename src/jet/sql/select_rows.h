#pragma once

#include <unordered_set>

#include "jet/sql/plan.h"

// Queries that can be run: the output columns of a plan, and the steps that need all rows at once.
namespace jet::sql {

// The output columns of a plan, row by row.
class SelectRows : public Rows {
 public:
  SelectRows(PlanNodePtr plan, std::vector<ExpressionPtr> outputs, std::vector<ResultColumn> columns);
  void open(EvalContext& c) override;
  bool next(EvalContext& c) override;
  const Value& value(size_t column, EvalContext& c) override;
  Value take(size_t column, EvalContext& c) override;
  void pack(size_t column, RowStore& store, EvalContext& c) override;
  void explain(PlanText& text, int depth) const override;

  // Evaluated beside the outputs: what ORDER BY names and the select list does not.
  std::vector<ExpressionPtr> sortExpressions;
  const Value& sortValue(size_t i, EvalContext& c, Value& scratch);

  // A division by zero and the like in an output is an error; otherwise it shows as Null.
  bool isStrict = false;
  std::optional<int64_t> limit;             // TOP without ORDER BY
  std::vector<const Slot*> distinctTables;  // DISTINCTROW: rows of these tables once each
  // The slots were put on another row from outside.
  void moved();

 private:
  bool seenBefore();

  PlanNodePtr plan_;
  std::vector<ExpressionPtr> outputs_;
  std::vector<Value> cache_;
  std::vector<uint32_t> stamps_;
  uint32_t epoch_ = 1;
  int64_t count_ = 0;
  std::unordered_set<std::string> seen_;
};

// DISTINCT, UNION, ORDER BY and TOP: builds the whole result, packed.
class CollectedRows : public Rows {
 public:
  struct SortItem {
    int column = -1;      // output column, or
    int expression = -1;  // sort expression of the only part
    Type type = Type::Null;
    bool descending = false;
  };
  explicit CollectedRows(std::vector<ResultColumn> columns) { columns_ = std::move(columns); }

  void addPart(std::unique_ptr<Rows> part) { parts_.push_back(std::move(part)); }
  SelectRows* onlySelect = nullptr;  // the only part, when it is a SELECT
  size_t distinctParts = 0;          // duplicates are removed among the rows of so many first parts
  std::vector<SortItem> sort;
  std::optional<ast::Top> top;

  void open(EvalContext& c) override;
  bool next(EvalContext&) override;
  const Value& value(size_t column, EvalContext& c) override;
  std::shared_ptr<const RowStore> store() const override { return store_; }
  std::span<const uint32_t> order() const override { return order_; }
  void explain(PlanText& text, int depth) const override;

  // Runs the only SELECT and tells the rows of `table` in result order instead of building the result.
  std::vector<RowId> rowIds(const Slot& table, EvalContext& c);

 private:
  class Sorter;
  class Duplicates;
  void appendSortKeys(Rows& rows, std::string& key, EvalContext& c);
  void collect(size_t part, Duplicates& duplicates, Sorter& sorter, EvalContext& c);

  std::vector<std::unique_ptr<Rows>> parts_;
  std::shared_ptr<RowStore> store_;
  std::vector<uint32_t> order_;
  size_t at_ = 0;
  std::vector<Value> cache_;
  std::vector<size_t> stamps_;
};

// All rows of a query, packed; `order` of the rows to show.
struct Collected {
  std::shared_ptr<const RowStore> store;
  std::vector<uint32_t> order;
};
Collected collectRows(Rows& rows, EvalContext& c);

}  // namespace jet::sql
