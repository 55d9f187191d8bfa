#include <algorithm>

#include "jet/catalog/check_impl.h"
#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/storage/btree.h"
#include "jet/storage/data_page.h"

namespace jet::check {

namespace {

constexpr uint32_t kStampOffset = 8;  // in the header of a chain's first page, Jet 4

bool isLive(uint16_t word) { return (word & kSlotDeleted) != kSlotDeleted; }

// Sorts; the rows that are there more than once.
std::vector<RowId> duplicates(std::vector<RowId>& rows) {
  std::sort(rows.begin(), rows.end());
  std::vector<RowId> twice;
  for (size_t i = 1; i < rows.size(); ++i) {
    if (rows[i] == rows[i - 1]) twice.push_back(rows[i]);
  }
  return twice;
}

}  // namespace

TableCheck::TableCheck(Catalog& catalog, TableDefPtr def, PageOwners& owners, const Fault& fault)
    : catalog_(catalog),
      pager_(catalog.pager()),
      layout_(pager_.layout()),
      def_(std::move(def)),
      owners_(owners),
      fault_(fault),
      name_(u"table " + def_->name),
      rows_(pager_, def_),
      longValuePages_(def_->columns.size()),
      longValueRows_(def_->columns.size()) {}

void TableCheck::run() {
  attempt(fault_, name_, [&] { checkDefinition(); });
  attempt(fault_, name_, [&] { claimMaps(); });
  attempt(fault_, name_, [&] { checkDataPages(); });
  for (size_t i = 0; i < def_->columns.size(); ++i) {
    if (def_->columns[i].isLongValue()) attempt(fault_, name_, [&] { checkLongValuePages(i); });
  }
  for (size_t i = 0; i < def_->realIndexes.size(); ++i) attempt(fault_, name_, [&] { checkIndex(i); });
}

void TableCheck::checkDefinition() {
  const TdefBytes stored = readTdefBytes(pager_, def_->page);
  for (const PageNumber page : stored.pages) owners_.claim(page, u"definition of " + name_);
  if (!stored.bytes.ends_with("\xFF\xFF")) report(u"definition lacks its end mark");
  std::vector<bool> used(def_->realIndexes.size());
  std::set<uint32_t> numbers;
  for (size_t i = 0; i < def_->indexes.size(); ++i) {
    const IndexDef& index = def_->indexes[i];
    used[static_cast<size_t>(index.real)] = true;
    if (!numbers.insert(index.number).second)
      report(u"index number " + number(index.number) + u" used twice");
    if (i > 0 && foldName(def_->indexes[i - 1].name) > foldName(index.name))
      report(u"indexes not sorted by name");
  }
  for (size_t i = 0; i < used.size(); ++i) {
    if (!used[i]) report(u"real index " + number(i) + u" has no name");
  }
}

void TableCheck::claimMaps() {
  owners_.claimMap(def_->ownedMap, u"data pages of " + name_);
  owners_.claimMap(def_->freeMap, u"pages with room of " + name_);
  for (const RealIndex& index : def_->realIndexes) owners_.claimMap(index.map, u"an index of " + name_);
  for (size_t i = 0; i < def_->columns.size(); ++i) {
    const ColumnDef& column = def_->columns[i];
    if (!column.isLongValue()) continue;
    const std::u16string owner = u"long values " + column.name + u" of " + name_;
    owners_.claimMap(column.ownedMap, owner);
    for (const PageNumber page : UsageMap(pager_, column.ownedMap).pages()) {
      if (owners_.claim(page, owner)) longValuePages_[i].insert(page);
    }
    if (column.freeMap.isNull()) continue;
    owners_.claimMap(column.freeMap, u"room for " + owner);
    for (const PageNumber page : UsageMap(pager_, column.freeMap).pages()) {
      if (!longValuePages_[i].contains(page))
        report(u"page " + number(page) + u" has room for long values, but is not owned");
    }
  }
}

int TableCheck::checkDataPage(PageNumber page, Bytes bytes, uint32_t owner) {
  if (!data_page::isOwnedBy(bytes, layout_, owner)) {
    report(u"page " + number(page) + u" is of another kind or owner");
    return 0;
  }
  const int slots = data_page::slotCount(bytes, layout_, page);
  for (int slot = 0; slot < slots; ++slot) data_page::slotBytes(bytes, layout_, page, slot);
  if (data_page::freeBytes(bytes, layout_) != static_cast<int>(data_page::room(bytes, layout_)))
    report(u"page " + number(page) + u" counts its free bytes wrong");
  return slots;
}

void TableCheck::checkDataPages() {
  const std::u16string owner = u"data of " + name_;
  for (const PageNumber page : UsageMap(pager_, def_->ownedMap).pages()) {
    if (owners_.claim(page, owner)) dataPages_.insert(page);
  }
  for (const PageNumber page : UsageMap(pager_, def_->freeMap).pages()) {
    if (!dataPages_.contains(page)) report(u"page " + number(page) + u" has room, but is not owned");
  }
  for (const PageNumber page : dataPages_) {
    attempt(fault_, name_, [&] {
      const PageView view = pager_.read(page);
      checkSlots(page, view.bytes());
    });
  }
  const auto twice = duplicates(pointed_);
  for (const RowId row : twice) report(describe(row) + u" is pointed to twice");
  std::vector<RowId> alone;
  std::set_difference(targets_.begin(), targets_.end(), pointed_.begin(), pointed_.end(),
                      std::back_inserter(alone));
  for (const RowId row : alone) report(describe(row) + u" was moved, but nothing points to it");
  const uint32_t count = catalog_.counts(def_->page).rows;
  if (count != liveRows_.size())
    report(u"counts " + number(count) + u" rows, has " + number(liveRows_.size()));
}

void TableCheck::checkSlots(PageNumber page, Bytes bytes) {
  const int slots = checkDataPage(page, bytes, def_->page);
  for (int slot = 0; slot < slots; ++slot) {
    const uint16_t word = data_page::slotWord(bytes, layout_, page, slot);
    const RowId id{page, static_cast<uint8_t>(slot)};
    if (!isLive(word)) continue;
    if (word & kSlotTarget) {
      targets_.push_back(id);
      continue;
    }
    liveRows_.push_back(id);
    attempt(fault_, name_ + u", " + describe(id), [&] {
      Bytes row = data_page::slotBytes(bytes, layout_, page, slot);
      if (!(word & kSlotMoved)) return checkRow(row, page);
      if (row.size() < 4) throwDamaged(u"no room for the pointer", page);
      const RowId target = RowId::fromStored(get32(row.data()));
      if (!dataPages_.contains(target.page)) throwDamaged(u"moved to a page of another owner", page);
      const PageView other = pager_.read(target.page);
      if ((data_page::slotWord(other.bytes(), layout_, target.page, target.slot) & kSlotDeleted) !=
          kSlotTarget)
        throwDamaged(u"moved to a slot that does not expect it", target.page);
      pointed_.push_back(target);
      checkRow(data_page::slotBytes(other.bytes(), layout_, target.page, target.slot), target.page);
    });
  }
}

// Every column can be read; a Jet 4 row has no more columns than the table ever had.
void TableCheck::checkRow(Bytes bytes, PageNumber where) {
  const RowReader row(def_->rowLayout, bytes, where);
  const uint32_t columns = layout_.version == Version::Jet4 ? get16(bytes.data()) : bytes[0];
  if (columns > def_->rowLayout.nextColumn) throwDamaged(u"more columns than the table ever had", where);
  const uint32_t maskSize = (columns + 7) / 8;
  if (columns % 8 != 0 && bytes[bytes.size() - 1] >> columns % 8 != 0 && maskSize > 0)
    throwDamaged(u"Null mask reaches behind the columns", where);
  for (size_t i = 0; i < def_->columns.size(); ++i) {
    const int ordinal = static_cast<int>(i);
    if (!def_->columns[i].isLongValue()) {
      row.value(ordinal);
    } else if (const auto ref = row.longValue(ordinal)) {
      checkLongValue(i, *ref);
    }
  }
}

Bytes TableCheck::longValueSlot(const PageView& page, RowId row, size_t column) {
  if (data_page::slotWord(page.bytes(), layout_, row.page, row.slot) & ~kSlotOffsetMask)
    throwDamaged(u"long value deleted", row.page);
  longValueRows_[column].push_back(row);
  return data_page::slotBytes(page.bytes(), layout_, row.page, row.slot);
}

void TableCheck::checkLongValue(size_t column, const LongValueRef& ref) {
  if (ref.kind == LongValueRef::Kind::Inline) {
    if (ref.inlineBytes.size() != ref.length) throwDamaged(u"length of a long value in its row", def_->page);
    return;
  }
  uint64_t length = 0;
  bool first = true;
  for (RowId part = ref.row; !part.isNull() || first;) {
    if (part.isNull() && ref.length == 0) return;
    if (!longValuePages_[column].contains(part.page))
      throwDamaged(u"long value " + def_->columns[column].name + u" on a page of another owner", part.page);
    const PageView page = pager_.read(part.page);
    Bytes bytes = longValueSlot(page, part, column);
    if (ref.kind == LongValueRef::Kind::SingleRow) {
      length = bytes.size();
      break;
    }
    if (first && layout_.version == Version::Jet4 && get32(page.data() + kStampOffset) != ref.stamp)
      throwDamaged(u"stamp of a long value", part.page);
    if (bytes.size() < 4) throwDamaged(u"part of a long value", part.page);
    length += bytes.size() - 4;
    if (length > ref.length) break;
    part = RowId::fromStored(get32(bytes.data()));
    first = false;
  }
  if (length != ref.length)
    throwDamaged(u"length of a long value " + def_->columns[column].name, ref.row.page);
}

// Every row on the pages of long values is part of one value.
void TableCheck::checkLongValuePages(size_t column) {
  std::vector<RowId>& used = longValueRows_[column];
  const auto twice = duplicates(used);
  for (const RowId row : twice) report(u"long value " + describe(row) + u" is used twice");
  for (const PageNumber page : longValuePages_[column]) {
    const PageView view = pager_.read(page);
    const int slots = checkDataPage(page, view.bytes(), kLvalOwner);
    for (int slot = 0; slot < slots; ++slot) {
      const RowId row{page, static_cast<uint8_t>(slot)};
      const uint16_t word = data_page::slotWord(view.bytes(), layout_, page, slot);
      if (isLive(word) && !std::binary_search(used.begin(), used.end(), row))
        report(u"long value " + describe(row) + u" is used by no row");
    }
  }
}

void TableCheck::checkIndex(size_t real) {
  const RealIndex& index = def_->realIndexes[real];
  std::u16string name = name_ + u", index " + number(real);
  for (const IndexDef& logical : def_->indexes) {
    if (logical.real == static_cast<int>(real)) name = name_ + u", index " + logical.name;
  }
  const bool exact = isOrderKnown(*def_, index);
  const BTree tree(pager_, def_->page, index.root, index.map);
  for (const PageNumber page : tree.pages()) owners_.claim(page, name);

  std::vector<RowId> found;
  std::string previous;
  std::vector<Value> values(def_->columns.size());
  const auto checkEntry = [&](Bytes key, RowId id) {
    found.push_back(id);
    const auto row = rows_.heap().fetch(id);
    if (!row) throwDamaged(u"there is no such row", id.page);
    const RowReader reader = rows_.reader(row->bytes, row->where);
    bool someNull = false;
    for (const IndexColumn& part : index.columns) {
      values[static_cast<size_t>(part.ordinal)] = rows_.value(reader, part.ordinal);
      someNull = someNull || values[static_cast<size_t>(part.ordinal)].isNull();
    }
    if (someNull && index.required) fault_(name + u", " + describe(id) + u": Null in a required column");
    if (exact && rows_.key(real, values) != std::string(asChars(key)))
      fault_(name + u", " + describe(id) + u": key differs from the row");
    if (index.unique && !someNull && found.size() > 1 && previous == asChars(key))
      fault_(name + u", " + describe(id) + u": key is there twice");
    previous = asChars(key);
  };
  tree.check([&](const std::u16string& what) { fault_(name + u", " + what); },
             [&](Bytes key, RowId id) {
               attempt(fault_, name + u", " + describe(id), [&] { checkEntry(key, id); });
             });

  const auto twice = duplicates(found);
  for (const RowId row : twice) fault_(name + u": " + describe(row) + u" has two entries");
  for (const RowId row : liveRows_) {
    if (std::binary_search(found.begin(), found.end(), row)) continue;
    attempt(fault_, name + u", " + describe(row), [&] {
      const auto stored = rows_.heap().fetch(row);
      if (!stored) return;
      const RowReader reader = rows_.reader(stored->bytes, stored->where);
      bool allNull = true;
      for (const IndexColumn& part : index.columns)
        allNull = allNull && rows_.value(reader, part.ordinal).isNull();
      if (!allNull || !index.ignoreNulls) fault_(name + u": no entry for " + describe(row));
    });
  }
}

}  // namespace jet::check
