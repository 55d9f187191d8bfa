#include "jet/storage/collation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace jet {
namespace {

std::string keyOf(const Collation& order, std::u16string_view text) {
  std::string key;
  order.appendKey(text, key);
  return key;
}

int sign(int v) { return (v > 0) - (v < 0); }

// Texts of units that the orders treat differently, so that each rule meets each other one.
std::u16string randomText(std::mt19937& random, bool jet3) {
  static const std::u16string jet4Units =
      u"aAbBzZ059 "
      u",-'_~ąĄćłŁńóÓśźŻżéüčßÆæœþＡｱアァあ゙\u0301\u0327\u0001\u00AD\u200B\uFB05\u05F0\U0001F600Ωжא中";
  static const std::u16string jet3Units = u"aAbBzZ059 ,-'_~sSéÉüÂåñçßÆŒœŠš€";
  const std::u16string& units = jet3 ? jet3Units : jet4Units;
  std::u16string text;
  const int length = std::uniform_int_distribution(0, 6)(random);
  // Small choices first, so that pairs with equal letters and different accents or hyphens are common.
  const size_t reach = random() % 2 ? units.size() : 24;
  for (int i = 0; i < length; ++i) text += units[random() % reach];
  return text;
}

TEST(Collation, CompareAgreesWithKeys) {
  std::mt19937 random(7);
  int equalPairs = 0;
  for (const bool jet3 : {false, true})
    for (const uint16_t lcid : {0x0409, 0x0415, 0x0407}) {
      const Collation& order = Collation::get(lcid, jet3);
      for (int i = 0; i < 60000; ++i) {
        const std::u16string a = randomText(random, jet3);
        std::u16string b = randomText(random, jet3);
        if (i % 3 == 0) b = a + b;  // one text begins with the other
        const int byKey = keyOf(order, a).compare(keyOf(order, b));
        ASSERT_EQ(sign(byKey), sign(order.compare(a, b)))
            << testing::PrintToString(a) << testing::PrintToString(b);
        ASSERT_EQ(sign(order.compare(a, b)), -sign(order.compare(b, a)));
        if (byKey == 0 && a != b) ++equalPairs;
      }
    }
  EXPECT_GT(equalPairs, 500);
}

TEST(Collation, EveryUnitComparesAsItsKey) {
  for (const uint16_t lcid : {0x0409, 0x0415}) {
    const Collation& order = Collation::get(lcid);
    std::u16string previous = u"a";
    for (int unit = 1; unit <= 0xFFFF; ++unit) {
      const std::u16string text{u'a', static_cast<char16_t>(unit), u'b'};
      const std::string key = keyOf(order, text);
      ASSERT_EQ(key.back(), '\0');
      ASSERT_EQ(sign(key.compare(keyOf(order, previous))), sign(order.compare(text, previous))) << unit;
      previous = text;
    }
  }
}

TEST(Collation, PolishLettersFollowTheirBaseLetters) {
  std::vector<std::u16string> letters;
  for (const char16_t c : std::u16string(u"żzźyŻłlŁmńnoópśstąabĄćcdęef")) letters.push_back({c});
  const Collation& polish = Collation::get(0x0415);
  std::stable_sort(letters.begin(), letters.end(),
                   [&](const auto& a, const auto& b) { return polish.compare(a, b) < 0; });
  std::u16string sorted;
  for (const auto& letter : letters) sorted += letter;
  EXPECT_EQ(sorted, u"aąĄbcćdeęflłŁmnńoópsśtyzźżŻ");

  struct Case {
    const char16_t *a, *b;
    int general, polish;
  };
  for (const Case& c : {
           Case{u"Łódź", u"łódŹ  ", 0, 0},  // case and trailing blanks do not count
           Case{u"łza", u"lzb", -1, 1},     // an accent in General, a letter of its own in Polish
           Case{u"Zażółć", u"zazolc", 1, 1},
           Case{u"żaba", u"źrebak", -1, 1},
           Case{u"co-op", u"coop", 1, 1},  // the hyphen counts only among otherwise equal texts
           Case{u"co-op", u"coopa", -1, -1},
           Case{u"résumé", u"resumes", -1, -1},
           Case{u"résumé", u"resume", 1, 1},
           Case{u"ss", u"ß", 0, 0},
           Case{u"", u" ", 0, 0},
           Case{u"", u"a", -1, -1},
       }) {
    EXPECT_EQ(sign(Collation::get(0x0409).compare(c.a, c.b)), c.general) << testing::PrintToString(c.a);
    EXPECT_EQ(sign(polish.compare(c.a, c.b)), c.polish) << testing::PrintToString(c.a);
  }
}

TEST(Collation, OnlyTheFirst255UnitsCount) {
  const std::u16string start(255, u'x');
  for (const bool jet3 : {false, true}) {
    const Collation& order = Collation::get(0x0409, jet3);
    EXPECT_EQ(order.compare(start + u"a", start + u"b"), 0);
    EXPECT_EQ(order.compare(start.substr(1) + u" a", start.substr(1)), 0);
    EXPECT_GT(order.compare(start, start.substr(1)), 0);
  }
}

TEST(Collation, UnknownOrdersAreNotExact) {
  EXPECT_TRUE(Collation::get(0x0409).isExact());
  EXPECT_TRUE(Collation::get(0x0415).isExact());
  EXPECT_TRUE(Collation::get(0x0409, true).isExact());
  EXPECT_FALSE(Collation::get(0x0415, true).isExact());
  EXPECT_FALSE(Collation::get(0x041D).isExact());
  EXPECT_EQ(Collation::get(0x041D).lcid(), 0x041D);
}

}  // namespace
}  // namespace jet
