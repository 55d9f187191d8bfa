#include "jet/storage/btree.h"

#include <algorithm>
#include <cstring>

#include "jet/format/bytes.h"
#include "jet/format/error.h"

namespace jet {

namespace {

void appendBigEndian(std::string& entry, uint32_t v) {
  uint8_t bytes[4];
  put32be(bytes, v);
  entry += asChars(bytes);
}

}  // namespace

BTree::BTree(Pager& pager, PageNumber definition, PageNumber root, RowId map)
    : pager_(pager), definition_(definition), root_(root), map_(map) {}

// Keys up to this length leave room for two node entries on a page, and so for every split.
void BTree::requireShort(Bytes key) const {
  if (key.size() > (pager_.layout().version == Version::Jet3 ? 850 : 1700)) throw Error(3393);
}

void BTree::makeEntry(const IndexTarget& target, std::string& entry) {
  entry.assign(asChars(target.key));
  appendBigEndian(entry, target.row);
}

PageNumber BTree::createRoot(Pager& pager, PageNumber definition) {
  PageEdit page = PageAllocator(pager).allocate();
  index_page::initialise(page.bytes(), pager.layout(), definition, 0);
  return page.number();
}

IndexPage BTree::view(const PageView& page) const {
  return IndexPage(pager_.layout(), page.data(), page.number(), definition_);
}

// Levels fall by one from page to page, so that the way down ends whatever the file says.
PageView BTree::descend(const IndexTarget& target, Path* path) const {
  PageView page = pager_.read(root_);
  IndexPage at = view(page);
  while (!at.isLeaf()) {
    const uint32_t start = at.find(target);
    if (path) path->steps[static_cast<size_t>(path->depth++)] = {at.number(), start};
    const int level = at.level();
    page = pager_.read(at.child(start));
    at = view(page);
    if (at.level() != level - 1) throwDamaged(u"level of an index page", at.number());
  }
  return page;
}

PageEdit BTree::edit(PageNumber number, int level) {
  PageEdit page = pager_.write(number);
  if (view(page).level() != level) throwDamaged(u"level of an index page", number);
  return page;
}

PageEdit BTree::newPage(int level) {
  PageEdit page = PageAllocator(pager_).allocate();
  index_page::initialise(page.bytes(), pager_.layout(), definition_, level);
  UsageMap(pager_, map_).insert(page.number());
  return page;
}

BTree::Place BTree::place(const IndexPage& leaf, const IndexTarget& target) {
  Place place{leaf.find(target), false, true};
  if (place.start < leaf.used()) {
    const EntryView next = leaf.entry(place.start);
    place.newKey = !next.hasKey(target.key);
    place.isThere = !place.newKey && next.row() == target.row;
  }
  if (place.newKey && place.start > 0)
    place.newKey = !leaf.entry(leaf.entryStart(place.start), place.start).hasKey(target.key);
  return place;
}

bool BTree::insert(Bytes key, RowId row) {
  std::string entry;
  PageNumber leaf = 0;
  return insert({key, row.stored()}, entry, leaf);
}

bool BTree::insert(const IndexTarget& target, std::string& entry, PageNumber& leaf) {
  requireShort(target.key);
  Path path;
  Place at;
  PageNumber number;
  {
    const PageView page = descend(target, &path);
    number = page.number();
    at = place(view(page), target);
  }
  leaf = number;
  if (at.isThere) return false;
  makeEntry(target, entry);
  if (!insertEntry(path, path.depth, number, at.start, asBytes(entry))) leaf = 0;
  return at.newKey;
}

// Puts an entry before the one at `start` of a page that is path.depth - depth levels above the leaves.
bool BTree::insertEntry(const Path& path, int depth, PageNumber number, uint32_t start, Bytes entry) {
  PageEdit page = pager_.write(number);
  const IndexPage at = view(page);
  if (index_page::insert(page.bytes(), pager_.layout(), at, start, entry)) return true;
  EntryList entries(pager_.layout(), at);
  const std::vector<uint16_t> ends = at.entryEnds();
  const size_t index = static_cast<size_t>(std::upper_bound(ends.begin(), ends.end(), start) - ends.begin());
  entries.insert(index, asChars(entry));
  if (entries.fits(0, entries.size())) {
    entries.store(page.bytes(), 0, entries.size());
    return true;
  }
  split(path, depth, std::move(page), entries, index);
  return false;
}

void BTree::split(const Path& path, int depth, PageEdit page, const EntryList& entries, size_t added) {
  const FileLayout& layout = pager_.layout();
  const IndexPage before = view(page);
  const int level = before.level();
  const PageNumber previous = before.previous(), next = before.next(), tail = before.tail();
  const size_t cut = entries.cut(added, previous == 0, next == 0);
  if (depth == 0) return splitRoot(std::move(page), entries, cut);

  PageEdit right = newPage(level);
  entries.store(right.bytes(), level == 0 ? cut : cut + 1, entries.size());
  entries.store(page.bytes(), 0, cut);
  if (level > 0) {
    index_page::setTail(right.bytes(), layout, tail);
    index_page::setTail(page.bytes(), layout, entries.child(cut));
  }
  index_page::setPrevious(right.bytes(), layout, page.number());
  index_page::setNext(right.bytes(), layout, next);
  index_page::setNext(page.bytes(), layout, right.number());
  if (next != 0) index_page::setPrevious(edit(next, level).bytes(), layout, right.number());

  // The parent's entry keeps its bound and now leads to the right page; before it goes one for the left.
  const Path::Step above = path.steps[static_cast<size_t>(depth - 1)];
  std::string entry(entries.bound(level == 0 ? cut - 1 : cut));
  appendBigEndian(entry, page.number());
  {
    PageEdit parent = edit(above.page, level + 1);
    index_page::setChild(parent.bytes(), layout, view(parent), above.start, right.number());
  }
  insertEntry(path, depth - 1, above.page, above.start, asBytes(entry));
}

// The root keeps its number: its content moves to two new pages.
void BTree::splitRoot(PageEdit root, const EntryList& entries, size_t cut) {
  const FileLayout& layout = pager_.layout();
  const IndexPage before = view(root);
  const int level = before.level();
  const PageNumber tail = before.tail();
  if (level == kMaxIndexDepth) throwDamaged(u"depth of an index", root_);
  PageEdit left = newPage(level), right = newPage(level);
  entries.store(left.bytes(), 0, cut);
  entries.store(right.bytes(), level == 0 ? cut : cut + 1, entries.size());
  if (level > 0) {
    index_page::setTail(left.bytes(), layout, entries.child(cut));
    index_page::setTail(right.bytes(), layout, tail);
  }
  index_page::setNext(left.bytes(), layout, right.number());
  index_page::setPrevious(right.bytes(), layout, left.number());

  std::string entry(entries.bound(level == 0 ? cut - 1 : cut));
  appendBigEndian(entry, left.number());
  index_page::initialise(root.bytes(), layout, definition_, level + 1);
  index_page::setTail(root.bytes(), layout, right.number());
  index_page::insert(root.bytes(), layout, view(root), 0, asBytes(entry));
}

bool BTree::remove(Bytes key, RowId row) {
  const IndexTarget target{key, row.stored()};
  Path path;
  PageNumber number;
  uint32_t start;
  {
    const PageView leaf = descend(target, &path);
    const IndexPage page = view(leaf);
    number = leaf.number();
    start = page.find(target);
    if (start == page.used() || page.entry(start).compare(target) != 0) return false;
  }
  {
    PageEdit leaf = pager_.write(number);
    index_page::erase(leaf.bytes(), pager_.layout(), view(leaf), start);
    if (number == root_ || !view(leaf).empty()) return true;
  }
  unlinkAndFree(number, 0);
  removeChild(path, path.depth - 1);
  return true;
}

// The child that step `depth` of the path leads to is gone.
void BTree::removeChild(const Path& path, int depth) {
  const FileLayout& layout = pager_.layout();
  const Path::Step step = path.steps[static_cast<size_t>(depth)];
  PageEdit node = pager_.write(step.page);
  const IndexPage page = view(node);
  const int level = page.level();
  if (step.start < page.used()) {
    index_page::erase(node.bytes(), layout, page, step.start);
  } else if (!page.empty()) {  // the tail: the last entry's child takes its place
    const uint32_t last = page.entryStart(page.used());
    index_page::setTail(node.bytes(), layout, page.child(last));
    index_page::erase(node.bytes(), layout, page, last);
  } else if (depth == 0) {
    index_page::initialise(node.bytes(), layout, definition_, 0);
    return;
  } else {
    node = {};
    unlinkAndFree(step.page, level);
    removeChild(path, depth - 1);
    return;
  }
  if (depth == 0) {
    node = {};
    collapseRoot();
  }
}

void BTree::unlinkAndFree(PageNumber number, int level) {
  const FileLayout& layout = pager_.layout();
  PageNumber previous, next;
  {
    const PageView page = pager_.read(number);
    previous = view(page).previous(), next = view(page).next();
  }
  if (previous != 0) {
    PageEdit page = edit(previous, level);
    if (view(page).next() != number) throwDamaged(u"link between index pages", previous);
    index_page::setNext(page.bytes(), layout, next);
  }
  if (next != 0) {
    PageEdit page = edit(next, level);
    if (view(page).previous() != number) throwDamaged(u"link between index pages", next);
    index_page::setPrevious(page.bytes(), layout, previous);
  }
  UsageMap(pager_, map_).erase(number);
  PageAllocator(pager_).free(number);
}

// A root that leads to one page only is replaced by that page's content.
void BTree::collapseRoot() {
  for (;;) {
    PageNumber child;
    {
      const PageView page = pager_.read(root_);
      const IndexPage root = view(page);
      if (root.isLeaf() || !root.empty()) return;
      child = root.tail();
      const PageView below = pager_.read(child);
      if (child == root_ || view(below).level() != root.level() - 1)
        throwDamaged(u"level of an index page", child);
    }
    moveToRoot(child);
  }
}

void BTree::moveToRoot(PageNumber child) {
  const FileLayout& layout = pager_.layout();
  {
    const PageView page = pager_.read(child);
    PageEdit root = pager_.write(root_);
    std::memcpy(root.data(), page.data(), layout.pageSize);
    index_page::setPrevious(root.bytes(), layout, 0);
    index_page::setNext(root.bytes(), layout, 0);
  }
  UsageMap(pager_, map_).erase(child);
  PageAllocator(pager_).free(child);
}

bool BTree::containsKey(Bytes key, RowId except) const {
  {
    const PageView leaf = descend({key}, nullptr);
    const IndexPage page = view(leaf);
    uint32_t start = page.find({key});
    for (; start < page.used() && page.entry(start).hasKey(key); start = page.entryEnd(start))
      if (RowId::fromStored(page.entry(start).row()) != except) return true;
    if (start < page.used() || page.next() == 0) return false;
  }
  // The entries may go on in the next leaf.
  Cursor cursor(*this);
  cursor.seek(key);
  while (cursor.next() && std::ranges::equal(cursor.key(), key))
    if (cursor.row() != except) return true;
  return false;
}

void BTree::removeAll() {
  UsageMap map(pager_, map_);
  PageAllocator allocator(pager_);
  for (const PageNumber page : map.pages()) {
    const uint8_t kind = pager_.read(page).data()[0];
    // A damaged map must not give away what belongs to others.
    if (kind != static_cast<uint8_t>(PageKind::IndexLeaf) &&
        kind != static_cast<uint8_t>(PageKind::IndexNode))
      throwDamaged(u"page of another kind in the map of an index", page);
    map.erase(page);
    allocator.free(page);
  }
}

}  // namespace jet
