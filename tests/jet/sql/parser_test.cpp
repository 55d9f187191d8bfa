#include "jet/sql/parser.h"

#include <gtest/gtest.h>

#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/sql/engine.h"
#include "scalars.h"

namespace jet::sql::test {

namespace {

using ast::Expr;

const char* const kOps[] = {"^", "*",  "/", "\\", "Mod", "+",  "-",   "&",   "=",  "<>",
                            "<", "<=", ">", ">=", "And", "Or", "Xor", "Eqv", "Imp"};

// An expression with every operator's operands in brackets.
std::string bracketed(const Expr& e) {
  const auto arg = [&](size_t i) { return bracketed(*e.args[i]); };
  const std::string no = e.negated ? "Not " : "";
  switch (e.kind) {
    case Expr::Kind::Literal:
      return e.value.isNull() ? "Null" : toUtf8(toText(e.value, polish()));
    case Expr::Kind::Name:
      return toUtf8((e.qualifier.empty() ? u"" : e.qualifier + u".") + e.name);
    case Expr::Kind::Chain: {
      std::string text = arg(0);
      for (size_t i = 0; i < e.ops.size(); ++i)
        text = "(" + text + " " + kOps[static_cast<size_t>(e.ops[i])] + " " + arg(i + 1) + ")";
      return text;
    }
    case Expr::Kind::Negate:
      return "(-" + arg(0) + ")";
    case Expr::Kind::Not:
      return "(Not " + arg(0) + ")";
    case Expr::Kind::Like:
      return "(" + arg(0) + " " + no + "Like " + arg(1) + ")";
    case Expr::Kind::Between:
      return "(" + arg(0) + " " + no + "Between " + arg(1) + " And " + arg(2) + ")";
    case Expr::Kind::InList: {
      std::string text = "(" + arg(0) + " " + no + "In (";
      for (size_t i = 1; i < e.args.size(); ++i) text += (i > 1 ? ", " : "") + arg(i);
      return text + "))";
    }
    case Expr::Kind::InQuery:
      return "(" + arg(0) + " " + no + "In query)";
    case Expr::Kind::Exists:
      return "exists";
    case Expr::Kind::Scalar:
      return "query";
    case Expr::Kind::Quantified:
      return "(" + arg(0) + " " + kOps[static_cast<size_t>(e.ops[0])] + (e.all ? " all)" : " any)");
    case Expr::Kind::IsNull:
      return "(" + arg(0) + " Is " + no + "Null)";
    case Expr::Kind::Call: {
      std::string text = toUtf8(e.name) + "(" + (e.star ? "*" : "");
      for (size_t i = 0; i < e.args.size(); ++i) text += (i > 0 ? ", " : "") + arg(i);
      return text + ")";
    }
    case Expr::Kind::Identity:
      return "@@IDENTITY";
    case Expr::Kind::Implicit:
      return "value";
  }
  return "?";
}

int errorOf(const std::string& sql) {
  try {
    parse(fromUtf8(sql));
  } catch (const Error& e) {
    return e.number();
  }
  return 0;
}

}  // namespace

TEST(Parser, PrecedenceOfOperators) {
  const std::pair<const char*, const char*> cases[] = {
      {"-2^2", "(-(2 ^ 2))"},
      {"2^-1*3", "((2 ^ -1) * 3)"},
      {"a-b-c", "((a - b) - c)"},
      {"a+b*c", "(a + (b * c))"},
      {"a\\b*c Mod d", "((a \\ (b * c)) Mod d)"},
      {"a&b+c", "(a & (b + c))"},
      {"a & b = c", "((a & b) = c)"},
      {"a = b = c", "((a = b) = c)"},
      {"Not a = b And c", "((Not (a = b)) And c)"},
      {"a Or b And c Xor d", "((a Or (b And c)) Xor d)"},
      {"a Imp b Eqv c", "(a Imp (b Eqv c))"},
      {"(a Or b) And c", "((a Or b) And c)"},
      {"x Between 1 And 2 And y", "((x Between 1 And 2) And y)"},
      {"x Not Between a+1 And b Or c", "((x Not Between (a + 1) And b) Or c)"},
      {"x Not In (1, 2+3, 'a')", "(x Not In (1, (2 + 3), a))"},
      {"x Is Not Null And Not y Is Null", "((x Is Not Null) And (Not (y Is Null)))"},
      {"x & 'b' Like 'a*' & y", "((x & b) Like (a* & y))"},
      {" Str(indewi) & '_' & Str(parent)  IN ( SELECT a FROM t )",
       "(((Str(indewi) & _) & Str(parent)) In query)"},
      {"x >= ALL (SELECT a FROM t)", "(x >= all)"},
      {"x = SOME (SELECT a FROM t) And 1", "((x = any) And 1)"},
      {"count(*) + Left(a, 2) & right$(b, 1)", "((count(*) + Left(a, 2)) & right$(b, 1))"},
      {"[my table].[a b]!c", "my table.a b.c"},
      {"t!a.b", "t.a.b"},
      {"&H10 + &HFFFF & &HFFFFF", "((16 + -1) & 1048575)"},
      {"a &H1", "(a & H1)"},
      {"'it''s' & \"a \"\"b\"\"\"", "(it's & a \"b\")"},
      {".5 + 1E3 + 2147483648", "((0,5 + 1000) + 2147483648)"},
      {"#12/31/2001# + #13/1/2001#", "(2001-12-31 + 2001-01-13)"},
      {"a Not Like 'x' Or b ALike 'y%'", "((a Not Like x) Or (b Like y%))"},
  };
  for (const auto& [text, expected] : cases) {
    SCOPED_TRACE(text);
    EXPECT_EQ(bracketed(*parseExpression(fromUtf8(text))), expected);
  }
}

TEST(Parser, RulesLeaveOutTheValue) {
  const std::pair<const char*, const char*> cases[] = {
      {">0 And <=10", "((value > 0) And (value <= 10))"},
      {"'L' Or 'S'", "((value = L) Or (value = S))"},
      {"Like 'A*'", "(value Like A*)"},
      {"Is Null Or Between 1 And 5", "((value Is Null) Or (value Between 1 And 5))"},
      {"Not In (1, 2)", "(Not (value In (1, 2)))"},
      {"(>1 And <5) Or =-1", "(((value > 1) And (value < 5)) Or (value = -1))"},
      {"[a] > [b] + 1", "(a > (b + 1))"},
      {"Len([a]) = 3", "(Len(a) = 3)"},
  };
  for (const auto& [text, expected] : cases) {
    SCOPED_TRACE(text);
    EXPECT_EQ(bracketed(*parseRule(fromUtf8(text))), expected);
  }
}

TEST(Parser, ErrorsHaveTheNumberOfTheClause) {
  const std::pair<const char*, int> cases[] = {
      {"SELEKT 1", 3129},
      {"", 3129},
      {"SELECT FROM t", 3141},
      {"SELECT a, FROM t", 3141},
      {"SELECT a b FROM t", 3075},
      {"SELECT a FROM", 3131},
      {"SELECT a FROM t WHERE", 3075},
      {"SELECT a FROM t WHERE a =", 3075},
      {"SELECT a FROM t WHERE a = 'x", 3075},
      {"SELECT a FROM t WHERE a = #x#", 3075},
      {"SELECT a FROM t WHERE (a = 1", 3075},
      {"SELECT a FROM t WHERE a = 1)", 3075},
      {"SELECT a FROM t WHERE a IN 1", 3075},
      {"SELECT a FROM t WHERE [a = 1", 3075},
      {"SELECT a FROM t WHERE [] = 1", 3126},
      {"SELECT a FROM t WHERE nazwa = 'O'Hara'", 3075},
      {"SELECT a FROM t GROUP a", 3132},
      {"SELECT a FROM t ORDER a", 3138},
      {"SELECT a FROM t ORDER BY", 3138},
      {"SELECT a FROM t; SELECT b FROM t", 3142},
      {"SELECT TOP x a FROM t", 3308},
      {"SELECT TOP 101 PERCENT a FROM t", 3308},
      {"SELECT a FROM t UNION b", 3319},
      {"SELECT a FROM t INNER JOIN u", 3135},
      {"SELECT a FROM t JOIN u ON t.a = u.a", 3131},
      {"SELECT a FROM t INNER JOIN u ON t.a = u.a LEFT JOIN w ON w.a = u.a", 3075},
      {"INSERT t VALUES (1)", 3134},
      {"INSERT INTO t (a VALUES (1)", 3134},
      {"UPDATE t a = 1", 3144},
      {"UPDATE t SET a 1", 3144},
      {"DELETE t", 3130},
      {"PARAMETERS x; SELECT 1", 3139},
      {"CREATE VIEW v", 3290},
      {"CREATE TABLE t", 3290},
      {"CREATE TABLE t (a FOO)", 3292},
      {"CREATE TABLE t (a LONG CONSTRAINT x FOO)", 3289},
      {"CREATE INDEX i t (a)", 3291},
      {"ALTER TABLE t FOO a", 3293},
      {"DROP INDEX i", 3294},
      {"DROP t", 3295},
      {"SELECT a FROM t IN 'other.mdb'", 3170},
  };
  for (const auto& [sql, number] : cases) EXPECT_EQ(errorOf(sql), number) << sql;
}

TEST(Parser, NamesTheExpressionThatIsWrong) {
  try {
    parse(u"SELECT a, b FROM t WHERE a = 1 AND b c ORDER BY a");
    FAIL();
  } catch (const Error& e) {
    EXPECT_NE(toUtf8(e.description()).find("Syntax error (missing operator)"), std::string::npos) << e.what();
    EXPECT_NE(toUtf8(e.description()).find("'a = 1 AND b c'"), std::string::npos) << e.what();
  }
}

TEST(Parser, LongTextsAreFineAndDeepOnesAreRefused) {
  std::string wide = "SELECT a FROM t WHERE a = 0";
  while (wide.size() < 200000) wide += " OR a = 12345 AND b & 'x' & 'y' = 'xy'";
  EXPECT_EQ(errorOf(wide), 0);
  for (const std::string open :
       {"(", "Not ", "-", "Abs(", "a = (", "IIf(a, b, ", "(SELECT a FROM t WHERE ", "2 ^ -"})
    for (const int depth : {50, 100000}) {
      std::string deep = "SELECT ";
      for (int i = 0; i < depth; ++i) deep += open;
      EXPECT_EQ(errorOf(deep + "1") == 3360, depth > 200) << open << depth;
    }
  std::string joins;
  for (int i = 0; i < 100000; ++i) joins += "(";
  EXPECT_EQ(errorOf("SELECT 1 FROM " + joins + "t"), 3360);
}

TEST(Parser, ScriptsAreSplitOutsideOfQuotations) {
  const Script script =
      splitScript(u"SELECT ';' FROM [a;b]; ;\nPARAMETERS x LONG; SELECT #1/1/2001;#;DELETE \"a;\"");
  ASSERT_EQ(script.statements.size(), 2u);
  EXPECT_EQ(script.statements[0], u"SELECT ';' FROM [a;b]");
  EXPECT_EQ(script.statements[1], u"\nPARAMETERS x LONG; SELECT #1/1/2001;#");
  EXPECT_EQ(script.rest, u"DELETE \"a;\"");
}

}  // namespace jet::sql::test
