#include <limits>

#include "jet/catalog/row_store.h"

namespace jet {

RowStore::Batch::Batch(RowStore& rows, size_t memory) : rows_(rows), memory_(memory) {
  const TableDef& def = *rows.def_;
  for (const RealIndex& index : def.realIndexes) {
    auto waiting = index.unique
                       ? nullptr
                       : std::make_unique<KeySorter>(rows.pager_.environment(), std::filesystem::path(),
                                                     std::numeric_limits<size_t>::max());
    indexes_.push_back(
        {BTreeInserter(BTree(rows.pager_, def.page, index.root, index.map)), std::move(waiting)});
  }
}

RowId RowStore::Batch::insert(std::span<const Value> values, std::optional<int32_t> lastAutoNumber) {
  return rows_.insert(values, lastAutoNumber, this);
}

// The bit of an index that got a new key, as for addToCounts.
uint64_t RowStore::Batch::add(size_t index, const std::string& key, RowId row) {
  Index& to = indexes_[index];
  if (!to.waiting) {
    const bool isNew = to.tree.insert(asBytes(key), row);
    return isNew && index < kCountedIndexes ? uint64_t{1} << index : 0;
  }
  to.waiting->add(asBytes(key), row, false);
  if (to.waiting->used() > memory_ / indexes_.size()) addWaiting(index);
  return 0;
}

void RowStore::Batch::addWaiting(size_t index) {
  Index& to = indexes_[index];
  KeySorter::Entry entry;
  uint32_t newKeys = 0;
  to.waiting->startReading();
  while (to.waiting->next(entry))
    if (to.tree.insert(asBytes(entry.key), entry.row)) ++newKeys;
  to.waiting->clear();
  addToUniqueEntries(rows_.pager_, rows_.def_->page, index, newKeys);
}

void RowStore::Batch::finish() {
  for (size_t i = 0; i < indexes_.size(); ++i)
    if (indexes_[i].waiting) addWaiting(i);
}

}  // namespace jet
