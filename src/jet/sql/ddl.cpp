#include <algorithm>

#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/sql/statement.h"

namespace jet::sql {

using ast::Constraint;

namespace {

// `wanted`, or `wanted` with the first number that makes it unlike the names taken.
template <typename Taken>
std::u16string freeName(const std::u16string& wanted, Taken&& isTaken) {
  std::u16string name = wanted.substr(0, kMaxNameLength);
  for (int n = 1; isTaken(name); ++n) {
    const std::string digits = std::to_string(n);
    name = wanted.substr(0, kMaxNameLength - digits.size()) + std::u16string(digits.begin(), digits.end());
  }
  return name;
}

NewIndex toIndex(const Constraint& k, const std::function<bool(const std::u16string&)>& isTaken) {
  NewIndex index;
  index.primary = k.kind == Constraint::Kind::PrimaryKey;
  index.unique = true;
  for (const auto& column : k.columns) index.columns.emplace_back(column, false);
  index.name = !k.name.empty() ? k.name : freeName(index.primary ? u"PrimaryKey" : k.columns[0], isTaken);
  return index;
}

void createRelation(const Constraint& k, const std::u16string& table, StatementContext& c) {
  Relation relation;
  relation.table = c.table(k.table, 3371)->name;
  relation.foreignTable = c.table(table)->name;
  std::vector<std::u16string> referenced = k.foreignColumns;
  if (referenced.empty()) {
    const TableDefPtr primary = c.table(k.table);
    const IndexDef* key = primary->primaryKey();
    if (!key) throw Error(3373, {k.table}, "DAO.Database");
    for (const IndexColumn& column : primary->realIndexes[static_cast<size_t>(key->real)].columns)
      referenced.push_back(primary->columns[static_cast<size_t>(column.ordinal)].name);
  }
  if (referenced.size() != k.columns.size()) throw Error(3368, {}, "DAO.Database");
  for (size_t i = 0; i < referenced.size(); ++i) relation.columns.emplace_back(referenced[i], k.columns[i]);
  relation.cascadeUpdates = k.cascadeUpdates;
  relation.cascadeDeletes = k.cascadeDeletes;
  relation.cascadeNull = k.setNullOnDelete;
  const auto existing = c.catalog.relations();
  relation.name = !k.name.empty()
                      ? k.name
                      : freeName(relation.table + relation.foreignTable, [&](const std::u16string& name) {
                          return std::any_of(existing.begin(), existing.end(),
                                             [&](const Relation& r) { return sameName(r.name, name); });
                        });
  c.catalog.createRelation(relation);
}

void setRequired(const std::u16string& table, const std::vector<std::u16string>& columns,
                 StatementContext& c) {
  PropertySet properties;
  properties.setBoolean(u"Required", true);
  for (const auto& column : columns) c.catalog.setColumnProperty(table, column, properties.items[0]);
}

void addConstraint(const Constraint& k, const std::u16string& table, StatementContext& c) {
  switch (k.kind) {
    case Constraint::Kind::ForeignKey:
      return createRelation(k, table, c);
    case Constraint::Kind::NotNull:
      return setRequired(table, k.columns, c);
    default:
      break;
  }
  const TableDefPtr def = c.table(table);
  c.catalog.createIndex(table,
                        toIndex(k, [&](const std::u16string& name) { return def->index(name) != nullptr; }));
}

void dropConstraint(const std::u16string& name, const TableDef& table, StatementContext& c) {
  for (const Relation& relation : c.catalog.relations())
    if (sameName(relation.name, name) && sameName(relation.foreignTable, table.name))
      return c.catalog.dropRelation(relation.name);
  if (!table.index(name)) throw Error(3371, {}, "DAO.Database");
  c.catalog.dropIndex(table.name, name);
}

}  // namespace

NewColumn toNewColumn(const ast::ColumnDefinition& written) {
  NewColumn column;
  column.name = written.name;
  column.type = written.type;
  column.size = written.size;
  column.autoNumber = written.autoNumber;
  column.required = written.required;
  column.compressed = written.compressed;
  column.defaultValue = written.defaultValue;
  column.precision = written.precision;
  column.scale = written.scale;
  return column;
}

void runCreateTable(const ast::CreateTable& s, StatementContext& c) {
  NewTable table;
  table.name = s.name;
  std::vector<const Constraint*> constraints;
  for (const auto& column : s.columns) {
    table.columns.push_back(toNewColumn(column));
    for (const auto& k : column.constraints) constraints.push_back(&k);
  }
  for (const auto& k : s.constraints) constraints.push_back(&k);
  for (const Constraint* k : constraints) {
    if (k->kind == Constraint::Kind::NotNull) {
      for (auto& column : table.columns)
        for (const auto& name : k->columns) column.required = column.required || sameName(column.name, name);
    } else if (k->kind != Constraint::Kind::ForeignKey) {
      table.indexes.push_back(toIndex(*k, [&](const std::u16string& name) {
        return std::any_of(table.indexes.begin(), table.indexes.end(),
                           [&](const NewIndex& i) { return sameName(i.name, name); });
      }));
    }
  }
  c.catalog.createTable(table);
  for (const Constraint* k : constraints)
    if (k->kind == Constraint::Kind::ForeignKey) createRelation(*k, s.name, c);
}

void runAlterTable(const ast::AlterTable& s, StatementContext& c) {
  using Action = ast::AlterTable::Action;
  const TableDefPtr table = c.table(s.table);
  switch (s.action) {
    case Action::AddColumn:
      for (const auto& column : s.columns) {
        c.catalog.addColumn(s.table, toNewColumn(column));
        for (const auto& k : column.constraints) addConstraint(k, s.table, c);
      }
      break;
    case Action::AlterColumn: {
      const int ordinal = table->columnOrdinal(s.columns[0].name);
      if (ordinal < 0) throw Error(3381, {table->name, s.columns[0].name}, "DAO.Database");
      changeColumn(*table, ordinal, s.columns[0], c);
      for (const auto& k : s.columns[0].constraints) addConstraint(k, s.table, c);
      break;
    }
    case Action::DropColumn:
      for (const auto& name : s.names) c.catalog.dropColumn(s.table, name);
      break;
    case Action::AddConstraint:
      addConstraint(s.constraint, s.table, c);
      break;
    case Action::DropConstraint:
      dropConstraint(s.names[0], *table, c);
      break;
    case Action::SetDefault:
    case Action::DropDefault: {
      PropertySet properties;
      properties.setText(u"DefaultValue", s.columns[0].defaultValue, Type::Memo);
      c.catalog.setColumnProperty(s.table, s.columns[0].name, properties.items[0]);
      break;
    }
  }
}

void runCreateIndex(const ast::CreateIndex& s, StatementContext& c) {
  NewIndex index;
  index.name = s.name;
  index.columns = s.columns;
  index.primary = s.primary;
  index.unique = s.unique || s.primary;
  index.ignoreNulls = s.ignoreNull;
  index.required = s.disallowNull;
  c.catalog.createIndex(c.table(s.table)->name, index);
}

}  // namespace jet::sql
