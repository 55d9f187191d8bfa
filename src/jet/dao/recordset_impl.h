#pragma once

#include "jet/catalog/table.h"
#include "jet/dao/database_impl.h"

namespace jet {

// A recordset's rows and its place among them. Snapshots hold a packed result; dynasets hold row ids and
// read a record's values when it becomes current.
struct Recordset::Impl {
  Impl(Database::Impl& database, std::u16string source, std::optional<RecordsetType> type);

  // Runs the source; the first record becomes current.
  void open();
  bool isDynaset() const { return plan.has_value(); }
  size_t rowCount() const { return isDynaset() ? plan->rows.size() : result->rowCount(); }
  bool hasCurrent() const { return position >= 0 && position < static_cast<int64_t>(rowCount()); }
  const std::vector<sql::ResultColumn>& columns() const { return isDynaset() ? plan->columns : result->columns(); }

  // Values of a row by output column; nullopt when a dynaset's record was deleted.
  std::optional<std::vector<Value>> readRow(size_t row) const;
  // One value of the current record or of the edit buffer. Throws 3021, 3167.
  Value fieldValue(size_t column) const;
  void setFieldValue(size_t column, const Value& value);

  void moveTo(int64_t newPosition);
  // Looks for the criterion from `start` in steps of `step`.
  void find(std::u16string_view criterion, int64_t start, int step);

  // The dynaset's table as it is now defined; stays open from call to call, so that many AddNews find their
  // page and index trees at once.
  Table& openTable();
  // The current record as it is now; 3167 when it is gone or another has come to its place.
  Heap::Row fetchCurrent(const Table& table) const;
  RowId currentRow() const;  // 3021, 3326 for a snapshot
  void beginEdit();
  void beginAdd();
  void storeEdit();
  void storeNew();
  void discardEdit();
  void remove();
  std::string bookmarkOf(int64_t row) const;

  Database::Impl& database;
  std::u16string source;
  std::optional<RecordsetType> requested;
  RecordsetType type = RecordsetType::Snapshot;
  std::unique_ptr<sql::ResultSet> result;
  std::optional<sql::DynasetPlan> plan;
  std::vector<Field> fields;

  int64_t position = -1;  // rowCount() is EOF
  bool noMatch = false;
  EditMode editMode = EditMode::None;
  std::vector<std::optional<Value>> buffer;    // by table ordinal: what was set, or a default
  std::optional<std::vector<Value>> original;  // by table ordinal: the record as Edit saw it
  std::string lastModified;

 private:
  uint64_t& identityOf(size_t row) const;
  // 3197 when another value stands in a field of the current record than when it was last read; the next try
  // succeeds.
  void refuseWhenChangedSinceRead();

  std::unique_ptr<Table> table_;
  mutable std::vector<uint64_t> identities_;   // by row: Table::identity as first seen; 0 not seen yet
  mutable std::vector<Value> cached_;  // values of cachedRow_ as of cachedChange_
  mutable RowId cachedRow_;
  mutable uint64_t cachedChange_ = 0;
  mutable int cachedLevel_ = -1;
};

}  // namespace jet
