#include "jet/storage/heap.h"

#include <string>

#include "jet/format/error.h"
#include "jet/storage/data_page.h"

namespace jet {

namespace {

constexpr int kMaxHops = 16;  // of row pointers; one in a sound file
constexpr int kMaxTries = 8;  // pages of the free map looked at for one row
constexpr size_t kPointerSize = 4;

[[noreturn]] void throwRowGone() { throw Error(3167, {}, "DAO.Recordset"); }

bool isPointer(uint16_t word) { return (word & kSlotDeleted) == kSlotMoved; }

RowId pointerIn(Bytes space, PageNumber page) {
  if (space.size() < kPointerSize) throwDamaged(u"row pointer cut short", page);
  return RowId::fromStored(get32(space.data()));
}

}  // namespace

Heap::Heap(Pager& pager, PageNumber definition, RowId ownedMap, RowId freeMap)
    : pager_(pager),
      layout_(pager.layout()),
      definition_(definition),
      owned_(pager, ownedMap),
      free_(pager, freeMap) {}

PageView Heap::ownPage(PageNumber number) const {
  PageView page = pager_.read(number);
  if (!data_page::isOwnedBy(page.bytes(), layout_, definition_))
    throwDamaged(u"page belongs to another table", number);
  return page;
}

Heap::Place Heap::follow(RowId pointer) const {
  for (int hop = 0; hop < kMaxHops; ++hop) {
    Place place{ownPage(pointer.page), pointer.slot};
    const Bytes page = place.page.bytes();
    const uint16_t word = data_page::slotWord(page, layout_, pointer.page, place.slot);
    if ((word & kSlotDeleted) == kSlotTarget) return place;
    if (!isPointer(word)) break;
    pointer = pointerIn(data_page::slotBytes(page, layout_, pointer.page, place.slot), pointer.page);
  }
  throwDamaged(u"row pointer leads nowhere", pointer.page);
}

std::optional<Heap::Row> Heap::fetch(RowId id) const {
  if (id.page == 0 || id.page >= pager_.pageCount()) return std::nullopt;
  Row row{pager_.read(id.page), {}, id.page};
  const Bytes page = row.page.bytes();
  if (!data_page::isOwnedBy(page, layout_, definition_)) return std::nullopt;
  if (id.slot >= data_page::slotCount(page, layout_, id.page)) return std::nullopt;
  const uint16_t word = data_page::slotWord(page, layout_, id.page, id.slot);
  if (word & kSlotTarget) return std::nullopt;
  row.bytes = data_page::slotBytes(page, layout_, id.page, id.slot);
  if (word & kSlotMoved) {
    Place target = follow(pointerIn(row.bytes, id.page));
    row.where = target.page.number();
    row.bytes = data_page::slotBytes(target.page.bytes(), layout_, row.where, target.slot);
    row.page = std::move(target.page);
  }
  return row;
}

RowId Heap::insert(Bytes row) { return place(row, 0); }

RowId Heap::place(Bytes row, uint16_t flags, PageNumber except) {
  if (row.size() > layout_.maxRow) throw Error(3047, {}, "DAO.Recordset");
  PageEdit page = pageWithRoom(row.size(), except);
  const int slot = data_page::insert(page.bytes(), layout_, row, flags);
  lastUsed_ = page.number();
  if (!data_page::isUseful(page.bytes(), layout_)) free_.erase(lastUsed_);
  return {lastUsed_, static_cast<uint8_t>(slot)};
}

// In this order, so that filling a table costs the same for every row: the page that took the last row,
// the last page of the free map, a few more of its pages going on from where the previous search ended,
// a fresh page.
PageEdit Heap::pageWithRoom(size_t length, PageNumber except) {
  if (lastUsed_ != 0 && lastUsed_ != except && lastUsed_ < pager_.pageCount() && owned_.contains(lastUsed_))
    if (PageEdit page = tryPage(lastUsed_, length)) return page;
  const PageNumber last = free_.last();
  if (last != 0 && last != lastUsed_ && last != except)
    if (PageEdit page = tryPage(last, length)) return page;
  for (int tries = 0; tries < kMaxTries && searchFrom_ != 0; ++tries) {
    const PageNumber candidate = free_.next(searchFrom_);
    searchFrom_ = candidate == 0 ? 0 : candidate + 1;
    if (candidate == 0 || candidate == except || candidate == last || candidate == lastUsed_) continue;
    if (PageEdit page = tryPage(candidate, length)) {
      searchFrom_ = candidate;
      return page;
    }
  }
  PageEdit page = PageAllocator(pager_).allocate();
  data_page::initialise(page.bytes(), layout_, definition_);
  owned_.insert(page.number());
  free_.insert(page.number());
  return page;
}

// No page when it lacks the room. What the free map names may be wrong: a page that is not this table's
// is left alone.
PageEdit Heap::tryPage(PageNumber number, size_t length) {
  const PageView page = pager_.read(number);
  const Bytes bytes = page.bytes();
  const bool ours = data_page::isOwnedBy(bytes, layout_, definition_);
  if (ours && data_page::hasRoom(bytes, layout_, length)) return pager_.write(number);
  if (!ours || !data_page::isWorthKeeping(bytes, layout_)) free_.erase(number);
  return {};
}

// The word of the row's slot, and for a moved row the slot of its bytes.
RowId Heap::requireLive(RowId id, uint16_t& word) const {
  if (id.page == 0 || id.page >= pager_.pageCount()) throwRowGone();
  const PageView page = pager_.read(id.page);
  const Bytes bytes = page.bytes();
  if (!data_page::isOwnedBy(bytes, layout_, definition_)) throwRowGone();
  if (id.slot >= data_page::slotCount(bytes, layout_, id.page)) throwRowGone();
  word = data_page::slotWord(bytes, layout_, id.page, id.slot);
  if (word & kSlotTarget) throwRowGone();
  if (!isPointer(word)) return {};
  const Place target = follow(pointerIn(data_page::slotBytes(bytes, layout_, id.page, id.slot), id.page));
  return {target.page.number(), static_cast<uint8_t>(target.slot)};
}

void Heap::update(RowId id, Bytes row) {
  if (row.size() > layout_.maxRow) throw Error(3047, {}, "DAO.Recordset");
  uint16_t word = 0;
  const RowId target = requireLive(id, word);
  if (!target.isNull()) {
    PageEdit page = pager_.write(target.page);
    if (data_page::replace(page.bytes(), layout_, target.page, target.slot, row)) {
      noteRoom(target.page, page.bytes());
      return;
    }
  }
  PageEdit home = pager_.write(id.page);
  if (data_page::replace(home.bytes(), layout_, id.page, id.slot, row)) {
    data_page::setFlags(home.bytes(), layout_, id.slot, 0);
  } else {
    uint8_t pointer[kPointerSize] = {};
    if (!data_page::replace(home.bytes(), layout_, id.page, id.slot, pointer))
      throw Error(3047, {}, "DAO.Recordset");
    const RowId moved = place(row, kSlotTarget, id.page);
    put32(pointer, moved.stored());
    data_page::replace(home.bytes(), layout_, id.page, id.slot, pointer);
    data_page::setFlags(home.bytes(), layout_, id.slot, kSlotMoved);
  }
  noteRoom(id.page, home.bytes());
  if (!target.isNull()) erase(target.page, target.slot);
}

void Heap::remove(RowId id) {
  uint16_t word = 0;
  const RowId target = requireLive(id, word);
  if (!target.isNull()) erase(target.page, target.slot);
  erase(id.page, id.slot);
}

void Heap::erase(PageNumber number, int slot) {
  PageEdit page = pager_.write(number);
  data_page::erase(page.bytes(), layout_, number, slot);
  if (data_page::isEmpty(page.bytes(), layout_))
    giveBack(number);
  else
    noteRoom(number, page.bytes());
}

void Heap::noteRoom(PageNumber number, Bytes page) {
  const bool useful = data_page::isUseful(page, layout_);
  if (useful == free_.contains(number)) return;
  if (useful) {
    free_.insert(number);
    if (searchFrom_ == 0 || number < searchFrom_) searchFrom_ = number;
  } else {
    free_.erase(number);
  }
}

void Heap::giveBack(PageNumber page) {
  if (!owned_.contains(page)) return;
  owned_.erase(page);
  free_.erase(page);
  PageAllocator(pager_).free(page);
  if (lastUsed_ == page) lastUsed_ = 0;
}

void Heap::removeAll() {
  PageAllocator allocator(pager_);
  for (const PageNumber page : owned_.pages()) {
    // A page that the map names by mistake is somebody else's.
    if (data_page::isOwnedBy(pager_.read(page).bytes(), layout_, definition_)) allocator.free(page);
    owned_.erase(page);
    free_.erase(page);
  }
  lastUsed_ = 0;
}

bool Heap::Scan::nextPage() {
  const PageNumber page = heap_.owned_.next(id_.page + 1);
  if (page == 0) {
    home_ = {};
    return false;
  }
  home_ = heap_.ownPage(page);
  id_.page = page;
  slot_ = -1;
  return true;
}

bool Heap::Scan::next() {
  for (;;) {
    // The page may have been given back, and even taken by somebody else, since the last step.
    const bool onPage = home_ && data_page::isOwnedBy(home_.bytes(), heap_.layout_, heap_.definition_);
    const Bytes page = onPage ? home_.bytes() : Bytes();
    const int count = onPage ? data_page::slotCount(page, heap_.layout_, id_.page) : 0;
    while (++slot_ < count) {
      const uint16_t word = data_page::slotWord(page, heap_.layout_, id_.page, slot_);
      if (word & kSlotTarget) continue;
      id_.slot = static_cast<uint8_t>(slot_);
      where_ = id_.page;
      bytes_ = data_page::slotBytes(page, heap_.layout_, id_.page, slot_);
      if (word & kSlotMoved) {
        Place target = heap_.follow(pointerIn(bytes_, id_.page));
        where_ = target.page.number();
        target_ = std::move(target.page);
        bytes_ = data_page::slotBytes(target_.bytes(), heap_.layout_, where_, target.slot);
      }
      return true;
    }
    if (!nextPage()) return false;
  }
}

}  // namespace jet
