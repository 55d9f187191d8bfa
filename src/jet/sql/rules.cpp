#include "jet/sql/rules.h"

#include "jet/format/error.h"
#include "jet/sql/binder.h"
#include "jet/sql/parser.h"

namespace jet::sql {

namespace {

constexpr size_t kMostCompiled = 1000;  // rules kept

}  // namespace

EvalContext currentContext(Catalog& catalog) {
  EvalContext c;
  const FileHeader& header = catalog.header();
  c.collation = &Collation::get(header.lcid, header.version == Version::Jet3);
  c.now = Date{catalog.pager().environment().localTime()};
  return c;
}

EvalContext Rules::context() const { return statement ? *statement : currentContext(catalog_); }

Value Rules::defaultValue(const ColumnDef& column) {
  EvalContext c = context();
  const Parameters none;
  Binder binder(catalog_, this, none, c);
  Scope scope;
  auto value = binder.expression(*parseExpression(column.defaultValue), scope);
  if (!binder.missing().empty()) throw Error(3355, {}, "DAO.Field");
  const int size = column.type() == Type::Text ? column.size(catalog_.header().version) : 0;
  return convertFor(column.type(), size, value->value(c), c, column.layout.scale);
}

Rules::Compiled& Rules::compiled(const std::u16string& rule, const TableDef& table, int ordinal,
                                 EvalContext& c) {
  if (compiled_.size() > kMostCompiled) compiled_.clear();
  Compiled& entry = compiled_[{rule, ordinal}];
  bool fits = entry.condition && entry.columns.size() == table.columns.size();
  for (size_t i = 0; fits && i < table.columns.size(); ++i) fits = entry.columns[i] == table.columns[i].name;
  if (fits) return entry;

  entry = Compiled();
  std::vector<ResultColumn> columns;
  for (const ColumnDef& column : table.columns) {
    ResultColumn described;
    described.name = column.name;
    described.type = column.type();
    entry.columns.push_back(column.name);
    columns.push_back(std::move(described));
  }
  entry.slot = std::make_unique<Slot>(table.name, std::move(columns));
  const Parameters none;
  Binder binder(catalog_, this, none, c);
  Scope scope;
  scope.slots.push_back(entry.slot.get());
  if (ordinal >= 0) {
    scope.implicitSlot = entry.slot.get();
    scope.implicitColumn = ordinal;
  }
  auto condition = binder.expression(ordinal >= 0 ? *parseRule(rule) : *parseExpression(rule), scope);
  if (!binder.missing().empty()) throw Error(3405, {*binder.missing().begin()}, "DAO.Field");
  entry.others = binder.takeSlots();
  entry.condition = std::move(condition);
  return entry;
}

bool Rules::satisfies(const std::u16string& rule, const TableDef& table, int ordinal,
                      std::span<const Value> values) {
  EvalContext c = context();
  Compiled& entry = compiled(rule, table, ordinal, c);
  entry.slot->setValues(values.data());
  return entry.condition->test(c).value_or(true);
}

}  // namespace jet::sql
