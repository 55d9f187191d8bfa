#include <gtest/gtest.h>

#include "catalog_fixture.h"
#include "jet/catalog/query_text.h"
#include "jet/format/text.h"

namespace jet {
namespace {

struct Case {
  const char* what;
  std::vector<QueryPart> parts;
  const char16_t* sql;
};

QueryPart part(int attribute, int order, int flag, const char16_t* name1 = u"", const char16_t* name2 = u"",
               const char16_t* expression = u"") {
  return {attribute, std::string("\0\0\0", 3) + static_cast<char>(order), flag, name1, name2, expression};
}

TEST(QueryText, RebuildsEveryKind) {
  const Case cases[] = {
      {"select with joins, the same pair twice",
       {part(0, 1, 0), part(1, 1, 1), part(3, 1, 2), part(5, 1, 0, u"Table1"), part(5, 2, 0, u"Table2"),
        part(5, 3, 0, u"Table 3"), part(6, 2, 0, u"", u"", u"Table2.col2"),
        part(6, 1, 0, u"", u"", u"Table1.*"),
        part(7, 1, 2, u"Table1", u"Table 3", u"Table1.col1 = [Table 3].col1"),
        part(7, 2, 1, u"Table 3", u"Table2", u"[Table 3].col1 = Table2.col1"),
        part(7, 3, 1, u"Table 3", u"Table2", u"[Table 3].col1 = Table2.col2"),
        part(8, 1, 0, u"", u"", u"(Table2.col2)=\"foo\""), part(11, 1, 0, u"D", u"", u"Table2.col1"),
        part(255, 1, 0)},
       u"SELECT DISTINCT Table1.*, Table2.col2 FROM (Table1 LEFT JOIN [Table 3] ON Table1.col1 = [Table "
       u"3].col1) "
       u"INNER JOIN Table2 ON ([Table 3].col1 = Table2.col1) AND ([Table 3].col1 = Table2.col2) "
       u"WHERE (Table2.col2)=\"foo\" ORDER BY Table2.col1 DESC;"},
      {"top, alias, unjoined input first, owner's access",
       {part(1, 1, 1), part(3, 1, 0x34 | 1, u"10"), part(5, 1, 0, u"a"), part(5, 2, 0, u"b", u"x"),
        part(5, 3, 0, u"c"), part(6, 1, 0, u"Suma", u"", u"1+1"), part(7, 1, 3, u"a", u"x", u"a.i = x.i")},
       u"SELECT TOP 10 PERCENT 1+1 AS Suma, * FROM c, a RIGHT JOIN b AS x ON a.i = x.i WITH OWNERACCESS "
       u"OPTION;"},
      {"update with a parameter",
       {part(1, 1, 4), part(2, 1, 10, u"User Name"), part(5, 1, 0, u"Table1"),
        part(6, 1, 0, u"", u"Table1.col1", u"\"foo\""), part(6, 2, 0, u"", u"col 2", u"[User Name]"),
        part(8, 1, 0, u"", u"", u"col3 Is Not Null")},
       u"PARAMETERS [User Name] Text; UPDATE Table1 SET Table1.col1 = \"foo\", [col 2] = [User Name] WHERE "
       u"col3 Is Not Null;"},
      {"append",
       {part(1, 1, 3, u"Table3"), part(5, 1, 0, u"Table1"), part(6, 1, 0, u"", u"col2", u"[Table1].[col2]"),
        part(6, 2, 0, u"", u"Order", u"[Table1].[col3]")},
       u"INSERT INTO Table3 (col2, [Order]) SELECT [Table1].[col2], [Table1].[col3] FROM Table1;"},
      {"append of values",
       {part(1, 1, 3, u"Table3"), part(6, 1, 0x8000, u"", u"col2", u"1"),
        part(6, 2, 0x8000, u"", u"col3", u"'x'")},
       u"INSERT INTO Table3 (col2, col3) VALUES (1, 'x');"},
      {"delete",
       {part(1, 1, 5), part(5, 1, 0, u"Table1"), part(6, 1, 0, u"", u"", u"Table1.*"),
        part(8, 1, 0, u"", u"", u"Table1.col1>\"blah\"")},
       u"DELETE Table1.* FROM Table1 WHERE Table1.col1>\"blah\";"},
      {"make table",
       {part(1, 1, 2, u"Table4"), part(5, 1, 0, u"Table2"),
        part(6, 1, 0, u"MaxOfcol1", u"", u"Max(Table2.col1)"), part(9, 1, 0, u"", u"", u"Table2.col2"),
        part(10, 1, 0, u"", u"", u"Max(Table2.col1)=\"buzz\"")},
       u"SELECT Max(Table2.col1) AS MaxOfcol1 INTO Table4 FROM Table2 GROUP BY Table2.col2 HAVING "
       u"Max(Table2.col1)=\"buzz\";"},
      {"crosstab",
       {part(1, 1, 6), part(5, 1, 0, u"T"), part(6, 1, 0, u"n", u"", u"Count(T.a)"),
        part(6, 2, 2, u"", u"", u"T.b"), part(6, 3, 1, u"", u"", u"T.c"), part(9, 1, 2, u"", u"", u"T.b"),
        part(9, 2, 1, u"", u"", u"T.c")},
       u"TRANSFORM Count(T.a) AS n SELECT T.b FROM T GROUP BY T.b PIVOT T.c;"},
      {"union of all",
       {part(1, 1, 9), part(3, 1, 1), part(5, 1, 0, u"", u"X7YZ_____1", u"SELECT a FROM b\r\n"),
        part(5, 2, 0, u"", u"X7YZ_____2", u"SELECT c FROM d;")},
       u"SELECT a FROM b UNION ALL SELECT c FROM d;"},
      {"definition with its NUL",
       {part(1, 1, 7, u"", u"", u"CREATE TABLE t (a CHAR);")},
       u"CREATE TABLE t (a CHAR);"},
  };
  for (const Case& c : cases) {
    std::vector<QueryPart> parts = c.parts;
    if (parts[0].flag == 7) parts[0].expression += u'\0';
    EXPECT_EQ(toUtf8(buildQuerySql(parts, u"q")), toUtf8(c.sql)) << c.what;
  }
  EXPECT_EQ(errorOf([] { buildQuerySql({part(0, 1, 0)}, u"q"); }), 3340);
  EXPECT_EQ(errorOf([] {
              buildQuerySql({part(1, 1, 1), part(5, 1, 0, u"a"), part(7, 1, 1, u"a", u"z", u"1")}, u"q");
            }),
            3340);
}

}  // namespace
}  // namespace jet
