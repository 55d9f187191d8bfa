#pragma once

#include <unordered_map>

#include "jet/sql/plan.h"

namespace jet::sql {

// One aggregate of a grouped query; Count(*) has no argument.
struct AggregateSpec {
  AggregateKind kind = AggregateKind::Count;
  ExpressionPtr argument;
};

// GROUP BY: reads all rows below, then stands on one group after the other, in the order of the keys. The
// group's slot has the keys (of the first row of the group) and behind them the aggregates. Without keys
// there is exactly one group.
class Grouping : public PlanNode {
 public:
  Grouping(PlanNodePtr input, Slot& group, std::vector<ExpressionPtr> keys,
           std::vector<AggregateSpec> aggregates);
  void open(EvalContext& c) override;
  void explain(PlanText& text, int depth) const override;

 protected:
  bool advance(EvalContext& c) override;

 private:
  struct Group {
    std::vector<Value> values;  // keys, later the results too
    std::vector<std::unique_ptr<Aggregate>> aggregates;
  };
  Group makeGroup(EvalContext& c);

  PlanNodePtr input_;
  Slot& slot_;
  std::vector<ExpressionPtr> keys_;
  std::vector<AggregateSpec> aggregates_;
  std::vector<Group> groups_;
  std::vector<uint32_t> order_;
  size_t at_ = 0;
};

}  // namespace jet::sql
