#include <gtest/gtest.h>

#include <chrono>

#include "jet/sql/scalars.h"

namespace jet::sql {
namespace {

TEST(Like, Patterns) {
  struct Case {
    const char16_t* pattern;
    std::vector<const char16_t*> matching, other;
  };
  const Case cases[] = {
      {u"abc", {u"abc", u"ABC"}, {u"abc ", u"ab", u"xabc"}},
      {u"", {u""}, {u" "}},
      {u"*", {u"", u"x"}, {}},
      {u"a*", {u"a", u"Abc"}, {u"", u"ba"}},
      {u"*ł", {u"Ł", u"wół"}, {u"l", u"wołu"}},
      {u"*b*d*", {u"bd", u"abcde"}, {u"db"}},
      {u"a*bc", {u"abc", u"abbc", u"abcbc"}, {u"abcb"}},
      {u"?", {u"x", u"ż"}, {u"", u"xy"}},
      {u"[?]?-#", {u"?b-7"}, {u"?b-x", u"?-7", u"xb-7"}},
      {u"[abc]x", {u"ax", u"Bx"}, {u"dx", u"x"}},
      {u"[a-c]", {u"ą", u"C", u"b"}, {u"ć", u"d", u"-", u"ź"}},
      {u"[a-z]", {u"ł", u"Z"}, {u"ź", u"ż", u"1"}},
      {u"[!a-c]", {u"d", u"-"}, {u"ą", u"A", u""}},
      {u"[*]", {u"*"}, {u"x"}},
      {u"[?][#][[]", {u"?#["}, {u"a1["}},
      {u"[-a]", {u"-", u"a"}, {u"b"}},
      {u"[a-]", {u"-", u"a"}, {u"b"}},
      {u"[!-a]", {u"b"}, {u"-", u"a"}},
      {u"[a!]", {u"!", u"a"}, {u"b"}},
      {u"[!]", {u"!"}, {u"a"}},
      {u"[z-a]", {}, {u"a", u"m", u"z"}},
      {u"[]a", {u"a"}, {u"]a"}},
      {u"a]", {u"a]"}, {u"a"}},
      {u"[0-9a-f]#", {u"77", u"F0"}, {u"g0"}},
      {u"a[", {u"a["}, {u"a"}},
  };
  for (const Case& t : cases) {
    const LikePattern pattern(t.pattern, Collation::get(0x0415));
    for (const char16_t* text : t.matching)
      EXPECT_TRUE(pattern.matches(text)) << toUtf8(t.pattern) << " " << toUtf8(text);
    for (const char16_t* text : t.other)
      EXPECT_FALSE(pattern.matches(text)) << toUtf8(t.pattern) << " " << toUtf8(text);
  }
}

TEST(Like, PrefixForIndexes) {
  struct Case {
    const char16_t *pattern, *prefix;
    bool exact;
  };
  const Case cases[] = {{u"Abc*", u"Abc", false}, {u"abc", u"abc", true},   {u"*a", u"", false},
                        {u"a?b", u"a", false},    {u"a[*]b", u"a*b", true}, {u"[ab]c", u"", false},
                        {u"ab[]c", u"abc", true}, {u"x[!y]z", u"x", false}};
  for (const Case& t : cases) {
    const LikePattern pattern(t.pattern, Collation::get(0x0409));
    EXPECT_EQ(toUtf8(pattern.prefix()), toUtf8(t.prefix));
    EXPECT_EQ(pattern.exact(), t.exact) << toUtf8(t.pattern);
  }
}

TEST(Like, ManyRunsStayFast) {
  std::u16string pattern;
  for (int i = 0; i < 40; ++i) pattern += u"*a";
  pattern += u"*b";
  const LikePattern like(pattern, Collation::get(0x0409));
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(like.matches(std::u16string(20000, u'a')));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));
}

}  // namespace
}  // namespace jet::sql
