#include <utility>

#include "jet/format/error.h"
#include "jet/sql/parser_impl.h"

// Precedences, lowest first:
//   0 Imp  1 Eqv  2 Xor  3 Or  4 And  5 Not  6 comparison, Like, Between, In, Is  7 &  8 + -  9 Mod
//   10 \  11 * /  12 unary - +  13 ^
namespace jet::sql {

using namespace ast;
using Kind = Expr::Kind;

namespace {

constexpr int kNot = 5, kComparison = 6, kSign = 12, kPower = 13;

struct Operator {
  Op op;
  int precedence;
};

std::optional<Operator> operatorOf(const Token& t) {
  if (t.kind == TokenKind::Symbol) {
    switch (t.symbol) {
      case Symbol::Caret:
        return Operator{Op::Power, kPower};
      case Symbol::Star:
        return Operator{Op::Multiply, 11};
      case Symbol::Slash:
        return Operator{Op::Divide, 11};
      case Symbol::Backslash:
        return Operator{Op::IntegerDivide, 10};
      case Symbol::Plus:
        return Operator{Op::Add, 8};
      case Symbol::Minus:
        return Operator{Op::Subtract, 8};
      case Symbol::Ampersand:
        return Operator{Op::Concatenate, 7};
      case Symbol::Equal:
        return Operator{Op::Equal, kComparison};
      case Symbol::NotEqual:
        return Operator{Op::NotEqual, kComparison};
      case Symbol::Less:
        return Operator{Op::Less, kComparison};
      case Symbol::LessEqual:
        return Operator{Op::LessEqual, kComparison};
      case Symbol::Greater:
        return Operator{Op::Greater, kComparison};
      case Symbol::GreaterEqual:
        return Operator{Op::GreaterEqual, kComparison};
      default:
        return std::nullopt;
    }
  }
  if (t.kind != TokenKind::Name || t.text.size() > 3 || t.text.size() < 2) return std::nullopt;
  if (t.is(u"MOD")) return Operator{Op::Modulo, 9};
  if (t.is(u"AND")) return Operator{Op::And, 4};
  if (t.is(u"OR")) return Operator{Op::Or, 3};
  if (t.is(u"XOR")) return Operator{Op::Xor, 2};
  if (t.is(u"EQV")) return Operator{Op::Eqv, 1};
  if (t.is(u"IMP")) return Operator{Op::Imp, 0};
  return std::nullopt;
}

ExprPtr make(Kind kind) { return std::make_unique<Expr>(kind); }

ExprPtr make(Kind kind, ExprPtr operand) {
  auto e = make(kind);
  e->args.push_back(std::move(operand));
  return e;
}

bool beginsClause(const Token& t) {
  for (auto word :
       {u"FROM", u"WHERE", u"GROUP", u"HAVING", u"ORDER", u"UNION", u"SET", u"INTO", u"PIVOT", u"SELECT"})
    if (t.is(word)) return true;
  return t.kind == TokenKind::End || t.is(Symbol::Semicolon);
}

bool isConstant(const Expr& e) {
  return e.kind == Kind::Literal || (e.kind == Kind::Negate && e.args[0]->kind == Kind::Literal);
}

}  // namespace

void Parser::failExpression(std::u16string_view what) const {
  size_t last = std::max(at_, expressionStart_);
  int brackets = 0;
  for (; last < tokens_.size(); ++last) {
    const Token& t = tokens_[last];
    if (t.is(Symbol::LeftParen)) ++brackets;
    if (t.is(Symbol::RightParen)) --brackets;
    if (beginsClause(t) || (brackets <= 0 && t.is(Symbol::Comma))) break;
  }
  const size_t begin = tokens_[std::min(expressionStart_, tokens_.size() - 1)].begin;
  const size_t end = last > 0 && last > expressionStart_ ? tokens_[last - 1].end : begin;
  throw Error(3075, {what, sql_.substr(begin, end - begin)}, "DAO.Database");
}

ExprPtr Parser::wholeExpression(bool rule) {
  rule_ = rule;
  if (at(Symbol::Equal) && !rule) take();
  ExprPtr e = expression();
  if (peek().kind != TokenKind::End) failExpression(u"Syntax error (missing operator)");
  return e;
}

ExprPtr Parser::expression(bool listed) {
  if (expressionDepth_ == 0) expressionStart_ = at_;
  const size_t first = at_;
  ++expressionDepth_;
  ExprPtr e = binary(0);
  --expressionDepth_;
  expressionEnd_ = at_;
  if (listed) e->text = sql_.substr(tokens_[first].begin, tokens_[at_ - 1].end - tokens_[first].begin);
  return e;
}

ExprPtr Parser::binary(int minimum) {
  const Nesting nesting(*this);
  ExprPtr left = prefix(minimum);
  int chainPrecedence = -1;  // of `left` when it is a chain that may grow
  for (;;) {
    if (minimum <= kComparison) {
      const bool negated =
          at(u"NOT") && (at(u"LIKE", 1) || at(u"BETWEEN", 1) || at(u"IN", 1) || at(u"ALIKE", 1));
      if (negated || at(u"LIKE") || at(u"ALIKE") || at(u"BETWEEN") || at(u"IN") || at(u"IS")) {
        left = comparison(std::move(left));
        chainPrecedence = -1;
        continue;
      }
    }
    const auto op = operatorOf(peek());
    if (!op || op->precedence < minimum) return left;
    take();
    if (op->precedence == kComparison && (at(u"ANY") || at(u"SOME") || at(u"ALL"))) {
      left = quantified(std::move(left), op->op);
      chainPrecedence = -1;
      continue;
    }
    ExprPtr right = binary(op->precedence + 1);
    if (chainPrecedence != op->precedence) left = make(Kind::Chain, std::move(left));
    chainPrecedence = op->precedence;
    left->ops.push_back(op->op);
    left->args.push_back(std::move(right));
  }
}

ExprPtr Parser::prefix(int minimum) {
  if (at(u"NOT")) {
    take();
    return make(Kind::Not, binary(std::max(minimum, kNot)));
  }
  if (at(Symbol::Minus)) {
    take();
    ExprPtr operand = binary(kSign);
    if (operand->kind == Kind::Literal && !operand->parenthesized) {
      if (const auto* n = operand->value.getIf<int32_t>()) return operand->value = -*n, std::move(operand);
      if (const auto* d = operand->value.getIf<double>()) {
        if (*d == 2147483648.0)
          operand->value = INT32_MIN;
        else
          operand->value = -*d;
        return operand;
      }
    }
    return make(Kind::Negate, std::move(operand));
  }
  if (at(Symbol::Plus)) {
    take();
    return binary(kSign);
  }
  conditionPlace_ = rule_ && expressionDepth_ == 1 && minimum <= kComparison;
  if (conditionPlace_) {
    // In a rule the value itself may be left out before a comparison, and "= " before a constant.
    const Token& t = peek();
    const auto op = operatorOf(t);
    if ((op && isComparison(op->op)) || t.is(u"LIKE") || t.is(u"ALIKE") || t.is(u"BETWEEN") || t.is(u"IN") ||
        t.is(u"IS"))
      return make(Kind::Implicit);
    ExprPtr operand = primary();
    const auto next = operatorOf(peek());
    const bool alone = (!next || next->precedence < kComparison) && !at(u"LIKE") && !at(u"IS") &&
                       !at(u"IN") && !at(u"BETWEEN") && !at(u"NOT");
    if (!alone || !isConstant(*operand) || operand->parenthesized) return operand;
    ExprPtr equal = make(Kind::Chain, make(Kind::Implicit));
    equal->ops.push_back(Op::Equal);
    equal->args.push_back(std::move(operand));
    return equal;
  }
  return primary();
}

ExprPtr Parser::comparison(ExprPtr left) {
  if (accept(u"IS")) {
    ExprPtr e = make(Kind::IsNull, std::move(left));
    e->negated = accept(u"NOT");
    if (!accept(u"NULL")) failExpression(u"Syntax error");
    return e;
  }
  const bool negated = accept(u"NOT");
  ExprPtr e;
  if (at(u"LIKE") || at(u"ALIKE")) {
    e = make(Kind::Like, std::move(left));
    e->sqlWildcards = take().is(u"ALIKE");
    e->args.push_back(binary(kComparison + 1));
  } else if (accept(u"BETWEEN")) {
    e = make(Kind::Between, std::move(left));
    e->args.push_back(binary(kComparison + 1));
    if (!accept(u"AND")) failExpression(u"Between operator without And");
    e->args.push_back(binary(kComparison + 1));
  } else {
    take();  // IN
    if (!at(Symbol::LeftParen)) failExpression(u"In operator without ()");
    if (atQuery(1)) {
      e = subquery(Kind::InQuery);
      e->args.push_back(std::move(left));
    } else {
      take();
      e = make(Kind::InList, std::move(left));
      ++expressionDepth_;
      do e->args.push_back(binary(0));
      while (accept(Symbol::Comma));
      --expressionDepth_;
      if (!accept(Symbol::RightParen)) failExpression(u"Missing ), ], or Item");
    }
  }
  e->negated = negated;
  return e;
}

ExprPtr Parser::quantified(ExprPtr left, Op op) {
  const bool all = take().is(u"ALL");
  if (!at(Symbol::LeftParen) || !atQuery(1)) failExpression(u"Syntax error");
  ExprPtr e = subquery(Kind::Quantified);
  e->all = all;
  e->ops.push_back(op);
  e->args.push_back(std::move(left));
  return e;
}

ExprPtr Parser::subquery(Kind kind) {
  ExprPtr e = make(kind);
  take();
  // Errors inside point at the subquery's own expressions, later ones again at the outer expression.
  const size_t start = expressionStart_;
  const int depth = std::exchange(expressionDepth_, 0);
  e->query = std::make_unique<Query>(query());
  expressionStart_ = start;
  expressionDepth_ = depth;
  if (!accept(Symbol::RightParen)) failBehind(3141);
  return e;
}

ExprPtr Parser::primary() {
  const Token& t = peek();
  switch (t.kind) {
    case TokenKind::String:
    case TokenKind::Number:
    case TokenKind::Date: {
      ExprPtr e = make(Kind::Literal);
      e->value = take().value;
      return e;
    }
    case TokenKind::Symbol:
      if (t.is(Symbol::LeftParen)) return bracketed();
      break;
    case TokenKind::Name:
    case TokenKind::Bracketed:
      return nameOrCall();
    case TokenKind::End:
      break;
  }
  failExpression(at_ > expressionStart_ ? u"Syntax error (missing operator)" : u"Syntax error");
}

ExprPtr Parser::bracketed() {
  if (atQuery(1)) return subquery(Kind::Scalar);
  take();
  const int outer = std::exchange(expressionDepth_, conditionPlace_ ? 1 : expressionDepth_ + 1);
  ExprPtr e = binary(0);
  expressionDepth_ = outer;
  if (!accept(Symbol::RightParen)) {
    const Token& t = peek();
    failExpression(t.kind == TokenKind::End || beginsClause(t) ? u"Missing ), ], or Item"
                                                               : u"Syntax error (missing operator)");
  }
  e->parenthesized = true;
  return e;
}

ExprPtr Parser::nameOrCall() {
  const Token& t = peek();
  if (t.kind == TokenKind::Name) {
    if (t.is(u"NULL") || t.is(u"TRUE") || t.is(u"FALSE")) {
      const bool null = t.is(u"NULL"), isTrue = t.is(u"TRUE");
      take();
      ExprPtr e = make(Kind::Literal);
      if (!null) e->value = isTrue;
      return e;
    }
    if (t.is(u"EXISTS") && at(Symbol::LeftParen, 1)) {
      take();
      return subquery(Kind::Exists);
    }
    if (t.is(u"@@IDENTITY")) {
      take();
      return make(Kind::Identity);
    }
    if (t.isStructural && !at(Symbol::LeftParen, 1))
      failExpression(at_ > expressionStart_ ? u"Syntax error (missing operator)" : u"Syntax error");
  }
  const bool callable = t.kind == TokenKind::Name;
  ExprPtr e = make(Kind::Name);
  e->name = take().text;
  if (callable && at(Symbol::LeftParen)) {
    take();
    e->kind = Kind::Call;
    if (at(Symbol::Star) && at(Symbol::RightParen, 1)) {
      take();
      e->star = true;
    } else if (!at(Symbol::RightParen)) {
      ++expressionDepth_;
      do e->args.push_back(binary(0));
      while (accept(Symbol::Comma));
      --expressionDepth_;
    }
    if (!accept(Symbol::RightParen))
      failExpression(peek().kind == TokenKind::End ? u"Missing ), ], or Item"
                                                   : u"Syntax error (missing operator)");
    return e;
  }
  while (at(Symbol::Dot) || at(Symbol::Bang)) {
    if (!peek(1).isName()) failExpression(u"Syntax error");
    take();
    // In a!b.c the parts before the last name the source.
    e->qualifier += e->qualifier.empty() ? e->name : u"." + e->name;
    e->name = take().text;
  }
  return e;
}

}  // namespace jet::sql
