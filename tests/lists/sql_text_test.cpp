#include "lists/sql_text.h"

#include <gtest/gtest.h>

#include "support/scripted_messages.h"

namespace tandeko {
namespace {

QString u(const char16_t* text) { return QString::fromUtf16(text); }

TEST(SqlText, ColumnsOfASelect) {
  const auto columns = queryColumns(
      u(u"SELECT ewkar.indewi, swpra.nazwisko & ', FROM ' & swpra.imie As [Nazpra], Sum(a.x, b.y) as Razem, "
        u"[od, do].[Jako as], IIf(a.b In (SELECT c FROM d), 1, 2) FROM ewkar, swpra WHERE a = b"));
  const QList<QueryColumn> expected = {
      {u(u"ewkar.indewi"), u(u"indewi")},
      {u(u"swpra.nazwisko & ', FROM ' & swpra.imie"), u(u"Nazpra")},
      {u(u"Sum(a.x, b.y)"), u(u"Razem")},
      {u(u"[od, do].[Jako as]"), u(u"Jako as")},
      {u(u"IIf(a.b In (SELECT c FROM d), 1, 2)"), u(u"IIf(a.b In (SELECT c FROM d), 1, 2)")},
  };
  ASSERT_EQ(columns.size(), expected.size());
  for (qsizetype i = 0; i + 1 < columns.size(); ++i) {
    EXPECT_EQ(columns[i].expression, expected[i].expression);
    EXPECT_EQ(columns[i].name, expected[i].name);
  }
  EXPECT_EQ(columns.last().expression, expected.last().expression);
  EXPECT_TRUE(queryColumns(u(u"DELETE FROM ewkar")).isEmpty());
}

TEST(SqlText, CutsOutsideOfQuotesAndParenthesesOnly) {
  EXPECT_EQ(splitOutside(u(u"a LIKE 'x UNION y' UNION (b UNION c) union [d UNION] "), u(u"UNION")),
            (QStringList{u(u"a LIKE 'x UNION y' "), u(u" (b UNION c) "), u(u" [d UNION] ")}));
  EXPECT_EQ(findOutside(u(u"REUNION 'UNION' (UNION) UNIONS"), u(u"UNION")), -1);
}

TEST(SqlText, ReplacesOutsideOfQuotesOnly) {
  EXPECT_EQ(replaceUnquoted(u(u" And ( a.b & ' ' & a.c = 'a.b & x' Or (A.B & ' ' & a.c Is Null) )"),
                            u(u"a.b & ' ' & a.c"), u(u"'[Kosz]'")),
            u(u" And ( '[Kosz]' = 'a.b & x' Or ('[Kosz]' Is Null) )"));
  EXPECT_EQ(replaceUnquoted(u(u"xa.b, a.bx, a.b"), u(u"a.b"), u(u"#")), u(u"xa.b, a.bx, #"));
}

}  // namespace
}  // namespace tandeko
