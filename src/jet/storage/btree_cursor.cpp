#include "jet/format/error.h"
#include "jet/storage/btree.h"

namespace jet {

void BTree::Cursor::seek(Bytes key, bool after) {
  const IndexTarget target{key, 0, after};
  PageView leaf = tree_.descend(target, nullptr);
  const uint32_t start = tree_.view(leaf).find(target);
  load(std::move(leaf));
  steps_ = 0;
  index_ = static_cast<int>(std::upper_bound(ends_.begin(), ends_.end(), start) - ends_.begin()) - 1;
}

void BTree::Cursor::load(PageView leaf) {
  leaf_ = std::move(leaf);
  ends_ = tree_.view(leaf_).entryEnds();
}

// To the neighbouring leaf; false when there is none.
bool BTree::Cursor::step(bool forward) {
  const IndexPage here = tree_.view(leaf_);
  const PageNumber number = here.number(), neighbour = forward ? here.next() : here.previous();
  if (neighbour == 0) return false;
  const int64_t direction = forward ? 1 : -1;
  steps_ = steps_ * direction > 0 ? steps_ + direction : direction;
  if (steps_ * direction > tree_.pager_.pageCount()) throwDamaged(u"cycle of index pages", number);
  PageView leaf = tree_.pager_.read(neighbour);
  const IndexPage there = tree_.view(leaf);
  if (!there.isLeaf() || (forward ? there.previous() : there.next()) != number)
    throwDamaged(u"link between index pages", neighbour);
  load(std::move(leaf));
  return true;
}

void BTree::Cursor::take(size_t index) {
  const EntryView entry = tree_.view(leaf_).entry(index == 0 ? 0 : ends_[index - 1], ends_[index]);
  entry.copy(entry.keyLength(), key_);
  row_ = RowId::fromStored(entry.row());
}

bool BTree::Cursor::next() {
  if (!leaf_) seek({});
  while (index_ + 1 == static_cast<int>(ends_.size())) {
    if (!step(true)) return false;
    index_ = -1;
  }
  take(static_cast<size_t>(++index_));
  return true;
}

bool BTree::Cursor::previous() {
  if (!leaf_) seek({});
  while (index_ < 0) {
    if (!step(false)) return false;
    index_ = static_cast<int>(ends_.size()) - 1;
  }
  take(static_cast<size_t>(index_--));
  return true;
}

}  // namespace jet
