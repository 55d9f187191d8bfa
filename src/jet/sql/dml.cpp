#include <algorithm>

#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/sql/statement.h"

namespace jet::sql {

namespace {

// What an update will do to one row. All are worked out before the first row is changed.
struct PendingUpdate {
  size_t target;
  RowId row;
  std::vector<Table::Change> changes;
};

Value converted(const Table& table, int ordinal, const Value& v, const EvalContext& c) {
  const TableDef& def = table.def();
  const ColumnDef& column = def.columns[static_cast<size_t>(ordinal)];
  const bool sized = column.type() == Type::Text || column.type() == Type::Binary;
  return convertFor(column.type(), sized ? column.size(def.rowLayout.file->version) : 0, v, c,
                    column.layout.scale);
}

int ordinalOf(const TableDef& table, const std::u16string& column) {
  const int ordinal = table.columnOrdinal(column);
  if (ordinal < 0) throw Error(3127, {column}, "DAO.Database");
  return ordinal;
}

// The columns that the values of an INSERT go to, in their order.
std::vector<int> targets(const TableDef& table, const std::vector<std::u16string>& names) {
  std::vector<int> ordinals;
  for (const auto& name : names) {
    const int ordinal = ordinalOf(table, name);
    if (std::find(ordinals.begin(), ordinals.end(), ordinal) != ordinals.end())
      throw Error(3063, {name}, "DAO.Database");
    ordinals.push_back(ordinal);
  }
  return ordinals;
}

// A new row of the table; value(i) gives the value of the column ordinals[i].
template <typename ValueAt>
std::vector<std::optional<Value>> newRow(const Table& table, const std::vector<int>& ordinals,
                                         const ValueAt& value, const EvalContext& c) {
  std::vector<std::optional<Value>> row(table.def().columns.size());
  for (size_t i = 0; i < ordinals.size(); ++i)
    row[static_cast<size_t>(ordinals[i])] = converted(table, ordinals[i], value(i), c);
  return row;
}

void insertRows(Table& table, const std::vector<int>& ordinals, const Collected& rows, const EvalContext& c) {
  Table::Insertion insertion(table);
  for (const uint32_t row : rows.order)
    insertion.insert(newRow(
        table, ordinals, [&](size_t i) { return rows.store->value(row, i); }, c));
  insertion.finish();
}

bool hasAutoNumber(const TableDef& table) {
  return std::any_of(table.columns.begin(), table.columns.end(),
                     [](const ColumnDef& column) { return column.autoNumber; });
}

void noteAutoNumber(const Table& table, StatementContext& c) {
  if (hasAutoNumber(table.def())) c.lastAutoNumber = table.lastAutoNumber();
}

int64_t insertQuery(const ast::Insert& s, Table& table, std::vector<int> ordinals, StatementContext& c) {
  Binder binder = c.makeBinder();
  const auto rows = binder.query(*s.query);
  binder.finish();
  const auto& columns = rows->columns();
  if (s.columns.empty())
    for (const ResultColumn& column : columns) ordinals.push_back(ordinalOf(table.def(), column.name));
  if (ordinals.size() != columns.size()) throw Error(3346, {}, "DAO.Database");
  const Collected all = collectRows(*rows, c.context);
  insertRows(table, ordinals, all, c.context);
  if (!all.order.empty()) noteAutoNumber(table, c);
  return static_cast<int64_t>(all.order.size());
}

// The slot among those of the statement whose table `name` is meant.
Slot* findSlot(const std::vector<Slot*>& slots, const std::u16string& name) {
  const auto found =
      std::find_if(slots.begin(), slots.end(), [&](const Slot* s) { return sameName(s->name(), name); });
  return found == slots.end() ? nullptr : *found;
}

}  // namespace

Binder StatementContext::makeBinder() const {
  Binder binder(catalog, &rules, parameters, context);
  binder.declare(declared);
  binder.isStrict = true;
  binder.lastAutoNumber = lastAutoNumber;
  return binder;
}

TableDefPtr StatementContext::table(std::u16string_view name, int error) const {
  auto found = catalog.table(name);
  if (!found) throw Error(error, {name}, "DAO.Database");
  return found;
}

int64_t runInsert(const ast::Insert& s, StatementContext& c) {
  Table table(c.catalog, c.table(s.table, 3192), &c.rules);
  std::vector<int> ordinals = targets(table.def(), s.columns);
  if (s.query) return insertQuery(s, table, std::move(ordinals), c);

  if (s.columns.empty() && !s.values.empty()) ordinals = table.def().displayOrder();
  if (ordinals.size() != s.values.size()) throw Error(3346, {}, "DAO.Database");
  Binder binder = c.makeBinder();
  Scope scope;
  std::vector<ExpressionPtr> values;
  for (const auto& value : s.values) values.push_back(binder.expression(*value, scope));
  binder.finish();
  table.insert(newRow(
      table, ordinals, [&](size_t i) { return values[i]->value(c.context); }, c.context));
  noteAutoNumber(table, c);
  return 1;
}

int64_t runUpdate(const ast::Update& s, StatementContext& c) {
  Binder binder = c.makeBinder();
  Scope scope;
  JoinTree tree;
  tree.kind = JoinTree::Kind::Inner;
  tree.inputs.push_back(binder.source(*s.source, scope));
  if (s.where) binder.conditions(*s.where, scope, 3096, tree.conditions);

  struct Assignment {
    size_t target;
    int ordinal;
    ExpressionPtr value;
  };
  std::vector<Slot*> targets;
  std::vector<Assignment> assignments;
  for (const auto& written : s.assignments) {
    const Binder::Column column = binder.find(written.qualifier, written.column, scope);
    if (!column.slot) {
      binder.addMissing(written.column);
      continue;
    }
    if (!column.slot->table()) throw Error(3073, {}, "DAO.Database");
    if (column.slot->columns()[static_cast<size_t>(column.ordinal)].autoNumber)
      throw Error(3164, {}, "DAO.Database");
    auto target = std::find(targets.begin(), targets.end(), column.slot);
    if (target == targets.end()) target = targets.insert(target, column.slot);
    const auto index = static_cast<size_t>(target - targets.begin());
    for (const Assignment& other : assignments)
      if (other.target == index && other.ordinal == column.ordinal)
        throw Error(3063, {written.column}, "DAO.Database");
    assignments.push_back({index, column.ordinal, binder.expression(*written.value, scope)});
  }
  binder.finish();

  std::vector<PendingUpdate> pending;
  {
    const PlanNodePtr node = plan(std::move(tree), *c.context.collation);
    for (node->open(c.context); node->next(c.context);) {
      const size_t first = pending.size();
      for (size_t t = 0; t < targets.size(); ++t) pending.push_back({t, targets[t]->rowId(), {}});
      for (const Assignment& a : assignments)
        pending[first + a.target].changes.push_back(
            {a.ordinal,
             converted(*targets[a.target]->table(), a.ordinal, a.value->value(c.context), c.context)});
    }
  }
  int64_t count = 0;
  for (Slot* slot : scope.slots) slot->release();
  for (const PendingUpdate& update : pending) {
    if (update.row.isNull()) continue;  // the missing side of an outer join
    targets[update.target]->table()->update(update.row, update.changes);
    ++count;
  }
  return count;
}

int64_t runDelete(const ast::Delete& s, StatementContext& c) {
  Binder binder = c.makeBinder();
  Scope scope;
  JoinTree tree = binder.joinTree(s.from, s.where.get(), scope);
  binder.finish();
  Slot* target = scope.slots.size() == 1 ? scope.slots[0] : nullptr;
  for (const auto& name : s.targets) {
    Slot* named = findSlot(scope.slots, name);
    if (!named || (target && named != target)) throw Error(3086, {}, "DAO.Database");
    target = named;
  }
  if (!target) throw Error(3128, {}, "DAO.Database");
  if (!target->table()) throw Error(3086, {}, "DAO.Database");

  std::vector<RowId> rows;
  {
    const PlanNodePtr node = plan(std::move(tree), *c.context.collation);
    for (node->open(c.context); node->next(c.context);)
      if (!target->rowId().isNull()) rows.push_back(target->rowId());
  }
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  for (Slot* slot : scope.slots) slot->release();
  int64_t count = 0;
  for (const RowId row : rows) {
    if (!target->table()->fetch(row)) continue;  // a cascade of an earlier one took it along
    target->table()->remove(row);
    ++count;
  }
  return count;
}

int64_t runSelectInto(const ast::Query& s, StatementContext& c) {
  Binder binder = c.makeBinder();
  const auto rows = binder.query(s);
  binder.finish();
  NewTable table;
  table.name = s.parts[0].select->into;
  for (const ResultColumn& source : rows->columns()) {
    NewColumn column;
    column.name = source.name;
    std::replace(column.name.begin(), column.name.end(), u'.', u'_');
    column.type = source.type == Type::Null ? Type::Text : source.type;
    column.size = column.type == Type::Text || column.type == Type::Binary ? source.size : 0;
    column.autoNumber = source.autoNumber;
    table.columns.push_back(std::move(column));
  }
  const Collected all = collectRows(*rows, c.context);
  Table created(c.catalog, c.catalog.createTable(table), &c.rules);
  std::vector<int> ordinals(table.columns.size());
  for (size_t i = 0; i < ordinals.size(); ++i)
    ordinals[i] = created.def().columnOrdinal(table.columns[i].name);
  insertRows(created, ordinals, all, c.context);
  return static_cast<int64_t>(all.order.size());
}

}  // namespace jet::sql
