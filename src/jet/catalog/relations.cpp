#include <algorithm>

#include "jet/catalog/catalog_impl.h"
#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/storage/btree.h"

namespace jet {

namespace {

// MSysRelationships.grbit
constexpr uint32_t kOneToOne = 0x1, kNotEnforced = 0x2, kCascadeUpdates = 0x100, kCascadeDeletes = 0x1000,
                   kCascadeNull = 0x2000, kLeftJoin = 0x1000000, kRightJoin = 0x2000000;

struct RelationColumns {
  explicit RelationColumns(const TableDef& def)
      : name(systemColumn(def, u"szRelationship", Type::Text)),
        flags(systemColumn(def, u"grbit", Type::Long)),
        position(systemColumn(def, u"icolumn", Type::Long)),
        foreignTable(systemColumn(def, u"szObject", Type::Text)),
        foreignColumn(systemColumn(def, u"szColumn", Type::Text)),
        table(systemColumn(def, u"szReferencedObject", Type::Text)),
        column(systemColumn(def, u"szReferencedColumn", Type::Text)) {}
  int name, flags, position, foreignTable, foreignColumn, table, column;
};

std::u16string textOf(const RowReader& row, int ordinal) {
  const Value value = row.value(ordinal);
  return value.isNull() ? std::u16string() : value.get<Text>();
}

int32_t numberOf(const RowReader& row, int ordinal) {
  const Value value = row.value(ordinal);
  return value.isNull() ? 0 : value.get<int32_t>();
}

uint32_t flagsOf(const Relation& relation) {
  return (relation.unique ? kOneToOne : 0) | (relation.enforced ? 0 : kNotEnforced) |
         (relation.cascadeUpdates ? kCascadeUpdates : 0) | (relation.cascadeDeletes ? kCascadeDeletes : 0) |
         (relation.cascadeNull ? kCascadeNull : 0) | (relation.join == Relation::Join::Left ? kLeftJoin : 0) |
         (relation.join == Relation::Join::Right ? kRightJoin : 0);
}

void applyFlags(Relation& relation, uint32_t flags) {
  relation.unique = (flags & kOneToOne) != 0;
  relation.enforced = (flags & kNotEnforced) == 0;
  relation.cascadeUpdates = (flags & kCascadeUpdates) != 0;
  relation.cascadeDeletes = (flags & kCascadeDeletes) != 0;
  relation.cascadeNull = (flags & kCascadeNull) != 0;
  relation.join = (flags & kLeftJoin) != 0    ? Relation::Join::Left
                  : (flags & kRightJoin) != 0 ? Relation::Join::Right
                                              : Relation::Join::Inner;
}

uint32_t freeNumber(const TableDef& def) {
  uint32_t number = 0;
  for (const IndexDef& index : def.indexes) number = std::max(number, index.number + 1);
  return number;
}

// Ordinals of the pairs' columns: primary, foreign.
using Pairs = std::vector<std::pair<int, int>>;

Pairs resolve(const Relation& relation, const TableDef& primary, const TableDef& foreign) {
  if (relation.columns.empty()) throw Error(3366);
  if (relation.columns.size() > kMaxIndexColumns) throw Error(3277);
  Pairs pairs;
  for (const auto& [primaryName, foreignName] : relation.columns) {
    const int p = primary.columnOrdinal(primaryName), f = foreign.columnOrdinal(foreignName);
    if (p < 0) throw Error(3409, {primaryName});
    if (f < 0) throw Error(3409, {foreignName});
    if (primary.page == foreign.page && p == f) throw Error(3206);
    pairs.emplace_back(p, f);
  }
  return pairs;
}

void checkTypes(const Pairs& pairs, const TableDef& primary, const TableDef& foreign) {
  for (const auto& [p, f] : pairs) {
    const ColumnDef &a = primary.columns[p], &b = foreign.columns[f];
    const bool sameLength = a.type() == Type::Text || a.layout.length == b.layout.length;
    if (a.type() != b.type() || a.isLongValue() || !sameLength) throw Error(3368);
  }
}

// The unique index over exactly the referenced columns, the primary key before others; the pairs take its
// order.
int findReferenced(const TableDef& primary, Pairs& pairs) {
  const IndexDef* best = nullptr;
  for (const IndexDef& index : primary.indexes) {
    const RealIndex& real = primary.realIndexes[index.real];
    if (index.foreign || !real.unique || real.columns.size() != pairs.size()) continue;
    const bool covers = std::all_of(real.columns.begin(), real.columns.end(), [&](const IndexColumn& part) {
      return std::any_of(pairs.begin(), pairs.end(),
                         [&](const auto& pair) { return pair.first == part.ordinal; });
    });
    if (covers && (!best || index.primary)) best = &index;
  }
  if (!best) throw Error(3609);
  Pairs ordered;
  for (const IndexColumn& part : primary.realIndexes[best->real].columns) {
    ordered.push_back(*std::find_if(pairs.begin(), pairs.end(),
                                    [&](const auto& pair) { return pair.first == part.ordinal; }));
  }
  pairs = std::move(ordered);
  return best->real;
}

// An ordinary index over just the foreign columns, which the relationship then shares; -1 when there is none.
int findShared(const TableDef& foreign, const Pairs& pairs) {
  for (const IndexDef& index : foreign.indexes) {
    const RealIndex& real = foreign.realIndexes[index.real];
    if (index.primary || index.foreign || real.unique || real.ignoreNulls || real.required) continue;
    const bool same = std::equal(real.columns.begin(), real.columns.end(), pairs.begin(), pairs.end(),
                                 [](const IndexColumn& part, const auto& pair) {
                                   return part.ordinal == pair.second && !part.descending;
                                 });
    if (same) return index.real;
  }
  return -1;
}

}  // namespace

std::vector<Relation> FileCatalog::relations() {
  const ReadScope scope(pager_);
  const TableDefPtr def = systemTable(u"MSysRelationships");
  const RelationColumns columns(*def);
  const RowStore rows(pager_, def);
  struct Found {
    Relation relation;
    std::vector<int32_t> positions;
  };
  std::vector<Found> found;
  for (Heap::Scan scan = rows.scan(); scan.next();) {
    const RowReader row = rows.reader(scan.bytes(), scan.where());
    const std::u16string name = textOf(row, columns.name);
    auto at = std::find_if(found.begin(), found.end(),
                           [&](const Found& f) { return sameName(f.relation.name, name); });
    if (at == found.end()) {
      Found added;
      added.relation.name = name;
      added.relation.table = textOf(row, columns.table);
      added.relation.foreignTable = textOf(row, columns.foreignTable);
      applyFlags(added.relation, static_cast<uint32_t>(numberOf(row, columns.flags)));
      at = found.insert(found.end(), std::move(added));
    }
    const int32_t position = numberOf(row, columns.position);
    const auto place = std::upper_bound(at->positions.begin(), at->positions.end(), position);
    at->relation.columns.insert(at->relation.columns.begin() + (place - at->positions.begin()),
                                {textOf(row, columns.column), textOf(row, columns.foreignColumn)});
    at->positions.insert(place, position);
  }
  std::vector<Relation> relations;
  for (Found& f : found) relations.push_back(std::move(f.relation));
  return relations;
}

void FileCatalog::createRelation(const Relation& relation) {
  requireWritable();
  Transaction change(pager_);
  Relation made = relation;
  const auto taken = [&](std::u16string_view name) {
    return objects_->find(kRelationsContainer, name).has_value();
  };
  if (made.name.empty()) {
    const std::u16string base = (made.table + made.foreignTable).substr(0, kMaxNameLength - 3);
    made.name = base;
    for (int i = 1; taken(made.name); ++i) made.name = base + fromUtf8(std::to_string(i));
  }
  if (!isValidName(made.name)) throw Error(3125, {made.name});
  if (taken(made.name)) throw Error(3378, {made.name});
  const Draft primary = draft(made.table), foreign = draft(made.foreignTable);
  const Pairs pairs = resolve(made, primary.def, foreign.def);
  made.table = primary.def.name;  // names as the definitions spell them
  made.foreignTable = foreign.def.name;
  for (size_t i = 0; i < pairs.size(); ++i) {
    made.columns[i] = {primary.def.columns[pairs[i].first].name, foreign.def.columns[pairs[i].second].name};
  }
  if (made.enforced) enforce(made);
  addRelationRows(made);
  change.commit();
  changed();
}

// Writes the pair of entries in the two definitions and builds the foreign side's index.
void FileCatalog::enforce(const Relation& relation) {
  Draft primaryDraft = draft(relation.table);
  std::optional<Draft> other;
  if (!sameName(relation.table, relation.foreignTable)) other = draft(relation.foreignTable);
  Draft& foreignDraft = other ? *other : primaryDraft;
  TableDef &primary = primaryDraft.def, &foreign = foreignDraft.def;

  Pairs pairs = resolve(relation, primary, foreign);
  checkTypes(pairs, primary, foreign);
  const int referenced = findReferenced(primary, pairs);
  if (foreign.index(relation.name)) throw Error(3375, {foreign.name, relation.name});
  const size_t roomNeeded = other ? 1 : 2;
  if (foreign.indexes.size() + roomNeeded > kMaxIndexes) throw Error(3626, {foreign.name});
  if (primary.indexes.size() + roomNeeded > kMaxIndexes) throw Error(3626, {primary.name});

  int key = relation.unique ? -1 : findShared(foreign, pairs);
  if (key < 0) {
    RealIndex real;
    real.unique = relation.unique;
    for (const auto& pair : pairs) real.columns.push_back({.ordinal = pair.second});
    PageNumber mapPage = foreign.ownedMap.page;
    key = makeRealIndex(foreign, std::move(real), mapPage);
    buildIndex(foreignDraft.published(), key, foreign.realIndexes[key].uniqueEntries);
  }
  checkPresentRows(primary, primary.realIndexes[referenced], foreign, foreign.realIndexes[key]);

  IndexDef foreignEntry;
  foreignEntry.name = relation.name;
  foreignEntry.number = freeNumber(foreign);
  foreignEntry.real = key;
  foreignEntry.foreign = true;
  foreignEntry.side = RelationSide::Foreign;
  foreignEntry.cascadeUpdates = relation.cascadeUpdates ? 1 : 0;
  foreignEntry.cascadeDeletes = relation.cascadeDeletes ? 1 : relation.cascadeNull ? 2 : 0;
  IndexDef hidden = foreignEntry;
  hidden.number = other ? freeNumber(primary) : foreignEntry.number + 1;
  hidden.name = std::u16string(u".r") + static_cast<char16_t>(u'A' + hidden.number);
  hidden.real = referenced;
  hidden.side = RelationSide::Primary;
  hidden.partnerNumber = static_cast<int32_t>(foreignEntry.number);
  hidden.partnerTable = foreign.page;
  foreignEntry.partnerNumber = static_cast<int32_t>(hidden.number);
  foreignEntry.partnerTable = primary.page;
  foreign.indexes.push_back(std::move(foreignEntry));
  primary.indexes.push_back(std::move(hidden));

  store(primaryDraft, false);
  if (other) store(*other, false);
}

void FileCatalog::checkPresentRows(const TableDef& primary, const RealIndex& referenced,
                                   const TableDef& foreign, const RealIndex& key) {
  const auto foreignDef = std::make_shared<TableDef>(foreign);
  const RowStore rows(pager_, foreignDef);
  const BTree tree(pager_, primary.page, referenced.root, referenced.map);
  const std::vector<KeyColumn> keyColumns = primary.keyColumns(referenced, false);
  std::vector<Value> values(key.columns.size());
  for (Heap::Scan scan = rows.scan(); scan.next();) {
    const RowReader row = rows.reader(scan.bytes(), scan.where());
    bool someNull = false;
    for (size_t i = 0; i < values.size(); ++i) {
      values[i] = row.value(key.columns[i].ordinal);
      someNull = someNull || values[i].isNull();
    }
    if (!someNull && !tree.containsKey(asBytes(encodeKey(keyColumns, values)))) {
      throw Error(3379, {primary.name, foreign.name});
    }
  }
}

void FileCatalog::addRelationRows(const Relation& relation) {
  const TableDefPtr def = systemTable(u"MSysRelationships");
  RowStore rows(pager_, def);
  const int32_t count = static_cast<int32_t>(relation.columns.size());
  for (int32_t i = 0; i < count; ++i) {
    SystemRow row(*def);
    row.set(u"szRelationship", relation.name)
        .set(u"grbit", static_cast<int32_t>(flagsOf(relation)))
        .set(u"ccolumn", count)
        .set(u"icolumn", i)
        .set(u"szObject", relation.foreignTable)
        .set(u"szColumn", relation.columns[i].second)
        .set(u"szReferencedObject", relation.table)
        .set(u"szReferencedColumn", relation.columns[i].first);
    rows.insert(row.values());
  }
  const CatalogObject object{.id = objects_->freeId(),
                             .parent = kRelationsContainer,
                             .type = kObjectRelation,
                             .flags = 0,
                             .name = relation.name};
  objects_->add(object, std::string(), systemTable(u"MSysACEs"));
}

void FileCatalog::removeRelationRows(const Relation& relation) {
  const TableDefPtr def = systemTable(u"MSysRelationships");
  const RelationColumns columns(*def);
  RowStore rows(pager_, def);
  std::vector<RowId> doomed;
  for (Heap::Scan scan = rows.scan(); scan.next();) {
    const RowReader row = rows.reader(scan.bytes(), scan.where());
    if (sameName(textOf(row, columns.name), relation.name)) doomed.push_back(scan.id());
  }
  for (const RowId row : doomed) rows.remove(row);
  if (const auto entry = objects_->find(kRelationsContainer, relation.name)) {
    objects_->remove(*entry, systemTable(u"MSysACEs"));
  }
}

void FileCatalog::dropRelation(std::u16string_view name) {
  requireWritable();
  Transaction change(pager_);
  const std::vector<Relation> all = relations();
  const auto doomed =
      std::find_if(all.begin(), all.end(), [&](const Relation& r) { return sameName(r.name, name); });
  if (doomed == all.end()) throw Error(3377, {u"", name});

  if (doomed->enforced) {
    Draft foreignDraft = draft(doomed->foreignTable);
    std::optional<Draft> other;
    if (!sameName(doomed->table, doomed->foreignTable)) other = draft(doomed->table);
    TableDef &foreign = foreignDraft.def, &primary = other ? other->def : foreignDraft.def;
    const IndexDef* entry = foreign.index(name);
    if (entry && entry->side == RelationSide::Foreign) {
      const IndexDef removed = *entry;
      std::erase_if(foreign.indexes, [&](const IndexDef& i) { return i.number == removed.number; });
      std::erase_if(primary.indexes, [&](const IndexDef& i) {
        return i.side == RelationSide::Primary && static_cast<int32_t>(i.number) == removed.partnerNumber;
      });
      const bool inUse = std::any_of(foreign.indexes.begin(), foreign.indexes.end(),
                                     [&](const IndexDef& i) { return i.real == removed.real; });
      if (!inUse) releaseRealIndex(foreign, removed.real);
      store(foreignDraft, false);
      if (other) store(*other, false);
    }
  }
  removeRelationRows(*doomed);
  change.commit();
  changed();
}

// Follows the new name of a table (`newTable` not empty) or of one of its columns.
void FileCatalog::renameInRelations(std::u16string_view table, std::u16string_view newTable,
                                    std::u16string_view column, std::u16string_view newColumn) {
  const TableDefPtr def = systemTable(u"MSysRelationships");
  const RelationColumns columns(*def);
  RowStore rows(pager_, def);
  std::vector<std::pair<RowId, std::vector<RowStore::Change>>> pending;
  for (Heap::Scan scan = rows.scan(); scan.next();) {
    const RowReader row = rows.reader(scan.bytes(), scan.where());
    std::vector<RowStore::Change> changes;
    const auto side = [&](int tableOrdinal, int columnOrdinal) {
      if (!sameName(textOf(row, tableOrdinal), table)) return;
      if (!newTable.empty()) {
        changes.push_back({tableOrdinal, Text(newTable)});
      } else if (sameName(textOf(row, columnOrdinal), column)) {
        changes.push_back({columnOrdinal, Text(newColumn)});
      }
    };
    side(columns.table, columns.column);
    side(columns.foreignTable, columns.foreignColumn);
    if (!changes.empty()) pending.emplace_back(scan.id(), std::move(changes));
  }
  for (const auto& [row, changes] : pending) rows.update(row, changes);
}

}  // namespace jet
