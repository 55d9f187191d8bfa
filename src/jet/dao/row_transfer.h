#pragma once

#include <vector>

#include "jet/dao/row_marks.h"
#include "jet/dao/table_builder.h"

namespace jet {

// Carries rows of one table to a table with the same columns (by name) in a new Jet 4 file. Columns stay in
// their stored form; only Jet 3 texts are rewritten.
class RowTransfer {
 public:
  // `marks`: the slots of long values that were taken; each belongs to one row only. `tolerant`: a long value
  // that cannot be read becomes Null and is counted, else Error 3049.
  RowTransfer(Pager& from, const TableDef& source, TableBuilder& builder, const TableDef& target,
              RowMarks& marks, bool tolerant);

  // Throws 3049 when the row cannot be read; then nothing of it is in the new table.
  void copy(Bytes row, PageNumber where);
  uint64_t lostValues() const { return lostValues_; }
  // Bytes that were read: the rows' and the long values'.
  uint64_t bytes() const { return bytes_; }
  // The largest value of the AutoNumber column.
  int32_t largestAutoNumber() const { return largestAutoNumber_; }

 private:
  void readColumn(const RowReader& row, size_t ordinal);
  void readLongValue(const RowReader& row, size_t ordinal, int from);
  bool isSound(const LongValueStore& store, const LongValueRef& ref) const;
  void removeLongValues();
  LongValueField transferLongValue(const LongValueRef& ref, size_t ordinal, int from);
  std::string readMarked(const LongValueStore& store, const LongValueRef& ref);
  void convertText(Bytes stored, size_t ordinal);

  const TableDef& source_;
  const TableDef& target_;
  TableBuilder& builder_;
  RowMarks& marks_;
  bool tolerant_, jet3_;
  std::vector<int> sourceOrdinals_;     // by target ordinal
  std::vector<LongValueStore> stores_;  // of the source, by target ordinal
  int autoNumber_ = -1;
  // One row, by target ordinal.
  std::vector<StoredColumn> columns_;
  std::vector<std::string> texts_;  // rewritten
  std::vector<LongValueField> fields_;
  std::vector<Value> keyValues_;
  std::string row_;
  uint64_t lostValues_ = 0, bytes_ = 0;
  int32_t largestAutoNumber_ = 0;
};

}  // namespace jet
