#include <algorithm>

#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/sql/binder.h"
#include "jet/sql/subquery.h"

namespace jet::sql {

using ast::Op;
using Kind = ast::Expr::Kind;

namespace {

std::unique_ptr<Constant> constant(Value v) { return std::make_unique<Constant>(std::move(v)); }

// The static type of a function whose result follows its arguments: IIf's branches, Abs, Round, ...
Type resultType(const Function& f, const std::vector<ExpressionPtr>& arguments) {
  if (f.resultType != Type::Null || arguments.empty()) return f.resultType;
  const Type first = arguments[0]->type;
  return isNumber(first) || first == Type::Date ? first : Type::Null;
}

}  // namespace

// `node` with the operands of `e` resolved.
ExpressionPtr Binder::operation(std::unique_ptr<Operation> node, const ast::Expr& e, Scope& scope) {
  for (const auto& arg : e.args) node->operands.push_back(expression(*arg, scope));
  return folded(std::move(node));
}

// The value itself when all operands are constants. An error is left for the evaluation, which may not come.
ExpressionPtr Binder::folded(std::unique_ptr<Operation> node) {
  const bool isConstant =
      node->isStable() && std::all_of(node->operands.begin(), node->operands.end(), [](const auto& o) {
        return dynamic_cast<const Constant*>(o.get()) != nullptr;
      });
  if (!isConstant) return node;
  try {
    auto result = constant(node->value(context_));
    if (result->type == Type::Null) result->type = node->type;
    return result;
  } catch (const Error&) {
    return node;
  }
}

ExpressionPtr Binder::comparison(Op op, ExpressionPtr left, ExpressionPtr right) {
  if (cannotCompare(left->type, right->type)) throw Error(3464, {}, "DAO.Database");
  auto node = std::make_unique<Comparison>(op);
  node->operands.push_back(std::move(left));
  node->operands.push_back(std::move(right));
  return folded(std::move(node));
}

ExpressionPtr Binder::chain(const ast::Expr& e, Scope& scope) {
  ExpressionPtr left = expression(*e.args[0], scope);
  std::unique_ptr<Chain> chain;
  std::unique_ptr<Junction> junction;
  for (size_t i = 0; i < e.ops.size(); ++i) {
    const Op op = e.ops[i];
    ExpressionPtr right = expression(*e.args[i + 1], scope);
    if (ast::isComparison(op)) {
      left = comparison(op, std::move(left), std::move(right));
      continue;
    }
    const bool isAnd = op == Op::And;
    if ((isAnd || op == Op::Or) && right->type == Type::Boolean &&
        (junction || (!chain && left->type == Type::Boolean))) {
      if (!junction) {
        junction = std::make_unique<Junction>(isAnd);
        junction->operands.push_back(std::move(left));
      }
      junction->operands.push_back(std::move(right));
      continue;
    }
    if (junction) left = std::move(junction);
    if (!chain) {
      chain = std::make_unique<Chain>();
      chain->type = left->type;
      chain->operands.push_back(std::move(left));
    }
    chain->type = operatorType(op, chain->type, right->type);
    chain->ops.push_back(op);
    chain->operands.push_back(std::move(right));
  }
  if (chain) return folded(std::move(chain));
  if (junction) return folded(std::move(junction));
  return left;
}

ExpressionPtr Binder::expression(const ast::Expr& e, Scope& scope) {
  if (scope.group)
    if (auto key = grouped(e, scope)) return key;
  switch (e.kind) {
    case Kind::Literal:
      return constant(e.value);
    case Kind::Name:
      return name(e, scope);
    case Kind::Chain:
      return chain(e, scope);
    case Kind::Negate: {
      auto node = std::make_unique<Negation>();
      auto result = operation(std::move(node), e, scope);
      if (auto* negation = dynamic_cast<Negation*>(result.get()))
        negation->type = operatorType(Op::Subtract, Type::Byte, negation->operands[0]->type);
      return result;
    }
    case Kind::Not: {
      auto node = std::make_unique<NotExpression>();
      node->operands.push_back(expression(*e.args[0], scope));
      node->type = node->operands[0]->type;
      return folded(std::move(node));
    }
    case Kind::Like:
      return operation(std::make_unique<LikeExpression>(e.negated, e.sqlWildcards), e, scope);
    case Kind::Between:
    case Kind::InList: {
      std::unique_ptr<Operation> node;
      if (e.kind == Kind::Between)
        node = std::make_unique<BetweenExpression>(e.negated);
      else
        node = std::make_unique<InListExpression>(e.negated);
      for (const auto& arg : e.args) {
        node->operands.push_back(expression(*arg, scope));
        if (cannotCompare(node->operands[0]->type, node->operands.back()->type))
          throw Error(3464, {}, "DAO.Database");
      }
      return folded(std::move(node));
    }
    case Kind::IsNull:
      return operation(std::make_unique<IsNullExpression>(e.negated), e, scope);
    case Kind::Exists:
      return std::make_unique<ExistsSubquery>(subquery(e, scope, false));
    case Kind::Scalar:
      return std::make_unique<ScalarSubquery>(subquery(e, scope, true));
    case Kind::InQuery:
    case Kind::Quantified: {
      ExpressionPtr operand = expression(*e.args[0], scope);
      auto rows = subquery(e, scope, true);
      if (cannotCompare(operand->type, rows->columns()[0].type)) throw Error(3464, {}, "DAO.Database");
      if (e.kind == Kind::InQuery)
        return std::make_unique<InSubquery>(std::move(operand), std::move(rows), e.negated);
      return std::make_unique<QuantifiedSubquery>(std::move(operand), std::move(rows), e.ops[0], e.all);
    }
    case Kind::Call:
      return call(e, scope);
    case Kind::Identity:
      return constant(lastAutoNumber);
    case Kind::Implicit:
      if (!scope.implicitSlot) throw Error(3075, {u"Syntax error", u""}, "DAO.Database");
      return std::make_unique<ColumnExpression>(*scope.implicitSlot, scope.implicitColumn);
  }
  return nullptr;
}

std::unique_ptr<Rows> Binder::subquery(const ast::Expr& e, Scope& scope, bool oneColumn) {
  auto rows = query(*e.query, &scope);
  if (oneColumn && rows->columns().size() != 1) throw Error(3306, {}, "DAO.Database");
  return rows;
}

// --- names

ExpressionPtr Binder::name(const ast::Expr& e, Scope& scope) {
  if (const Column column = find(e.qualifier, e.name, scope); column.slot)
    return columnReference(column, e, scope);
  if (e.qualifier.empty())
    if (auto found = alias(e, scope)) return found;
  return unknownName(e);
}

ExpressionPtr Binder::columnReference(const Column& column, const ast::Expr& e, Scope&) {
  GroupScope* group = column.scope->group;
  if (!group) return std::make_unique<ColumnExpression>(*column.slot, column.ordinal);
  // Of a grouped query only grouping columns can be seen, also from a subquery.
  for (size_t i = 0; i < group->keyExpressions.size(); ++i) {
    const auto* key = dynamic_cast<const ColumnExpression*>(group->keyExpressions[i].get());
    if (key && key->slot == column.slot && key->ordinal == column.ordinal)
      return std::make_unique<ColumnExpression>(*group->slot, static_cast<int>(i));
  }
  throw Error(3122, {e.qualifier.empty() ? e.name : e.qualifier + u"." + e.name}, "DAO.Database");
}

ExpressionPtr Binder::alias(const ast::Expr& e, Scope& scope) {
  for (Scope* at = &scope; at; at = at->outer) {
    if (!at->aliases) continue;
    for (const auto& item : *at->aliases) {
      if (item.alias.empty() || !sameName(item.alias, e.name)) continue;
      const auto& path = at->aliasPath;
      if (std::find(path.begin(), path.end(), item.expr.get()) != path.end())
        throw Error(3103, {item.alias}, "DAO.Database");
      at->aliasPath.push_back(item.expr.get());
      auto result = expression(*item.expr, *at);
      at->aliasPath.pop_back();
      return result;
    }
  }
  return nullptr;
}

// A parameter, a function without brackets, a word for a boolean; otherwise a parameter that is missing.
ExpressionPtr Binder::unknownName(const ast::Expr& e) {
  const std::u16string key = parameterKey(e.qualifier.empty() ? e.name : e.qualifier + u"." + e.name);
  const auto declared = declared_.find(key);
  if (const auto given = parameters_.find(key); given != parameters_.end()) {
    const Type type = declared == declared_.end() ? Type::Null : declared->second;
    auto result = constant(type == Type::Null ? given->second : convertFor(type, 0, given->second, context_));
    if (result->type == Type::Null) result->type = type;
    return result;
  }
  if (declared == declared_.end() && e.qualifier.empty()) {
    if (const Function* f = findFunction(e.name); f && f->minArguments == 0) {
      auto node = std::make_unique<FunctionCall>(*f);
      node->type = f->resultType;
      return folded(std::move(node));
    }
    for (const auto word : {u"yes", u"on"})
      if (key == word) return constant(true);
    for (const auto word : {u"no", u"off"})
      if (key == word) return constant(false);
  }
  missing_.insert(key);
  auto result = constant({});
  if (declared != declared_.end()) result->type = declared->second;
  return result;
}

// --- functions

ExpressionPtr Binder::call(const ast::Expr& e, Scope& scope) {
  const std::u16string folded = foldName(e.name);
  const auto wrongCount = [&](bool wrong) {
    if (wrong) throw Error(3075, {u"Wrong number of arguments used with function", e.name}, "DAO.Database");
  };
  if (const auto kind = findAggregate(folded)) return aggregate(*kind, e, scope);
  if (folded == u"isnull") {
    wrongCount(e.args.size() != 1);
    return operation(std::make_unique<IsNullExpression>(false), e, scope);
  }
  std::optional<Choice::Kind> choice;
  if (folded == u"iif") choice = Choice::Kind::IIf;
  if (folded == u"choose") choice = Choice::Kind::Choose;
  if (folded == u"switch") choice = Choice::Kind::Switch;
  if (!choice) return function(e, scope);

  const size_t n = e.args.size();
  wrongCount(*choice == Choice::Kind::IIf      ? n != 3
             : *choice == Choice::Kind::Choose ? n < 2
                                               : n < 2 || n % 2 != 0);
  auto node = std::make_unique<Choice>(*choice);
  for (const auto& arg : e.args) node->operands.push_back(expression(*arg, scope));
  const size_t step = *choice == Choice::Kind::Switch ? 2 : 1;
  for (size_t i = 1; i < n; i += step) node->type = unifiedType(node->type, node->operands[i]->type);
  return this->folded(std::move(node));
}

ExpressionPtr Binder::function(const ast::Expr& e, Scope& scope) {
  const Function* f = findFunction(e.name);
  if (!f || e.star) throw Error(3085, {e.name}, "DAO.Database");
  const auto count = static_cast<int>(e.args.size());
  if (count < f->minArguments || count > f->maxArguments)
    throw Error(3075, {u"Wrong number of arguments used with function", e.name}, "DAO.Database");
  auto node = std::make_unique<FunctionCall>(*f);
  for (const auto& arg : e.args) node->operands.push_back(expression(*arg, scope));
  node->type = resultType(*f, node->operands);
  return folded(std::move(node));
}

ExpressionPtr Binder::aggregate(AggregateKind kind, const ast::Expr& e, Scope& scope) {
  if (!scope.group) throw Error(scope.aggregateError, {e.text.empty() ? e.name : e.text}, "DAO.Database");
  if (e.args.size() != (e.star ? 0u : 1u) || (e.star && kind != AggregateKind::Count))
    throw Error(3075, {u"Wrong number of arguments used with function", e.name}, "DAO.Database");
  GroupScope& group = *scope.group;
  const auto reference = [&](size_t i) {
    return std::make_unique<ColumnExpression>(*group.slot, static_cast<int>(group.keys.size() + i));
  };
  for (size_t i = 0; i < group.aggregateCalls.size(); ++i)
    if (same(*group.aggregateCalls[i], e, scope)) return reference(i);

  AggregateSpec spec;
  spec.kind = kind;
  if (!e.star) {
    GroupScope* const outside = std::exchange(scope.group, nullptr);  // the argument sees the rows
    const int error = std::exchange(scope.aggregateError, 3095);
    spec.argument = expression(*e.args[0], scope);
    scope.group = outside;
    scope.aggregateError = error;
  }
  ResultColumn column;
  column.type = aggregateType(kind, spec.argument ? spec.argument->type : Type::Boolean);
  group.slot->addColumn(std::move(column));
  group.aggregates.push_back(std::move(spec));
  group.aggregateCalls.push_back(&e);
  return reference(group.aggregates.size() - 1);
}

// The grouping expression that `e` repeats.
ExpressionPtr Binder::grouped(const ast::Expr& e, Scope& scope) {
  if (e.kind == Kind::Literal) return nullptr;
  for (size_t i = 0; i < scope.group->keys.size(); ++i)
    if (same(*scope.group->keys[i], e, scope))
      return std::make_unique<ColumnExpression>(*scope.group->slot, static_cast<int>(i));
  return nullptr;
}

// The same expression, whatever the case and the qualification of its names.
bool Binder::same(const ast::Expr& a, const ast::Expr& b, Scope& scope) const {
  if (&a == &b) return true;
  if (a.kind != b.kind || a.args.size() != b.args.size() || a.ops != b.ops || a.negated != b.negated ||
      a.star != b.star)
    return false;
  switch (a.kind) {
    case Kind::Literal:
      return a.value == b.value;
    case Kind::Name: {
      const Column x = find(a.qualifier, a.name, scope), y = find(b.qualifier, b.name, scope);
      if (x.slot || y.slot) return x.slot == y.slot && x.ordinal == y.ordinal;
      return sameName(a.name, b.name) && sameName(a.qualifier, b.qualifier);
    }
    case Kind::Exists:
    case Kind::Scalar:
    case Kind::InQuery:
    case Kind::Quantified:
      return false;
    case Kind::Call:
      if (!sameName(a.name, b.name)) return false;
      break;
    default:
      break;
  }
  for (size_t i = 0; i < a.args.size(); ++i)
    if (!same(*a.args[i], *b.args[i], scope)) return false;
  return true;
}

}  // namespace jet::sql
