#include <algorithm>

#include "jet/catalog/catalog_impl.h"
#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/storage/btree.h"

namespace jet {

namespace {

constexpr int kDefaultTextSize = 255, kMaxTextSize = 255, kMaxBinarySize = 510;
constexpr uint8_t kFlagFixed = 0x01, kFlagUser = 0x02, kFlagAutoNumber = 0x04, kFlagGuidAutoNumber = 0x40;

bool isText(Type type) { return type == Type::Text || type == Type::Memo; }

// Bytes of the column's longest value in the row, after checking the size that was asked for.
uint16_t storedLength(const NewColumn& column) {
  switch (column.type) {
    case Type::Boolean:
      return 1;
    case Type::Decimal:
      if (column.precision < 1 || column.precision > 28 || column.scale > column.precision) throw Error(3259);
      return fixedSize(column.type);
    case Type::Text:
      if (column.size < 0 || column.size > kMaxTextSize) throw Error(3017);
      return static_cast<uint16_t>(2 * (column.size == 0 ? kDefaultTextSize : column.size));
    case Type::Binary:
      if (column.size < 0 || column.size > kMaxBinarySize) throw Error(3017);
      return static_cast<uint16_t>(column.size == 0 ? kDefaultTextSize : column.size);
    case Type::Memo:
    case Type::Ole:
      return 0;
    default:
      if (const uint16_t size = fixedSize(column.type)) return size;
      throw Error(3259);
  }
}

bool isFixedType(Type type) { return !isText(type) && type != Type::Binary && type != Type::Ole; }

// Bytes of a row's fixed part and frame: what every row takes at least.
size_t leastRow(const TableDef& def) {
  size_t fixed = 0;
  for (const ColumnDef& column : def.columns) {
    if (column.layout.fixed && column.type() != Type::Boolean) {
      fixed = std::max<size_t>(fixed, column.layout.fixedOffset + column.layout.length);
    }
  }
  const size_t variable = def.rowLayout.variableColumns;
  return 2 + fixed + (variable > 0 ? 2 * variable + 4 : 0) + (def.rowLayout.nextColumn + 7) / 8;
}

void freeLongValues(Pager& pager, const ColumnDef& column) {
  if (!column.isLongValue()) return;
  const std::vector<PageNumber> pages = UsageMap(pager, column.ownedMap).pages();
  dropUsageMap(pager, column.ownedMap);
  if (!column.freeMap.isNull()) dropUsageMap(pager, column.freeMap);
  PageAllocator allocator(pager);
  for (const PageNumber page : pages) allocator.free(page);
}

void putProperty(PropertySet& set, const Property& property) {
  set.remove(property.name);
  if (!property.stored.empty()) set.items.push_back(property);
}

}  // namespace

// Tables and queries share their names.
void FileCatalog::requireFreeTableName(std::u16string_view name, int32_t exceptId) {
  if (!isValidName(name)) throw Error(3125, {name});
  const auto present = objects_->find(kTablesContainer, name);
  if (!present || present->object.id == exceptId) return;
  throw Error(present->object.type == kObjectTable ? 3010 : 3012, {name});
}

void FileCatalog::appendColumn(TableDef& def, const NewColumn& column) const {
  if (!isValidName(column.name)) throw Error(3125, {column.name});
  if (def.columnOrdinal(column.name) >= 0) throw Error(3191, {column.name});
  if (def.rowLayout.nextColumn >= kMaxColumns) throw Error(3190);
  if (column.autoNumber && column.type != Type::Long && column.type != Type::Guid) throw Error(3259);
  const bool hasAutoNumber =
      std::any_of(def.columns.begin(), def.columns.end(), [](const ColumnDef& c) { return c.autoNumber; });
  if (column.autoNumber && column.type == Type::Long && hasAutoNumber) throw Error(3259);

  ColumnDef added;
  added.name = column.name;
  added.lcid = header_.lcid;
  for (const ColumnDef& other : def.columns) {
    added.position = std::max<uint16_t>(added.position, static_cast<uint16_t>(other.position + 1));
  }
  ColumnLayout& layout = added.layout;
  layout.type = column.type;
  layout.length = storedLength(column);
  layout.fixed = isFixedType(column.type);
  layout.number = def.rowLayout.nextColumn++;
  layout.variableIndex = def.rowLayout.variableColumns;
  layout.compressed = column.compressed && isText(column.type);
  if (column.type == Type::Decimal) layout.precision = column.precision, layout.scale = column.scale;
  if (!layout.fixed) {
    ++def.rowLayout.variableColumns;
  } else if (column.type != Type::Boolean) {
    for (const ColumnDef& other : def.columns) {
      if (!other.layout.fixed || other.type() == Type::Boolean) continue;
      layout.fixedOffset =
          std::max(layout.fixedOffset, static_cast<uint16_t>(other.layout.fixedOffset + other.layout.length));
    }
  }
  added.autoNumber = column.autoNumber && column.type == Type::Long;
  added.guidAutoNumber = column.autoNumber && column.type == Type::Guid;
  added.flags = static_cast<uint8_t>(kFlagUser | (layout.fixed ? kFlagFixed : 0) |
                                     (added.autoNumber ? kFlagAutoNumber : 0) |
                                     (added.guidAutoNumber ? kFlagGuidAutoNumber : 0));
  added.extendedFlags = layout.compressed ? 1 : 0;
  def.columns.push_back(std::move(added));
  if (leastRow(def) > FileLayout::of(header_.version).maxRow) throw Error(3047);
}

void FileCatalog::addColumnProperties(PropertyBlob& blob, const NewColumn& column) const {
  PropertySet set;
  if (column.required) set.setBoolean(u"Required", true);
  if (column.allowZeroLength && isText(column.type)) {
    set.setBoolean(u"AllowZeroLength", *column.allowZeroLength);
  }
  std::u16string defaultValue = column.defaultValue;
  if (defaultValue.empty() && column.autoNumber && column.type == Type::Guid) defaultValue = u"GenGUID()";
  if (!defaultValue.empty()) set.setText(u"DefaultValue", defaultValue, Type::Memo);
  if (!column.validationRule.empty()) set.setText(u"ValidationRule", column.validationRule, Type::Memo);
  if (!column.validationText.empty()) set.setText(u"ValidationText", column.validationText);
  if (!column.description.empty()) set.setText(u"Description", column.description);
  if (set.items.empty()) return;
  // Beside other properties a missing entry would forbid empty texts.
  if (isText(column.type) && !column.allowZeroLength) set.setBoolean(u"AllowZeroLength", true);
  blob.makeColumn(column.name).set = std::move(set);
}

TableDefPtr FileCatalog::createTable(const NewTable& table) {
  requireWritable();
  Transaction change(pager_);
  requireFreeTableName(table.name, 0);
  if (table.columns.empty()) throw Error(3264);
  TableDef def;
  def.name = table.name;
  def.rowLayout.file = &pager_.layout();
  def.rowLayout.codePage = header_.codePage;
  PropertyBlob properties;
  for (const NewColumn& column : table.columns) {
    appendColumn(def, column);
    addColumnProperties(properties, column);
  }
  if (!table.validationRule.empty()) {
    properties.makeObject().set.setText(u"ValidationRule", table.validationRule, Type::Memo);
  }
  if (!table.validationText.empty()) {
    properties.makeObject().set.setText(u"ValidationText", table.validationText);
  }

  def.page = PageAllocator(pager_).allocate().number();
  PageNumber mapPage = 0;
  def.ownedMap = createUsageMap(pager_, mapPage);
  def.freeMap = createUsageMap(pager_, mapPage);
  for (ColumnDef& column : def.columns) {
    if (!column.isLongValue()) continue;
    column.ownedMap = createUsageMap(pager_, mapPage);
    column.freeMap = createUsageMap(pager_, mapPage);
  }
  for (const NewIndex& index : table.indexes) addIndex(def, index, mapPage);

  const CatalogObject object{.id = static_cast<int32_t>(def.page),
                             .parent = kTablesContainer,
                             .type = kObjectTable,
                             .flags = 0,
                             .name = table.name};
  objects_->add(object, std::string(), systemTable(u"MSysACEs"));
  const auto entry = objects_->find(kTablesContainer, table.name);
  Draft draft{.def = std::move(def), .pages = {}, .entry = *entry, .properties = std::move(properties)};
  draft.pages.push_back(draft.def.page);
  store(draft, !draft.properties.empty());
  change.commit();
  return tableAt(draft.def.page);
}

void FileCatalog::dropTable(std::u16string_view name) {
  Transaction change(pager_);
  Draft doomed = draft(name);
  for (const IndexDef& index : doomed.def.indexes) {
    if (index.side != RelationSide::None) throw Error(3281);
  }
  for (const Relation& relation : relations()) {  // those that are not enforced
    if (sameName(relation.table, name) || sameName(relation.foreignTable, name)) removeRelationRows(relation);
  }
  TableDef& def = doomed.def;
  while (!def.realIndexes.empty()) releaseRealIndex(def, 0);
  for (const ColumnDef& column : def.columns) freeLongValues(pager_, column);
  Heap(pager_, def.page, def.ownedMap, def.freeMap).removeAll();
  dropUsageMap(pager_, def.ownedMap);
  dropUsageMap(pager_, def.freeMap);
  objects_->remove(doomed.entry, systemTable(u"MSysACEs"));
  for (const PageNumber page : doomed.pages) PageAllocator(pager_).free(page);
  change.commit();
  changed();
}

void FileCatalog::renameTable(std::u16string_view from, std::u16string_view to) {
  Transaction change(pager_);
  const Draft renamed = draft(from);
  requireFreeTableName(to, renamed.entry.object.id);
  objects_->change(renamed.entry.row, to, nullptr);
  renameInRelations(renamed.def.name, to, {}, {});
  change.commit();
  changed();
}

void FileCatalog::addColumn(std::u16string_view table, const NewColumn& column) {
  Transaction change(pager_);
  Draft grown = draft(table);
  if (grown.def.columnOrdinal(column.name) >= 0) throw Error(3380, {grown.def.name, column.name});
  appendColumn(grown.def, column);
  ColumnDef& added = grown.def.columns.back();
  if (added.isLongValue()) {
    PageNumber mapPage = grown.def.ownedMap.page;
    added.ownedMap = createUsageMap(pager_, mapPage);
    added.freeMap = createUsageMap(pager_, mapPage);
  }
  addColumnProperties(grown.properties, column);
  store(grown, true);
  if (added.autoNumber) numberRows(grown.published(), static_cast<int>(grown.def.columns.size()) - 1);
  change.commit();
}

// Gives the rows present their AutoNumbers, in row order from 1.
void FileCatalog::numberRows(const TableDefPtr& def, int ordinal) {
  RowStore rows(pager_, def);
  std::vector<RowId> present;
  for (Heap::Scan scan = rows.scan(); scan.next();) present.push_back(scan.id());
  int32_t number = 0;
  for (const RowId row : present) {
    const RowStore::Change change{ordinal, ++number};
    rows.update(row, {&change, 1});
  }
  storeCounts(def->page, 0, number);
}

void FileCatalog::dropColumn(std::u16string_view table, std::u16string_view column) {
  Transaction change(pager_);
  Draft shrunk = draft(table);
  TableDef& def = shrunk.def;
  const int ordinal = def.columnOrdinal(column);
  if (ordinal < 0) throw Error(3381, {def.name, column});
  for (const Relation& relation : relations()) {
    for (const auto& [primary, foreign] : relation.columns) {
      if ((sameName(relation.table, table) && sameName(primary, column)) ||
          (sameName(relation.foreignTable, table) && sameName(foreign, column))) {
        throw Error(3303);
      }
    }
  }
  for (RealIndex& index : def.realIndexes) {
    for (IndexColumn& part : index.columns) {
      if (part.ordinal == ordinal) throw Error(3280);
      if (part.ordinal > ordinal) --part.ordinal;
    }
  }
  if (def.columns.size() == 1) throw Error(3280);
  freeLongValues(pager_, def.columns[ordinal]);
  def.columns.erase(def.columns.begin() + ordinal);
  std::erase_if(shrunk.properties.owners, [&](const PropertyBlob::Owner& owner) {
    return owner.kind == PropertyBlob::kColumn && sameName(owner.name, column);
  });
  store(shrunk, true);
  change.commit();
}

void FileCatalog::renameColumn(std::u16string_view table, std::u16string_view from, std::u16string_view to) {
  Transaction change(pager_);
  Draft renamed = draft(table);
  const int ordinal = renamed.def.columnOrdinal(from);
  if (ordinal < 0) throw Error(3381, {renamed.def.name, from});
  if (!isValidName(to)) throw Error(3125, {to});
  const int other = renamed.def.columnOrdinal(to);
  if (other >= 0 && other != ordinal) throw Error(3380, {renamed.def.name, to});
  renamed.def.columns[ordinal].name = to;
  if (PropertyBlob::Owner* owner = renamed.properties.column(from)) owner->name = to;
  store(renamed, true);
  renameInRelations(renamed.def.name, {}, from, to);
  change.commit();
}

void FileCatalog::setColumnProperty(std::u16string_view table, std::u16string_view column,
                                    const Property& property) {
  Transaction change(pager_);
  Draft edited = draft(table);
  const int ordinal = edited.def.columnOrdinal(column);
  if (ordinal < 0) throw Error(3381, {edited.def.name, column});
  const ColumnDef& present = edited.def.columns[ordinal];
  const bool first = edited.properties.column(column) == nullptr;
  PropertySet& set = edited.properties.makeColumn(present.name).set;
  if (first && isText(present.type())) set.setBoolean(u"AllowZeroLength", present.allowZeroLength);
  putProperty(set, property);
  store(edited, true);
  change.commit();
}

void FileCatalog::setTableProperty(std::u16string_view table, const Property& property) {
  Transaction change(pager_);
  Draft edited = draft(table);
  putProperty(edited.properties.makeObject().set, property);
  store(edited, true);
  change.commit();
}

}  // namespace jet
