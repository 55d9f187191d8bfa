#include <algorithm>
#include <cmath>

#include "jet/sql/numbers.h"
#include "jet/sql/operators.h"

namespace jet::sql {

namespace {

template <typename T>
int order(const T& a, const T& b) {
  return a < b ? -1 : b < a ? 1 : 0;
}

// What is no number sorts before all numbers.
int orderDoubles(double a, double b) {
  if (std::isnan(a) || std::isnan(b)) return order(!std::isnan(a), !std::isnan(b));
  return order(a, b);
}

int orderGuids(const Guid& a, const Guid& b) { return order(guidText(a), guidText(b)); }

int orderBytes(const Binary& a, const Binary& b) { return order(a, b); }

int orderSameType(const Value& a, const Value& b, const EvalContext& c) {
  struct Visitor {
    const Value& other;
    const EvalContext& context;
    int operator()(std::monostate) const { return 0; }
    int operator()(bool x) const { return order(other.get<bool>(), x); }  // True is -1
    int operator()(uint8_t x) const { return order(x, other.get<uint8_t>()); }
    int operator()(int16_t x) const { return order(x, other.get<int16_t>()); }
    int operator()(int32_t x) const { return order(x, other.get<int32_t>()); }
    int operator()(Currency x) const { return order(x, other.get<Currency>()); }
    int operator()(float x) const { return orderDoubles(x, other.get<float>()); }
    int operator()(double x) const { return orderDoubles(x, other.get<double>()); }
    int operator()(Date x) const { return orderDoubles(x.days, other.get<Date>().days); }
    int operator()(const Binary& x) const { return orderBytes(x, other.get<Binary>()); }
    int operator()(const Text& x) const { return compareTexts(x, other.get<Text>(), collationOf(context)); }
    int operator()(const Guid& x) const { return orderGuids(x, other.get<Guid>()); }
    int operator()(const Decimal& x) const { return compare(x, other.get<Decimal>()); }
  };
  return std::visit(Visitor{b, c}, a.storage());
}

// A GUID may be written as text.
int orderGuidAndText(const Guid& a, const Text& b) {
  const auto guid = guidFromText(b);
  if (!guid) expressionError(3464);
  return orderGuids(a, *guid);
}

}  // namespace

int compareTexts(std::u16string_view a, std::u16string_view b, const Collation& collation) {
  for (;;) {
    const int result = collation.compare(a, b);
    if (result != 0 || (a.size() <= kKeyUnits && b.size() <= kKeyUnits)) return result;
    a = a.substr(std::min(a.size(), kKeyUnits));
    b = b.substr(std::min(b.size(), kKeyUnits));
  }
}

std::optional<int> compare(const Value& a, const Value& b, const EvalContext& c) {
  if (a.isNull() || b.isNull()) return std::nullopt;
  if (a.storage().index() == b.storage().index()) return orderSameType(a, b, c);
  const Type x = a.type(), y = b.type();
  if (isIntegral(x) && isIntegral(y)) return order(integralValue(a), integralValue(b));
  if (const Guid* guid = a.getIf<Guid>(); guid && y == Type::Text)
    return orderGuidAndText(*guid, b.get<Text>());
  if (const Guid* guid = b.getIf<Guid>(); guid && x == Type::Text)
    return -orderGuidAndText(*guid, a.get<Text>());
  const auto serial = [](Type t) { return isNumberType(t) || t == Type::Date; };
  if (!serial(x) || !serial(y)) expressionError(3464);
  switch (unifiedType(x, y)) {
    case Type::Currency:
      return order(toCurrency(a), toCurrency(b));
    case Type::Decimal:
      return compare(toDecimal(a), toDecimal(b));
    default:
      return orderDoubles(toDouble(a), toDouble(b));
  }
}

}  // namespace jet::sql
