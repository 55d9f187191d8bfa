#include "jet/sql/group.h"

#include <algorithm>

namespace jet::sql {

Grouping::Grouping(PlanNodePtr input, Slot& group, std::vector<ExpressionPtr> keys,
                   std::vector<AggregateSpec> aggregates)
    : input_(std::move(input)), slot_(group), keys_(std::move(keys)), aggregates_(std::move(aggregates)) {
  slots = {&group};
  isStatic = input_->isStatic;
}

Grouping::Group Grouping::makeGroup(EvalContext& c) {
  Group group;
  group.values.reserve(keys_.size() + aggregates_.size());
  for (const auto& key : keys_) group.values.push_back(key->value(c));
  for (const AggregateSpec& spec : aggregates_)
    group.aggregates.push_back(makeAggregate(spec.kind, spec.argument ? spec.argument->type : Type::Boolean));
  return group;
}

void Grouping::open(EvalContext& c) {
  groups_.clear();
  at_ = 0;
  std::unordered_map<std::string, uint32_t> places;
  if (keys_.empty()) groups_.push_back(makeGroup(c));
  std::string key;
  Value scratch;
  const Value counted(true);
  for (input_->open(c); input_->next(c);) {
    uint32_t at = 0;
    if (!keys_.empty()) {
      key.clear();
      for (const auto& k : keys_) appendSortKey(k->view(c, scratch), k->type, *c.collation, false, key);
      const auto [place, isNew] = places.try_emplace(key, static_cast<uint32_t>(groups_.size()));
      if (isNew) groups_.push_back(makeGroup(c));
      at = place->second;
    }
    Group& group = groups_[at];
    for (size_t i = 0; i < aggregates_.size(); ++i) {
      Expression* argument = aggregates_[i].argument.get();
      group.aggregates[i]->add(argument ? argument->view(c, scratch) : counted, c);
    }
  }
  for (Group& group : groups_) {
    for (const auto& aggregate : group.aggregates) group.values.push_back(aggregate->result());
    group.aggregates.clear();
  }
  std::vector<std::pair<std::string_view, uint32_t>> sorted;
  for (const auto& [text, at] : places) sorted.emplace_back(text, at);
  std::sort(sorted.begin(), sorted.end());
  order_.assign(keys_.empty() ? 1 : 0, 0);
  for (const auto& [text, at] : sorted) order_.push_back(at);
}

bool Grouping::advance(EvalContext&) {
  if (at_ == order_.size()) return false;
  slot_.setValues(groups_[order_[at_++]].values.data());
  return true;
}

void Grouping::explain(PlanText& text, int depth) const {
  text.line(depth, (keys_.empty() ? u"aggregate" : u"group") + filterNote());
  input_->explain(text, depth + 1);
}

}  // namespace jet::sql
