#include <algorithm>

#include "jet/catalog/catalog_impl.h"
#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/storage/btree.h"

namespace jet {

namespace {

constexpr uint8_t kFlagUnique = 0x01, kFlagIgnoreNulls = 0x02, kFlagRequired = 0x08, kFlagJet4 = 0x80;

}  // namespace

// Gives the index its tree and map, both empty, and a place in the definition.
int FileCatalog::makeRealIndex(TableDef& def, RealIndex index, PageNumber& mapPage) {
  index.flags =
      static_cast<uint8_t>(kFlagJet4 | (index.unique ? kFlagUnique : 0) |
                           (index.ignoreNulls ? kFlagIgnoreNulls : 0) | (index.required ? kFlagRequired : 0));
  index.root = BTree::createRoot(pager_, def.page);
  index.map = createUsageMap(pager_, mapPage, index.root);
  def.realIndexes.push_back(std::move(index));
  return static_cast<int>(def.realIndexes.size()) - 1;
}

void FileCatalog::addIndex(TableDef& def, const NewIndex& index, PageNumber& mapPage) {
  if (!isValidName(index.name)) throw Error(3125, {index.name});
  if (def.index(index.name)) throw Error(3375, {def.name, index.name});
  if (def.indexes.size() >= kMaxIndexes) throw Error(3626, {def.name});
  if (index.columns.empty()) throw Error(3264);
  if (index.columns.size() > kMaxIndexColumns) throw Error(3277);
  if (index.primary && def.primaryKey()) throw Error(3283);

  RealIndex real;
  for (const auto& [name, descending] : index.columns) {
    const int ordinal = def.columnOrdinal(name);
    if (ordinal < 0) throw Error(3409, {name});
    const Type type = def.columns[ordinal].type();
    if (type == Type::Ole || type == Type::Internal) throw Error(3287);
    for (const IndexColumn& other : real.columns) {
      if (other.ordinal == ordinal) throw Error(3285);
    }
    real.columns.push_back({.ordinal = ordinal, .descending = descending});
  }
  real.unique = index.unique || index.primary;
  real.required = index.required || index.primary;
  real.ignoreNulls = index.ignoreNulls && !index.primary;

  IndexDef added;
  added.name = index.name;
  for (const IndexDef& other : def.indexes) added.number = std::max(added.number, other.number + 1);
  added.real = makeRealIndex(def, std::move(real), mapPage);
  added.primary = index.primary;
  def.indexes.push_back(std::move(added));
}

void FileCatalog::createIndex(std::u16string_view table, const NewIndex& index) {
  Transaction change(pager_);
  Draft edited = draft(table);
  PageNumber mapPage = edited.def.ownedMap.page;
  addIndex(edited.def, index, mapPage);
  RealIndex& real = edited.def.realIndexes.back();
  buildIndex(edited.published(), static_cast<int>(edited.def.realIndexes.size()) - 1, real.uniqueEntries);
  store(edited, false);
  change.commit();
}

// Fills an empty index from the rows present.
void FileCatalog::buildIndex(const TableDefPtr& def, int real, uint32_t& uniqueEntries) {
  const RealIndex& index = def->realIndexes[real];
  if (!isOrderKnown(*def, index)) throw Error(3027);
  struct Pending {
    BTree::Entry entry;
    bool someNull;
  };
  std::vector<Pending> pending;
  const RowStore rows(pager_, def);
  std::vector<Value> values(def->columns.size());
  for (Heap::Scan scan = rows.scan(); scan.next();) {
    const RowReader row = rows.reader(scan.bytes(), scan.where());
    bool someNull = false;
    for (const IndexColumn& part : index.columns) {
      values[part.ordinal] = rows.value(row, part.ordinal);
      someNull = someNull || values[part.ordinal].isNull();
    }
    if (someNull && index.required) throw Error(3058);
    if (auto key = rows.key(static_cast<size_t>(real), values)) pending.push_back({{std::move(*key), scan.id()}, someNull});
  }
  const auto less = [](const Pending& a, const Pending& b) {
    const int order = a.entry.key.compare(b.entry.key);
    return order != 0 ? order < 0 : a.entry.row < b.entry.row;
  };
  std::sort(pending.begin(), pending.end(), less);
  uniqueEntries = 0;
  for (size_t i = 0; i < pending.size(); ++i) {
    if (i == 0 || pending[i].entry.key != pending[i - 1].entry.key) {
      ++uniqueEntries;
    } else if (index.unique && !pending[i].someNull) {
      throw Error(3022);
    }
  }
  BTree tree(pager_, def->page, index.root, index.map);
  size_t next = 0;
  tree.build([&](BTree::Entry& entry) {
    if (next == pending.size()) return false;
    entry = std::move(pending[next++].entry);
    return true;
  });
}

void FileCatalog::dropIndex(std::u16string_view table, std::u16string_view index) {
  Transaction change(pager_);
  Draft edited = draft(table);
  TableDef& def = edited.def;
  const IndexDef* doomed = def.index(index);
  if (!doomed) throw Error(3372, {def.name, index});
  if (doomed->foreign) throw Error(3281);
  const int real = doomed->real;
  bool referenced = false, otherwiseKept = false, shared = false;
  for (const IndexDef& other : def.indexes) {
    if (&other == doomed || other.real != real) continue;
    shared = true;
    referenced = referenced || other.side == RelationSide::Primary;
    otherwiseKept = otherwiseKept || !other.foreign;
  }
  if (referenced && !otherwiseKept) throw Error(3281);
  def.indexes.erase(def.indexes.begin() + (doomed - def.indexes.data()));
  if (!shared) releaseRealIndex(def, real);
  store(edited, false);
  change.commit();
}

// Frees the tree and takes the real index out of the definition; no logical index may use it any more unless
// the whole table goes.
void FileCatalog::releaseRealIndex(TableDef& def, int real) {
  const RealIndex index = def.realIndexes[real];
  BTree(pager_, def.page, index.root, index.map).removeAll();
  dropUsageMap(pager_, index.map);
  def.realIndexes.erase(def.realIndexes.begin() + real);
  for (IndexDef& logical : def.indexes) {
    if (logical.real > real) --logical.real;
  }
}

}  // namespace jet
