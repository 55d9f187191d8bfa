#pragma once

#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "jet/catalog/table_def.h"
#include "jet/storage/btree_inserter.h"
#include "jet/storage/heap.h"
#include "jet/storage/key_sorter.h"

namespace jet {

// Adds to the row count of a definition page; sets its last AutoNumber when one is given. `newKeys`: real
// indexes (bit by position) that got a key they did not have before.
void addToCounts(Pager& pager, PageNumber definition, int64_t rowDelta,
                 std::optional<int32_t> lastAutoNumber = {}, uint64_t newKeys = 0);
constexpr size_t kCountedIndexes = 64;
// Adds to the number of different keys of one real index, of the first kCountedIndexes.
void addToUniqueEntries(Pager& pager, PageNumber definition, size_t index, uint32_t count);

// Whether the keys of an index can be made, and be compared with keys that this engine makes: the sort orders of
// its texts are known byte for byte. Where they are not, rows are found without the index and cannot be changed.
bool isOrderKnown(const TableDef& def, const RealIndex& index);

// The rows of one table with their long values, index entries and row count kept together. Knows no defaults,
// rules or relationships. A change that throws may leave a part of itself behind: the caller's transaction
// level takes it back.
class RowStore {
 public:
  RowStore(Pager& pager, TableDefPtr def);

  struct Change {
    int ordinal;
    Value value;
  };

  // `values` by ordinal, of the columns' types. Throws 3058 (Null in a required index), 3022 (unique), 3047
  // (row too long), 3163 (text too long), 3027 (an index of a sort order that cannot be written).
  RowId insert(std::span<const Value> values, std::optional<int32_t> lastAutoNumber = {});
  // Many rows, inserted inside one level of the caller's, which is rolled back when anything throws. Entries
  // of indexes that are not unique wait and go in sorted; until finish() these indexes lack them.
  class Batch {
   public:
    Batch(RowStore& rows, size_t memory);
    RowId insert(std::span<const Value> values, std::optional<int32_t> lastAutoNumber = {});
    void finish();

   private:
    friend class RowStore;
    struct Index {
      BTreeInserter tree;
      std::unique_ptr<KeySorter> waiting;  // none when the index is unique
    };
    bool containsKey(size_t index, const std::string& key) const {
      return indexes_[index].tree.containsKey(asBytes(key));
    }
    uint64_t add(size_t index, const std::string& key, RowId row);
    void addWaiting(size_t index);

    RowStore& rows_;
    size_t memory_;  // of the entries that wait, in bytes
    std::vector<Index> indexes_;
  };
  // Columns not named keep what they hold. Throws 3167 when the row is gone, and what insert throws.
  void update(RowId row, std::span<const Change> changes);
  // Throws 3167 when the row is gone, 3027 as insert does.
  void remove(RowId row);

  // One column of a row, long values followed.
  Value value(const RowReader& row, int ordinal) const;
  RowReader reader(Bytes row, PageNumber where) const { return RowReader(def_->rowLayout, row, where); }
  // The row's key in a real index; nullopt when the index has no entry for it (ignored Nulls).
  std::optional<std::string> key(size_t index, std::span<const Value> values) const;

  const TableDef& def() const { return *def_; }
  const Heap& heap() const { return heap_; }
  Heap::Scan scan() const { return Heap::Scan(heap_); }

 private:
  std::vector<Value> indexedValues(const RowReader& row) const;
  RowId insert(std::span<const Value> values, std::optional<int32_t> lastAutoNumber, Batch* batch);
  bool appendKey(size_t index, std::span<const Value> values, std::string& key) const;
  void requireKnownOrder(size_t index) const;
  bool hasNull(const RealIndex& index, std::span<const Value> values) const;
  void checkKeys(std::span<const Value> values, std::span<const std::optional<std::string>> keys,
                 std::span<const std::optional<std::string>> unchanged, RowId self,
                 const Batch* batch = nullptr) const;
  uint64_t insertKey(size_t index, const std::string& key, RowId row) const;
  void removeKey(size_t index, const std::string& key, RowId row) const;
  std::string encode(std::span<const Value> values, std::vector<std::string>& longValues) const;
  std::string writeLongValue(int ordinal, const Value& value) const;
  void removeLongValue(const RowReader& row, int ordinal) const;

  Pager& pager_;
  TableDefPtr def_;
  Heap heap_;
  // How keys are made, by real index; filled when first needed.
  struct KeyPlan {
    std::vector<KeyColumn> columns;
    bool isKnownOrder = true;
  };
  const KeyPlan& keyPlan(size_t index) const;
  mutable std::vector<KeyPlan> keyPlans_;
  std::vector<std::optional<std::string>> keys_;  // these two: of the row being inserted
  std::vector<std::string> longValues_;
};

}  // namespace jet
