#include "jet/sql/binder.h"

#include <algorithm>

#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/sql/parser.h"

namespace jet::sql {

namespace {

constexpr int kMaxSavedQueryDepth = 32;

// Slots that an outer join inside of the tree may set to Null.
void collectNullable(const JoinTree& tree, std::vector<Slot*>& slots) {
  for (size_t i = 0; i < tree.inputs.size(); ++i) {
    if (tree.kind == JoinTree::Kind::Left && i == 1)
      tree.inputs[i]->collect(slots);
    else
      collectNullable(*tree.inputs[i], slots);
  }
}

bool contains(const std::vector<Slot*>& slots, const Slot* slot) {
  return std::find(slots.begin(), slots.end(), slot) != slots.end();
}

}  // namespace

void Scope::refer(const Slot* slot) {
  if (std::find(outerSlots.begin(), outerSlots.end(), slot) == outerSlots.end()) outerSlots.push_back(slot);
}

Binder::Binder(Catalog& catalog, RuleEvaluator* rules, const Parameters& parameters, EvalContext& context)
    : catalog_(catalog), rules_(rules), context_(context) {
  for (const auto& [name, value] : parameters) parameters_[parameterKey(name)] = value;
}

void Binder::declare(const std::vector<ast::Parameter>& parameters) {
  for (const auto& p : parameters) declared_[parameterKey(p.name)] = p.type;
}

void Binder::finish() const {
  if (missing_.empty()) return;
  const std::string count = std::to_string(missing_.size());
  throw Error(3061, {std::u16string(count.begin(), count.end())}, "DAO.Database");
}

void Binder::addMissing(const std::u16string& name) { missing_.insert(parameterKey(name)); }

std::u16string parameterKey(std::u16string_view name) {
  std::u16string key = foldName(name);
  std::replace(key.begin(), key.end(), u'!', u'.');
  return key;
}

Slot& Binder::addSlot(std::unique_ptr<Slot> slot) {
  slots_.push_back(std::move(slot));
  return *slots_.back();
}

Slot& Binder::openTable(TableDefPtr table, std::u16string name) {
  return addSlot(
      std::make_unique<Slot>(std::move(name), std::make_unique<Table>(catalog_, std::move(table), rules_)));
}

std::unique_ptr<Slot> Binder::namedSource(const ast::Source& s, Scope& scope) {
  if (auto table = catalog_.table(s.name))
    return std::make_unique<Slot>(s.shownName(), std::make_unique<Table>(catalog_, std::move(table), rules_));
  const auto sql = catalog_.querySql(s.name);
  if (!sql) throw Error(3078, {s.name}, "DAO.Database");
  if (savedQueryDepth_ == kMaxSavedQueryDepth) throw Error(3102, {s.name}, "DAO.Database");
  ast::Statement saved = parse(*sql);
  const auto* q = std::get_if<ast::Query>(&saved.body);
  if (!q || (!q->parts.empty() && q->parts[0].select && !q->parts[0].select->into.empty()))
    throw Error(3064, {s.name}, "DAO.Database");
  declare(saved.parameters);
  ++savedQueryDepth_;
  auto rows = query(*q, scope.outer);
  --savedQueryDepth_;
  return std::make_unique<Slot>(s.shownName(), std::move(rows));
}

std::unique_ptr<JoinTree> Binder::source(const ast::Source& s, Scope& scope) {
  auto tree = std::make_unique<JoinTree>();
  if (s.kind == ast::Source::Kind::Table || s.kind == ast::Source::Kind::Derived) {
    auto slot = s.kind == ast::Source::Kind::Table
                    ? namedSource(s, scope)
                    : std::make_unique<Slot>(s.alias, query(*s.query, scope.outer));
    for (const Slot* other : scope.slots)
      if (!slot->name().empty() && sameName(other->name(), slot->name()))
        throw Error(3074, {slot->name()}, "DAO.Database");
    if (slot->rows())
      for (const Slot* outer : slot->rows()->outerSlots) scope.refer(outer);
    tree->slot = &addSlot(std::move(slot));
    scope.slots.push_back(tree->slot);
    return tree;
  }
  auto left = source(*s.left, scope), right = source(*s.right, scope);
  tree->kind = s.kind == ast::Source::Kind::Inner ? JoinTree::Kind::Inner : JoinTree::Kind::Left;
  if (s.kind == ast::Source::Kind::Right) std::swap(left, right);
  tree->inputs.push_back(std::move(left));
  tree->inputs.push_back(std::move(right));
  if (s.on) conditions(*s.on, scope, 3099, tree->conditions);

  std::vector<Slot*> own, nullable;
  tree->collect(own);
  if (tree->kind == JoinTree::Kind::Inner) collectNullable(*tree, nullable);
  for (const auto& condition : tree->conditions) {
    for (const Slot* used : slotsOf(*condition)) {
      if (contains(scope.slots, const_cast<Slot*>(used)) && !contains(own, used))
        throw Error(3082, {used->name()}, "DAO.Database");
      if (contains(nullable, used)) throw Error(3258, {}, "DAO.Database");
    }
  }
  return tree;
}

JoinTree Binder::joinTree(const std::vector<ast::SourcePtr>& from, const ast::Expr* where, Scope& scope) {
  JoinTree tree;
  tree.kind = JoinTree::Kind::Inner;
  for (const auto& s : from) tree.inputs.push_back(source(*s, scope));
  if (where) conditions(*where, scope, 3096, tree.conditions);
  return tree;
}

void Binder::conditions(const ast::Expr& e, Scope& scope, int aggregateError,
                        std::vector<ExpressionPtr>& list) {
  const int before = std::exchange(scope.aggregateError, aggregateError);
  splitConjunction(expression(e, scope), list);
  scope.aggregateError = before;
}

Binder::Column Binder::find(std::u16string_view qualifier, std::u16string_view name, Scope& scope) const {
  for (Scope* at = &scope; at; at = at->outer) {
    Column found;
    const auto note = [&](Slot* slot, int ordinal) {
      if (ordinal < 0) return;
      if (found.slot) throw Error(3079, {name}, "DAO.Database");
      found = {slot, ordinal, at};
    };
    for (Slot* slot : at->slots)
      if (qualifier.empty() || sameName(slot->name(), qualifier)) note(slot, slot->find(name));
    if (!found.slot && !qualifier.empty())
      for (Slot* slot : at->slots)
        if (!slot->table()) note(slot, slot->find(qualifier, name));  // from inside of a query
    if (!found.slot) continue;
    for (Scope* inner = &scope; inner != at; inner = inner->outer) inner->refer(found.slot);
    return found;
  }
  return {};
}

bool hasAggregate(const ast::Expr& e) {
  if (e.kind == ast::Expr::Kind::Call && findAggregate(e.name)) return true;
  return std::any_of(e.args.begin(), e.args.end(), [](const auto& arg) { return hasAggregate(*arg); });
}

}  // namespace jet::sql
