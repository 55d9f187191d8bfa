#include <algorithm>

#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/sql/statement.h"

// ALTER COLUMN. The stored form of every row depends on the column types, so the table is written anew:
//  1. relationships of the table are noted and dropped
//  2. a table with the changed column, the same indexes and properties is created under another name
//  3. the rows are copied, the column's values converted; what they must fulfil comes after them, since rows
//     may be older than the demand
//  4. the old table is dropped, the new one takes its name, the relationships come back
namespace jet::sql {

namespace {

NewColumn copyOf(const TableDef& table, const ColumnDef& column) {
  NewColumn copy;
  copy.name = column.name;
  copy.type = column.type();
  const bool sized = column.type() == Type::Text || column.type() == Type::Binary;
  copy.size = sized ? column.size(table.rowLayout.file->version) : 0;
  copy.autoNumber = column.autoNumber;
  copy.compressed = column.layout.compressed;
  copy.defaultValue = column.defaultValue;
  copy.validationRule = column.validationRule;
  copy.validationText = column.validationText;
  copy.description = column.properties.text(u"Description");
  copy.precision = column.layout.precision;
  copy.scale = column.layout.scale;
  return copy;
}

NewColumn changed(NewColumn copy, const ast::ColumnDefinition& written) {
  NewColumn column = toNewColumn(written);
  column.name = copy.name;
  column.required = false;
  if (written.defaultValue.empty()) column.defaultValue = copy.defaultValue;
  column.validationRule = std::move(copy.validationRule);
  column.validationText = std::move(copy.validationText);
  column.description = std::move(copy.description);
  return column;
}

std::vector<NewIndex> indexesOf(const TableDef& table) {
  std::vector<NewIndex> indexes;
  for (const IndexDef& index : table.indexes) {
    if (index.foreign) continue;  // belongs to a relationship
    const RealIndex& real = table.realIndexes[static_cast<size_t>(index.real)];
    NewIndex copy;
    copy.name = index.name;
    copy.primary = index.primary;
    copy.unique = real.unique;
    copy.ignoreNulls = real.ignoreNulls;
    copy.required = real.required && !index.primary;
    for (const IndexColumn& column : real.columns)
      copy.columns.emplace_back(table.columns[static_cast<size_t>(column.ordinal)].name, column.descending);
    indexes.push_back(std::move(copy));
  }
  return indexes;
}

bool isDemand(const Property& property) {
  return sameName(property.name, u"Required") || sameName(property.name, u"AllowZeroLength");
}

// Demands on the values, and what the definition of a new column does not carry: formats, captions, ...
void copyProperties(const TableDef& from, const std::u16string& to, const TableDef& created,
                    const std::u16string& changed, StatementContext& c) {
  for (const ColumnDef& column : from.columns) {
    const ColumnDef& copy = created.columns[static_cast<size_t>(created.columnOrdinal(column.name))];
    const bool isText = copy.type() == Type::Text || copy.type() == Type::Memo;
    for (const Property& property : column.properties.items) {
      if (isDemand(property)
              ? sameName(column.name, changed) && (!isText || sameName(property.name, u"Required"))
              : copy.properties.find(property.name) != nullptr)
        continue;
      c.catalog.setColumnProperty(to, column.name, property);
    }
  }
  for (const Property& property : from.properties.items) c.catalog.setTableProperty(to, property);
}

void copyRows(Table& from, Table& to, const EvalContext& c) {
  const TableDef& source = from.def();
  const TableDef& target = to.def();
  std::vector<RowId> rows;
  for (auto scan = from.scan(); scan.next();) rows.push_back(scan.id());
  for (const RowId id : rows) {
    auto values = from.read(id);
    if (!values) continue;
    std::vector<std::optional<Value>> row(target.columns.size());
    for (size_t i = 0; i < source.columns.size(); ++i) {
      const auto at = static_cast<size_t>(target.columnOrdinal(source.columns[i].name));
      const ColumnDef& column = target.columns[at];
      const bool sized = column.type() == Type::Text || column.type() == Type::Binary;
      row[at] = convertFor(column.type(), sized ? column.size(target.rowLayout.file->version) : 0,
                           (*values)[i], c, column.layout.scale);
    }
    to.insert(std::move(row));
  }
}

}  // namespace

void changeColumn(const TableDef& table, int ordinal, const ast::ColumnDefinition& column,
                  StatementContext& c) {
  if (table.system) throw Error(3033, {table.name}, "DAO.Database");
  std::vector<Relation> relations = c.catalog.relations();
  std::erase_if(relations, [&](const Relation& r) {
    return !sameName(r.table, table.name) && !sameName(r.foreignTable, table.name);
  });
  for (const Relation& relation : relations) c.catalog.dropRelation(relation.name);

  const TableDefPtr old = c.table(table.name);
  NewTable fresh;
  fresh.name = old->name.substr(0, kMaxNameLength - 4) + u"~new";
  for (const int i : old->displayOrder()) {
    NewColumn copy = copyOf(*old, old->columns[static_cast<size_t>(i)]);
    fresh.columns.push_back(i == ordinal ? changed(std::move(copy), column) : std::move(copy));
  }
  fresh.indexes = indexesOf(*old);
  fresh.validationRule = old->validationRule;
  fresh.validationText = old->validationText;
  const TableDefPtr created = c.catalog.createTable(fresh);
  {
    Table from(c.catalog, old), to(c.catalog, created);
    copyRows(from, to, c.context);
  }
  const std::u16string& name = old->columns[static_cast<size_t>(ordinal)].name;
  copyProperties(*old, fresh.name, *created, name, c);
  if (column.required) {
    PropertySet required;
    required.setBoolean(u"Required", true);
    c.catalog.setColumnProperty(fresh.name, name, required.items[0]);
  }
  c.catalog.dropTable(old->name);
  c.catalog.renameTable(fresh.name, old->name);
  for (const Relation& relation : relations) c.catalog.createRelation(relation);
}

}  // namespace jet::sql
