#include "jet/dao/table_source.h"

#include "jet/format/error.h"
#include "jet/storage/btree.h"
#include "jet/storage/data_page.h"

namespace jet {

namespace {

constexpr int kMaxHops = 16;  // of row pointers; one in a sound file

bool isOrphan(uint16_t word) { return (word & kSlotDeleted) == kSlotTarget; }

}  // namespace

bool isDamage(const Error& error) {
  switch (error.number()) {
    case 3049:  // damaged
    case 3343:
    case 3259:  // column type
    case 3163:  // longer than its column
      return true;
    default:
      return false;
  }
}

TableSource::TableSource(Pager& pager, const TableDef& def, std::vector<PageNumber> pages, RowMarks& marks,
                         bool tolerant)
    : pager_(pager),
      layout_(pager.layout()),
      def_(def),
      pages_(std::move(pages)),
      marks_(marks),
      tolerant_(tolerant) {}

// False when the part met damage, which a tolerant reader leaves out.
template <typename Part>
bool TableSource::readable(const Part& part) const {
  try {
    part();
    return true;
  } catch (const Error& error) {
    if (!tolerant_ || !isDamage(error)) throw;
    return false;
  }
}

bool TableSource::isOwn(Bytes page) const { return data_page::isOwnedBy(page, layout_, def_.page); }

void TableSource::forEach(const Visitor& visit) {
  visitByKey(visit);
  for (const PageNumber page : pages_) {
    if (!readable([&] {
          const PageView view = pager_.read(page);
          if (!isOwn(view.bytes())) throwDamaged(u"page belongs to another table", page);
          data_page::slotCount(view.bytes(), layout_, page);
        }))
      ++badPages_;
    else
      visitPage(page, visit);
  }
  if (!tolerant_) return;
  for (const PageNumber page : pages_) visitOrphans(page, visit);
}

void TableSource::visitByKey(const Visitor& visit) {
  const IndexDef* key = def_.primaryKey();
  if (!key) return;
  const RealIndex& index = def_.realIndexes[static_cast<size_t>(key->real)];
  const BTree tree(pager_, def_.page, index.root, index.map);
  BTree::Cursor cursor(tree);
  for (;;) {
    try {
      if (!cursor.next()) return;
    } catch (const Error& error) {
      if (!isDamage(error)) throw;
      return;  // the other rows come by page
    }
    const RowId id = cursor.row();
    if (id.page == 0 || id.page >= pager_.pageCount()) continue;
    bool taken = false;
    if (readable([&] { taken = take(id); }) && taken) visit(row_, where_);
  }
}

void TableSource::visitPage(PageNumber page, const Visitor& visit) {
  const PageView view = pager_.read(page);
  const int count = data_page::slotCount(view.bytes(), layout_, page);
  for (int slot = 0; slot < count; ++slot) {
    bool taken = false;
    if (readable([&] { taken = take({page, static_cast<uint8_t>(slot)}); }) && taken) visit(row_, where_);
  }
}

// Rows that were moved, and whose pointer is lost.
void TableSource::visitOrphans(PageNumber page, const Visitor& visit) {
  const PageView view = pager_.read(page);
  if (!isOwn(view.bytes())) return;
  int count = 0;
  readable([&] { count = data_page::slotCount(view.bytes(), layout_, page); });
  for (int slot = 0; slot < count; ++slot) {
    const RowId id{page, static_cast<uint8_t>(slot)};
    if (!isOrphan(data_page::slotWord(view.bytes(), layout_, page, slot)) || !marks_.add(id)) continue;
    if (readable([&] { row_ = data_page::slotBytes(view.bytes(), layout_, page, slot); })) visit(row_, page);
  }
}

// False when the slot holds no row or was taken before. Throws when its row cannot be read.
bool TableSource::take(RowId id) {
  home_ = pager_.read(id.page);
  const Bytes page = home_.bytes();
  if (!isOwn(page) || id.slot >= data_page::slotCount(page, layout_, id.page)) return false;
  const uint16_t word = data_page::slotWord(page, layout_, id.page, id.slot);
  if ((word & kSlotTarget) || !marks_.add(id)) return false;
  ++slots_;
  where_ = id.page;
  row_ = data_page::slotBytes(page, layout_, id.page, id.slot);
  if (word & kSlotMoved) follow(row_);
  return true;
}

void TableSource::follow(Bytes pointer) {
  for (int hop = 0; hop < kMaxHops; ++hop) {
    if (pointer.size() < 4) throwDamaged(u"row pointer cut short", where_);
    const RowId id = RowId::fromStored(get32(pointer.data()));
    target_ = pager_.read(id.page);
    const Bytes page = target_.bytes();
    if (!isOwn(page)) break;
    const uint16_t word = data_page::slotWord(page, layout_, id.page, id.slot);
    pointer = data_page::slotBytes(page, layout_, id.page, id.slot);
    if (isOrphan(word)) {
      if (!marks_.add(id)) throwDamaged(u"row is pointed to twice", id.page);
      where_ = id.page;
      row_ = pointer;
      return;
    }
    if ((word & kSlotDeleted) != kSlotMoved) break;
  }
  throwDamaged(u"row pointer leads nowhere", where_);
}

}  // namespace jet
