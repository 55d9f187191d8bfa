#include "jet/format/error.h"
#include "jet/storage/btree.h"

namespace jet {

void BTree::Cursor::seek(Bytes key, bool after) {
  const IndexTarget target{key, 0, after};
  load(tree_.descend(target, nullptr));
  steps_ = 0;
  place_ = page_->find(target);
}

void BTree::Cursor::load(PageView leaf) {
  page_ = tree_.view(leaf);
  leaf_ = std::move(leaf);
}

// To the neighbouring leaf; false when there is none.
bool BTree::Cursor::step(bool forward) {
  const PageNumber number = page_->number(), neighbour = forward ? page_->next() : page_->previous();
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

void BTree::Cursor::take(uint32_t start, uint32_t end) {
  const EntryView entry = page_->entry(start, end);
  entry.copy(entry.keyLength(), key_);
  row_ = RowId::fromStored(entry.row());
}

bool BTree::Cursor::next() {
  if (!leaf_) seek({});
  while (place_ >= page_->used()) {
    if (!step(true)) return false;
    place_ = 0;
  }
  const uint32_t end = page_->entryEnd(place_);
  take(place_, end);
  place_ = end;
  return true;
}

bool BTree::Cursor::previous() {
  if (!leaf_) seek({});
  while (place_ == 0) {
    if (!step(false)) return false;
    place_ = page_->used();
  }
  const uint32_t start = page_->entryStart(place_);
  take(start, place_);
  place_ = start;
  return true;
}

}  // namespace jet
