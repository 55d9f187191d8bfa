#include "jet/sql/functions.h"

#include <gtest/gtest.h>

#include "jet/sql/scalars.h"

namespace jet::sql {
namespace {

using namespace test;

const Value kNull;

struct Call {
  const char16_t* name;
  std::vector<Value> arguments;
  std::string expected;
};

void check(const std::vector<Call>& calls) {
  for (const Call& t : calls) {
    const Function* f = findFunction(t.name);
    ASSERT_TRUE(f) << toUtf8(t.name);
    const int count = static_cast<int>(t.arguments.size());
    ASSERT_TRUE(count >= f->minArguments && count <= f->maxArguments) << toUtf8(t.name);
    EvalContext c = polish();
    Value result;
    std::string shown = toUtf8(t.name) + "(";
    for (const Value& v : t.arguments) shown += show(v) + "; ";
    EXPECT_EQ(outcome([&] { return result = f->call(t.arguments, c); }), t.expected) << shown;
    EXPECT_TRUE(result.isNull() || f->resultType == Type::Null || result.type() == f->resultType) << shown;
  }
}

TEST(Functions, Lookup) {
  EXPECT_EQ(findFunction(u"LEFT"), findFunction(u"left"));
  EXPECT_NE(findFunction(u"Left$"), nullptr);
  EXPECT_EQ(findFunction(u"Nz"), nullptr);
  EXPECT_EQ(findFunction(u"Abs$"), nullptr);
  EXPECT_EQ(findFunction(u"DLookup"), nullptr);
  EXPECT_TRUE(findFunction(u"Now")->constant);
  EXPECT_FALSE(findFunction(u"Rnd")->constant);
}

TEST(Functions, NullAndKindTests) {
  check({
      {u"IsNull", {kNull}, "True"},
      {u"IsNull", {u""}, "False"},
      {u"IsNumeric", {u"1 234,5"}, "True"},
      {u"IsNumeric", {u"22.11.2026"}, "False"},
      {u"IsNumeric", {u"1,234,567"}, "False"},
      {u"IsNumeric", {u"-"}, "False"},
      {u"IsNumeric", {u""}, "False"},
      {u"IsNumeric", {date(u"2026-11-22")}, "False"},
      {u"IsNumeric", {kNull}, "False"},
      {u"IsDate", {u"22 listopada 2026"}, "True"},
      {u"IsDate", {u"31.02.2026"}, "False"},
      {u"IsDate", {12}, "False"},
      {u"IsEmpty", {kNull}, "False"},
      {u"VarType", {kNull}, "Integer 1"},
      {u"VarType", {u"x"}, "Integer 8"},
      {u"TypeName", {money(1)}, "Text Currency"},
      {u"TypeName", {kNull}, "Text Null"},
  });
}

TEST(Functions, Conversions) {
  check({
      {u"CInt", {2.5}, "Integer 2"},
      {u"CInt", {3.5}, "Integer 4"},
      {u"CInt", {-2.5}, "Integer -2"},
      {u"CInt", {32768}, "error 6"},
      {u"CInt", {kNull}, "error 94"},
      {u"CByte", {-1}, "error 6"},
      {u"CByte", {u"255,4"}, "Byte 255"},
      {u"CLng", {u"12abc"}, "error 13"},
      {u"CLng", {2147483648.0}, "error 6"},
      {u"CLng", {u"&HFFFF"}, "Long -1"},
      {u"CBool", {u"abc"}, "error 13"},
      {u"CBool", {u"True"}, "True"},
      {u"CBool", {u"0"}, "False"},
      {u"CSng", {1e39}, "error 6"},
      {u"CDbl", {u"1,5"}, "Double 1.5"},
      {u"CCur", {u"1,00005"}, "Currency 1"},
      {u"CCur", {1e15}, "error 6"},
      {u"CDec", {u"0,1"}, "Decimal 0.1"},
      {u"CDate", {u"22-11-2026 7:05"}, "Date 2026-11-22 07:05:00"},
      {u"CDate", {1.5}, "Date 1899-12-31 12:00:00"},
      {u"CDate", {u"x"}, "error 13"},
      {u"CDate", {kNull}, "error 94"},
      {u"CVDate", {kNull}, "Null"},
      {u"CStr", {1.5}, "Text 1,5"},
      {u"CStr", {true}, "Text True"},
      {u"CStr", {kNull}, "error 94"},
      {u"CVar", {kNull}, "Null"},
      {u"Val", {u" 1 615 198th"}, "Double 1615198"},
      {u"Val", {u"1,5"}, "Double 1"},
      {u"Val", {u"-1.5E2x"}, "Double -150"},
      {u"Val", {u"&HFFFF"}, "Double -1"},
      {u"Val", {u"&H10z"}, "Double 16"},
      {u"Val", {u"inf"}, "Double 0"},
      {u"Val", {u"+.5"}, "Double 0.5"},
      {u"Val", {u"--5"}, "Double 0"},
      {u"Val", {kNull}, "error 94"},
      {u"Str", {5}, "Text  5"},
      {u"Str", {-0.5}, "Text -.5"},
      {u"Str", {1.25}, "Text  1.25"},
      {u"Str", {kNull}, "Null"},
      {u"Str$", {kNull}, "error 94"},
      {u"Hex", {255}, "Text FF"},
      {u"Hex", {-1}, "Text FFFFFFFF"},
      {u"Hex", {small(-1)}, "Text FFFF"},
      {u"Oct", {8}, "Text 10"},
      {u"Hex", {1e10}, "error 6"},
      {u"Asc", {u"ą"}, "Integer 185"},
      {u"Asc", {u""}, "error 5"},
      {u"AscW", {u"ą"}, "Integer 261"},
      {u"Chr", {185}, "Text ą"},
      {u"Chr", {256}, "error 5"},
      {u"ChrW", {322}, "Text ł"},
  });
}

TEST(Functions, Numbers) {
  check({
      {u"Abs", {-2.5}, "Double 2.5"},
      {u"Abs", {true}, "Integer 1"},
      {u"Abs", {money(-1.5)}, "Currency 1.5"},
      {u"Abs", {exact("-1.5")}, "Decimal 1.5"},
      {u"Abs", {u"-3"}, "Double 3"},
      {u"Abs", {kNull}, "Null"},
      {u"Abs", {u"x"}, "error 13"},
      {u"Sgn", {-0.1}, "Integer -1"},
      {u"Sgn", {kNull}, "Null"},
      {u"Int", {-2.5}, "Double -3"},
      {u"Fix", {-2.5}, "Double -2"},
      {u"Int", {money(-2.5)}, "Currency -3"},
      {u"Int", {exact("-2.5")}, "Decimal -3"},
      {u"Fix", {exact("-2.5")}, "Decimal -2"},
      {u"Int", {Date{-1.25}}, "Date 1899-12-29"},
      {u"Int", {7}, "Long 7"},
      {u"Round", {2.5}, "Double 2"},
      {u"Round", {0.125, 2}, "Double 0.12"},
      {u"Round", {money(0.00015), 3}, "Currency 0"},
      {u"Round", {exact("1.2350"), 2}, "Decimal 1.24"},
      {u"Round", {1.5, -1}, "error 5"},
      {u"Round", {kNull, 2}, "Null"},
      {u"Sqr", {9}, "Double 3"},
      {u"Sqr", {-1}, "error 5"},
      {u"Sqr", {kNull}, "error 94"},
      {u"Exp", {1000}, "error 6"},
      {u"Log", {0}, "error 5"},
      {u"Atn", {0}, "Double 0"},
  });
  EvalContext c;
  const Function* rnd = findFunction(u"rnd");
  const auto next = [&](std::vector<Value> a) { return rnd->call(a, c).get<float>(); };
  const float first = next({}), second = next({1});
  EXPECT_NE(first, second);
  EXPECT_EQ(next({0}), second);
  EXPECT_TRUE(first >= 0 && first < 1);
  const float seeded = next({-5});
  next({});
  EXPECT_EQ(next({-5}), seeded);
}

TEST(Functions, Texts) {
  const std::u16string smile = u"a\U0001F600b";  // a pair of surrogates
  check({
      {u"Len", {smile.c_str()}, "Long 4"},
      {u"Len", {u""}, "Long 0"},
      {u"Len", {12.5}, "Long 4"},
      {u"Len", {kNull}, "Null"},
      {u"Left", {u"abc", 2}, "Text ab"},
      {u"Left", {u"abc", 9}, "Text abc"},
      {u"Left", {u"abc", -1}, "error 5"},
      {u"Left", {kNull, 1}, "Null"},
      {u"Left$", {kNull, 1}, "error 94"},
      {u"Right", {u"abc", 2}, "Text bc"},
      {u"Right", {u"abc", 9}, "Text abc"},
      {u"Mid", {u"abcd", 2, 2}, "Text bc"},
      {u"Mid", {u"abcd", 3}, "Text cd"},
      {u"Mid", {u"abcd", 9}, "Text "},
      {u"Mid", {u"abcd", 0}, "error 5"},
      {u"Mid", {u"abcd", 1, -1}, "error 5"},
      {u"Mid", {smile.c_str(), 4, 1}, "Text b"},
      {u"InStr", {u"Zażółć", u"ŻÓ"}, "Long 3"},
      {u"InStr",
       {
           u"abab",
           u"b",
       },
       "Long 2"},
      {u"InStr", {3, u"abab", u"B"}, "Long 4"},
      {u"InStr", {1, u"abab", u"B", 0}, "Long 0"},
      {u"InStr", {2, u"abc", u""}, "Long 2"},
      {u"InStr", {u"", u""}, "Long 0"},
      {u"InStr", {9, u"abc", u"c"}, "Long 0"},
      {u"InStr", {0, u"abc", u"c"}, "error 5"},
      {u"InStr", {u"abc", kNull}, "Null"},
      {u"InStrRev", {u"abab", u"ab"}, "Long 3"},
      {u"InStrRev", {u"abab", u"ab", 3}, "Long 1"},
      {u"InStrRev", {u"abab", u"AB"}, "Long 0"},
      {u"InStrRev", {u"abab", u"x", 0}, "error 5"},
      {u"Replace", {u"aXbx", u"x", u"--"}, "Text aXb--"},
      {u"Replace", {u"aXbx", u"x", u"-", 1, -1, 1}, "Text a-b-"},
      {u"Replace", {u"aaaa", u"a", u"b", 2, 2}, "Text bba"},
      {u"Replace", {u"abc", u"", u"x"}, "Text abc"},
      {u"Replace", {kNull, u"a", u"b"}, "error 94"},
      {u"StrReverse", {u"abc"}, "Text cba"},
      {u"Trim", {u"  a b  "}, "Text a b"},
      {u"LTrim", {u"  a "}, "Text a "},
      {u"RTrim", {u" a\t "}, "Text  a\t"},
      {u"Trim", {u"   "}, "Text "},
      {u"UCase", {u"żółw ß"}, "Text ŻÓŁW ß"},
      {u"LCase", {u"ŻÓŁW"}, "Text żółw"},
      {u"UCase", {kNull}, "Null"},
      {u"Space", {3}, "Text    "},
      {u"Space", {-1}, "error 5"},
      {u"Space", {2000000000}, "error 5"},
      {u"String", {3, u"xy"}, "Text xxx"},
      {u"String", {2, 65}, "Text AA"},
      {u"String", {2, u""}, "error 5"},
      {u"StrComp", {u"a", u"A"}, "Integer 0"},
      {u"StrComp", {u"ą", u"b"}, "Integer -1"},
      {u"StrComp", {u"a", u"A", 0}, "Integer 1"},
      {u"StrComp", {u"a", kNull}, "Null"},
      {u"StrConv", {u"jan ŻÓŁĆ-nowak", 3}, "Text Jan Żółć-nowak"},
      {u"StrConv", {u"a", 9}, "error 5"},
      {u"Format", {kNull}, "Null"},
      {u"Format", {kNull, u"0"}, "Text "},
      {u"Format", {1234.5, u"#,##0.00"}, "Text 1\u00A0234,50"},
  });
}

TEST(Functions, Dates) {
  const Value moment = date(u"2026-11-22 10:59:30");
  check({
      {u"Date", {}, "Date 2026-11-22"},
      {u"Time", {}, "Date 10:30:15"},
      {u"Now", {}, "Date 2026-11-22 10:30:15"},
      {u"Year", {moment}, "Integer 2026"},
      {u"Year", {u"22.11.1999"}, "Integer 1999"},
      {u"Year", {kNull}, "Null"},
      {u"Year", {u"x"}, "error 13"},
      {u"Year", {1e9}, "error 6"},
      {u"Hour", {Date{-1.25}}, "Integer 6"},
      {u"Day", {Date{-1.25}}, "Integer 29"},
      {u"Minute", {moment}, "Integer 59"},
      {u"Second", {Date{0.99999999}}, "Integer 0"},
      {u"Day", {Date{0.99999999}}, "Integer 31"},
      {u"Weekday", {moment}, "Integer 1"},
      {u"Weekday", {moment, 2}, "Integer 7"},
      {u"Weekday", {moment, 0}, "Integer 7"},
      {u"Weekday", {moment, 8}, "error 5"},
      {u"Weekday", {Date{-1}}, "Integer 6"},
      {u"DateSerial", {2026, 14, -1}, "Date 2027-01-30"},
      {u"DateSerial", {26, 1, 1}, "Date 2026-01-01"},
      {u"DateSerial", {99, 1, 1}, "Date 1999-01-01"},
      {u"DateSerial", {2024, 2, 30}, "Date 2024-03-01"},
      {u"DateSerial", {2024, 0, 0}, "Date 2023-11-30"},
      {u"DateSerial", {10000, 1, 1}, "error 5"},
      {u"DateSerial", {kNull, 1, 1}, "error 94"},
      {u"TimeSerial", {12, -30, 0}, "Date 11:30:00"},
      {u"TimeSerial", {25, 0, 0}, "Date 1899-12-31 01:00:00"},
      {u"DateValue", {u"2026-11-22 10:00"}, "Date 2026-11-22"},
      {u"DateValue", {moment}, "Date 2026-11-22"},
      {u"DateValue", {kNull}, "error 94"},
      {u"DateValue", {u"12"}, "error 13"},
      {u"TimeValue", {u"22.11.2026 7:05 PM"}, "Date 19:05:00"},
      {u"DateAdd", {u"m", 1, date(u"2026-01-31")}, "Date 2026-02-28"},
      {u"DateAdd", {u"m", -1, date(u"2024-03-31 08:00")}, "Date 2024-02-29 08:00:00"},
      {u"DateAdd", {u"yyyy", 1, date(u"2024-02-29")}, "Date 2025-02-28"},
      {u"DateAdd", {u"q", -1, date(u"2026-01-15")}, "Date 2025-10-15"},
      {u"DateAdd", {u"ww", 1, date(u"2026-01-31")}, "Date 2026-02-07"},
      {u"DateAdd", {u"h", -7, Date{0.25}}, "Date 1899-12-29 23:00:00"},
      {u"DateAdd", {u"s", 90, moment}, "Date 2026-11-22 11:01:00"},
      {u"DateAdd", {u"yyyy", 9999, moment}, "error 5"},
      {u"DateAdd", {u"x", 1, moment}, "error 5"},
      {u"DateAdd", {u"d", 1, kNull}, "Null"},
      {u"DateDiff", {u"yyyy", date(u"2025-12-31"), date(u"2026-01-01")}, "Long 1"},
      {u"DateDiff", {u"q", date(u"2025-12-31"), date(u"2026-04-01")}, "Long 2"},
      {u"DateDiff", {u"m", date(u"2026-03-01"), date(u"2026-02-28")}, "Long -1"},
      {u"DateDiff", {u"d", date(u"2026-02-28 23:59"), date(u"2026-03-01")}, "Long 1"},
      {u"DateDiff", {u"h", moment, date(u"2026-11-22 11:00")}, "Long 1"},
      {u"DateDiff", {u"n", moment, date(u"2026-11-22 11:00")}, "Long 1"},
      {u"DateDiff", {u"s", moment, date(u"2026-11-22 11:00")}, "Long 30"},
      {u"DateDiff", {u"s", Date{-1.25}, Date{0}}, "Long 64800"},
      {u"DateDiff", {u"w", date(u"2026-11-21"), date(u"2026-11-30")}, "Long 1"},
      {u"DateDiff", {u"ww", date(u"2026-11-21"), date(u"2026-11-22")}, "Long 1"},
      {u"DateDiff", {u"ww", date(u"2026-11-22"), date(u"2026-11-23")}, "Long 0"},
      {u"DateDiff", {u"ww", date(u"2026-11-22"), date(u"2026-11-23"), 2}, "Long 1"},
      {u"DateDiff", {u"s", date(u"100-01-01"), date(u"9999-01-01")}, "error 6"},
      {u"DatePart", {u"ww", date(u"2026-01-03")}, "Integer 1"},
      {u"DatePart", {u"ww", date(u"2026-01-04")}, "Integer 2"},
      {u"DatePart", {u"ww", date(u"2027-01-03"), 2, 2}, "Integer 53"},
      {u"DatePart", {u"ww", date(u"2024-12-30"), 2, 2}, "Integer 1"},
      {u"DatePart", {u"ww", date(u"2026-01-04"), 2, 3}, "Integer 52"},
      {u"DatePart", {u"q", moment}, "Integer 4"},
      {u"DatePart", {u"y", date(u"2024-12-31")}, "Integer 366"},
  });
}

TEST(Dates, ReadingText) {
  const std::pair<const char16_t*, const char*> local[] = {
      {u"22.11.2026", "2026-11-22"},
      {u"22-11-26", "2026-11-22"},
      {u"1/2/2003", "2003-02-01"},
      {u"2026-11-22", "2026-11-22"},
      {u" 2026 - 11 - 2 ", "2026-11-02"},
      {u"22 listopada 2026", "2026-11-22"},
      {u"22 LIS 2026", "2026-11-22"},
      {u"5 paź. 2026", "2026-10-05"},
      {u"05-sty-30", "1930-01-05"},
      {u"listopad 2026", "2026-11-01"},
      {u"11.22.2026", "2026-11-22"},
      {u"22.11.2026 7:05", "2026-11-22 07:05:00"},
      {u"7:05:09 pm 22.11.2026", "2026-11-22 19:05:09"},
      {u"12:30 AM", "00:30:00"},
      {u"0:00", "00:00:00"},
      {u"1.1.100", "0100-01-01"},
      {u"29.02.2024", "2024-02-29"},
      {u"29.02.2023", ""},
      {u"13.13.2026", ""},
      {u"2026-13-01", ""},
      {u"1.1.99999", ""},
      {u"1.1", ""},
      {u"12", ""},
      {u"24:00", ""},
      {u"13:00 PM", ""},
      {u"22.11-2026", ""},
      {u"22.11.2026 7:05 7:06", ""},
      {u"", ""},
      {u"x", ""},
      {u"1.1.2026.", ""},
  };
  for (const auto& [text, expected] : local) {
    const auto d = parseDate(text);
    EXPECT_EQ(d ? toUtf8(toText(*d, {})) : "", expected) << toUtf8(text);
  }
  const std::pair<const char16_t*, const char*> literals[] = {
      {u"11/22/2026", "2026-11-22"}, {u"1/2/2003", "2003-01-02"},
      {u"22/11/2026", "2026-11-22"}, {u"2026-11-22", "2026-11-22"},
      {u"5 Jan 2001", "2001-01-05"}, {u"March 5, 1999 10:00 PM", "1999-03-05 22:00:00"},
      {u"10:30", "10:30:00"},        {u"1/2/29", "2029-01-02"},
      {u"1/2/30", "1930-01-02"},     {u"13/13/2026", ""}};
  for (const auto& [text, expected] : literals) {
    const auto d = parseDateLiteral(text);
    EXPECT_EQ(d ? toUtf8(toText(*d, {})) : "", expected) << toUtf8(text);
  }
}

TEST(Aggregates, ValuesAndTypes) {
  using enum AggregateKind;
  struct Case {
    AggregateKind kind;
    Type type;
    std::vector<Value> values;
    std::string expected;
  };
  const Case cases[] = {
      {Count, Type::Long, {}, "Long 0"},
      {Count, Type::Long, {1, kNull, 2}, "Long 2"},
      {Sum, Type::Long, {}, "Null"},
      {Sum, Type::Long, {kNull}, "Null"},
      {Sum, Type::Long, {INT32_MAX, 1, kNull}, "Double 2147483648"},
      {Sum, Type::Boolean, {true, true, false}, "Double -2"},
      {Sum, Type::Currency, {money(0.1), money(0.2)}, "Currency 0.3"},
      {Sum, Type::Currency, {Currency{INT64_MAX}, Currency{1}}, "error 6"},
      {Sum, Type::Decimal, {exact("0.1"), exact("0.2")}, "Decimal 0.3"},
      {Sum, Type::Text, {u"1"}, "error 3464"},
      {Avg, Type::Long, {1, 2, kNull}, "Double 1.5"},
      {Avg, Type::Currency, {Currency{1}, Currency{2}}, "Currency 0.0002"},
      {Avg, Type::Decimal, {exact("1"), exact("2")}, "Decimal 1.5"},
      {Min, Type::Text, {u"b", u"Ą", u"ą", kNull}, "Text Ą"},
      {Max, Type::Text, {u"b", u"ł", u"l"}, "Text ł"},
      {Min, Type::Boolean, {false, true}, "True"},
      {Max, Type::Long, {kNull}, "Null"},
      {First, Type::Long, {3, 1}, "Long 3"},
      {Last, Type::Long, {3, 1}, "Long 1"},
      {Var, Type::Long, {5}, "Null"},
      {VarP, Type::Long, {5}, "Double 0"},
      {Var, Type::Double, {1e9 + 1, 1e9 + 2, 1e9 + 3}, "Double 1"},
      {StDevP, Type::Long, {2, 4, 4, 4, 5, 5, 7, 9}, "Double 2"},
      {StDev, Type::Long, {1, 3}, "Double 1.4142135623731"},
  };
  for (const Case& t : cases) {
    const auto aggregate = makeAggregate(t.kind, t.type);
    Value result;
    const std::string shown = outcome([&] {
      for (const Value& v : t.values) aggregate->add(v, polish());
      return result = aggregate->result();
    });
    EXPECT_EQ(shown, t.expected) << int(t.kind);
    EXPECT_TRUE(result.isNull() || result.type() == aggregateType(t.kind, t.type)) << int(t.kind);
  }
  EXPECT_EQ(findAggregate(u"STDEV"), StDev);
  EXPECT_EQ(findAggregate(u"median"), std::nullopt);
}

}  // namespace
}  // namespace jet::sql
