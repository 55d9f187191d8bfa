#include "users/password.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/scripted_messages.h"
#include "users/dlgUserHaslo.h"

using namespace tandeko;

namespace {

QString stored(const QString& password) { return PassEncode(kPasswordKey, password, kPasswordPad); }

bool isPrintable(const QString& text) {
  return std::all_of(text.begin(), text.end(),
                     [](QChar c) { return c.unicode() >= 32 && c.unicode() <= 126; });
}

}  // namespace

TEST(Password, SeedFollowsTheKey) {
  // One character: the same product twice gives nothing; the second differs in its two shifts.
  EXPECT_EQ(PassSeed(QStringLiteral("a")), 0);
  EXPECT_EQ(PassSeed(QStringLiteral("ab")), (98 << 7) ^ (98 << 2));
  EXPECT_NE(PassSeed(kPasswordKey), 0);
}

TEST(Password, StoredFormHasItsEndMarkAndItsLength) {
  for (const QString& password :
       {QStringLiteral("a"), QStringLiteral("zaq12"), QStringLiteral("12345678901234567890")}) {
    const QString form = stored(password);
    EXPECT_EQ(form.size(), 22) << password.toStdString();
    EXPECT_EQ(form.indexOf(QChar(kPasswordEnd)), password.size());
    EXPECT_TRUE(isPrintable(QString(form).remove(QChar(kPasswordEnd))));
    EXPECT_FALSE(form.contains(password));
  }
  EXPECT_EQ(stored({}).size(), 21);
  EXPECT_EQ(stored({}).indexOf(QChar(kPasswordEnd)), -1);
}

TEST(Password, DecodingGivesThePasswordAndItsMark) {
  for (const QString& password : {QStringLiteral("abc"), QStringLiteral(" ~ !\"#"),
                                  QStringLiteral("ZAQ!2wsx CDE#4rfv"), QString(40, u'x')})
    EXPECT_EQ(PassDecode(kPasswordKey, stored(password)), password + QChar(kPasswordEnd));
  // Letters outside the plain ones are left out.
  EXPECT_EQ(PassDecode(kPasswordKey, stored(QStringLiteral("a"))).left(1), QStringLiteral("a"));
  EXPECT_NE(PassDecode(QStringLiteral("inny"), stored(QStringLiteral("abc"))),
            QStringLiteral("abc") + QChar(kPasswordEnd));
}

// What was stored by an earlier version of the program must open with this one.
TEST(Password, TheGeneratorDoesNotChange) {
  const QString kept = QStringLiteral("`ZCRAqtO+fn[") + QChar(kPasswordEnd) + QStringLiteral(",wTmZ&%Ow");
  EXPECT_EQ(stored(QStringLiteral("Tandeko 2024")), kept);
  EXPECT_EQ(PassDecode(kPasswordKey, kept), QStringLiteral("Tandeko 2024") + QChar(kPasswordEnd));
}

TEST(Password, AcceptanceRules) {
  const QChar mark(kPasswordEnd);
  const struct {
    const char* what;
    QString expected;
    QStringList attempts;
    QList<bool> accepted;
  } cases[] = {
      {"no password: anything goes", {}, {QStringLiteral("x"), {}}, {true, true}},
      {"exact", QStringLiteral("abc") + mark, {QStringLiteral("abc")}, {true}},
      {"a beginning is refused at first, accepted afterwards",
       QStringLiteral("abc") + mark,
       {QStringLiteral("ab"), QStringLiteral("ab")},
       {false, true}},
      {"longer, other case",
       QStringLiteral("abc") + mark,
       {QStringLiteral("abcd"), QStringLiteral("ABC")},
       {false, false}},
      {"the old form accepts any beginning",
       QStringLiteral("abcXYZ"),
       {{}, QStringLiteral("b"), QStringLiteral("a"), QStringLiteral("abcXYZ")},
       {false, false, true, true}},
  };
  for (const auto& c : cases) {
    QString expected = c.expected;
    for (int i = 0; i < c.attempts.size(); ++i)
      EXPECT_EQ(passwordAccepted(expected, c.attempts[i]), c.accepted[i]) << c.what << ", attempt " << i + 1;
  }
}
