#include "schema.h"

using jet::toUtf8;

namespace {

std::string bracketed(std::u16string_view name) { return '[' + toUtf8(name) + ']'; }

std::string typeName(const jet::ColumnDef& column, jet::Version version) {
  using jet::Type;
  const std::string size = '(' + std::to_string(column.size(version)) + ')';
  switch (column.type()) {
    case Type::Boolean: return "YESNO";
    case Type::Byte: return "BYTE";
    case Type::Integer: return "SHORT";
    case Type::Long: return column.autoNumber ? "COUNTER" : "LONG";
    case Type::Currency: return "CURRENCY";
    case Type::Single: return "SINGLE";
    case Type::Double: return "DOUBLE";
    case Type::Date: return "DATETIME";
    case Type::Binary: return "BINARY" + size;
    case Type::Text: return "TEXT" + size;
    case Type::Ole: return "LONGBINARY";
    case Type::Memo: return "MEMO";
    case Type::Guid: return "GUID";
    case Type::Decimal:
      return "DECIMAL(" + std::to_string(column.layout.precision) + ", " + std::to_string(column.layout.scale) + ')';
    default: return "BINARY" + size;
  }
}

std::string columnList(const jet::TableDef& table, const jet::RealIndex& index) {
  std::string list;
  for (const jet::IndexColumn& column : index.columns) {
    if (!list.empty()) list += ", ";
    list += bracketed(table.columns[static_cast<size_t>(column.ordinal)].name);
    if (column.descending) list += " DESC";
  }
  return '(' + list + ')';
}

std::string columnNames(const jet::Relation& relation, bool foreign) {
  std::string list;
  for (const auto& [primary, other] : relation.columns) {
    if (!list.empty()) list += ", ";
    list += bracketed(foreign ? other : primary);
  }
  return '(' + list + ')';
}

std::string createTable(const jet::TableDef& table, jet::Version version) {
  std::string sql = "CREATE TABLE " + bracketed(table.name) + " (";
  bool first = true;
  for (const int ordinal : table.displayOrder()) {
    const jet::ColumnDef& column = table.columns[static_cast<size_t>(ordinal)];
    sql += first ? "\n  " : ",\n  ";
    first = false;
    sql += bracketed(column.name) + ' ' + typeName(column, version);
    if (column.required) sql += " NOT NULL";
    if (!column.defaultValue.empty()) sql += " DEFAULT " + toUtf8(column.defaultValue);
  }
  if (const jet::IndexDef* key = table.primaryKey())
    sql += ",\n  CONSTRAINT " + bracketed(key->name) + " PRIMARY KEY " +
           columnList(table, table.realIndexes[static_cast<size_t>(key->real)]);
  return sql + "\n);\n";
}

std::string createIndex(const jet::TableDef& table, const jet::IndexDef& index) {
  const jet::RealIndex& real = table.realIndexes[static_cast<size_t>(index.real)];
  std::string sql = real.unique ? "CREATE UNIQUE INDEX " : "CREATE INDEX ";
  sql += bracketed(index.name) + " ON " + bracketed(table.name) + ' ' + columnList(table, real);
  if (real.ignoreNulls) sql += " WITH IGNORE NULL";
  if (real.required) sql += " WITH DISALLOW NULL";
  return sql + ";\n";
}

std::string addConstraint(const jet::Relation& relation) {
  std::string sql = "ALTER TABLE " + bracketed(relation.foreignTable) + " ADD CONSTRAINT " + bracketed(relation.name) +
                    " FOREIGN KEY " + columnNames(relation, true) + " REFERENCES " + bracketed(relation.table) + ' ' +
                    columnNames(relation, false);
  if (relation.cascadeUpdates) sql += " ON UPDATE CASCADE";
  if (relation.cascadeDeletes) sql += " ON DELETE CASCADE";
  if (relation.cascadeNull) sql += " ON DELETE SET NULL";
  return sql + ";\n";
}

}  // namespace

std::string tableSchema(jet::Database& database, const std::u16string& name) {
  const jet::TableDefPtr table = database.tableDef(name);
  std::string sql = createTable(*table, database.version());
  for (const jet::IndexDef& index : table->indexes)
    if (!index.primary && index.side == jet::RelationSide::None) sql += createIndex(*table, index);
  for (const jet::Relation& relation : database.relations())
    if (relation.enforced && jet::sameName(relation.foreignTable, table->name)) sql += addConstraint(relation);
  return sql;
}
