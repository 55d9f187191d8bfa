#pragma once

#include <set>

#include "jet/sql/engine.h"
#include "jet/sql/expression.h"
#include "jet/sql/group.h"
#include "jet/sql/planner.h"
#include "jet/sql/select_rows.h"

namespace jet::sql {

// The groups of a grouped query, while its outputs are resolved: grouping expressions and aggregates become
// columns of the group's slot.
struct GroupScope {
  std::vector<const ast::Expr*> keys;
  std::vector<ExpressionPtr> keyExpressions;
  std::vector<const ast::Expr*> aggregateCalls;
  std::vector<AggregateSpec> aggregates;
  Slot* slot = nullptr;
};

// The names that an expression may use.
struct Scope {
  Scope* outer = nullptr;
  std::vector<Slot*> slots;
  GroupScope* group = nullptr;                            // set while outputs of a grouped query are resolved
  const std::vector<ast::SelectItem>* aliases = nullptr;  // set where aliases of the select list are known
  std::vector<const ast::Expr*> aliasPath;                // aliases being resolved
  int aggregateError = 3095;            // aggregates are not allowed here: the error that says so
  std::vector<const Slot*> outerSlots;  // of outer queries that were referred to
  Slot* implicitSlot = nullptr;         // the value that a validation rule is about
  int implicitColumn = -1;

  void refer(const Slot* slot);
};

// Resolves names: from syntax trees to queries that can be run. One binder serves one statement; it owns
// nothing of the result but the slots, which must live as long.
class Binder {
 public:
  Binder(Catalog& catalog, RuleEvaluator* rules, const Parameters& parameters, EvalContext& context);

  std::unique_ptr<Rows> query(const ast::Query& q, Scope* outer = nullptr);
  ExpressionPtr expression(const ast::Expr& e, Scope& scope);
  // A condition as its parts joined by And. `aggregateError` names the clause.
  void conditions(const ast::Expr& e, Scope& scope, int aggregateError, std::vector<ExpressionPtr>& list);
  // Adds the sources of a FROM clause to the scope.
  std::unique_ptr<JoinTree> source(const ast::Source& s, Scope& scope);
  // A plan over the sources: FROM and WHERE. The scope gets the slots.
  JoinTree joinTree(const std::vector<ast::SourcePtr>& from, const ast::Expr* where, Scope& scope);

  Slot& addSlot(std::unique_ptr<Slot> slot);
  Slot& openTable(TableDefPtr table, std::u16string name);
  void declare(const std::vector<ast::Parameter>& parameters);
  // Throws 3061 when a name was neither a column nor a parameter.
  void finish() const;
  const std::set<std::u16string>& missing() const { return missing_; }
  void addMissing(const std::u16string& name);

  struct Column {
    Slot* slot = nullptr;
    int ordinal = -1;
    Scope* scope = nullptr;
  };
  // The column of that name in the scope or the ones around it; slot nullptr when there is none. 3079 when
  // several.
  Column find(std::u16string_view qualifier, std::u16string_view name, Scope& scope) const;

  std::vector<std::unique_ptr<Slot>> takeSlots() { return std::move(slots_); }
  bool isStrict = false;       // errors in outputs stop the statement
  int32_t lastAutoNumber = 0;  // @@IDENTITY

 private:
  friend class SelectBinder;

  std::unique_ptr<Rows> unionQuery(const ast::Query& q, Scope* outer);
  void bindUnionOrder(const ast::Query& q, CollectedRows& rows) const;
  std::unique_ptr<Rows> crosstab(const ast::Query& q, Scope* outer);
  std::unique_ptr<Rows> subquery(const ast::Expr& e, Scope& scope, bool oneColumn);
  std::unique_ptr<Slot> namedSource(const ast::Source& s, Scope& scope);

  // Expressions.
  ExpressionPtr name(const ast::Expr& e, Scope& scope);
  ExpressionPtr columnReference(const Column& column, const ast::Expr& e, Scope& scope);
  ExpressionPtr alias(const ast::Expr& e, Scope& scope);
  ExpressionPtr unknownName(const ast::Expr& e);
  ExpressionPtr chain(const ast::Expr& e, Scope& scope);
  ExpressionPtr comparison(ast::Op op, ExpressionPtr left, ExpressionPtr right);
  ExpressionPtr call(const ast::Expr& e, Scope& scope);
  ExpressionPtr function(const ast::Expr& e, Scope& scope);
  ExpressionPtr aggregate(AggregateKind kind, const ast::Expr& e, Scope& scope);
  ExpressionPtr grouped(const ast::Expr& e, Scope& scope);
  ExpressionPtr operation(std::unique_ptr<Operation> node, const ast::Expr& e, Scope& scope);
  ExpressionPtr folded(std::unique_ptr<Operation> node);
  bool same(const ast::Expr& a, const ast::Expr& b, Scope& scope) const;

  Catalog& catalog_;
  RuleEvaluator* rules_;
  Parameters parameters_;  // by parameterKey
  EvalContext& context_;
  std::vector<std::unique_ptr<Slot>> slots_;
  std::map<std::u16string, Type> declared_;
  std::set<std::u16string> missing_;
  int savedQueryDepth_ = 0;
};

// Parameters may be written with points or exclamation marks: Forms!f!x is Forms.f.x.
std::u16string parameterKey(std::u16string_view name);

// An aggregate function is called in the expression itself, not in a subquery of it.
bool hasAggregate(const ast::Expr& e);

}  // namespace jet::sql
