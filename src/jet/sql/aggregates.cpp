#include <cmath>
#include <utility>

#include "jet/sql/case_table.h"
#include "jet/sql/functions.h"
#include "jet/sql/numbers.h"

namespace jet::sql {

namespace {

class CountAggregate : public Aggregate {
 public:
  void add(const Value& v, const EvalContext&) override { count_ += !v.isNull(); }
  Value result() const override { return count_; }

 private:
  int32_t count_ = 0;
};

// Sum and Avg of one kind of number: Total is double, Currency or Decimal.
template <typename Total>
class SumAggregate : public Aggregate {
 public:
  explicit SumAggregate(bool average) : average_(average) {}

  void add(const Value& v, const EvalContext& c) override {
    if (v.isNull()) return;
    if (isTextual(v.type())) expressionError(3464);
    ++count_;
    if constexpr (std::is_same_v<Total, double>)
      total_ = checkedDouble(total_ + toDouble(v));
    else if constexpr (std::is_same_v<Total, Currency>)
      total_ = sql::add(total_, toCurrency(v), c).template get<Currency>();
    else
      total_ = sql::add(total_, toDecimal(v));
  }

  Value result() const override {
    if (count_ == 0) return {};
    if (!average_) return total_;
    if constexpr (std::is_same_v<Total, double>)
      return total_ / static_cast<double>(count_);
    else if constexpr (std::is_same_v<Total, Currency>)
      return toCurrency(divide(toDecimal(total_), decimalOf(count_)));
    else
      return divide(total_, decimalOf(count_));
  }

 private:
  bool average_;
  int64_t count_ = 0;
  Total total_{};
};

// Min and Max: the first of equal values stays.
class ExtremeAggregate : public Aggregate {
 public:
  explicit ExtremeAggregate(int wanted) : wanted_(wanted) {}
  void add(const Value& v, const EvalContext& c) override {
    if (v.isNull()) return;
    if (best_.isNull() || *compare(v, best_, c) * wanted_ > 0) best_ = v;
  }
  Value result() const override { return best_; }

 private:
  int wanted_;  // the sign of the comparison that replaces the best value
  Value best_;
};

class EndAggregate : public Aggregate {
 public:
  explicit EndAggregate(bool last) : last_(last) {}
  void add(const Value& v, const EvalContext&) override {
    if (!v.isNull() && (last_ || kept_.isNull())) kept_ = v;
  }
  Value result() const override { return kept_; }

 private:
  bool last_;
  Value kept_;
};

// Variance by running mean and sum of squared distances, which does not lose small differences of large
// numbers.
class SpreadAggregate : public Aggregate {
 public:
  SpreadAggregate(bool population, bool root) : population_(population), root_(root) {}
  void add(const Value& v, const EvalContext&) override {
    if (v.isNull()) return;
    if (isTextual(v.type())) expressionError(3464);
    const double x = toDouble(v), distance = x - mean_;
    ++count_;
    mean_ += distance / static_cast<double>(count_);
    squares_ += distance * (x - mean_);
  }
  Value result() const override {
    const int64_t divisor = population_ ? count_ : count_ - 1;
    if (divisor <= 0) return {};
    const double variance = checkedDouble(squares_ / static_cast<double>(divisor));
    return root_ ? std::sqrt(variance) : variance;
  }

 private:
  bool population_, root_;
  int64_t count_ = 0;
  double mean_ = 0, squares_ = 0;
};

std::unique_ptr<Aggregate> makeSum(Type argumentType, bool average) {
  switch (argumentType) {
    case Type::Currency:
      return std::make_unique<SumAggregate<Currency>>(average);
    case Type::Decimal:
      return std::make_unique<SumAggregate<Decimal>>(average);
    default:
      return std::make_unique<SumAggregate<double>>(average);
  }
}

}  // namespace

std::optional<AggregateKind> findAggregate(std::u16string_view name) {
  static constexpr std::pair<std::u16string_view, AggregateKind> kNames[] = {
      {u"count", AggregateKind::Count}, {u"sum", AggregateKind::Sum},     {u"avg", AggregateKind::Avg},
      {u"min", AggregateKind::Min},     {u"max", AggregateKind::Max},     {u"first", AggregateKind::First},
      {u"last", AggregateKind::Last},   {u"stdev", AggregateKind::StDev}, {u"stdevp", AggregateKind::StDevP},
      {u"var", AggregateKind::Var},     {u"varp", AggregateKind::VarP}};
  const std::u16string wanted = lowerText(name);
  for (const auto& [text, kind] : kNames)
    if (text == wanted) return kind;
  return std::nullopt;
}

std::unique_ptr<Aggregate> makeAggregate(AggregateKind kind, Type argumentType) {
  switch (kind) {
    case AggregateKind::Count:
      return std::make_unique<CountAggregate>();
    case AggregateKind::Sum:
      return makeSum(argumentType, false);
    case AggregateKind::Avg:
      return makeSum(argumentType, true);
    case AggregateKind::Min:
      return std::make_unique<ExtremeAggregate>(-1);
    case AggregateKind::Max:
      return std::make_unique<ExtremeAggregate>(1);
    case AggregateKind::First:
      return std::make_unique<EndAggregate>(false);
    case AggregateKind::Last:
      return std::make_unique<EndAggregate>(true);
    case AggregateKind::StDev:
      return std::make_unique<SpreadAggregate>(false, true);
    case AggregateKind::StDevP:
      return std::make_unique<SpreadAggregate>(true, true);
    case AggregateKind::Var:
      return std::make_unique<SpreadAggregate>(false, false);
    case AggregateKind::VarP:
      return std::make_unique<SpreadAggregate>(true, false);
  }
  return nullptr;
}

Type aggregateType(AggregateKind kind, Type argumentType) {
  switch (kind) {
    case AggregateKind::Count:
      return Type::Long;
    case AggregateKind::Min:
    case AggregateKind::Max:
    case AggregateKind::First:
    case AggregateKind::Last:
      return argumentType;
    case AggregateKind::Sum:
    case AggregateKind::Avg:
      return argumentType == Type::Currency || argumentType == Type::Decimal ? argumentType : Type::Double;
    default:
      return Type::Double;
  }
}

}  // namespace jet::sql
