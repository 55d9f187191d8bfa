#include "lists/sort_text.h"

#include <gtest/gtest.h>

#include "support/scripted_messages.h"

namespace tandeko {
namespace {

TEST(SortText, ClicksOnHeaders) {
  const struct {
    const char16_t* before;
    const char16_t* column;
    bool add;
    const char16_t* after;
  } cases[] = {
      {u"", u"3", false, u"3 ASC"},
      {u"3 ASC", u"3", false, u"3 DESC"},
      {u"3 DESC", u"3", false, u"3 ASC"},
      {u"3", u"3", false, u"3 DESC"},
      {u"3 ASC", u"13", false, u"13 ASC"},
      {u"3 DESC", u"swpra.Imie", true, u"3 DESC, swpra.Imie ASC"},
      {u"3 ASC, 5 ASC", u"5", true, u"3 ASC, 5 DESC"},
      {u"3 ASC, 5 DESC", u"3", false, u"3 DESC, 5 DESC"},
      {u"3 ASC, 5 DESC", u"5", false, u"5 ASC"},
      {u"swpra.imie asc", u"swpra.Imie", false, u"swpra.imie DESC"},
      {u"Left(nazwa, 3) DESC, [a, b]", u"2", true, u"Left(nazwa, 3) DESC, [a, b] ASC, 2 ASC"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(sortClicked(QString::fromUtf16(c.before), QString::fromUtf16(c.column), c.add),
              QString::fromUtf16(c.after))
        << QString::fromUtf16(c.before).toStdString() << " + " << QString::fromUtf16(c.column).toStdString();
}

TEST(SortText, AnOrderWithNameEndingInADirectionWord) {
  EXPECT_EQ(sortKeys(QStringLiteral("Opis, cenadesc DESC")),
            (QList<SortKey>{{QStringLiteral("Opis"), false}, {QStringLiteral("cenadesc"), true}}));
}

}  // namespace
}  // namespace tandeko
