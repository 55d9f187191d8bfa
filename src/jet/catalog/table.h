#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "jet/catalog/catalog.h"
#include "jet/storage/btree.h"
#include "jet/storage/heap.h"
#include "jet/storage/long_value.h"

namespace jet {

// Evaluates default values and validation rules; the SQL layer gives the real one to the tables it opens.
class RuleEvaluator {
 public:
  virtual ~RuleEvaluator() = default;
  // The column's DefaultValue, converted to the column's type.
  virtual Value defaultValue(const ColumnDef& column) = 0;
  // False when the rule is broken; a Null result does not break it. `values` by ordinal; a column's rule has
  // its name left out on the left, a table's rule comes with ordinal -1.
  virtual bool satisfies(const std::u16string& rule, const TableDef& table, int ordinal,
                         std::span<const Value> values) = 0;
};

// An open table: rows with their indexes, long values and rules kept together. Every change is one
// pager level: it happens completely or throws and leaves nothing behind.
class Table {
 public:
  Table(Catalog& catalog, TableDefPtr def, RuleEvaluator* rules = nullptr);

  const TableDef& def() const { return *def_; }
  Catalog& catalog() const { return catalog_; }

  // All values by ordinal, long values followed. nullopt when the row is gone.
  std::optional<std::vector<Value>> read(RowId row) const;
  // One column of a row that a scan or fetch has pinned; follows long values.
  Value column(const RowReader& row, int ordinal) const;
  // The pinned row's bytes; nullopt when gone.
  std::optional<Heap::Row> fetch(RowId row) const { return heap_.fetch(row); }
  Heap::Scan scan() const { return Heap::Scan(heap_); }
  RowReader reader(Bytes row, PageNumber where) const { return RowReader(def_->rowLayout, row, where); }

  // A new row. A column left without a value (nullopt) takes its AutoNumber, its default or Null; values are of
  // the columns' types (sql/convert.h converts). Checks in order: Required (3314), zero length (3315), size (3163),
  // rules (3316, 3317), Null in a key (3058), unique (3022), related record (3201).
  RowId insert(std::vector<std::optional<Value>> values);
  // Changes the named columns. Adds 3200 and cascades to the above. Throws 3167 when the row is gone.
  struct Change {
    int ordinal;
    Value value;
  };
  void update(RowId row, std::span<const Change> changes);
  void remove(RowId row);

  // The AutoNumber given to the last inserted row.
  int32_t lastAutoNumber() const { return lastAutoNumber_; }

  // Index access. The range is in encoded keys: all entries with low <= key prefix <= high.
  struct KeyRange {
    std::string low, high;       // empty: open end
    bool lowExclusive = false, highExclusive = false;  // excludes every key that begins with the bound
  };
  class IndexScan {
   public:
    IndexScan(const Table& table, int realIndex, KeyRange range, bool backwards = false);
    bool next();
    RowId row() const { return cursor_.row(); }
    Bytes key() const { return cursor_.key(); }

   private:
    BTree tree_;
    BTree::Cursor cursor_;
    KeyRange range_;
    bool backwards_, started_ = false;
  };
  // Key of the leading columns of a real index; values.size() may be less than the index has columns.
  std::string indexKey(int realIndex, std::span<const Value> values) const;

 private:
  Catalog& catalog_;
  TableDefPtr def_;
  RuleEvaluator* rules_;
  Heap heap_;
  int32_t lastAutoNumber_ = 0;
};

// Verifies the whole file; `fault` receives one line a deviation. Never throws for damage.
void checkDatabase(Catalog& catalog, const std::function<void(const std::u16string&)>& fault);

}  // namespace jet
