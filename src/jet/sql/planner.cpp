#include "jet/sql/planner.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "jet/sql/join.h"
#include "jet/sql/scan.h"

// Costs are counted in rows read from end to end. Figures behind an index seek or in a hash table cost a
// little more; the constants matter only where two ways are close.
namespace jet::sql {

namespace {

using Slots = std::vector<const Slot*>;
using Conditions = std::vector<ExpressionPtr>;

constexpr double kSeekCost = 20, kFetchCost = 3, kBuildCost = 4, kUnknownRows = 1000;
constexpr size_t kMostStarts = 8;   // inputs up to which every one is tried as the first
constexpr double kSmallTable = 32;  // rows; not worth a hash table of its own

bool contains(const Slots& slots, const Slot* slot) {
  return std::find(slots.begin(), slots.end(), slot) != slots.end();
}

bool isSubset(const Slots& part, const Slots& whole) {
  return std::all_of(part.begin(), part.end(), [&](const Slot* s) { return contains(whole, s); });
}

bool intersects(const Slots& a, const Slots& b) {
  return std::any_of(a.begin(), a.end(), [&](const Slot* s) { return contains(b, s); });
}

Slots restricted(const Slots& slots, const Slots& to) {
  Slots result;
  for (const Slot* s : slots)
    if (contains(to, s)) result.push_back(s);
  return result;
}

Slots slotsBelow(const JoinTree& tree) {
  std::vector<Slot*> slots;
  tree.collect(slots);
  return {slots.begin(), slots.end()};
}

std::vector<Expression*> raw(const Conditions& conditions) {
  std::vector<Expression*> list;
  for (const auto& condition : conditions) list.push_back(condition.get());
  return list;
}

// Distinct values of a column: the rows of its table when it is a key, otherwise a guess.
struct Distinct {
  double values = 1;
  bool isKey = false;
};

Distinct distinctValues(const Expression& e) {
  const auto* column = dynamic_cast<const ColumnExpression*>(&e);
  if (!column || !column->slot->table()) return {};
  const TableDef& def = column->slot->table()->def();
  const double rows = std::max(1.0, column->slot->tableRows());
  for (const RealIndex& index : def.realIndexes) {
    if (index.columns.size() != 1 || index.columns[0].ordinal != column->ordinal) continue;
    if (index.unique) return {rows, true};
    if (const double keys = column->slot->keyCount(index); keys > 0) return {keys, false};
  }
  return {std::max(1.0, rows / 10), false};
}

// Of how many combinations of two rows one fulfils an equality. Each row has at most one partner with a key.
double combinations(const Expression& a, const Expression& b) {
  const Distinct x = distinctValues(a), y = distinctValues(b);
  if (x.isKey != y.isKey) return x.isKey ? x.values : y.values;
  return std::max(x.values, y.values);
}

// The sides of an equality between the rows at hand and a further input.
struct Link {
  Expression* known;
  Expression* added;
};

std::optional<Link> linkOf(Expression& condition, const Slots& input, const Slots& local,
                           const Slots& known) {
  auto* comparison = dynamic_cast<Comparison*>(&condition);
  if (!comparison || comparison->op != ast::Op::Equal) return std::nullopt;
  for (size_t side = 0; side < 2; ++side) {
    Expression& added = *comparison->operands[side];
    Expression& other = *comparison->operands[1 - side];
    const Slots addedSlots = slotsOf(added), otherSlots = slotsOf(other);
    if (addedSlots.empty() || !isSubset(addedSlots, input) || !added.isStable() || !other.isStable())
      continue;
    if (otherSlots.empty() || intersects(otherSlots, input) ||
        !isSubset(restricted(otherSlots, local), known))
      continue;
    if (cannotCompare(added.type, other.type)) continue;
    return Link{&other, &added};
  }
  return std::nullopt;
}

class Planner {
 public:
  Planner(const Collation& collation, Slots local) : collation_(collation), local_(std::move(local)) {}

  // The steps of `tree` that also apply `filters`, which refer to slots of the tree (and outer ones).
  PlanNodePtr build(JoinTree& tree, Conditions filters) {
    switch (tree.kind) {
      case JoinTree::Kind::Leaf:
        return leaf(*tree.slot, std::move(filters), {});
      case JoinTree::Kind::Inner:
        return inner(tree, std::move(filters));
      case JoinTree::Kind::Left:
        return outer(tree, std::move(filters));
    }
    return nullptr;
  }

 private:
  // One input of an inner join while its place is sought.
  struct Input {
    JoinTree* tree = nullptr;
    Slots slots;
    Conditions own;  // refer to no other input
    double tableRows = 0, rows = 0, cost = 0;
    int index = -1;  // that its own conditions use
    bool isUsed = false;
  };
  struct Candidate {
    double cost = 0, rows = 0;
    bool byIndex = false, isLinked = false;
  };

  // Marks a step as static when its conditions look at nothing but its own slots.
  void setStatic(PlanNode& node, bool inputsStatic, std::initializer_list<const Conditions*> lists) const {
    const Slots own(node.slots.begin(), node.slots.end());
    node.isStatic = inputsStatic;
    for (const Conditions* list : lists)
      for (const auto& condition : *list) node.isStatic = node.isStatic && isSubset(slotsOf(*condition), own);
    for (const Slot* slot : node.slots)
      if (slot->rows() && !slot->rows()->outerSlots.empty()) node.isStatic = false;
  }

  // `available`: local slots that stand on a row when this step is opened.
  PlanNodePtr leaf(Slot& slot, Conditions filters, const Slots& available) const {
    PlanNodePtr node;
    if (slot.rows()) {
      node = std::make_unique<QueryScan>(slot);
    } else {
      auto access = chooseIndex(slot, raw(filters), unavailableWith(available), collation_);
      if (access)
        node = std::make_unique<IndexSeek>(slot, std::move(*access));
      else
        node = std::make_unique<TableScan>(slot);
    }
    node->filters = std::move(filters);
    sortByCost(node->filters);
    setStatic(*node, true, {&node->filters});
    return node;
  }

  Slots unavailableWith(const Slots& available) const {
    Slots unavailable;
    for (const Slot* s : local_)
      if (!contains(available, s)) unavailable.push_back(s);
    return unavailable;
  }

  // Cheap conditions first: plain comparisons before patterns before subqueries.
  static void sortByCost(Conditions& conditions) {
    const auto cost = [](const ExpressionPtr& e) {
      if (dynamic_cast<const Comparison*>(e.get()) || dynamic_cast<const IsNullExpression*>(e.get()))
        return 0;
      if (dynamic_cast<const Junction*>(e.get()) || dynamic_cast<const LikeExpression*>(e.get())) return 1;
      return 2;
    };
    std::stable_sort(conditions.begin(), conditions.end(),
                     [&](const auto& a, const auto& b) { return cost(a) < cost(b); });
  }

  double tableRows(const JoinTree& tree) const {
    if (tree.kind == JoinTree::Kind::Leaf) return tree.slot->table() ? tree.slot->tableRows() : kUnknownRows;
    double rows = 0;
    for (const auto& input : tree.inputs) rows = std::max(rows, tableRows(*input));
    return rows;
  }

  void estimate(Input& input) const {
    input.tableRows = input.rows = tableRows(*input.tree);
    input.cost = input.tableRows;
    if (input.tree->kind == JoinTree::Kind::Leaf) {
      if (auto access = chooseIndex(*input.tree->slot, raw(input.own), local_, collation_)) {
        input.index = access->index;
        input.rows = access->estimate;
        input.cost = kSeekCost + access->estimate * kFetchCost;
        return;
      }
    }
    for (const auto& condition : input.own) {
      const auto* comparison = dynamic_cast<const Comparison*>(condition.get());
      input.rows *= comparison && comparison->op == ast::Op::Equal ? 0.1 : 0.4;
    }
    input.rows = std::max(1.0, input.rows);
  }

  // --- inner joins

  static void flatten(JoinTree& tree, std::vector<JoinTree*>& inputs, Conditions& conditions) {
    for (auto& condition : tree.conditions) conditions.push_back(std::move(condition));
    for (auto& input : tree.inputs) {
      if (input->kind == JoinTree::Kind::Inner)
        flatten(*input, inputs, conditions);
      else
        inputs.push_back(input.get());
    }
  }

  PlanNodePtr inner(JoinTree& tree, Conditions conditions) {
    std::vector<JoinTree*> trees;
    flatten(tree, trees, conditions);
    std::vector<Input> inputs(trees.size());
    for (size_t i = 0; i < trees.size(); ++i) {
      inputs[i].tree = trees[i];
      inputs[i].slots = slotsBelow(*trees[i]);
    }
    Conditions joins, constants;
    for (auto& condition : conditions) {
      const Slots used = restricted(slotsOf(*condition), local_);
      const auto only =
          std::find_if(inputs.begin(), inputs.end(), [&](const Input& i) { return isSubset(used, i.slots); });
      if (used.empty())
        constants.push_back(std::move(condition));
      else if (only != inputs.end())
        only->own.push_back(std::move(condition));
      else
        joins.push_back(std::move(condition));
    }
    for (Input& input : inputs) estimate(input);
    const bool byOuterRow = keepOuterLinks(inputs, joins);

    PlanNodePtr node = inputs.empty() || byOuterRow ? std::make_unique<OneRow>() : nullptr;
    if (!inputs.empty()) node = joinAll(std::move(node), inputs, std::move(joins));
    if (constants.empty()) return node;
    const bool inputStatic = node->isStatic;
    auto gate = std::make_unique<Gate>(std::move(node), std::move(constants));
    setStatic(*gate, inputStatic, {&gate->conditions});
    return gate;
  }

  // A correlated query that compares a column without an index with the outer row: the comparison becomes
  // a join with that row, so that the hash table of the inner rows is built only once.
  bool keepOuterLinks(std::vector<Input>& inputs, Conditions& joins) const {
    bool found = false;
    for (Input& input : inputs) {
      if (input.tableRows < kSmallTable || input.cost < input.tableRows) continue;
      for (auto& condition : input.own) {
        if (!linkOf(*condition, input.slots, local_, {})) continue;
        joins.push_back(std::move(condition));
        found = true;
      }
      std::erase(input.own, nullptr);
    }
    return found;
  }

  Candidate candidate(const Input& input, const Conditions& joins, const Slots& known, double rows,
                      bool first) const {
    Candidate result;
    double factor = 1;
    std::vector<Expression*> usable = raw(input.own);
    for (const auto& condition : joins) {
      if (!condition) continue;
      const auto link = linkOf(*condition, input.slots, local_, known);
      if (link) {
        result.isLinked = true;
        factor = std::max(factor, combinations(*link->added, *link->known));
      }
      Slots used = restricted(slotsOf(*condition), local_);
      std::erase_if(used, [&](const Slot* s) { return contains(input.slots, s); });
      if (isSubset(used, known)) usable.push_back(condition.get());
    }
    result.rows = std::max(1.0, rows * input.rows / factor);
    if (first && !result.isLinked) {
      result.cost = input.cost;
      result.rows = input.rows;
      return result;
    }
    if (!result.isLinked) {
      result.cost = input.cost + rows * input.rows;
      return result;
    }
    result.cost = input.cost + kBuildCost * input.rows + rows;
    if (input.tree->kind == JoinTree::Kind::Leaf) {
      const auto access = chooseIndex(*input.tree->slot, usable, unavailableWith(known), collation_);
      if (!access) return result;
      // The count of an index's keys in the file may be too high: a few keys on the other side that match all
      // rows here match many each.
      const double fetched = access->index == input.index
                                 ? access->estimate
                                 : std::max(access->estimate, input.tableRows / factor);
      const double byIndex = rows * (kSeekCost + fetched * kFetchCost);
      if (byIndex < result.cost) {
        result.cost = byIndex;
        result.byIndex = true;
      }
    }
    return result;
  }

  // The cheapest order that begins with `start`, each further input being the cheapest at its place.
  double orderFrom(size_t start, const std::vector<Input>& inputs, const Conditions& joins,
                   std::vector<size_t>& order) const {
    Slots known;
    double rows = 1, cost = 0;
    std::vector<bool> used(inputs.size());
    order.clear();
    for (size_t next = start;;) {
      const Candidate c = candidate(inputs[next], joins, known, rows, order.empty());
      cost += c.cost + c.rows;
      rows = c.rows;
      used[next] = true;
      order.push_back(next);
      known.insert(known.end(), inputs[next].slots.begin(), inputs[next].slots.end());
      double best = INFINITY;
      for (size_t i = 0; i < inputs.size(); ++i) {
        if (used[i]) continue;
        const Candidate further = candidate(inputs[i], joins, known, rows, false);
        const double total =
            further.cost + further.rows + (further.isLinked ? 0 : 1e12);  // cross products last
        if (total < best) best = total, next = i;
      }
      if (best == INFINITY) return cost;
    }
  }

  std::vector<size_t> bestOrder(const std::vector<Input>& inputs, const Conditions& joins) const {
    std::vector<size_t> best, order;
    double bestCost = INFINITY;
    for (size_t start = 0; start < inputs.size(); ++start) {
      const double cost = orderFrom(start, inputs, joins, order);
      if (cost < bestCost) {
        bestCost = cost;
        best = order;
      }
      if (inputs.size() > kMostStarts && start >= kMostStarts) break;
    }
    return best;
  }

  PlanNodePtr joinAll(PlanNodePtr node, std::vector<Input>& inputs, Conditions joins) {
    Slots known;
    double rows = 1;
    for (const size_t i : bestOrder(inputs, joins)) {
      Input& input = inputs[i];
      const Candidate c = candidate(input, joins, known, rows, !node && known.empty());
      rows = c.rows;
      // Conditions that can be checked once this input is there.
      Slots after = known;
      after.insert(after.end(), input.slots.begin(), input.slots.end());
      Conditions now;
      for (auto& condition : joins)
        if (condition && isSubset(restricted(slotsOf(*condition), local_), after))
          now.push_back(std::move(condition));
      std::erase(joins, nullptr);
      if (!node)
        node = build(*input.tree, std::move(input.own));
      else
        node = join(std::move(node), input, std::exchange(now, {}), known, c.byIndex);
      for (auto& condition : now) node->filters.push_back(std::move(condition));
      if (node->isStatic) setStatic(*node, true, {&node->filters});
      known = std::move(after);
    }
    return node;
  }

  PlanNodePtr join(PlanNodePtr left, Input& input, Conditions conditions, const Slots& known, bool byIndex) {
    if (byIndex) {
      for (auto& condition : conditions) input.own.push_back(std::move(condition));
      PlanNodePtr right = leaf(*input.tree->slot, std::move(input.own), known);
      return nested(std::move(left), std::move(right), {}, false);
    }
    PlanNodePtr right = build(*input.tree, std::move(input.own));
    return hashOrLoop(std::move(left), std::move(right), std::move(conditions), input.slots, known, false);
  }

  PlanNodePtr nested(PlanNodePtr left, PlanNodePtr right, Conditions conditions, bool isOuter) const {
    const PlanNode& rightNode = *right;
    const bool leftStatic = left->isStatic;
    auto node = std::make_unique<NestedLoop>(std::move(left), std::move(right), isOuter);
    // The right side may look at the left one; that keeps the whole static.
    setStatic(*node, leftStatic, {&rightNode.filters, &conditions});
    node->conditions = std::move(conditions);
    return node;
  }

  PlanNodePtr hashOrLoop(PlanNodePtr left, PlanNodePtr right, Conditions conditions, const Slots& added,
                         const Slots& known, bool isOuter) const {
    std::vector<HashJoin::Key> keys;
    Conditions keyConditions, rest;
    for (auto& condition : conditions) {
      if (const auto link = linkOf(*condition, added, local_, known)) {
        keys.push_back({link->known, link->added, unifiedType(link->known->type, link->added->type)});
        keyConditions.push_back(std::move(condition));
      } else {
        rest.push_back(std::move(condition));
      }
    }
    const bool inputsStatic = left->isStatic && right->isStatic;
    if (keys.empty()) {
      if (right->slots.size() > 1 || right->isStatic) right = std::make_unique<Kept>(std::move(right));
      const bool leftStatic = left->isStatic, rightStatic = right->isStatic;
      auto node = std::make_unique<NestedLoop>(std::move(left), std::move(right), isOuter);
      setStatic(*node, leftStatic && rightStatic, {&rest});
      node->conditions = std::move(rest);
      return node;
    }
    auto node = std::make_unique<HashJoin>(std::move(left), std::move(right), std::move(keys), isOuter);
    setStatic(*node, inputsStatic, {&rest, &keyConditions});
    node->conditions = std::move(rest);
    node->keyConditions = std::move(keyConditions);
    return node;
  }

  // --- outer joins

  PlanNodePtr outer(JoinTree& tree, Conditions filters) {
    JoinTree& keptTree = *tree.inputs[0];
    JoinTree& otherTree = *tree.inputs[1];
    const Slots kept = slotsBelow(keptTree), other = slotsBelow(otherTree);
    Conditions keptFilters, otherFilters, above, match;
    for (auto& filter : filters)
      (isSubset(restricted(slotsOf(*filter), local_), kept) ? keptFilters : above)
          .push_back(std::move(filter));
    for (auto& condition : tree.conditions) {
      const Slots used = restricted(slotsOf(*condition), local_);
      (!used.empty() && isSubset(used, other) ? otherFilters : match).push_back(std::move(condition));
    }
    const auto keptRaw = raw(keptFilters);
    double keptRows = tableRows(keptTree);
    if (keptTree.kind == JoinTree::Kind::Leaf)
      if (auto access = chooseIndex(*keptTree.slot, keptRaw, local_, collation_)) keptRows = access->estimate;

    PlanNodePtr left = build(keptTree, std::move(keptFilters));
    PlanNodePtr node;
    if (otherTree.kind == JoinTree::Kind::Leaf) {
      auto all = raw(otherFilters);
      for (const auto& condition : match) all.push_back(condition.get());
      const auto access = chooseIndex(*otherTree.slot, all, unavailableWith(kept), collation_);
      const double whole = tableRows(otherTree) * (1 + kBuildCost) + keptRows;
      if (access && keptRows * (kSeekCost + access->estimate * kFetchCost) < whole) {
        for (auto& condition : match) otherFilters.push_back(std::move(condition));
        node = nested(std::move(left), leaf(*otherTree.slot, std::move(otherFilters), kept), {}, true);
      }
    }
    if (!node) {
      PlanNodePtr right = build(otherTree, std::move(otherFilters));
      node = hashOrLoop(std::move(left), std::move(right), std::move(match), other, kept, true);
    }
    for (auto& filter : above) node->filters.push_back(std::move(filter));
    if (node->isStatic) setStatic(*node, true, {&node->filters});
    return node;
  }

  const Collation& collation_;
  const Slots local_;  // of the whole query; what is not here belongs to outer queries
};

}  // namespace

void JoinTree::collect(std::vector<Slot*>& slots) const {
  if (slot) slots.push_back(slot);
  for (const auto& input : inputs) input->collect(slots);
}

PlanNodePtr plan(JoinTree tree, const Collation& collation) {
  Planner planner(collation, slotsBelow(tree));
  return planner.build(tree, {});
}

}  // namespace jet::sql
