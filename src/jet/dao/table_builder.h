#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "jet/catalog/table_def.h"
#include "jet/storage/heap.h"
#include "jet/storage/key_sorter.h"
#include "jet/storage/long_value.h"

namespace jet {

// Fills a new table the fast way: rows go straight to the heap, index entries are sorted and the trees built
// bottom-up in the end. Nothing else uses the table meanwhile; its definition is not yet written.
class TableBuilder {
 public:
  // `def` has its page and receives what is missing: maps (makeStorage), counts, numbers of unique entries.
  // `scratch`: the sorters' files begin with this path.
  TableBuilder(Pager& pager, TableDef& def, const std::filesystem::path& scratch);

  // Allocates usage maps and index roots for a definition that has none.
  static void makeStorage(Pager& pager, TableDef& def);

  // Ordinals of the columns that some index has.
  const std::vector<int>& indexedColumns() const { return indexedColumns_; }
  LongValueStore& longValues(int ordinal) { return *longValues_[static_cast<size_t>(ordinal)]; }

  // `keyValues` by ordinal; only those of the indexed columns count. Throws 3058 for Null in an index that
  // requires values, before anything is stored.
  void add(Bytes row, std::span<const Value> keyValues);
  // A row by values. Throws what encodeRow does.
  void addValues(std::span<const Value> values);
  // Builds the row by `encode`, which throws 3047 when it is too long: then the values that stand in it move
  // out, the longest first.
  void encodeShrinking(std::vector<LongValueField>& fields, const std::function<void()>& encode);

  // Builds the indexes. A row whose key is in a unique index already is taken out again and counted when
  // `dropDuplicates`, else Error 3022. `tick` is called now and then.
  void finish(bool dropDuplicates, const std::function<void()>& tick);
  uint32_t duplicates() const { return duplicates_; }

 private:
  void findDuplicates(const std::function<void()>& tick);
  void removeRow(RowId row);
  void buildIndex(size_t real, const std::function<void()>& tick);

  Pager& pager_;
  TableDef& def_;
  Heap heap_;
  std::vector<std::unique_ptr<LongValueStore>> longValues_;  // by ordinal
  std::vector<int> indexedColumns_;
  std::vector<std::vector<KeyColumn>> keyColumns_;  // by real index
  std::vector<std::unique_ptr<KeySorter>> sorters_;
  std::vector<RowId> doomed_;  // sorted
  uint32_t duplicates_ = 0;
  std::string key_, row_;
};

}  // namespace jet
