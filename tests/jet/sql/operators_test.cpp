#include "jet/sql/operators.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>

#include "jet/sql/scalars.h"

namespace jet::sql {
namespace {

using namespace test;

using Operator = Value (*)(const Value&, const Value&, const EvalContext&);
const Value kNull;

struct Binary2 {
  Operator op;
  Value a, b;
  std::string expected;
};

void check(const std::vector<Binary2>& cases) {
  for (const Binary2& t : cases)
    EXPECT_EQ(outcome([&] { return t.op(t.a, t.b, polish()); }), t.expected)
        << show(t.a) << " op " << show(t.b) << " (case " << &t - cases.data() << ")";
}

TEST(Arithmetic, ResultTypesFollowTheLadder) {
  check({
      {add, byte(200), byte(55), "Byte 255"},
      {add, byte(200), byte(56), "Integer 256"},
      {subtract, byte(1), byte(2), "Integer -1"},
      {add, small(32767), small(1), "Long 32768"},
      {multiply, 65536, 65536, "Double 4294967296"},
      {subtract, INT32_MIN, 1, "Double -2147483649"},
      {add, true, true, "Integer -2"},
      {add, 1, 1.5f, "Double 2.5"},
      {add, small(1), 1.5f, "Single 2.5"},
      {add, 1, 1.5, "Double 2.5"},
      {add, money(1.5), 2, "Currency 3.5"},
      {add, money(1.5), 2.25, "Double 3.75"},
      {add, money(1.5), exact("2.25"), "Decimal 3.75"},
      {multiply, exact("1.5"), 2.0, "Double 3"},
      {divide, 7, 2, "Double 3.5"},
      {divide, money(7), 2, "Double 3.5"},
      {divide, exact("1"), 3, "Decimal 0.3333333333333333333333333333"},
      {add, u"12,5", 1, "Double 13.5"},
      {add, u"ab", u"cd", "Text abcd"},
      {add, u"ab", 1, "error 3464"},
      {subtract, u"12", u"5", "Double 7"},
      {add, Binary{1}, 1, "error 3464"},
      {add, kNull, u"x", "Null"},
      {multiply, 5, kNull, "Null"},
  });
}

TEST(Arithmetic, CurrencyAndDecimalAreExact) {
  check({
      {multiply, money(0.0001), money(0.5), "Currency 0"},       // half to even
      {multiply, money(0.0003), money(0.5), "Currency 0.0002"},  // 0.00015
      {multiply, money(-0.0003), money(0.5), "Currency -0.0002"},
      {multiply, money(-0.0005), money(0.5), "Currency -0.0002"},
      {multiply, money(123456789.1234), money(1000), "Currency 123456789123.4"},
      {multiply, Currency{9223372036854775807}, money(1.5), "error 6"},
      {add, Currency{9223372036854775807}, Currency{1}, "error 6"},
      {subtract, Currency{0}, Currency{INT64_MIN}, "error 6"},
      {add, exact("0.1"), exact("0.2"), "Decimal 0.3"},
      {add, exact("9999999999999999999999999999"), exact("0.4"), "Decimal 9999999999999999999999999999"},
      {add, exact("9999999999999999999999999999"), exact("1"), "error 6"},
      {subtract, exact("5"), exact("5.000000000000000000000000001"),
       "Decimal -0.000000000000000000000000001"},
      {multiply, exact("12345678901234.5"), exact("-12345678901234.5"),
       "Decimal -152415787532386691205623990.2"},
      {multiply, exact("0.00000000000001"), exact("0.000000000000005"), "Decimal 0"},
      {multiply, exact("0.00000000000001"), exact("0.000000000000015"),
       "Decimal 0.0000000000000000000000000002"},
      {divide, exact("10"), exact("-4"), "Decimal -2.5"},
      {divide, exact("2"), exact("3"), "Decimal 0.6666666666666666666666666667"},
      {divide, exact("1"), exact("0"), "error 11"},
  });
}

TEST(Arithmetic, WholeDivisionRoundsItsOperands) {
  check({
      {integerDivide, 7, 2, "Long 3"},
      {integerDivide, -7, 2, "Long -3"},
      {integerDivide, 7.5, 2, "Long 4"},  // 8 \ 2
      {integerDivide, 6.5, 2, "Long 3"},  // 6 \ 2
      {integerDivide, small(7), byte(2), "Integer 3"},
      {integerDivide, INT32_MIN, -1, "Double 2147483648"},
      {integerDivide, 5, 0.4, "error 11"},
      {modulo, -7, 3, "Long -1"},
      {modulo, 7, -3, "Long 1"},
      {modulo, 12.5, 5, "Long 2"},
      {modulo, 5, 0, "error 11"},
      {modulo, INT32_MIN, -1, "Long 0"},
      {divide, 1, 0, "error 11"},
      {divide, 0, kNull, "Null"},
      {integerDivide, 1e30, 2, "error 6"},
      {power, 2, 10, "Double 1024"},
      {power, -8, 1.0 / 3, "error 5"},
      {power, 0, -1, "error 5"},
      {power, 10, 400, "error 6"},
      {multiply, 1e300, 1e300, "error 6"},
  });
  EXPECT_EQ(show(negate(small(-32768), polish())), "Long 32768");
  EXPECT_EQ(show(negate(true, polish())), "Integer 1");
  EXPECT_EQ(show(negate(u"2,5", polish())), "Double -2.5");
}

TEST(Arithmetic, DatesRunForwardBeforeTheirOrigin) {
  const Value morning = Date{-1.25};  // 1899-12-29 06:00
  check({
      {add, morning, 0.5, "Date 1899-12-29 18:00:00"},
      {add, morning, 1, "Date 06:00:00"},
      {subtract, morning, 0.5, "Date 1899-12-28 18:00:00"},
      {subtract, Date{1.0}, morning, "Double 1.75"},
      {add, date(u"2026-01-31"), 1, "Date 2026-02-01"},
      {add, 1, date(u"2026-01-31"), "Date 2026-02-01"},
      {subtract, date(u"2026-03-01 12:00"), date(u"2026-02-28"), "Double 1.5"},
      {multiply, date(u"1900-01-01"), 2, "Double 4"},
      {add, date(u"9999-12-31"), 1, "error 6"},
      {add, date(u"2026-01-31"), u"abc", "error 3464"},
  });
}

TEST(Logic, ThreeValuedAndBitwise) {
  const Value values[] = {true, false, kNull};
  // Rows True, False, Null; columns the same.
  const std::pair<Logical, std::array<const char*, 9>> tables[] = {
      {Logical::And, {"True", "False", "Null", "False", "False", "False", "Null", "False", "Null"}},
      {Logical::Or, {"True", "True", "True", "True", "False", "Null", "True", "Null", "Null"}},
      {Logical::Xor, {"False", "True", "Null", "True", "False", "Null", "Null", "Null", "Null"}},
      {Logical::Eqv, {"True", "False", "Null", "False", "True", "Null", "Null", "Null", "Null"}},
      {Logical::Imp, {"True", "False", "Null", "True", "True", "True", "True", "Null", "Null"}},
  };
  for (const auto& [op, expected] : tables)
    for (int i = 0; i < 9; ++i)
      EXPECT_EQ(show(logical(op, values[i / 3], values[i % 3])), expected[i]) << int(op) << " " << i;
  EXPECT_EQ(show(logical(Logical::And, 12, 10)), "Long 8");
  EXPECT_EQ(show(logical(Logical::Xor, small(12), true)), "Integer -13");
  EXPECT_EQ(show(logical(Logical::Or, 5, kNull)), "Long 5");
  EXPECT_EQ(show(logicalNot(5)), "Long -6");
  EXPECT_EQ(show(logicalNot(true)), "False");
  EXPECT_EQ(show(logicalNot(kNull)), "Null");
  EXPECT_EQ(outcome([] { return logical(Logical::And, u"x", true); }), "error 3464");
  EXPECT_EQ(outcome([] { return fromTruth(truth(u"1")); }), "error 3464");
  EXPECT_EQ(truth(0.5), Truth(true));
  EXPECT_EQ(truth(kNull), Truth());
}

TEST(Text, ConcatenationTreatsNullAsEmpty) {
  check({
      {concatenate, u"a", kNull, "Text a"},
      {concatenate, kNull, kNull, "Null"},
      {concatenate, u"x", 1.5, "Text x1,5"},
      {concatenate, true, false, "Text -10"},
      {concatenate, money(1234.5), u" zł", "Text 1234,5 zł"},
      {concatenate, date(u"22.11.2026"), u"", "Text 2026-11-22"},
      {concatenate, date(u"22.11.2026 7:05"), u"", "Text 2026-11-22 07:05:00"},
      {concatenate, Date{0}, u"", "Text 00:00:00"},
      {concatenate, 1e15, u"", "Text 1E+15"},
      {concatenate, 0.00001, u"", "Text 1E-05"},
      {concatenate, 0.1 + 0.2, u"", "Text 0,3"},
      {concatenate, 0.1f, u"", "Text 0,1"},
  });
}

// The order of each line is ascending; equal neighbours share a line's field.
TEST(Compare, OrderAndSortKeysAgree) {
  const double infinity = std::numeric_limits<double>::infinity();
  const std::u16string stem(300, u'a');
  struct Line {
    Type as;
    std::vector<std::vector<Value>> groups;
  };
  const Line lines[] = {
      {Type::Double,
       {{-infinity},
        {INT32_MIN},
        {-1.5, -1.5f},
        {true, -1, small(-1)},
        {0, -0.0, 0.0, false, byte(0)},
        {0.1},
        {0.5f},
        {1, 1.0, byte(1), money(1)},
        {1e300},
        {infinity}}},
      {Type::Long, {{-5}, {true, -1}, {0, byte(0), small(0)}, {7}, {INT32_MAX}}},
      {Type::Boolean, {{true}, {false}}},
      {Type::Currency,
       {{Currency{INT64_MIN}},
        {money(-0.0001)},
        {money(0), 0},
        {money(0.0001)},
        {1, money(1)},
        {Currency{INT64_MAX}}}},
      {Type::Decimal,
       {{exact("-9999999999999999999999999999")},
        {exact("-1.5"), money(-1.5)},
        {exact("-1.4999")},
        {exact("0"), 0, exact("-0.0")},
        {exact("0.0000000000000000000000000001")},
        {exact("2"), exact("2.00"), 2},
        {exact("9999999999999999999999999999")}}},
      {Type::Date, {{Date{-657434}}, {Date{-1.75}}, {Date{0}}, {Date{0.5}}, {Date{46000}}}},
      {Type::Text,
       {{u"", u"   "},
        {u"a", u"A", u"a  "},
        {u"a b"},
        {u"ab", u"AB"},
        {u"ą", u"Ą"},
        {u"b"},
        {u"coop"},
        {u"co-op"},
        {u"l"},
        {u"ł"},
        {u"zz"},
        {u"ż"}}},
      {Type::Memo,
       {{Value(stem), Value(stem + u"  ")},
        {Value(stem + stem)},
        {Value(stem + u"b"), Value(stem + u"B")},
        {Value(stem + u"bc")},
        {Value(stem + u"c")}}},
      {Type::Binary, {{Binary{}}, {Binary{0}}, {Binary{0, 0}}, {Binary{0, 1}}, {Binary{1}}, {Binary{255}}}},
  };
  const EvalContext c = polish();
  const auto sign = [](int x) { return x < 0 ? -1 : x > 0; };
  for (const Line& line : lines) {
    std::vector<std::pair<Value, size_t>> all;
    for (size_t g = 0; g < line.groups.size(); ++g)
      for (const Value& v : line.groups[g]) all.push_back({v, g});
    for (const auto& [a, i] : all) {
      for (const auto& [b, j] : all) {
        const int expected = i < j ? -1 : i > j;
        EXPECT_EQ(sign(*compare(a, b, c)), expected) << show(a) << " / " << show(b);
        for (bool descending : {false, true}) {
          std::string x, y;
          appendSortKey(a, line.as, *c.collation, descending, x);
          appendSortKey(b, line.as, *c.collation, descending, y);
          EXPECT_EQ(sign(x.compare(y)), descending ? -expected : expected) << show(a) << " / " << show(b);
        }
      }
    }
  }
}

TEST(Compare, NullSortsFirstAndKeysOfSeveralColumnsDoNotRunTogether) {
  const EvalContext c = polish();
  const auto key = [&](const Value& a, const Value& b, bool descending = false) {
    std::string k;
    appendSortKey(a, Type::Text, *c.collation, descending, k);
    appendSortKey(b, Type::Text, *c.collation, false, k);
    return k;
  };
  EXPECT_LT(key(kNull, u"z"), key(u"", u"a"));
  EXPECT_GT(key(kNull, u"z", true), key(u"", u"a", true));
  EXPECT_NE(key(u"a", u"b"), key(u"ab", u""));
  EXPECT_LT(key(u"a", u"z"), key(u"ab", u"a"));
  EXPECT_GT(key(u"a", u"a", true), key(u"ab", u"a", true));
  std::string text, number;
  appendSortKey(u"12", Type::Text, *c.collation, false, text);
  appendSortKey(12, Type::Text, *c.collation, false, number);
  EXPECT_EQ(text, number);  // a number in a text column of a union
}

TEST(Compare, MixedTypes) {
  const EvalContext c = polish();
  EXPECT_EQ(compare(kNull, 1, c), std::nullopt);
  EXPECT_EQ(compare(u"x", kNull, c), std::nullopt);
  EXPECT_EQ(compare(date(u"1900-01-01"), 2, c), 0);
  EXPECT_EQ(compare(exact("0.1"), 0.1, c), 0);
  EXPECT_GT(compare(Currency{INT64_MAX}, Currency{INT64_MAX - 1}, c), 0);  // beyond a double's precision
  const Guid guid = *guidFromText(u"{0F1E2D3C-0001-0002-0304-05060708090A}");
  EXPECT_EQ(compare(guid, u"0f1e2d3c-0001-0002-0304-05060708090a", c), 0);
  for (const auto& [a, b] : std::vector<std::pair<Value, Value>>{
           {1, u"1"}, {u"2026-01-01", date(u"2026-01-01")}, {true, u"True"}, {Binary{1}, 1}, {guid, u"x"}})
    EXPECT_EQ(outcome([&] { return Value(*compare(a, b, c)); }), "error 3464") << show(a) << show(b);
}

TEST(Types, UnifiedAndArithmetic) {
  const auto same = [](Type a, Type b, Type expected) {
    EXPECT_EQ(unifiedType(a, b), expected) << int(a) << " " << int(b);
    EXPECT_EQ(unifiedType(b, a), expected) << int(b) << " " << int(a);
  };
  same(Type::Null, Type::Date, Type::Date);
  same(Type::Byte, Type::Long, Type::Long);
  same(Type::Boolean, Type::Byte, Type::Integer);
  same(Type::Long, Type::Single, Type::Double);
  same(Type::Long, Type::Currency, Type::Currency);
  same(Type::Currency, Type::Decimal, Type::Decimal);
  same(Type::Decimal, Type::Double, Type::Double);
  same(Type::Date, Type::Long, Type::Double);
  same(Type::Text, Type::Long, Type::Text);
  same(Type::Text, Type::Memo, Type::Memo);
  // What the type says is what comes out.
  const Value values[] = {true,         byte(3), small(4), 5, money(6.5), 2.5f, 3.5, date(u"2026-01-02"),
                          exact("7.5"), u"8"};
  const std::pair<Arithmetic, Operator> operators[] = {{Arithmetic::Add, add},
                                                       {Arithmetic::Subtract, subtract},
                                                       {Arithmetic::Multiply, multiply},
                                                       {Arithmetic::Divide, divide},
                                                       {Arithmetic::IntegerDivide, integerDivide},
                                                       {Arithmetic::Modulo, modulo},
                                                       {Arithmetic::Concatenate, concatenate}};
  for (const auto& [kind, op] : operators) {
    for (const Value& a : values) {
      for (const Value& b : values) {
        if (kind == Arithmetic::Subtract && a.type() != Type::Date && b.type() == Type::Date) continue;
        const Type type = op(a, b, polish()).type();
        EXPECT_EQ(type, arithmeticType(kind, a.type(), b.type()))
            << int(kind) << ": " << show(a) << ", " << show(b);
      }
    }
  }
}

TEST(Types, ValuesOfACommonTypeMayStayWider) {
  const EvalContext c = polish();
  EXPECT_EQ(show(unifiedValue(byte(5), Type::Long, c)), "Long 5");
  EXPECT_EQ(show(unifiedValue(5, Type::Text, c)), "Text 5");
  EXPECT_EQ(show(unifiedValue(small(-5), Type::Byte, c)), "Integer -5");
  EXPECT_EQ(show(unifiedValue(4294967296.0, Type::Long, c)), "Double 4294967296");
  EXPECT_EQ(show(unifiedValue(kNull, Type::Long, c)), "Null");
}

TEST(Convert, AssignmentToColumns) {
  struct Case {
    Type type;
    int size;
    Value value;
    std::string expected;
    uint8_t scale = 0;
  };
  const Case cases[] = {
      {Type::Long, 0, kNull, "Null"},
      {Type::Boolean, 0, 0.5, "True"},
      {Type::Boolean, 0, u"No", "False"},
      {Type::Boolean, 0, u"0", "False"},
      {Type::Boolean, 0, u"maybe", "error 3421"},
      {Type::Byte, 0, 2.5, "Byte 2"},
      {Type::Byte, 0, 3.5, "Byte 4"},
      {Type::Byte, 0, 256, "error 3349"},
      {Type::Byte, 0, true, "error 3349"},
      {Type::Integer, 0, -32768.5, "Integer -32768"},
      {Type::Integer, 0, 32767.5, "error 3349"},
      {Type::Long, 0, u" 1 234,6 ", "Long 1235"},
      {Type::Long, 0, u"12 zł", "Long 12"},
      {Type::Long, 0, u"&H10", "Long 16"},
      {Type::Long, 0, u"", "error 3421"},
      {Type::Long, 0, u"1.2.3", "error 3421"},
      {Type::Long, 0, 1e18, "error 3349"},
      {Type::Long, 0, 1e30, "error 3349"},
      {Type::Currency, 0, u"1.234,56785", "Currency 1234.5678"},
      {Type::Currency, 0, 1.00015, "Currency 1.0002"},
      {Type::Currency, 0, 0.00005, "Currency 0"},
      {Type::Currency, 0, 1e15, "error 3349"},
      {Type::Double, 0, u"1.5", "Double 1.5"},
      {Type::Double, 0, u"1,5", "Double 1.5"},
      {Type::Double, 0, u"1,5E3", "Double 1500"},
      {Type::Double, 0, u"12x", "error 3421"},
      {Type::Double, 0, Binary{1}, "error 3421"},
      {Type::Single, 0, 1e39, "error 3349"},
      {Type::Date, 0, u"22.11.2026", "Date 2026-11-22"},
      {Type::Date, 0, 2.25, "Date 1900-01-01 06:00:00"},
      {Type::Date, 0, u"2,25", "Date 1900-01-01 06:00:00"},
      {Type::Date, 0, u"soon", "error 3421"},
      {Type::Date, 0, 3e6, "error 3349"},
      {Type::Text, 3, u"abc", "Text abc"},
      {Type::Text, 3, u"abcd", "error 3163"},
      {Type::Text, 3, 1234, "error 3163"},
      {Type::Text, 10, 1.5, "Text 1,5"},
      {Type::Memo, 0, true, "Text -1"},
      {Type::Binary, 2, Binary{1, 2, 3}, "error 3163"},
      {Type::Ole, 0, Binary{1, 255}, "Binary 01FF"},
      {Type::Decimal, 0, 2.5, "Decimal 2", 0},
      {Type::Decimal, 0, u"1,125", "Decimal 1.12", 2},
      {Type::Decimal, 0, 1e20, "error 3349", 10},
      {Type::Guid, 0, u"{00000001-0002-0003-0405-060708090A0B}",
       "Guid {00000001-0002-0003-0405-060708090A0B}"},
      {Type::Guid, 0, u"{0}", "error 3421"},
  };
  for (const Case& t : cases)
    EXPECT_EQ(outcome([&] { return convertFor(t.type, t.size, t.value, polish(), t.scale); }), t.expected)
        << int(t.type) << " from " << show(t.value);
}

TEST(Convert, DecimalKeepsTheColumnsScale) {
  const Value v = convertFor(Type::Decimal, 0, 2, polish(), 3);
  EXPECT_EQ(v.get<Decimal>().scale, 3);
  EXPECT_EQ(v.get<Decimal>().magnitude[3], 2000u);
}

}  // namespace
}  // namespace jet::sql
