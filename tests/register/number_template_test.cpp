#include "register/number_template.h"

#include <gtest/gtest.h>

#include "jet/format/error.h"
#include "support/scripted_messages.h"

using namespace Qt::StringLiterals;

namespace tandeko {
namespace {

TEST(NumFormat, ReplacesTokensByTheirWidths) {
  const QDate march(2024, 3, 15), none;
  const struct {
    int number;
    QString numberTemplate;
    QDate purchased;
    int registerKey, group;
    QString expected;
  } cases[] = {
      {1, u"Rejestr/Numer/Rok[4]"_s, march, 3, 0, u"3/0001/2024"_s},
      {1, u"Numer/Rok[2]"_s, march, 3, 0, u"1/24"_s},
      {12345, u"Numer"_s, none, 3, 0, u"12345"_s},
      {12345, u"Rok[2]-Numer"_s, march, 3, 0, u"24-2345"_s},
      {7, u"Miesiąc#Numer#Grupa"_s, march, 3, 4, u"03#0007#04"_s},
      {7, u"Grupa-Numer"_s, march, 3, 1234, u"34-0007"_s},
      {7, u"Grupa-Numer"_s, march, 3, 0, u"? - Błędna grupa"_s},
      {7, u"Grupa-Numer-Rok[4]"_s, none, 3, 0, u"? - Błędna data"_s},
      {7, u"Numer/Miesiąc"_s, none, 3, 1, u"? - Błędna data"_s},
      {7, u"Rejestr/Numer"_s, march, 0, 1, u"? - Błędny rejestr"_s},
      {7, u"Numer/Numer"_s, march, 1, 1, u"7/7"_s},
  };
  for (const auto& c : cases)
    EXPECT_EQ(NumFormat(c.number, c.numberTemplate, c.purchased, c.registerKey, c.group), c.expected)
        << c.numberTemplate.toStdString();
}

TEST(NumParse, FindsTheRunningNumberBehindItsSeparator) {
  const struct {
    QString text, numberTemplate;
    int expected;
  } cases[] = {
      {u"3/0012/2024"_s, u"Rejestr/Numer/Rok[4]"_s, 12},
      {u"24/03/0150"_s, u"Rok[2]/Miesiąc/Numer"_s, 150},
      {u"17/24"_s, u"Numer/Rok[2]"_s, 17},
      {u"17"_s, u"Numer"_s, 17},
      {u"abc"_s, u"Numer"_s, 0},
      {u""_s, u"Numer"_s, 0},
      {u"24-7x9"_s, u"Rok[2]-Numer"_s, 7},
      {u"24"_s, u"Rok[2]-Numer"_s, 0},  // typed by hand, too short
      {u"24/03"_s, u"Rok[2]/Miesiąc/Numer"_s, 0},
      {u"L-15"_s, u"Rok[2]/Numer"_s, 0},       // another separator
      {u"24-0001"_s, u"Rok[2]-Miesiąc"_s, 0},  // no number in the template
      {u"32767"_s, u"Numer"_s, 32767},
  };
  for (const auto& c : cases)
    EXPECT_EQ(NumParse(c.text, c.numberTemplate, numSeparator(c.numberTemplate)), c.expected)
        << c.text.toStdString() << " by " << c.numberTemplate.toStdString();
  EXPECT_THROW(NumParse(u"32768"_s, u"Numer"_s, QChar()), jet::Error);
  EXPECT_THROW(NumParse(u"24/99999999999999999"_s, u"Rok[2]/Numer"_s, u'/'), jet::Error);
}

TEST(NumTemplate, BuildsFromPartsAndSplitsBack) {
  const struct {
    NumTemplateParts parts;
    QString expected;
  } cases[] = {
      {{{u"/Numer"_s, u"/Rok[4]"_s, u"/"_s}, u"-"_s, {}}, u"Numer-Rok[4]"_s},
      {{{u"/Rejestr"_s, u"/Numer"_s, u"/Rok[2]"_s}, u"-"_s, {}}, u"Rejestr-Numer-Rok[2]"_s},
      {{{u"/Numer"_s, u"/"_s, u"/"_s}, u"#"_s, u"KW"_s}, u"Numer#KW"_s},
      {{{u"/Grupa"_s, u"/Numer"_s, u"/"_s}, u"\\"_s, u"a-b"_s}, u"Grupa\\Numer\\a-b"_s},
      {{{u"/"_s, u"/"_s, u"/"_s}, u":"_s, {}}, {}},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(NumTemplateBuild(c.parts), c.expected);
    const NumTemplateParts split = NumTemplateSplit(c.expected);
    EXPECT_EQ(NumTemplateBuild(split), c.expected);
    if (!c.expected.isEmpty()) {
      EXPECT_EQ(split, c.parts) << c.expected.toStdString();
    }
  }
  // Every choice of the three parts and the separator: built, split and built again gives the same; whatever
  // has a running number gives it back from the numbers made.
  const QDate march(2024, 3, 15);
  for (const NumPart& first : kNumParts)
    for (const NumPart& second : kNumParts)
      for (const NumPart& third : kNumParts)
        for (const QChar separator : QString::fromUtf16(kNumSeparators)) {
          const NumTemplateParts parts{{QString::fromUtf16(first.value), QString::fromUtf16(second.value),
                                        QString::fromUtf16(third.value)},
                                       QString(separator),
                                       {}};
          const QString built = NumTemplateBuild(parts);
          const NumTemplateParts split = NumTemplateSplit(built);
          EXPECT_EQ(NumTemplateBuild(split), built);
          if (built.contains(separator)) {
            EXPECT_EQ(split.separator, parts.separator) << built.toStdString();
          }
          QStringList left, right;  // without the empty parts
          for (size_t at = 0; at < 3; ++at) {
            if (parts.parts[at] != u"/") left << parts.parts[at];
            if (split.parts[at] != u"/") right << split.parts[at];
          }
          EXPECT_EQ(right, left) << built.toStdString();
          if (built.contains(u"Numer")) {
            EXPECT_EQ(NumParse(NumFormat(417, built, march, 3, 12), built, numSeparator(built)), 417)
                << built.toStdString();
          }
        }
  // Templates that no dialog built are kept as they are.
  for (const QString& odd :
       {u"KW/Numer"_s, u"Numer"_s, u"NumerKW"_s, u"Numer-Numerek"_s, u"Rok[2]/Numer/Grupa/Rejestr"_s})
    EXPECT_EQ(NumTemplateBuild(NumTemplateSplit(odd)), odd);
}

}  // namespace
}  // namespace tandeko
