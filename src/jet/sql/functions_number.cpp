#include <cmath>
#include <cstring>

#include "jet/sql/dates.h"
#include "jet/sql/function_support.h"
#include "jet/sql/numbers.h"

namespace jet::sql {

namespace {

// Text arguments count as the Double that they show, booleans as whole numbers.
Value numeric(const Value& v) {
  if (isFloating(v.type()) || v.type() == Type::Date || isExactNumber(v.type())) return v;
  return numberArgument(v);
}

Value abs(Arguments a, EvalContext& c) {
  if (anyNull(a)) return {};
  const Value v = numeric(a[0]);
  if (const bool* b = v.getIf<bool>()) return static_cast<int16_t>(*b);
  const bool negative = v.type() == Type::Decimal ? v.get<Decimal>().negative : toDouble(v) < 0;
  return negative ? negate(v, c) : v;
}

Value sgn(Arguments a, EvalContext&) {
  if (anyNull(a)) return {};
  const double d = numberArgument(a[0]);
  return static_cast<int16_t>(d < 0 ? -1 : d > 0);
}

// Int goes down to the next whole number, Fix towards zero; of a date both give its day.
Value whole(const Value& argument, bool down) {
  const Value v = numeric(argument);
  if (const bool* b = v.getIf<bool>()) return static_cast<int16_t>(*b ? -1 : 0);
  const auto rounded = [down](double d) { return down ? std::floor(d) : std::trunc(d); };
  switch (v.type()) {
    case Type::Single:
      return static_cast<float>(rounded(v.get<float>()));
    case Type::Double:
      return rounded(v.get<double>());
    case Type::Date:
      return Date{std::trunc(v.get<Date>().days)};
    case Type::Currency: {
      const int64_t scaled = v.get<Currency>().scaled, rest = scaled % 10000;
      const int64_t cut = scaled - rest;
      if (down && rest < 0 && cut < INT64_MIN + 10000) expressionError(6);
      return Currency{down && rest < 0 ? cut - 10000 : cut};
    }
    case Type::Decimal: {
      const Decimal d = v.get<Decimal>(), cut = truncated(d);
      return down && d.negative && compare(cut, d) != 0 ? sql::add(cut, decimalOf(-1)) : cut;
    }
    default:
      return v;
  }
}

Value intFunction(Arguments a, EvalContext&) { return anyNull(a) ? Value() : whole(a[0], true); }
Value fix(Arguments a, EvalContext&) { return anyNull(a) ? Value() : whole(a[0], false); }

double roundedDouble(double d, int places) {
  const double factor = std::pow(10.0, places);
  const double scaled = d * factor;
  if (!std::isfinite(scaled) || std::fabs(scaled) >= 9007199254740992.0) return d;
  return std::nearbyint(scaled) / factor;
}

Value round(Arguments a, EvalContext&) {
  if (anyNull(a)) return {};
  const int places = a.size() > 1 ? integerArgument(a[1], 0, INT32_MAX) : 0;
  const int limited = std::min(places, 400);
  const Value v = numeric(a[0]);
  if (const bool* b = v.getIf<bool>()) return static_cast<int16_t>(*b ? -1 : 0);
  switch (v.type()) {
    case Type::Single:
      return static_cast<float>(roundedDouble(v.get<float>(), limited));
    case Type::Double:
      return roundedDouble(v.get<double>(), limited);
    case Type::Date:
      return roundedDouble(v.get<Date>().days, limited);
    case Type::Currency:
      return toCurrency(rounded(toDecimal(v), std::min(limited, 4)));
    case Type::Decimal:
      return rounded(v.get<Decimal>(), std::min(limited, kDecimalDigits));
    default:
      return v;
  }
}

Value sqr(Arguments a, EvalContext&) {
  const double d = numberArgument(a[0]);
  if (d < 0) expressionError(5);
  return std::sqrt(d);
}

Value exp(Arguments a, EvalContext&) { return checkedDouble(std::exp(numberArgument(a[0]))); }

Value log(Arguments a, EvalContext&) {
  const double d = numberArgument(a[0]);
  if (d <= 0) expressionError(5);
  return std::log(d);
}

Value sin(Arguments a, EvalContext&) { return std::sin(numberArgument(a[0])); }
Value cos(Arguments a, EvalContext&) { return std::cos(numberArgument(a[0])); }
Value tan(Arguments a, EvalContext&) { return std::tan(numberArgument(a[0])); }
Value atn(Arguments a, EvalContext&) { return std::atan(numberArgument(a[0])); }

// A linear congruential sequence of 24 bits. A negative argument starts the sequence that belongs to it, 0
// repeats the last number.
Value rnd(Arguments a, EvalContext& c) {
  constexpr uint64_t kMask = 0xFFFFFF, kUsed = uint64_t{1} << 63, kFirstSeed = 0x50000;
  const float argument = a.empty() ? 1 : static_cast<float>(numberArgument(a[0]));
  uint64_t seed = c.randomState ? c.randomState & kMask : kFirstSeed;
  if (argument < 0) {
    uint32_t bits;
    std::memcpy(&bits, &argument, sizeof bits);
    seed = (uint64_t{bits} + (bits >> 24)) & kMask;
  }
  if (argument != 0) seed = (seed * 0x43FD43FD + 0xC39EC3) & kMask;
  c.randomState = seed | kUsed;
  return static_cast<float>(seed) / static_cast<float>(kMask + 1);
}

}  // namespace

std::span<const Function> numberFunctions() {
  static const Function kFunctions[] = {
      {u"abs", 1, 1, Type::Null, true, abs},         {u"sgn", 1, 1, Type::Integer, true, sgn},
      {u"int", 1, 1, Type::Null, true, intFunction}, {u"fix", 1, 1, Type::Null, true, fix},
      {u"round", 1, 2, Type::Null, true, round},     {u"sqr", 1, 1, Type::Double, true, sqr},
      {u"exp", 1, 1, Type::Double, true, exp},       {u"log", 1, 1, Type::Double, true, log},
      {u"sin", 1, 1, Type::Double, true, sin},       {u"cos", 1, 1, Type::Double, true, cos},
      {u"tan", 1, 1, Type::Double, true, tan},       {u"atn", 1, 1, Type::Double, true, atn},
      {u"rnd", 0, 1, Type::Single, false, rnd},
  };
  return kFunctions;
}

}  // namespace jet::sql
