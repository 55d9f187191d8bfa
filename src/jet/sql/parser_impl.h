#pragma once

#include <initializer_list>

#include "jet/sql/ast.h"
#include "jet/sql/lexer.h"

namespace jet::sql {

// Recursive descent over the tokens of one text. The members are spread over parser.cpp (statements),
// parser_query.cpp, parser_expression.cpp and parser_definition.cpp.
class Parser {
 public:
  explicit Parser(std::u16string_view sql) : sql_(sql), tokens_(tokenize(sql)) {}

  ast::Statement statement();
  ast::ExprPtr wholeExpression(bool rule);

 private:
  using Keyword = std::u16string_view;

  // Nesting of brackets, queries and operators; deeper text would use up the stack.
  static constexpr int kMaxDepth = 200;
  class Nesting {
   public:
    explicit Nesting(Parser& p);
    ~Nesting() { --parser_.depth_; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

   private:
    Parser& parser_;
  };

  // Tokens.
  const Token& peek(size_t ahead = 0) const;
  const Token& take();
  bool at(Keyword k, size_t ahead = 0) const { return peek(ahead).is(k); }
  bool at(Symbol s, size_t ahead = 0) const { return peek(ahead).is(s); }
  bool accept(Keyword k);
  bool accept(Symbol s);
  bool accept(Keyword first, Keyword second);
  void expect(Keyword k, int error);
  void expect(Symbol s, int error);
  // A bare name that is no structural word, or a bracketed one; `error` otherwise.
  std::u16string name(int error);
  [[noreturn]] void fail(int error) const;
  // What stands behind a clause does not belong to the statement.
  [[noreturn]] void failBehind(int error) const;
  void end(int error);

  // Statements.
  ast::Insert insert();
  ast::Update update();
  ast::Delete deletion();
  std::vector<ast::Parameter> parameters();

  // Queries.
  ast::Query query();
  ast::Query::Part part();
  std::unique_ptr<ast::Select> select();
  std::optional<ast::Top> top();
  ast::SelectItem selectItem();
  std::vector<ast::SourcePtr> from();
  ast::SourcePtr source();
  ast::SourcePtr sourceOperand();
  std::u16string alias(int error);
  std::vector<ast::OrderItem> orderBy();
  ast::Query crosstab();
  bool atQuery(size_t ahead = 0) const;

  // Expressions. `listed` keeps the text as written in the node.
  ast::ExprPtr expression(bool listed = false);
  ast::ExprPtr binary(int minimum);
  ast::ExprPtr prefix(int minimum);
  ast::ExprPtr comparison(ast::ExprPtr left);
  ast::ExprPtr quantified(ast::ExprPtr left, ast::Op op);
  ast::ExprPtr primary();
  ast::ExprPtr bracketed();
  ast::ExprPtr nameOrCall();
  ast::ExprPtr subquery(ast::Expr::Kind kind);
  [[noreturn]] void failExpression(std::u16string_view what) const;

  // Data definition.
  ast::CreateTable createTable();
  ast::AlterTable alterTable();
  ast::CreateIndex createIndex(bool unique);
  ast::ColumnDefinition columnDefinition();
  void columnType(ast::ColumnDefinition& column);
  void columnOptions(ast::ColumnDefinition& column);
  std::u16string defaultText();
  ast::Constraint tableConstraint();
  bool atConstraint() const;
  void references(ast::Constraint& constraint);
  std::vector<std::u16string> nameList(int error);
  std::vector<int> typeArguments();

  std::u16string_view sql_;
  std::vector<Token> tokens_;
  size_t at_ = 0;
  int depth_ = 0;
  bool rule_ = false;                // the text is a validation rule
  bool conditionPlace_ = false;      // in a rule: a whole condition may stand here
  size_t expressionStart_ = 0;       // token of the outermost expression being read or read last
  size_t expressionEnd_ = SIZE_MAX;  // token behind the expression read last
  int expressionDepth_ = 0;
};

// The column type that a type word of CREATE TABLE means; nullopt for an unknown word.
struct TypeWord {
  Type type = Type::Null;
  bool autoNumber = false;
};
std::optional<TypeWord> findTypeWord(std::u16string_view word);

}  // namespace jet::sql
