#include "jet/format/bytes.h"
#include "jet/storage/btree.h"

namespace jet {

namespace {

struct Child {
  std::string bound;  // the last entry of the page
  PageNumber page;
};

}  // namespace

void BTree::build(const std::function<bool(Entry&)>& next) {
  const FileLayout& layout = pager_.layout();
  const uint32_t capacity = IndexPage::capacity(layout);
  std::vector<Child> children;  // of the level last finished, from left to right
  PageEdit last;
  const auto startPage = [&](int height) {
    PageEdit page = newPage(height);
    if (last) {
      index_page::setNext(last.bytes(), layout, page.number());
      index_page::setPrevious(page.bytes(), layout, last.number());
    }
    last = std::move(page);
  };

  EntryList pending(layout, true);
  Entry entry;
  std::string packed;
  const auto flushLeaf = [&](size_t count) {
    startPage(0);
    pending.store(last.bytes(), 0, count);
    children.push_back({std::string(pending.bound(count - 1)), last.number()});
  };
  while (next(entry)) {
    packed = entry.key;
    packed.resize(packed.size() + kEntryRowBytes);
    put32be(reinterpret_cast<uint8_t*>(&packed[entry.key.size()]), entry.row.stored());
    pending.append(packed);
    if (pending.fits(0, pending.size())) continue;
    flushLeaf(pending.size() - 1);
    pending.clear();
    pending.append(packed);
  }
  if (children.empty()) {
    PageEdit root = pager_.write(root_);
    pending.store(root.bytes(), 0, pending.size());
    return;
  }
  flushLeaf(pending.size());

  for (int height = 1; children.size() > 1; ++height) {
    std::vector<Child> above;
    last = {};
    for (size_t from = 0; from < children.size();) {
      // Entries for as many children as fit, and one more child as the tail; no page is left with a tail
      // only.
      EntryList entries(layout, false);
      size_t to = from, used = 0;
      for (; to + 1 < children.size(); ++to) {
        const size_t length = children[to].bound.size() + kEntryChildBytes;
        if (used + length > capacity) break;
        used += length;
        packed = children[to].bound;
        packed.resize(length);
        put32be(reinterpret_cast<uint8_t*>(&packed[length - kEntryChildBytes]), children[to].page);
        entries.append(packed);
      }
      if (to + 2 == children.size() && entries.size() > 1) entries.removeLast(), --to;
      PageEdit root;
      if (from == 0 && to + 1 == children.size()) {
        root = pager_.write(root_);
        index_page::initialise(root.bytes(), layout, definition_, height);
      } else {
        startPage(height);
      }
      const MutableBytes page = root ? root.bytes() : last.bytes();
      entries.store(page, 0, entries.size());
      index_page::setTail(page, layout, children[to].page);
      above.push_back({children[to].bound, root ? root_ : last.number()});
      from = to + 1;
    }
    children = std::move(above);
  }
}

}  // namespace jet
