#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <unordered_set>

#include "jet/catalog/catalog.h"
#include "jet/catalog/references.h"
#include "jet/catalog/row_store.h"
#include "jet/storage/btree.h"

namespace jet {

// Keys that are known to be there, by relationship. Nothing may delete rows while this is kept.
using KnownKeys = std::vector<std::unordered_set<std::string>>;

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

// An open table: rows with their indexes, long values, rules and relationships kept together. Every change
// is one pager level: it happens completely or throws and leaves nothing behind. Good for as long as the
// definition is: after a change of structure a Table is made anew.
class Table {
 public:
  Table(Catalog& catalog, TableDefPtr def, RuleEvaluator* rules = nullptr);
  ~Table();
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;

  const TableDef& def() const { return *def_; }
  Catalog& catalog() const { return catalog_; }

  // All values by ordinal, long values followed. nullopt when the row is gone.
  std::optional<std::vector<Value>> read(RowId row) const;
  // One column of a row that a scan or fetch has pinned; follows long values.
  Value column(const RowReader& row, int ordinal) const { return rows_.value(row, ordinal); }
  // The pinned row's bytes; nullopt when gone.
  std::optional<Heap::Row> fetch(RowId row) const { return rows_.heap().fetch(row); }
  // Tells a record from another that has come to its place: made of its primary key, never 0; 1 without one.
  uint64_t identity(const RowReader& row) const;
  Heap::Scan scan() const { return rows_.scan(); }
  RowReader reader(Bytes row, PageNumber where) const { return rows_.reader(row, where); }

  // A new row. A column left without a value (nullopt) takes its AutoNumber, its default or Null; values are
  // of the columns' types (sql/convert.h converts). Checks in order: Required (3314), zero length (3315),
  // size (3163), rules (3316, 3317), Null in a key (3058), unique (3022), related record (3201).
  RowId insert(std::vector<std::optional<Value>> values);
  // Many rows one after another, as insert() makes them, inside one level of the caller's: when a row throws
  // that level must be rolled back. Until finish() indexes that are not unique may lack the new rows.
  class Insertion {
   public:
    // `memory`: bytes that may wait for finish().
    explicit Insertion(Table& table, size_t memory = size_t{32} << 20)
        : table_(table), batch_(table.rows_, memory) {}
    RowId insert(std::vector<std::optional<Value>> values);
    void finish() { batch_.finish(); }

   private:
    Table& table_;
    RowStore::Batch batch_;
    KnownKeys known_;
  };
  // Changes the named columns: the checks of insert for them, and 3200 or a cascade for rows that refer to
  // this one. Inside a cascade the numbers are 3396-3411. Throws 3167 when the row is gone.
  using Change = RowStore::Change;
  void update(RowId row, std::span<const Change> changes);
  // 3200 or a cascade as for update.
  void remove(RowId row);

  // The AutoNumber given to the last inserted row.
  int32_t lastAutoNumber() const { return lastAutoNumber_; }

  // Index access. The range is in encoded keys: all entries with low <= key prefix <= high.
  struct KeyRange {
    std::string low, high;                             // empty: open end
    bool lowExclusive = false, highExclusive = false;  // excludes every key that begins with the bound
  };
  class IndexScan {
   public:
    IndexScan(const Table& table, int realIndex, KeyRange range, bool backwards = false);
    IndexScan(const IndexScan&) = delete;
    IndexScan& operator=(const IndexScan&) = delete;
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
  friend class Cascade;

  // Calls store(values, autoNumber) for a row that is complete and checked.
  template <typename Store>
  RowId insertChecked(std::vector<std::optional<Value>> given, KnownKeys* known, const Store& store);
  void fill(std::vector<std::optional<Value>>& given, std::vector<Value>& values,
            std::optional<int32_t>& autoNumber);
  // `changed` empty: every column.
  void checkValues(std::span<const Value> values, const std::vector<bool>& changed) const;
  void checkRule(const std::u16string& rule, const std::u16string& text, const std::u16string& name,
                 int ordinal, std::span<const Value> values) const;
  bool hasRules() const;

  Catalog& catalog_;
  TableDefPtr def_;
  RuleEvaluator* rules_;
  RowStore rows_;
  std::unique_ptr<References> references_;  // made when first needed
  std::map<PageNumber, std::unique_ptr<Table>> related_;
  int32_t lastAutoNumber_ = 0;
};

// Verifies the whole file: pages and who owns them, definitions, rows, long values, every index entry against
// its row, uniqueness, relationships, the catalogue. `fault` receives one line a deviation. Pages that are
// neither used nor free harm nothing but the file's size; `leaks` reports them too. Never throws for damage.
void checkDatabase(Catalog& catalog, const std::function<void(const std::u16string&)>& fault,
                   bool leaks = true);

}  // namespace jet
