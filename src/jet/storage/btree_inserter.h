#pragma once

#include <optional>
#include <string>

#include "jet/storage/btree.h"

namespace jet {

// Adds many entries to a tree that nobody else changes meanwhile. As long as an entry belongs to the leaf of
// the one before it the tree is not descended, which makes entries in ascending order cheap.
class BTreeInserter {
 public:
  explicit BTreeInserter(const BTree& tree) : tree_(tree) {}
  // As those of BTree.
  bool insert(Bytes key, RowId row);
  bool containsKey(Bytes key) const;

 private:
  static std::optional<BTree::Place> placeIn(const IndexPage& leaf, const IndexTarget& target);

  BTree tree_;
  PageNumber leaf_ = 0;  // of the last entry; 0 when it is not known
  std::string entry_;
};

}  // namespace jet
