#pragma once

#include <memory>
#include <optional>

#include "jet/catalog/table.h"
#include "jet/sql/rows.h"

namespace jet::sql {

// One source of a query - a table, a derived table, the groups of a GROUP BY - at its current row.
// Expressions hold their Slot and ask it for columns, which it decodes once a row, when asked.
class Slot {
 public:
  // A base table.
  Slot(std::u16string name, std::unique_ptr<Table> table);
  // Rows of a query.
  Slot(std::u16string name, std::unique_ptr<Rows> rows);
  // Rows of values that others set: groups, the values of a rule or criterion.
  Slot(std::u16string name, std::vector<ResultColumn> columns);

  const std::u16string& name() const { return name_; }
  const std::vector<ResultColumn>& columns() const { return columns_; }
  Table* table() const { return table_.get(); }
  Rows* rows() const { return rows_.get(); }
  // Rows of the table as its counter says now; the definition's count may be older.
  double tableRows() const { return tableRows_; }
  // Different keys of one of its indexes, as far as known; 0 when not.
  double keyCount(const RealIndex& index) const;
  // Adds a column to a slot of set values; returns its position.
  int addColumn(ResultColumn column);
  // -1 when there is none.
  int find(std::u16string_view column) const;
  // A column of a joined query: named "table.column", or read from that table.
  int find(std::u16string_view table, std::u16string_view column) const;
  // Order of `*`.
  std::vector<int> displayOrder() const;

  // How often expressions refer to each column; counted while names are resolved.
  void use(int column) { ++uses_[static_cast<size_t>(column)]; }
  int uses(int column) const { return uses_[static_cast<size_t>(column)]; }

  // Positions. The bytes or values stay valid until the next position is set.
  void setRow(RowId id, Bytes bytes, PageNumber where);
  void setRow(RowId id, Heap::Row row);  // keeps the page pinned
  // values[place[column]], or values[column] without places.
  void setValues(const Value* values, const int* place = nullptr, RowId id = {});
  void setNull();      // the missing side of an outer join
  void setQueryRow();  // rows() stands on a row
  void release();      // on no row; unpins the page
  RowId rowId() const { return id_; }
  bool isNullRow() const { return state_ == State::NullRow; }

  const Value& column(int i, EvalContext& c);
  // Like column(), but may give the value away when it is used in one place only.
  Value take(int i, EvalContext& c);
  bool isNull(int i, EvalContext& c);
  void pack(int i, RowStore& store, EvalContext& c);

 private:
  enum class State : uint8_t { None, TableRow, Values, NullRow, QueryRow };
  void move(State state);
  bool isCached(int i) const { return stamps_[static_cast<size_t>(i)] == epoch_; }

  std::u16string name_;
  std::vector<ResultColumn> columns_;
  std::unique_ptr<Table> table_;
  std::unique_ptr<Rows> rows_;
  std::vector<int> uses_;
  double tableRows_ = 0;

  State state_ = State::None;
  RowId id_;
  std::optional<RowReader> reader_;
  Heap::Row pinned_;
  const Value* values_ = nullptr;
  const int* place_ = nullptr;
  std::vector<Value> cache_;      // decoded columns of a table row
  std::vector<uint32_t> stamps_;  // cache_[i] belongs to the row of epoch stamps_[i]
  uint32_t epoch_ = 1;
};

}  // namespace jet::sql
