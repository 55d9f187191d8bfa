#include "jet/sql/operators.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "jet/sql/dates.h"
#include "jet/sql/numbers.h"

namespace jet::sql {

namespace {

// What two operands are calculated as.
enum class Kind { Integral, Currency, Decimal, Floating, Date };

Kind kindOf(Type t) {
  if (isIntegral(t)) return Kind::Integral;
  if (t == Type::Currency) return Kind::Currency;
  if (t == Type::Decimal) return Kind::Decimal;
  if (t == Type::Date) return Kind::Date;
  if (isFloating(t) || isTextual(t)) return Kind::Floating;
  expressionError(3464);
}

// Both must be numbers, dates or numeric text.
Kind commonKind(Type a, Type b) {
  const Kind x = kindOf(a), y = kindOf(b);
  if (x == Kind::Date || y == Kind::Date) return Kind::Date;
  return std::max(x, y);
}

Type widerInteger(Type a, Type b) {
  const auto promoted = [](Type t) { return t == Type::Boolean ? Type::Integer : t; };
  return std::max(promoted(a), promoted(b));
}

// A difference may be negative, which a Byte is not.
Type differenceType(Type a, Type b) { return std::max(widerInteger(a, b), Type::Integer); }

// Two Singles, or one and a small integer, stay Single; everything else that floats is Double.
bool isSingleResult(Type a, Type b) {
  const auto fits = [](Type t) { return t == Type::Single || t == Type::Integer || t == Type::Byte; };
  return (a == Type::Single && fits(b)) || (b == Type::Single && fits(a));
}

Value floatingResult(double d, Type a, Type b) {
  if (!isSingleResult(a, b)) return checkedDouble(d);
  const float f = static_cast<float>(d);
  checkedDouble(f);
  return f;
}

Currency checkedSum(int64_t a, int64_t b) {
  constexpr int64_t kMin = std::numeric_limits<int64_t>::min(), kMax = std::numeric_limits<int64_t>::max();
  if (b > 0 ? a > kMax - b : a < kMin - b) expressionError(6);
  return {a + b};
}

Currency negatedCurrency(Currency c) {
  if (c.scaled == std::numeric_limits<int64_t>::min()) expressionError(6);
  return {-c.scaled};
}

Currency currencyProduct(int64_t a, int64_t b) {
  constexpr int64_t kSmall = int64_t{1} << 31;
  if (a > -kSmall && a < kSmall && b > -kSmall && b < kSmall) {
    const int64_t product = a * b;
    int64_t quotient = product / 10000;
    const int64_t rest = std::abs(product % 10000);
    if (rest > 5000 || (rest == 5000 && quotient % 2 != 0)) quotient += product < 0 ? -1 : 1;
    return {quotient};
  }
  const auto scaled = toInt64(multiply(decimalOf(a, 4), decimalOf(b, 4)), 4);
  if (!scaled) expressionError(6);
  return {*scaled};
}

double lineOf(const Value& v) {
  const Date* date = v.getIf<Date>();
  return date ? timeLine(*date) : toDouble(v);
}

Value sum(const Value& a, const Value& b, bool minus) {
  const Type x = a.type(), y = b.type();
  switch (commonKind(x, y)) {
    case Kind::Integral: {
      const int64_t right = integralValue(b);
      return integerResult(integralValue(a) + (minus ? -right : right),
                           minus ? differenceType(x, y) : widerInteger(x, y));
    }
    case Kind::Currency: {
      const Currency right = toCurrency(b);
      return checkedSum(toCurrency(a).scaled, (minus ? negatedCurrency(right) : right).scaled);
    }
    case Kind::Decimal: {
      const Decimal right = toDecimal(b);
      return add(toDecimal(a), minus ? negated(right) : right);
    }
    case Kind::Date: {
      const double days = minus ? lineOf(a) - lineOf(b) : lineOf(a) + lineOf(b);
      if (minus && y == Type::Date) {
        if (x == Type::Date) return days;
        return checkedDouble(days);
      }
      return fromTimeLine(days);
    }
    case Kind::Floating:
      break;
  }
  const double right = toDouble(b);
  return floatingResult(toDouble(a) + (minus ? -right : right), x, y);
}

// The operands of \ and Mod, which are rounded to whole numbers.
struct Integers {
  int64_t left, right;
  Type narrowest;
};
Integers integerOperands(const Value& a, const Value& b) {
  const Type x = a.type(), y = b.type();
  kindOf(x), kindOf(y);
  const Integers i{toInteger(a), toInteger(b),
                   isIntegral(x) && isIntegral(y) ? widerInteger(x, y) : Type::Long};
  if (i.right == 0) expressionError(11);
  return i;
}

bool anyNull(const Value& a, const Value& b) { return a.isNull() || b.isNull(); }

// The operand of a bitwise operator: whole numbers of 32 bits.
int32_t bits(const Value& v) {
  if (isTextual(v.type())) expressionError(3464);
  const int64_t i = toInteger(v);
  if (i < INT32_MIN || i > INT32_MAX) expressionError(6);
  return static_cast<int32_t>(i);
}

Value bitsResult(int32_t result, Type a, Type b) {
  if (a == Type::Boolean && b == Type::Boolean) return result != 0;
  const bool isShort = isIntegral(a) && isIntegral(b) && a != Type::Long && b != Type::Long;
  return integerResult(result, isShort ? widerInteger(a, b) : Type::Long);
}

// With one side Null only the other side can decide.
Value logicalWithNull(Logical op, const Value& a, const Value& b) {
  const Value& known = a.isNull() ? b : a;
  const Truth value = truth(known);
  if (!value) return {};
  switch (op) {
    case Logical::And:
      return *value ? Value() : known;
    case Logical::Or:
      return *value ? known : Value();
    case Logical::Imp: {
      const bool isLeft = b.isNull();
      return *value != isLeft ? Value(true) : Value();
    }
    case Logical::Xor:
    case Logical::Eqv:
      return {};
  }
  return {};
}

}  // namespace

Truth truth(const Value& v) {
  if (v.isNull()) return std::nullopt;
  if (const bool* b = v.getIf<bool>()) return *b;
  if (isIntegral(v.type())) return integralValue(v) != 0;
  if (const Decimal* d = v.getIf<Decimal>()) return !isZero(*d);
  if (isTextual(v.type())) expressionError(3464);
  return toDouble(v) != 0;
}

Value fromTruth(Truth t) { return t ? Value(*t) : Value(); }

Value add(const Value& a, const Value& b, const EvalContext&) {
  if (anyNull(a, b)) return {};
  const Text *x = a.getIf<Text>(), *y = b.getIf<Text>();
  if (x && y) return *x + *y;
  return sum(a, b, false);
}

Value subtract(const Value& a, const Value& b, const EvalContext&) {
  if (anyNull(a, b)) return {};
  return sum(a, b, true);
}

Value multiply(const Value& a, const Value& b, const EvalContext&) {
  if (anyNull(a, b)) return {};
  const Type x = a.type(), y = b.type();
  switch (commonKind(x, y)) {
    case Kind::Integral:
      return integerResult(integralValue(a) * integralValue(b), widerInteger(x, y));
    case Kind::Currency:
      return currencyProduct(toCurrency(a).scaled, toCurrency(b).scaled);
    case Kind::Decimal:
      return multiply(toDecimal(a), toDecimal(b));
    case Kind::Date:
      return checkedDouble(lineOf(a) * lineOf(b));
    case Kind::Floating:
      break;
  }
  return floatingResult(toDouble(a) * toDouble(b), x, y);
}

Value divide(const Value& a, const Value& b, const EvalContext&) {
  if (anyNull(a, b)) return {};
  if (commonKind(a.type(), b.type()) == Kind::Decimal) {
    const Decimal divisor = toDecimal(b);
    if (isZero(divisor)) expressionError(11);
    return divide(toDecimal(a), divisor);
  }
  const double divisor = lineOf(b);
  if (divisor == 0) expressionError(11);
  return checkedDouble(lineOf(a) / divisor);
}

Value integerDivide(const Value& a, const Value& b, const EvalContext&) {
  if (anyNull(a, b)) return {};
  const Integers i = integerOperands(a, b);
  if (i.right == -1 && i.left == std::numeric_limits<int64_t>::min()) expressionError(6);
  return integerResult(i.left / i.right, i.narrowest);
}

Value modulo(const Value& a, const Value& b, const EvalContext&) {
  if (anyNull(a, b)) return {};
  const Integers i = integerOperands(a, b);
  return integerResult(i.right == -1 ? 0 : i.left % i.right, i.narrowest);
}

Value power(const Value& a, const Value& b, const EvalContext&) {
  if (anyNull(a, b)) return {};
  const double base = lineOf(a), exponent = lineOf(b);
  if ((base == 0 && exponent < 0) || (base < 0 && exponent != std::trunc(exponent))) expressionError(5);
  return checkedDouble(std::pow(base, exponent));
}

Value negate(const Value& a, const EvalContext&) {
  if (a.isNull()) return {};
  const Type type = a.type();
  switch (kindOf(type)) {
    case Kind::Integral:
      return integerResult(-integralValue(a), differenceType(type, type));
    case Kind::Currency:
      return negatedCurrency(a.get<Currency>());
    case Kind::Decimal:
      return negated(a.get<Decimal>());
    case Kind::Date:
      return -lineOf(a);
    case Kind::Floating:
      break;
  }
  if (type == Type::Single) return -a.get<float>();
  return -toDouble(a);
}

Value concatenate(const Value& a, const Value& b, const EvalContext& c) {
  if (a.isNull() && b.isNull()) return {};
  const Text *x = a.getIf<Text>(), *y = b.getIf<Text>();
  if (!x || !y) return toText(a, c) + toText(b, c);
  Text joined;
  joined.reserve(x->size() + y->size());
  return joined.append(*x).append(*y);
}

Value logicalNot(const Value& a) {
  if (a.isNull()) return {};
  if (const bool* b = a.getIf<bool>()) return !*b;
  if (const uint8_t* b = a.getIf<uint8_t>()) return static_cast<uint8_t>(~*b);
  return bitsResult(~bits(a), a.type(), a.type());
}

Value logical(Logical op, const Value& a, const Value& b) {
  if (a.isNull() && b.isNull()) return {};
  if (anyNull(a, b)) return logicalWithNull(op, a, b);
  const int32_t x = bits(a), y = bits(b);
  int32_t result = 0;
  switch (op) {
    case Logical::And:
      result = x & y;
      break;
    case Logical::Or:
      result = x | y;
      break;
    case Logical::Xor:
      result = x ^ y;
      break;
    case Logical::Eqv:
      result = ~(x ^ y);
      break;
    case Logical::Imp:
      result = ~x | y;
      break;
  }
  return bitsResult(result, a.type(), b.type());
}

Type arithmeticType(Arithmetic op, Type a, Type b) {
  if (op == Arithmetic::Concatenate) return Type::Text;
  if (a == Type::Null || b == Type::Null) {
    const Type known = a == Type::Null ? b : a;
    if (op == Arithmetic::Divide || op == Arithmetic::Power) return Type::Double;
    return known == Type::Null ? Type::Null : arithmeticType(op, known, known);
  }
  if (op == Arithmetic::Add && isTextual(a) && isTextual(b)) return Type::Text;
  const auto calculable = [](Type t) { return isNumberType(t) || isTextual(t) || t == Type::Date; };
  if (!calculable(a) || !calculable(b) || op == Arithmetic::Power) return Type::Double;
  const Kind kind = commonKind(a, b);
  if (op == Arithmetic::Divide) return kind == Kind::Decimal ? Type::Decimal : Type::Double;
  if (op == Arithmetic::IntegerDivide || op == Arithmetic::Modulo)
    return isIntegral(a) && isIntegral(b) ? widerInteger(a, b) : Type::Long;
  switch (kind) {
    case Kind::Integral:
      return op == Arithmetic::Subtract ? differenceType(a, b) : widerInteger(a, b);
    case Kind::Currency:
      return Type::Currency;
    case Kind::Decimal:
      return Type::Decimal;
    case Kind::Date:
      if (op == Arithmetic::Add || (op == Arithmetic::Subtract && b != Type::Date)) return Type::Date;
      return Type::Double;
    case Kind::Floating:
      break;
  }
  return isSingleResult(a, b) ? Type::Single : Type::Double;
}

Value unifiedValue(Value v, Type type, const EvalContext& c) {
  if (v.isNull() || type == Type::Null || v.type() == type) return v;
  if (isNumberType(v.type()) && isNumberType(type) && unifiedType(v.type(), type) != type) return v;
  return convertFor(type, 0, v, c);
}

Type unifiedType(Type a, Type b) {
  if (a == b || b == Type::Null) return a;
  if (a == Type::Null) return b;
  if (a == Type::Memo || b == Type::Memo) return Type::Memo;
  if (a == Type::Text || b == Type::Text) return Type::Text;
  const bool numbers = isNumberType(a) && isNumberType(b);
  if (!numbers) {
    const auto serial = [](Type t) { return isNumberType(t) || t == Type::Date; };
    if (serial(a) && serial(b)) return Type::Double;
    return Type::Binary;
  }
  if (isIntegral(a) && isIntegral(b)) return widerInteger(a, b);
  if (isFloating(a) || isFloating(b)) return isSingleResult(a, b) ? Type::Single : Type::Double;
  return a == Type::Decimal || b == Type::Decimal ? Type::Decimal : Type::Currency;
}

}  // namespace jet::sql
