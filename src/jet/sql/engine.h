#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "jet/catalog/table.h"
#include "jet/sql/operators.h"

// The face of the SQL layer towards dao.
namespace jet::sql {

struct ResultColumn {
  std::u16string name;                       // as Jet names it: alias, column, table.column, Expr1000...
  Type type = Type::Text;                    // Null when unknown (a constant Null)
  int size = 0;                              // characters of a Text column, 0 when not from a column
  std::u16string sourceTable, sourceColumn;  // empty for expressions
  bool required = false, allowZeroLength = true, autoNumber = false;
};

// A query's rows, complete and independent of later changes of the tables. Rows stay packed and are
// decoded on access.
class ResultSet {
 public:
  virtual ~ResultSet() = default;
  virtual const std::vector<ResultColumn>& columns() const = 0;
  virtual size_t rowCount() const = 0;
  virtual Value value(size_t row, size_t column) const = 0;
};

// Rows one at a time, while the tables are read.
class RowSink {
 public:
  virtual ~RowSink() = default;
  virtual void begin(const std::vector<ResultColumn>& columns) = 0;
  // False stops the query.
  virtual bool row(std::span<const Value> values) = 0;
};

// The parts of a query that a dynaset on one table needs: the row ids in result order and which output
// column shows which table column.
struct DynasetPlan {
  TableDefPtr table;
  std::vector<ResultColumn> columns;
  std::vector<int> ordinals;  // table column of each output column, -1 for expressions
  std::vector<RowId> rows;
  struct Outputs;
  std::shared_ptr<Outputs> outputs;  // what evaluates the expressions; nullptr without any
};

using Parameters = std::map<std::u16string, Value>;  // names folded by foldName

class Engine {
 public:
  explicit Engine(Catalog& catalog);
  ~Engine();

  // Any SELECT, UNION, TABLE or TRANSFORM, a saved query's or a table's name. Throws 3065-style errors for
  // others.
  std::unique_ptr<ResultSet> query(std::u16string_view sql, const Parameters& parameters = {});
  void query(std::u16string_view sql, RowSink& sink, const Parameters& parameters = {});
  // nullopt when the query is not updatable row by row (joins, groups, unions, DISTINCT, no table).
  std::optional<DynasetPlan> dynaset(std::u16string_view sql, const Parameters& parameters = {});
  // The values of a dynaset's output columns for one row as it is now; nullopt when deleted. `identity` becomes
  // the record's (Table::identity); when it was known (not 0), another record in the row counts as deleted.
  std::optional<std::vector<Value>> dynasetRow(const DynasetPlan& plan, RowId row, uint64_t& identity);

  // INSERT, UPDATE, DELETE, SELECT INTO and data definition; returns the number of records affected. One
  // statement is one savepoint: on an error nothing of it remains.
  int64_t execute(std::u16string_view sql, const Parameters& parameters = {});
  bool isQuery(std::u16string_view sql);  // returns rows
  int32_t lastAutoNumber() const;

  // A compiled criterion over named columns, for FindFirst and Filter: called with the values of `columns`.
  using Criterion = std::function<bool(std::span<const Value>)>;
  Criterion criterion(std::u16string_view condition, const std::vector<ResultColumn>& columns);

  // How a query would be run, a line a step: "index seek ewkar.PrimaryKey (indewi =)". For tests and tuning.
  std::u16string explain(std::u16string_view sql, const Parameters& parameters = {});

  RuleEvaluator& rules();
  EvalContext context() const;  // as a statement that starts now would have it

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// Splits a script at ';' outside of quotes, brackets and date literals. `complete` tells whether the last
// piece ended with ';'.
struct Script {
  std::vector<std::u16string> statements;
  std::u16string rest;  // begun, not complete
};
Script splitScript(std::u16string_view text);

}  // namespace jet::sql
