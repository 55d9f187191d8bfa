#pragma once

#include "jet/sql/plan.h"

// From a FROM clause with resolved conditions to the steps that read it.
namespace jet::sql {

// The sources of a query and how they are joined.
struct JoinTree {
  enum class Kind : uint8_t {
    Leaf,   // one slot
    Inner,  // any number of inputs; every condition must hold
    Left,   // inputs[0] kept, inputs[1] where the conditions hold
  };
  Kind kind = Kind::Leaf;
  Slot* slot = nullptr;
  std::vector<std::unique_ptr<JoinTree>> inputs;
  std::vector<ExpressionPtr> conditions;

  void collect(std::vector<Slot*>& slots) const;
};

// Chooses the order of inner joins, the index or the hash table for each, and the place of each condition:
// the lowest step that has the columns. `tree` gives its conditions away.
PlanNodePtr plan(JoinTree tree, const Collation& collation);

}  // namespace jet::sql
