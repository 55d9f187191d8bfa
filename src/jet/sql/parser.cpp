#include "jet/sql/parser.h"

#include "jet/format/error.h"
#include "jet/sql/parser_impl.h"

namespace jet::sql {

using namespace ast;

Parser::Nesting::Nesting(Parser& p) : parser_(p) {
  if (parser_.depth_ == kMaxDepth) throw Error(3360, {}, "DAO.Database");
  ++parser_.depth_;
}

const Token& Parser::peek(size_t ahead) const { return tokens_[std::min(at_ + ahead, tokens_.size() - 1)]; }

const Token& Parser::take() {
  const Token& t = tokens_[at_];
  if (at_ + 1 < tokens_.size()) ++at_;
  return t;
}

bool Parser::accept(Keyword k) {
  if (!at(k)) return false;
  take();
  return true;
}

bool Parser::accept(Symbol s) {
  if (!at(s)) return false;
  take();
  return true;
}

bool Parser::accept(Keyword first, Keyword second) {
  if (!at(first) || !at(second, 1)) return false;
  take(), take();
  return true;
}

void Parser::expect(Keyword k, int error) {
  if (!accept(k)) failBehind(error);
}

void Parser::expect(Symbol s, int error) {
  if (!accept(s)) failBehind(error);
}

std::u16string Parser::name(int error) {
  if (!peek().isName() || peek().isStructural) fail(error);
  return std::u16string(take().text);
}

void Parser::fail(int error) const { throw Error(error, {}, "DAO.Database"); }

void Parser::failBehind(int error) const {
  const Token& t = peek();
  const bool operand = t.kind != TokenKind::Symbol && t.kind != TokenKind::End;
  if (at_ == expressionEnd_ && (operand || t.is(Symbol::LeftParen) || t.is(Symbol::Dot)))
    failExpression(u"Syntax error (missing operator)");
  if (at_ == expressionEnd_ && t.is(Symbol::RightParen)) failExpression(u"Extra ) ");
  fail(error);
}

void Parser::end(int error) {
  if (accept(Symbol::Semicolon)) {
    if (peek().kind != TokenKind::End) fail(3142);
    return;
  }
  if (peek().kind != TokenKind::End) failBehind(error);
}

Statement Parser::statement() {
  Statement s;
  if (accept(u"PARAMETERS")) s.parameters = parameters();
  if (at(u"SELECT") || at(u"TABLE") || at(Symbol::LeftParen)) {
    s.body = query();
    end(3141);
  } else if (at(u"TRANSFORM")) {
    s.body = crosstab();
    end(3141);
  } else if (accept(u"INSERT")) {
    s.body = insert();
    end(3134);
  } else if (accept(u"UPDATE")) {
    s.body = update();
    end(3144);
  } else if (accept(u"DELETE")) {
    s.body = deletion();
    end(3130);
  } else if (accept(u"CREATE")) {
    if (accept(u"TABLE")) {
      s.body = createTable();
      end(3290);
    } else {
      const bool unique = accept(u"UNIQUE");
      expect(u"INDEX", 3290);
      s.body = createIndex(unique);
      end(3291);
    }
  } else if (accept(u"ALTER")) {
    expect(u"TABLE", 3293);
    s.body = alterTable();
    end(3293);
  } else if (accept(u"DROP")) {
    if (accept(u"TABLE")) {
      s.body = DropTable{name(3295)};
    } else {
      expect(u"INDEX", 3295);
      DropIndex drop;
      drop.name = name(3294);
      expect(u"ON", 3294);
      drop.table = name(3294);
      s.body = std::move(drop);
    }
    end(3295);
  } else {
    fail(3129);
  }
  return s;
}

std::vector<Parameter> Parser::parameters() {
  std::vector<Parameter> list;
  do {
    Parameter p;
    p.name = name(3139);
    if (!peek().isName()) fail(3139);
    const Token& word = take();
    if (!word.is(u"VALUE")) {
      const auto type = findTypeWord(word.text);
      if (!type) fail(3139);
      p.type = type->type;
      typeArguments();
    }
    list.push_back(std::move(p));
  } while (accept(Symbol::Comma));
  expect(Symbol::Semicolon, 3139);
  return list;
}

Insert Parser::insert() {
  Insert s;
  expect(u"INTO", 3134);
  s.table = name(3134);
  if (accept(u"IN")) fail(3170);
  if (at(Symbol::LeftParen) && !atQuery(1)) {
    take();
    do {
      std::u16string column = name(3134);
      if (accept(Symbol::Dot)) column = name(3134);  // table.column
      s.columns.push_back(std::move(column));
    } while (accept(Symbol::Comma));
    expect(Symbol::RightParen, 3134);
  }
  if (accept(u"VALUES")) {
    expect(Symbol::LeftParen, 3134);
    do s.values.push_back(expression());
    while (accept(Symbol::Comma));
    expect(Symbol::RightParen, 3134);
    return s;
  }
  if (accept(u"DEFAULT", u"VALUES")) return s;
  if (!atQuery()) fail(3134);
  s.query = std::make_unique<Query>(query());
  return s;
}

Update Parser::update() {
  Update s;
  accept(u"DISTINCTROW");
  s.source = source();
  while (accept(Symbol::Comma)) {  // a, b SET ...: the cross product
    auto join = std::make_unique<Source>();
    join->kind = Source::Kind::Inner;
    join->left = std::move(s.source);
    join->right = source();
    s.source = std::move(join);
  }
  expect(u"SET", 3144);
  do {
    Update::Assignment a;
    a.column = name(3144);
    if (accept(Symbol::Dot) || accept(Symbol::Bang)) {
      a.qualifier = std::move(a.column);
      a.column = name(3144);
    }
    expect(Symbol::Equal, 3144);
    a.value = expression();
    s.assignments.push_back(std::move(a));
  } while (accept(Symbol::Comma));
  if (accept(u"WHERE")) s.where = expression();
  accept(u"WITH", u"OWNERACCESS") && accept(u"OPTION");
  return s;
}

Delete Parser::deletion() {
  Delete s;
  accept(u"DISTINCTROW");
  if (!at(u"FROM")) {
    do {
      if (accept(Symbol::Star)) continue;
      std::u16string target = name(3130);
      if (accept(Symbol::Dot) && !accept(Symbol::Star)) name(3130);
      s.targets.push_back(std::move(target));
    } while (accept(Symbol::Comma));
  }
  expect(u"FROM", 3130);
  s.from = from();
  if (accept(u"WHERE")) s.where = expression();
  accept(u"WITH", u"OWNERACCESS") && accept(u"OPTION");
  return s;
}

Statement parse(std::u16string_view sql) { return Parser(sql).statement(); }
ExprPtr parseExpression(std::u16string_view text) { return Parser(text).wholeExpression(false); }
ExprPtr parseRule(std::u16string_view text) { return Parser(text).wholeExpression(true); }

}  // namespace jet::sql
