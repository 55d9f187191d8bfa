#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "jet/format/value.h"

// The syntax tree of a statement: names as written, nothing resolved.
namespace jet::sql::ast {

struct Query;

enum class Op : uint8_t {
  Power,
  Multiply,
  Divide,
  IntegerDivide,
  Modulo,
  Add,
  Subtract,
  Concatenate,
  Equal,
  NotEqual,
  Less,
  LessEqual,
  Greater,
  GreaterEqual,
  And,
  Or,
  Xor,
  Eqv,
  Imp,
};
inline bool isComparison(Op op) { return op >= Op::Equal && op <= Op::GreaterEqual; }

struct Expr;
using ExprPtr = std::unique_ptr<Expr>;

// What each kind uses of the fields is said beside it.
struct Expr {
  enum class Kind : uint8_t {
    Literal,     // value
    Name,        // qualifier (may be empty), name
    Chain,       // args[0] ops[0] args[1] ops[1] ...: operators of one precedence level, left to right
    Negate,      // args[0]
    Not,         // args[0]
    Like,        // args[0] Like args[1]
    Between,     // args[0] Between args[1] And args[2]
    InList,      // args[0] In (args[1], ...)
    InQuery,     // args[0] In (query)
    Exists,      // query
    Scalar,      // (query)
    Quantified,  // args[0] op ANY/ALL (query): ops[0], all
    IsNull,      // args[0]
    Call,        // name, args; star for Count(*)
    Identity,    // @@IDENTITY
    Implicit,    // the value that a validation rule is about
  };
  Kind kind = Kind::Literal;
  bool negated = false;  // Not Like, Not In, Is Not Null, ...
  bool all = false;
  bool star = false;
  bool sqlWildcards = false;  // ALike
  bool parenthesized = false;
  Value value;
  std::u16string qualifier, name;
  std::vector<ExprPtr> args;
  std::vector<Op> ops;
  std::unique_ptr<Query> query;
  std::u16string text;  // as written; of select items, group and order expressions only

  explicit Expr(Kind k) : kind(k) {}
};

struct Source;
using SourcePtr = std::unique_ptr<Source>;

struct Source {
  enum class Kind : uint8_t { Table, Derived, Inner, Left, Right };
  Kind kind = Kind::Table;
  std::u16string name, alias;    // Table; Derived has an alias only
  std::unique_ptr<Query> query;  // Derived
  SourcePtr left, right;         // joins
  ExprPtr on;

  const std::u16string& shownName() const { return alias.empty() ? name : alias; }
};

struct SelectItem {
  bool star = false;
  std::u16string qualifier;  // of qualifier.*
  ExprPtr expr;
  std::u16string alias;
};

struct Top {
  int32_t count = 0;
  bool percent = false;
};

struct Select {
  bool distinct = false, distinctRow = false;
  std::optional<Top> top;
  std::vector<SelectItem> items;
  std::u16string into;
  std::vector<SourcePtr> from;
  ExprPtr where;
  std::vector<ExprPtr> groupBy;
  ExprPtr having;
};

struct OrderItem {
  ExprPtr expr;
  bool descending = false;
};

// TRANSFORM value ... PIVOT pivot [IN (...)] around a single SELECT.
struct Crosstab {
  ExprPtr value, pivot;
  std::vector<Value> headings;
};

struct Query {
  // One operand of UNION: a SELECT, or a bracketed query.
  struct Part {
    std::unique_ptr<Select> select;
    std::unique_ptr<Query> nested;
    bool all = false;  // joined to what stands before by UNION ALL
  };
  std::vector<Part> parts;
  std::vector<OrderItem> orderBy;
  std::unique_ptr<Crosstab> crosstab;
};

struct Insert {
  std::u16string table;
  std::vector<std::u16string> columns;
  std::vector<ExprPtr> values;   // VALUES form
  std::unique_ptr<Query> query;  // SELECT form
};

struct Update {
  SourcePtr source;
  struct Assignment {
    std::u16string qualifier, column;
    ExprPtr value;
  };
  std::vector<Assignment> assignments;
  ExprPtr where;
};

struct Delete {
  std::vector<std::u16string> targets;  // tables named before FROM; empty: * or nothing
  std::vector<SourcePtr> from;
  ExprPtr where;
};

struct Constraint {
  enum class Kind : uint8_t { PrimaryKey, Unique, NotNull, ForeignKey };
  Kind kind = Kind::PrimaryKey;
  std::u16string name;
  std::vector<std::u16string> columns;
  std::u16string table;                        // referenced
  std::vector<std::u16string> foreignColumns;  // referenced; empty: the primary key
  bool cascadeUpdates = false, cascadeDeletes = false, setNullOnDelete = false;
};

struct ColumnDefinition {
  std::u16string name;
  Type type = Type::Text;
  int size = 0;
  bool autoNumber = false;
  bool required = false;
  bool compressed = true;
  uint8_t precision = 18, scale = 0;
  std::u16string defaultValue;  // expression text
  std::vector<Constraint> constraints;
};

struct CreateTable {
  std::u16string name;
  std::vector<ColumnDefinition> columns;
  std::vector<Constraint> constraints;
};

struct AlterTable {
  std::u16string table;
  enum class Action : uint8_t {
    AddColumn,
    AlterColumn,
    DropColumn,
    AddConstraint,
    DropConstraint,
    SetDefault,
    DropDefault
  };
  Action action = Action::AddColumn;
  std::vector<ColumnDefinition> columns;  // add, alter; of the default actions: name and default
  std::vector<std::u16string> names;      // of what is dropped
  Constraint constraint;
};

struct CreateIndex {
  std::u16string name, table;
  std::vector<std::pair<std::u16string, bool>> columns;  // name, descending
  bool unique = false, primary = false, disallowNull = false, ignoreNull = false;
};

struct DropTable {
  std::u16string name;
};

struct DropIndex {
  std::u16string name, table;
};

struct Parameter {
  std::u16string name;
  Type type = Type::Null;  // Null: VALUE, anything
};

struct Statement {
  std::vector<Parameter> parameters;
  std::variant<Query, Insert, Update, Delete, CreateTable, AlterTable, CreateIndex, DropTable, DropIndex>
      body;
};

}  // namespace jet::sql::ast
