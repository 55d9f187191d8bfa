#include "jet/sql/select_rows.h"

#include <numeric>

#include "jet/format/error.h"

namespace jet::sql {

namespace {

// Runs `f`; a run-time error of an expression gives `fallback()` instead.
template <typename F, typename G>
auto guarded(bool strict, F&& f, G&& fallback) {
  if (strict) return f();
  try {
    return f();
  } catch (const Error& e) {
    if (!isValueError(e.number())) throw;
  }
  return fallback();
}

}  // namespace

SelectRows::SelectRows(PlanNodePtr plan, std::vector<ExpressionPtr> outputs,
                       std::vector<ResultColumn> columns)
    : plan_(std::move(plan)),
      outputs_(std::move(outputs)),
      cache_(outputs_.size()),
      stamps_(outputs_.size()) {
  columns_ = std::move(columns);
}

void SelectRows::open(EvalContext& c) {
  count_ = 0;
  seen_.clear();
  plan_->open(c);
}

bool SelectRows::next(EvalContext& c) {
  if (limit && count_ >= *limit) return false;
  do {
    if (!plan_->next(c)) return false;
  } while (!distinctTables.empty() && seenBefore());
  ++count_;
  moved();
  return true;
}

void SelectRows::moved() {
  if (++epoch_ == 0) {
    std::fill(stamps_.begin(), stamps_.end(), 0);
    epoch_ = 1;
  }
}

bool SelectRows::seenBefore() {
  std::string ids;
  for (const Slot* slot : distinctTables) {
    const uint32_t id = slot->rowId().stored();
    ids.append(reinterpret_cast<const char*>(&id), sizeof id);
  }
  return !seen_.insert(std::move(ids)).second;
}

const Value& SelectRows::value(size_t column, EvalContext& c) {
  if (stamps_[column] != epoch_) {
    cache_[column] = take(column, c);
    stamps_[column] = epoch_;
  }
  return cache_[column];
}

Value SelectRows::take(size_t column, EvalContext& c) {
  if (stamps_[column] == epoch_) return cache_[column];
  return guarded(
      isStrict, [&] { return outputs_[column]->take(c); }, [] { return Value(); });
}

void SelectRows::pack(size_t column, RowStore& store, EvalContext& c) {
  if (stamps_[column] == epoch_) return store.add(cache_[column]);
  const auto put = [&] { outputs_[column]->pack(store, c); };
  guarded(isStrict, put, [&] { store.addNull(); });
}

const Value& SelectRows::sortValue(size_t i, EvalContext& c, Value& scratch) {
  const auto view = [&]() -> const Value* { return &sortExpressions[i]->view(c, scratch); };
  return *guarded(isStrict, view, [&]() -> const Value* {
    scratch = Value();
    return &scratch;
  });
}

void SelectRows::explain(PlanText& text, int depth) const {
  if (limit) text.line(depth++, u"top");
  if (!distinctTables.empty()) text.line(depth++, u"distinct rows");
  plan_->explain(text, depth);
}

Collected collectRows(Rows& rows, EvalContext& c) {
  rows.open(c);
  if (auto store = rows.store()) {
    const auto order = rows.order();
    return {std::move(store), {order.begin(), order.end()}};
  }
  const size_t width = rows.columns().size();
  auto store = std::make_shared<RowStore>(width);
  while (rows.next(c)) {
    store->begin();
    for (size_t i = 0; i < width; ++i) rows.pack(i, *store, c);
    store->end();
  }
  std::vector<uint32_t> order(store->rowCount());
  std::iota(order.begin(), order.end(), 0u);
  return {std::move(store), std::move(order)};
}

}  // namespace jet::sql
