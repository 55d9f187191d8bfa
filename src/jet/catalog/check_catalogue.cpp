#include <map>
#include <set>

#include "jet/catalog/check_impl.h"
#include "jet/catalog/objects.h"
#include "jet/catalog/references.h"
#include "jet/format/error.h"
#include "jet/format/text.h"

namespace jet::check {

namespace {

constexpr int16_t kDatabaseDocument = -32757;  // has no permissions of its own

void checkObjects(Catalog& catalog, const Fault& fault) {
  const std::vector<CatalogObject> objects = catalog.objects();
  std::set<std::pair<int32_t, std::u16string>> names;
  for (const CatalogObject& object : objects) {
    if (!names.insert({object.parent, foldName(object.name)}).second)
      fault(u"catalogue: two objects are called " + object.name);
  }
  const TableDefPtr aces = catalog.table(u"MSysACEs");
  if (!aces) {
    fault(u"catalogue: no table MSysACEs");
    return;
  }
  const int idColumn = systemColumn(*aces, u"ObjectId", Type::Long);
  std::set<int32_t> withPermissions;
  const RowStore rows(catalog.pager(), aces);
  for (Heap::Scan scan = rows.scan(); scan.next();) {
    const Value id = rows.reader(scan.bytes(), scan.where()).value(idColumn);
    if (const int32_t* number = id.getIf<int32_t>()) withPermissions.insert(*number);
  }
  for (const CatalogObject& object : objects) {
    if (object.type != kDatabaseDocument && !withPermissions.contains(object.id))
      fault(u"catalogue: " + object.name + u" has no permissions");
  }
}

// The two logical indexes of a relationship name each other.
void checkSides(const TableDef& table, const std::map<PageNumber, TableDefPtr>& tables, const Fault& fault) {
  for (const IndexDef& index : table.indexes) {
    if (index.side == RelationSide::None) continue;
    const std::u16string where = u"table " + table.name + u", relationship " + index.name;
    const auto other = tables.find(index.partnerTable);
    if (other == tables.end()) {
      fault(where + u": the other table is missing");
      continue;
    }
    const IndexDef* partner = nullptr;
    for (const IndexDef& candidate : other->second->indexes) {
      if (static_cast<int32_t>(candidate.number) == index.partnerNumber) partner = &candidate;
    }
    if (!partner || partner->partnerTable != table.page ||
        partner->partnerNumber != static_cast<int32_t>(index.number) || partner->side == RelationSide::None ||
        partner->side == index.side) {
      fault(where + u": the other side does not lead back");
    } else if (partner->cascadeUpdates != index.cascadeUpdates ||
               partner->cascadeDeletes != index.cascadeDeletes) {
      fault(where + u": the sides disagree about cascades");
    }
  }
}

// Every foreign key without Null is there on the primary side.
void checkForeignKeys(Catalog& catalog, const TableDefPtr& def, const Fault& fault) {
  const TableDef& table = *def;
  const References references(catalog, table);
  const RowStore rows(catalog.pager(), def);
  std::vector<Value> values(table.columns.size());
  for (const References::Foreign& side : references.foreign()) {
    const RealIndex& own = table.realIndexes[static_cast<size_t>(side.real)];
    const RealIndex& theirs = side.primary->realIndexes[static_cast<size_t>(side.primaryReal)];
    const BTree tree = indexTree(catalog.pager(), *side.primary, side.primaryReal);
    for (Heap::Scan scan = rows.scan(); scan.next();) {
      const RowReader row = rows.reader(scan.bytes(), scan.where());
      for (const IndexColumn& part : own.columns)
        values[static_cast<size_t>(part.ordinal)] = rows.value(row, part.ordinal);
      const std::string key = referenceKey(own, values, *side.primary, theirs);
      if (!key.empty() && !tree.containsKey(asBytes(key)))
        fault(u"table " + table.name + u": " + describe(scan.id()) + u" has no related row in " +
              side.primary->name);
    }
  }
}

void checkRelations(Catalog& catalog, const Fault& fault) {
  for (const Relation& relation : catalog.relations()) {
    const std::u16string where = u"relationship " + relation.name;
    const TableDefPtr primary = catalog.table(relation.table), foreign = catalog.table(relation.foreignTable);
    if (!primary || !foreign) {
      fault(where + u": a table is missing");
      continue;
    }
    for (const auto& [column, foreignColumn] : relation.columns) {
      if (primary->columnOrdinal(column) < 0 || foreign->columnOrdinal(foreignColumn) < 0)
        fault(where + u": a column is missing");
    }
    const IndexDef* index = foreign->index(relation.name);
    const bool enforced =
        index && index->side == RelationSide::Foreign && index->partnerTable == primary->page;
    if (enforced != relation.enforced) fault(where + u": the table definitions do not agree with it");
  }
}

}  // namespace

void checkCatalogue(Catalog& catalog, const std::vector<TableDefPtr>& tables, const Fault& fault) {
  attempt(fault, u"catalogue", [&] { checkObjects(catalog, fault); });
  std::map<PageNumber, TableDefPtr> byPage;
  for (const TableDefPtr& table : tables) byPage[table->page] = table;
  for (const TableDefPtr& table : tables) {
    checkSides(*table, byPage, fault);
    attempt(fault, u"table " + table->name, [&] { checkForeignKeys(catalog, table, fault); });
  }
  attempt(fault, u"relationships", [&] { checkRelations(catalog, fault); });
}

}  // namespace jet::check
