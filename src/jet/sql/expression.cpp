#include "jet/sql/expression.h"

#include <algorithm>

namespace jet::sql {

using ast::Op;

namespace {

Value apply(Op op, const Value& a, const Value& b, const EvalContext& c) {
  switch (op) {
    case Op::Power:
      return power(a, b, c);
    case Op::Multiply:
      return multiply(a, b, c);
    case Op::Divide:
      return divide(a, b, c);
    case Op::IntegerDivide:
      return integerDivide(a, b, c);
    case Op::Modulo:
      return modulo(a, b, c);
    case Op::Add:
      return add(a, b, c);
    case Op::Subtract:
      return subtract(a, b, c);
    case Op::Concatenate:
      return concatenate(a, b, c);
    case Op::And:
      return logical(Logical::And, a, b);
    case Op::Or:
      return logical(Logical::Or, a, b);
    case Op::Xor:
      return logical(Logical::Xor, a, b);
    case Op::Eqv:
      return logical(Logical::Eqv, a, b);
    case Op::Imp:
      return logical(Logical::Imp, a, b);
    default:
      break;
  }
  const auto order = compare(a, b, c);
  return order ? Value(holds(op, *order)) : Value();
}

template <typename T>
int threeWay(const T& a, const T& b) {
  return a < b ? -1 : b < a ? 1 : 0;
}

constexpr size_t kQuickText = 255;  // what one call of the collation looks at

// compare() with the commonest pairs of equal types first.
std::optional<int> compareFast(const Value& a, const Value& b, const EvalContext& c) {
  if (a.storage().index() == b.storage().index()) {
    if (const auto* x = a.getIf<int32_t>()) return threeWay(*x, *b.getIf<int32_t>());
    if (const auto* t = a.getIf<Text>()) {
      const Text& u = *b.getIf<Text>();
      if (t->size() <= kQuickText && u.size() <= kQuickText) return c.collation->compare(*t, u);
    }
    if (const auto* d = a.getIf<Date>()) return threeWay(d->days, b.getIf<Date>()->days);
  }
  return compare(a, b, c);
}

Truth inverted(Truth t, bool negated) { return t && negated ? Truth(!*t) : t; }

}  // namespace

bool holds(Op op, int order) {
  switch (op) {
    case Op::Equal:
      return order == 0;
    case Op::NotEqual:
      return order != 0;
    case Op::Less:
      return order < 0;
    case Op::LessEqual:
      return order <= 0;
    case Op::Greater:
      return order > 0;
    default:
      return order >= 0;
  }
}

bool isValueError(int number) {
  return number == 5 || number == 6 || number == 11 || number == 13 || number == 94;
}

Value Chain::value(EvalContext& c) {
  Value scratch;
  Value result = apply(ops[0], operands[0]->value(c), operands[1]->view(c, scratch), c);
  for (size_t i = 1; i < ops.size(); ++i)
    result = apply(ops[i], result, operands[i + 1]->view(c, scratch), c);
  return result;
}

Truth Junction::test(EvalContext& c) {
  bool sawNull = false;
  for (const auto& operand : operands) {
    const Truth t = operand->test(c);
    if (!t)
      sawNull = true;
    else if (*t != isAnd)
      return t;
  }
  return sawNull ? Truth() : Truth(isAnd);
}

Truth Comparison::test(EvalContext& c) {
  Value left, right;
  const Value& a = operands[0]->view(c, left);
  const Value& b = operands[1]->view(c, right);
  const auto order = compareFast(a, b, c);
  return order ? Truth(holds(op, *order)) : Truth();
}

Truth NotExpression::test(EvalContext& c) {
  if (operands[0]->type != Type::Boolean) return truth(value(c));  // bitwise on numbers
  return inverted(operands[0]->test(c), true);
}

const LikePattern* LikeExpression::pattern(EvalContext& c) {
  Value scratch;
  const Value& v = operands[1]->view(c, scratch);
  if (v.isNull()) return nullptr;
  std::u16string text = toText(v, c);
  if (!compiled_ || text != text_) {
    text_ = std::move(text);
    std::u16string wildcards = text_;
    if (sqlWildcards) {
      // % and _ are the wildcards; what is one in the usual form stands for itself.
      wildcards.clear();
      for (const char16_t ch : text_) {
        if (ch == u'%')
          wildcards += u'*';
        else if (ch == u'_')
          wildcards += u'?';
        else if (ch == u'*' || ch == u'?' || ch == u'#')
          wildcards.append({u'[', ch, u']'});
        else
          wildcards += ch;
      }
    }
    compiled_ = std::make_unique<LikePattern>(wildcards, *c.collation);
  }
  return compiled_.get();
}

Truth LikeExpression::test(EvalContext& c) {
  Value scratch;
  const Value& v = operands[0]->view(c, scratch);
  if (v.isNull()) return {};
  const LikePattern* compiled = pattern(c);
  if (!compiled) return {};
  const auto* text = v.getIf<Text>();
  return (text ? compiled->matches(*text) : compiled->matches(toText(v, c))) != negated;
}

Truth BetweenExpression::test(EvalContext& c) {
  Value s0, s1, s2;
  const Value& x = operands[0]->view(c, s0);
  const auto low = compareFast(x, operands[1]->view(c, s1), c);
  const auto high = compareFast(x, operands[2]->view(c, s2), c);
  if (!low || !high) return {};
  return ((*low >= 0 && *high <= 0) || (*low <= 0 && *high >= 0)) != negated;
}

Truth InListExpression::test(EvalContext& c) {
  Value s0, s1;
  const Value& x = operands[0]->view(c, s0);
  if (x.isNull()) return {};
  bool sawNull = false;
  for (size_t i = 1; i < operands.size(); ++i) {
    const auto order = compareFast(x, operands[i]->view(c, s1), c);
    if (!order)
      sawNull = true;
    else if (*order == 0)
      return !negated;
  }
  return sawNull ? Truth() : Truth(negated);
}

Truth IsNullExpression::test(EvalContext& c) {
  if (const auto* column = dynamic_cast<const ColumnExpression*>(operands[0].get()))
    return column->slot->isNull(column->ordinal, c) != negated;
  Value scratch;
  return operands[0]->view(c, scratch).isNull() != negated;
}

Value FunctionCall::value(EvalContext& c) {
  arguments_.resize(operands.size());
  for (size_t i = 0; i < operands.size(); ++i) arguments_[i] = operands[i]->value(c);
  return function->call(arguments_, c);
}

Value Choice::value(EvalContext& c) {
  Expression* chosen = choose(c);
  if (!chosen) return {};
  // All branches come in the common type that the column is said to have.
  return unifiedValue(chosen->value(c), heldType(type), c);
}

Expression* Choice::choose(EvalContext& c) {
  Value scratch;
  switch (kind) {
    case Kind::IIf:
      return operands[isTrue(operands[0]->test(c)) ? 1 : 2].get();
    case Kind::Choose: {
      const Value& n = operands[0]->view(c, scratch);
      if (n.isNull()) return nullptr;
      const int64_t which = toInteger(n);
      if (which < 1 || which >= static_cast<int64_t>(operands.size())) return nullptr;
      return operands[static_cast<size_t>(which)].get();
    }
    case Kind::Switch:
      for (size_t i = 0; i + 1 < operands.size(); i += 2)
        if (isTrue(operands[i]->test(c))) return operands[i + 1].get();
      return nullptr;
  }
  return nullptr;
}

void splitConjunction(ExpressionPtr condition, std::vector<ExpressionPtr>& parts) {
  auto* junction = dynamic_cast<Junction*>(condition.get());
  if (!junction || !junction->isAnd) {
    parts.push_back(std::move(condition));
    return;
  }
  for (auto& operand : junction->operands) splitConjunction(std::move(operand), parts);
}

std::vector<const Slot*> slotsOf(const Expression& e) {
  std::vector<const Slot*> slots;
  e.collectSlots(slots);
  std::sort(slots.begin(), slots.end());
  slots.erase(std::unique(slots.begin(), slots.end()), slots.end());
  return slots;
}

}  // namespace jet::sql
