#pragma once

#include "jet/sql/binder.h"
#include "jet/sql/rules.h"

// Statements that change something, run inside of the caller's transaction.
namespace jet::sql {

struct StatementContext {
  Catalog& catalog;
  Rules& rules;
  const Parameters& parameters;
  EvalContext& context;
  int32_t& lastAutoNumber;
  const std::vector<ast::Parameter>& declared;

  Binder makeBinder() const;
  // The definition of a table that a statement names; `error` when there is none.
  TableDefPtr table(std::u16string_view name, int error = 3376) const;
};

// Each returns the number of records affected.
int64_t runInsert(const ast::Insert& s, StatementContext& c);
int64_t runUpdate(const ast::Update& s, StatementContext& c);
int64_t runDelete(const ast::Delete& s, StatementContext& c);
int64_t runSelectInto(const ast::Query& s, StatementContext& c);

void runCreateTable(const ast::CreateTable& s, StatementContext& c);
void runAlterTable(const ast::AlterTable& s, StatementContext& c);
void runCreateIndex(const ast::CreateIndex& s, StatementContext& c);

// Gives a column another type or size: the table is built anew under the same name.
void changeColumn(const TableDef& table, int ordinal, const ast::ColumnDefinition& column,
                  StatementContext& c);

NewColumn toNewColumn(const ast::ColumnDefinition& column);

}  // namespace jet::sql
