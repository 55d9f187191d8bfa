#pragma once

#include <map>

#include "jet/sql/expression.h"

namespace jet::sql {

// Default values and validation rules of tables, as expressions of the SQL layer.
class Rules : public RuleEvaluator {
 public:
  explicit Rules(Catalog& catalog) : catalog_(catalog) {}

  Value defaultValue(const ColumnDef& column) override;
  bool satisfies(const std::u16string& rule, const TableDef& table, int ordinal,
                 std::span<const Value> values) override;

  // The running statement's; rules outside of a statement get one of their own.
  EvalContext* statement = nullptr;

 private:
  struct Compiled {
    std::vector<std::u16string> columns;  // of the table it was compiled for
    std::unique_ptr<Slot> slot;
    std::vector<std::unique_ptr<Slot>> others;  // of subqueries
    ExpressionPtr condition;
  };
  Compiled& compiled(const std::u16string& rule, const TableDef& table, int ordinal, EvalContext& c);
  EvalContext context() const;

  Catalog& catalog_;
  std::map<std::pair<std::u16string, int>, Compiled> compiled_;  // by rule and column
};

// What a statement that starts now depends on.
EvalContext currentContext(Catalog& catalog);

}  // namespace jet::sql
