#include "platform/text.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/scripted_messages.h"

using namespace tandeko;

TEST(Text, ValuesAsTheUserReadsThem) {
  using jet::Value;
  const struct {
    Value value;
    const char16_t* text;
  } cases[] = {
      {Value(), u""},
      {Value(u"żółw"), u"żółw"},
      {Value(true), u"Tak"},
      {Value(int32_t{-1234567}), u"-1234567"},
      {Value(0.1), u"0,1"},
      {Value(1234.5f), u"1234,5"},
      {Value(jet::Currency{12345000}), u"1234,5"},
      {Value(jet::Decimal{true, {0, 0, 0, 12345}, 2}), u"-123,45"},
      {Value(jet::Date{45366}), u"15.03.2024"},
      {Value(jet::Binary{1, 2}), u""},
  };
  for (const auto& c : cases) EXPECT_EQ(toText(c.value), QString::fromUtf16(c.text));
}

TEST(Text, NumbersOfValues) {
  using jet::Value;
  EXPECT_EQ(toInt(Value(u" 12abc")), 12);
  EXPECT_EQ(toInt(Value(u"abc"), 7), 0);
  EXPECT_EQ(toInt(Value(), 7), 7);
  EXPECT_EQ(toInt(Value(1e300), 7), 7);
  EXPECT_EQ(toInt(Value(std::nan("")), 7), 7);
  EXPECT_DOUBLE_EQ(toDouble(Value(u"-3,25 zł")), -3.25);
  EXPECT_TRUE(toBool(Value(int16_t{-1})));
  EXPECT_FALSE(toBool(Value()));
}

TEST(Text, DatesGoThereAndBack) {
  const QDateTime moments[] = {
      QDateTime(QDate(2024, 2, 29), QTime(23, 59, 59)), QDateTime(QDate(1899, 12, 30), QTime(6, 0)),
      QDateTime(QDate(1850, 7, 4), QTime(18, 30)), QDateTime(QDate(9999, 12, 31), QTime(0, 0))};
  for (const QDateTime& moment : moments) EXPECT_EQ(toDateTime(fromDateTime(moment)), moment);
  EXPECT_TRUE(fromDate(QDate()).isNull());
  EXPECT_FALSE(toDate(jet::Value(jet::Date{1e12})).isValid());
  // A second before the day zero counts its time forward.
  EXPECT_EQ(fromDateTime(QDateTime(QDate(1899, 12, 29), QTime(12, 0))).get<jet::Date>().days, -1.5);
}
