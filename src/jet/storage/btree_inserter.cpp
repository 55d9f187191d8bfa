#include "jet/storage/btree_inserter.h"

#include "jet/format/bytes.h"

namespace jet {

// The leaf of the last entry takes what lies between its entries, the last leaf also what lies behind them.
bool BTreeInserter::insert(Bytes key, RowId row) {
  const IndexTarget target{key, row.stored()};
  tree_.requireShort(key);
  if (leaf_ != 0) {
    const PageView view = tree_.pager_.read(leaf_);
    const IndexPage leaf = tree_.view(view);
    if (const auto at = placeIn(leaf, target)) {
      if (at->isThere) return false;
      BTree::makeEntry(target, entry_);
      PageEdit page = tree_.pager_.write(leaf_);
      if (index_page::insert(page.bytes(), tree_.pager_.layout(), leaf, at->start, asBytes(entry_)))
        return at->newKey;
    }
  }
  return tree_.insert(target, entry_, leaf_);
}

std::optional<BTree::Place> BTreeInserter::placeIn(const IndexPage& leaf, const IndexTarget& target) {
  if (!leaf.isLeaf() || leaf.empty()) return std::nullopt;
  const EntryView last = leaf.lastEntry();
  if (last.compare(target) < 0) {
    if (leaf.next() != 0) return std::nullopt;
    return BTree::Place{leaf.used(), false, !last.hasKey(target.key)};
  }
  if (leaf.entry(0).compare(target) >= 0) return std::nullopt;
  return BTree::place(leaf, target);
}

bool BTreeInserter::containsKey(Bytes key) const {
  if (leaf_ != 0) {
    const PageView page = tree_.pager_.read(leaf_);
    const IndexPage leaf = tree_.view(page);
    if (leaf.isLeaf() && !leaf.empty() && leaf.next() == 0 && leaf.lastEntry().compare({key}) < 0)
      return false;
  }
  return tree_.containsKey(key);
}

}  // namespace jet
