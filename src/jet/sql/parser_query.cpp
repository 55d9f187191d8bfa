#include "jet/format/error.h"
#include "jet/sql/parser.h"
#include "jet/sql/parser_impl.h"

namespace jet::sql {

using namespace ast;

namespace {

SourcePtr makeSource(Source::Kind kind) {
  auto s = std::make_unique<Source>();
  s->kind = kind;
  return s;
}

}  // namespace

// A bracket begins a query only when nothing but a union or the end of the query follows its partner: in
// ((SELECT ...) AS a INNER JOIN b ...) and ((SELECT ...) + 1) the outer one does not.
bool Parser::atQuery(size_t ahead) const {
  if (at(Symbol::LeftParen, ahead)) {
    // More brackets than may be nested are refused wherever they stand.
    size_t brackets = 1;
    while (brackets <= kMaxDepth && at(Symbol::LeftParen, ahead + brackets)) ++brackets;
    if (brackets > kMaxDepth) return true;
    if (!atQuery(ahead + 1)) return false;
    int depth = 0;
    for (;; ++ahead) {
      if (peek(ahead).kind == TokenKind::End) return true;
      if (at(Symbol::LeftParen, ahead)) ++depth;
      if (at(Symbol::RightParen, ahead) && --depth == 0) break;
    }
    ++ahead;
    return at(Symbol::RightParen, ahead) || at(u"UNION", ahead) || at(u"ORDER", ahead) ||
           at(u"WITH", ahead) || at(Symbol::Semicolon, ahead) || peek(ahead).kind == TokenKind::End;
  }
  return at(u"SELECT", ahead) || (at(u"TABLE", ahead) && peek(ahead + 1).isName()) || at(u"TRANSFORM", ahead);
}

Query Parser::query() {
  const Nesting nesting(*this);
  if (at(u"TRANSFORM")) return crosstab();
  Query q;
  q.parts.push_back(part());
  while (accept(u"UNION")) {
    const bool all = accept(u"ALL");
    if (!atQuery()) fail(3319);
    q.parts.push_back(part());
    q.parts.back().all = all;
  }
  if (at(u"ORDER")) q.orderBy = orderBy();
  if (accept(u"WITH")) {
    expect(u"OWNERACCESS", 3141);
    expect(u"OPTION", 3141);
  }
  return q;
}

Query::Part Parser::part() {
  Query::Part p;
  if (accept(Symbol::LeftParen)) {
    p.nested = std::make_unique<Query>(query());
    expect(Symbol::RightParen, 3319);
  } else if (accept(u"TABLE")) {
    p.select = std::make_unique<Select>();
    p.select->items.emplace_back().star = true;
    p.select->from.push_back(makeSource(Source::Kind::Table));
    p.select->from.back()->name = name(3131);
  } else {
    p.select = select();
  }
  return p;
}

std::unique_ptr<Select> Parser::select() {
  expect(u"SELECT", 3141);
  auto s = std::make_unique<Select>();
  for (;;) {
    if (accept(u"DISTINCT"))
      s->distinct = true;
    else if (accept(u"DISTINCTROW"))
      s->distinctRow = true;
    else if (at(u"TOP"))
      s->top = top();
    else if (!accept(u"ALL"))
      break;
  }
  do s->items.push_back(selectItem());
  while (accept(Symbol::Comma));
  if (accept(u"INTO")) {
    s->into = name(3141);
    if (accept(u"IN")) fail(3170);
  }
  if (accept(u"FROM")) s->from = from();
  if (accept(u"WHERE")) s->where = expression();
  if (accept(u"GROUP")) {
    expect(u"BY", 3132);
    do s->groupBy.push_back(expression(true));
    while (accept(Symbol::Comma));
  }
  if (accept(u"HAVING")) s->having = expression();
  return s;
}

std::optional<Top> Parser::top() {
  take();
  Top t;
  const Token& n = peek();
  const auto* count = n.value.getIf<int32_t>();
  if (n.kind != TokenKind::Number || !count || *count < 0) fail(3308);
  t.count = *count;
  take();
  t.percent = accept(u"PERCENT");
  if (t.percent && t.count > 100) fail(3308);
  return t;
}

SelectItem Parser::selectItem() {
  SelectItem item;
  if (accept(Symbol::Star)) {
    item.star = true;
    return item;
  }
  if (peek().isName() && (at(Symbol::Dot, 1) || at(Symbol::Bang, 1)) && at(Symbol::Star, 2)) {
    item.star = true;
    item.qualifier = take().text;
    take(), take();
    return item;
  }
  const Token& first = peek();
  if (first.kind == TokenKind::End || first.is(Symbol::Comma) || first.is(Symbol::Semicolon) ||
      (first.isStructural && !first.is(u"NOT") && !first.is(u"NULL") && !first.is(u"EXISTS") &&
       !first.is(u"LEFT") && !first.is(u"RIGHT")))
    fail(3141);
  item.expr = expression(true);
  if (accept(u"AS")) item.alias = name(3141);
  return item;
}

std::vector<SourcePtr> Parser::from() {
  std::vector<SourcePtr> sources;
  do sources.push_back(source());
  while (accept(Symbol::Comma));
  if (at(u"IN")) fail(3170);  // tables of another file
  return sources;
}

SourcePtr Parser::source() {
  SourcePtr left = sourceOperand();
  SourcePtr join;
  if (accept(u"INNER"))
    join = makeSource(Source::Kind::Inner);
  else if (accept(u"LEFT"))
    join = makeSource(Source::Kind::Left);
  else if (accept(u"RIGHT"))
    join = makeSource(Source::Kind::Right);
  else if (at(u"JOIN"))
    fail(3131);
  else
    return left;
  if (join->kind != Source::Kind::Inner) accept(u"OUTER");
  expect(u"JOIN", 3131);
  join->left = std::move(left);
  join->right = sourceOperand();
  expect(u"ON", 3135);
  join->on = expression();
  // Several joins need brackets; a further one is read as a continuation of the condition.
  if (at(u"INNER") || at(u"LEFT") || at(u"RIGHT")) failExpression(u"Syntax error (missing operator)");
  return join;
}

SourcePtr Parser::sourceOperand() {
  const Nesting nesting(*this);
  if (at(Symbol::LeftParen)) {
    SourcePtr s;
    if (atQuery(1)) {
      take();
      s = makeSource(Source::Kind::Derived);
      s->query = std::make_unique<Query>(query());
      expect(Symbol::RightParen, 3131);
      s->alias = alias(3131);
    } else {
      take();
      s = source();
      expect(Symbol::RightParen, 3131);
    }
    return s;
  }
  if (peek().kind == TokenKind::Bracketed && at(Symbol::Dot, 1)) {  // [SELECT ...]. AS alias
    Statement inner = parse(take().text);
    take();
    auto* q = std::get_if<Query>(&inner.body);
    if (!q) fail(3131);
    SourcePtr s = makeSource(Source::Kind::Derived);
    s->query = std::make_unique<Query>(std::move(*q));
    s->alias = alias(3131);
    return s;
  }
  SourcePtr s = makeSource(Source::Kind::Table);
  s->name = name(3131);
  s->alias = alias(3131);
  return s;
}

std::u16string Parser::alias(int error) {
  if (accept(u"AS")) return name(error);
  if (peek().isName() && !peek().isStructural) return std::u16string(take().text);
  return {};
}

std::vector<OrderItem> Parser::orderBy() {
  take();
  expect(u"BY", 3138);
  std::vector<OrderItem> items;
  do {
    OrderItem item;
    const Token& t = peek();
    if (t.kind == TokenKind::End || t.is(Symbol::Comma)) fail(3138);
    item.expr = expression(true);
    if (accept(u"DESC"))
      item.descending = true;
    else
      accept(u"ASC");
    items.push_back(std::move(item));
  } while (accept(Symbol::Comma));
  return items;
}

Query Parser::crosstab() {
  take();
  Query q;
  q.crosstab = std::make_unique<Crosstab>();
  q.crosstab->value = expression(true);
  if (accept(u"AS")) name(3141);  // the headings come from PIVOT; the name is shown nowhere
  q.parts.emplace_back().select = select();
  if (at(u"ORDER")) q.orderBy = orderBy();
  expect(u"PIVOT", 3141);
  q.crosstab->pivot = expression(true);
  // PIVOT x IN (...) is read as a condition on x: take it apart.
  Expr& pivot = *q.crosstab->pivot;
  if (pivot.kind == Expr::Kind::InList && !pivot.negated && !pivot.parenthesized) {
    for (size_t i = 1; i < pivot.args.size(); ++i) {
      if (pivot.args[i]->kind != Expr::Kind::Literal) fail(3141);
      q.crosstab->headings.push_back(pivot.args[i]->value);
    }
    ExprPtr inner = std::move(pivot.args[0]);
    q.crosstab->pivot = std::move(inner);
  }
  return q;
}

}  // namespace jet::sql
