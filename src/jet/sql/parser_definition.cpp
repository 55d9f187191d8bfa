#include <algorithm>
#include <array>

#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/sql/parser_impl.h"

// CREATE, ALTER and their parts.
namespace jet::sql {

using namespace ast;

std::optional<TypeWord> findTypeWord(std::u16string_view word) {
  struct Entry {
    std::u16string_view word;
    Type type;
    bool autoNumber = false;
  };
  static constexpr Entry kWords[] = {{u"alphanumeric", Type::Text},
                                     {u"autoincrement", Type::Long, true},
                                     {u"binary", Type::Binary},
                                     {u"bit", Type::Boolean},
                                     {u"boolean", Type::Boolean},
                                     {u"byte", Type::Byte},
                                     {u"char", Type::Text},
                                     {u"character", Type::Text},
                                     {u"counter", Type::Long, true},
                                     {u"currency", Type::Currency},
                                     {u"date", Type::Date},
                                     {u"datetime", Type::Date},
                                     {u"dec", Type::Decimal},
                                     {u"decimal", Type::Decimal},
                                     {u"double", Type::Double},
                                     {u"float", Type::Double},
                                     {u"float4", Type::Single},
                                     {u"float8", Type::Double},
                                     {u"general", Type::Ole},
                                     {u"guid", Type::Guid},
                                     {u"identity", Type::Long, true},
                                     {u"ieeedouble", Type::Double},
                                     {u"ieeesingle", Type::Single},
                                     {u"image", Type::Ole},
                                     {u"int", Type::Long},
                                     {u"integer", Type::Long},
                                     {u"integer1", Type::Byte},
                                     {u"integer2", Type::Integer},
                                     {u"integer4", Type::Long},
                                     {u"logical", Type::Boolean},
                                     {u"logical1", Type::Boolean},
                                     {u"long", Type::Long},
                                     {u"longbinary", Type::Ole},
                                     {u"longchar", Type::Memo},
                                     {u"longtext", Type::Memo},
                                     {u"memo", Type::Memo},
                                     {u"money", Type::Currency},
                                     {u"nchar", Type::Text},
                                     {u"note", Type::Memo},
                                     {u"ntext", Type::Memo},
                                     {u"number", Type::Double},
                                     {u"numeric", Type::Double},
                                     {u"nvarchar", Type::Text},
                                     {u"oleobject", Type::Ole},
                                     {u"real", Type::Single},
                                     {u"short", Type::Integer},
                                     {u"single", Type::Single},
                                     {u"smallint", Type::Integer},
                                     {u"string", Type::Text},
                                     {u"text", Type::Text},
                                     {u"time", Type::Date},
                                     {u"timestamp", Type::Date},
                                     {u"tinyint", Type::Byte},
                                     {u"uniqueidentifier", Type::Guid},
                                     {u"varbinary", Type::Binary},
                                     {u"varchar", Type::Text},
                                     {u"yesno", Type::Boolean}};
  const std::u16string folded = foldName(word);
  const auto* found = std::lower_bound(std::begin(kWords), std::end(kWords), folded,
                                       [](const Entry& e, const std::u16string& w) { return e.word < w; });
  if (found == std::end(kWords) || found->word != folded) return std::nullopt;
  return TypeWord{found->type, found->autoNumber};
}

CreateTable Parser::createTable() {
  CreateTable s;
  s.name = name(3290);
  expect(Symbol::LeftParen, 3290);
  do {
    if (atConstraint())
      s.constraints.push_back(tableConstraint());
    else
      s.columns.push_back(columnDefinition());
  } while (accept(Symbol::Comma));
  if (!accept(Symbol::RightParen)) fail(s.columns.empty() ? 3290 : 3292);
  return s;
}

bool Parser::atConstraint() const {
  return (at(u"CONSTRAINT") && peek(1).isName()) || (at(u"PRIMARY") && at(u"KEY", 1)) ||
         (at(u"FOREIGN") && at(u"KEY", 1)) || (at(u"UNIQUE") && at(Symbol::LeftParen, 1));
}

ColumnDefinition Parser::columnDefinition() {
  ColumnDefinition c;
  c.name = name(3292);
  columnType(c);
  columnOptions(c);
  return c;
}

void Parser::columnType(ColumnDefinition& c) {
  if (!peek().isName()) fail(3292);
  const Token& word = take();
  const auto type = findTypeWord(word.text);
  if (!type) fail(3292);
  c.type = type->type;
  c.autoNumber = type->autoNumber;
  if (word.is(u"DOUBLE")) accept(u"PRECISION");
  const std::vector<int> arguments = typeArguments();
  if (arguments.empty()) return;
  if (word.is(u"NUMERIC")) c.type = Type::Decimal;  // with a precision it is the exact type
  if (c.type == Type::Text || c.type == Type::Binary) {
    c.size = arguments[0];
    if (c.size < 1 || arguments.size() > 1) fail(3292);
  } else if (c.type == Type::Decimal) {
    const int scale = arguments.size() > 1 ? arguments[1] : 0;
    if (arguments[0] < 1 || arguments[0] > 28 || scale < 0 || scale > arguments[0]) fail(3292);
    c.precision = static_cast<uint8_t>(arguments[0]);
    c.scale = static_cast<uint8_t>(scale);
  } else if (c.autoNumber) {
    // Seed and increment: counters of this engine begin at 1 and count by 1.
    if (arguments[0] != 1 || (arguments.size() > 1 && arguments[1] != 1)) fail(3259);
  }
}

std::vector<int> Parser::typeArguments() {
  std::vector<int> values;
  if (!accept(Symbol::LeftParen)) return values;
  do {
    const bool negative = accept(Symbol::Minus);
    const auto* n = peek().value.getIf<int32_t>();
    if (peek().kind != TokenKind::Number || !n) fail(3292);
    values.push_back(negative ? -*n : *n);
    take();
  } while (accept(Symbol::Comma));
  expect(Symbol::RightParen, 3292);
  return values;
}

void Parser::columnOptions(ColumnDefinition& c) {
  for (;;) {
    if (accept(u"NOT", u"NULL")) {
      c.required = true;
    } else if (at(u"NULL")) {
      take();
    } else if (at(u"WITH") && (at(u"COMPRESSION", 1) || at(u"COMP", 1))) {
      take(), take();
      c.compressed = true;
    } else if (accept(u"DEFAULT")) {
      c.defaultValue = defaultText();
    } else if (at(u"CONSTRAINT") || at(u"PRIMARY") || at(u"UNIQUE") || at(u"REFERENCES")) {
      Constraint k;
      if (accept(u"CONSTRAINT")) k.name = name(3289);
      k.columns.push_back(c.name);
      if (accept(u"PRIMARY", u"KEY")) {
        k.kind = Constraint::Kind::PrimaryKey;
      } else if (accept(u"UNIQUE")) {
        k.kind = Constraint::Kind::Unique;
      } else if (accept(u"NOT", u"NULL")) {
        c.required = true;
        continue;
      } else if (at(u"REFERENCES")) {
        references(k);
      } else {
        fail(3289);
      }
      c.constraints.push_back(std::move(k));
    } else {
      return;
    }
  }
}

std::u16string Parser::defaultText() {
  const size_t first = at_;
  prefix(6);  // an operand, with its sign
  return std::u16string(sql_.substr(tokens_[first].begin, tokens_[at_ - 1].end - tokens_[first].begin));
}

Constraint Parser::tableConstraint() {
  Constraint k;
  if (accept(u"CONSTRAINT")) k.name = name(3289);
  if (accept(u"PRIMARY", u"KEY")) {
    k.kind = Constraint::Kind::PrimaryKey;
    k.columns = nameList(3289);
  } else if (accept(u"UNIQUE")) {
    k.kind = Constraint::Kind::Unique;
    k.columns = nameList(3289);
  } else if (accept(u"NOT", u"NULL")) {
    k.kind = Constraint::Kind::NotNull;
    k.columns = nameList(3289);
  } else if (accept(u"FOREIGN", u"KEY")) {
    accept(u"NO", u"INDEX");
    k.columns = nameList(3289);
    references(k);
  } else {
    fail(3289);
  }
  return k;
}

void Parser::references(Constraint& k) {
  k.kind = Constraint::Kind::ForeignKey;
  if (!accept(u"REFERENCES")) fail(3289);
  k.table = name(3289);
  if (at(Symbol::LeftParen)) k.foreignColumns = nameList(3289);
  while (accept(u"ON")) {
    const bool updates = accept(u"UPDATE");
    if (!updates && !accept(u"DELETE")) fail(3289);
    if (accept(u"CASCADE"))
      (updates ? k.cascadeUpdates : k.cascadeDeletes) = true;
    else if (!updates && accept(u"SET", u"NULL"))
      k.setNullOnDelete = true;
    else if (!accept(u"NO", u"ACTION"))
      fail(3289);
  }
}

std::vector<std::u16string> Parser::nameList(int error) {
  std::vector<std::u16string> names;
  if (!accept(Symbol::LeftParen)) fail(error);
  do names.push_back(name(error));
  while (accept(Symbol::Comma));
  if (!accept(Symbol::RightParen)) fail(error);
  return names;
}

AlterTable Parser::alterTable() {
  using Action = AlterTable::Action;
  AlterTable s;
  s.table = name(3293);
  if (accept(u"ADD")) {
    if (atConstraint()) {
      s.action = Action::AddConstraint;
      s.constraint = tableConstraint();
      return s;
    }
    accept(u"COLUMN");
    s.action = Action::AddColumn;
    do s.columns.push_back(columnDefinition());
    while (accept(Symbol::Comma));
  } else if (accept(u"ALTER")) {
    accept(u"COLUMN");
    if (at(u"SET", 1) || at(u"DROP", 1)) {
      ColumnDefinition c;
      c.name = name(3293);
      s.action = take().is(u"SET") ? Action::SetDefault : Action::DropDefault;
      expect(u"DEFAULT", 3293);
      if (s.action == Action::SetDefault) c.defaultValue = defaultText();
      s.columns.push_back(std::move(c));
      return s;
    }
    s.action = Action::AlterColumn;
    s.columns.push_back(columnDefinition());
  } else if (accept(u"DROP")) {
    s.action = accept(u"CONSTRAINT") ? Action::DropConstraint : Action::DropColumn;
    if (s.action == Action::DropColumn) accept(u"COLUMN");
    do s.names.push_back(name(3293));
    while (s.action == Action::DropColumn && accept(Symbol::Comma));
  } else {
    fail(3293);
  }
  return s;
}

CreateIndex Parser::createIndex(bool unique) {
  CreateIndex s;
  s.unique = unique;
  s.name = name(3291);
  expect(u"ON", 3291);
  s.table = name(3291);
  expect(Symbol::LeftParen, 3291);
  do {
    std::u16string column = name(3291);
    const bool descending = accept(u"DESC");
    if (!descending) accept(u"ASC");
    s.columns.emplace_back(std::move(column), descending);
  } while (accept(Symbol::Comma));
  expect(Symbol::RightParen, 3291);
  if (accept(u"WITH")) {
    do {
      if (accept(u"PRIMARY"))
        s.primary = true;
      else if (accept(u"DISALLOW", u"NULL"))
        s.disallowNull = true;
      else if (accept(u"IGNORE", u"NULL"))
        s.ignoreNull = true;
      else
        fail(3291);
    } while (accept(Symbol::Comma));
  }
  return s;
}

}  // namespace jet::sql
