#include <gtest/gtest.h>

#include "jet/sql/scalars.h"

namespace jet::sql {
namespace {

using namespace test;

struct Case {
  Value value;
  const char16_t* pattern;
  const char16_t* expected;
};

template <size_t count>
void check(const Case (&cases)[count]) {
  for (const Case& t : cases)
    EXPECT_EQ(toUtf8(format(t.value, t.pattern, polish())), toUtf8(t.expected))
        << show(t.value) << " as " << toUtf8(t.pattern);
}

TEST(Format, Numbers) {
  const Case cases[] = {
      {1234.5, u"0", u"1235"},
      {2.5, u"0", u"3"},  // half away from zero
      {-2.5, u"0", u"-3"},
      {0.285, u"0.00", u"0,29"},
      {1234567.891, u"#,##0.00", u"1\u00A0234\u00A0567,89"},
      {999.995, u"#,##0.00", u"1\u00A0000,00"},
      {12, u"#,##0.00", u"12,00"},
      {0, u"#,##0.00", u"0,00"},
      {0, u"#", u""},
      {0.5, u"#.##", u",5"},
      {5, u"#.##", u"5,"},
      {5, u".00", u"5,00"},
      {7, u"000", u"007"},
      {7, u"0##", u"007"},
      {12345, u"00-00", u"123-45"},
      {123456, u"00-00-00", u"12-34-56"},
      {5, u"#-#", u"-5"},
      {1234567, u"0,", u"1235"},
      {1234567, u"0.0,,", u"1234567,0"},
      {1234567, u"0,,.0", u"1,2"},
      {0.256, u"0.0%", u"25,6%"},
      {0.256, u"0%", u"26%"},
      {12345.678, u"0.00E+00", u"1,23E+04"},
      {0.00012, u"0.0E-0", u"1,2E-4"},
      {12345.678, u"0.0E-0", u"1,2E4"},
      {9.996, u"0.00E+0", u"1,00E+1"},
      {12345, u"##0.0E+0", u"123,5E+2"},
      {0, u"0.0E+00", u"0,0E+00"},
      {5, u"0 \"szt.\"", u"5 szt."},
      {5, u"\\n0", u"n5"},
      {5, u"0;(0)", u"5"},
      {-5, u"0;(0)", u"(5)"},
      {-5, u"0;;\\z", u"-5"},
      {0, u"0;-0;\"zero\"", u"zero"},
      {-0.001, u"0.00", u"0,00"},
      {-0.001, u"0.00;(0.00)", u"0,00"},
      {-0.001, u"0.00;(0.00);nic", u"nic"},
      {Value(), u"0;-0;z;\"brak\"", u"brak"},
      {Value(), u"0.00", u""},
      {Currency{9223372036854775800}, u"#,##0.0000", u"922\u00A0337\u00A0203\u00A0685\u00A0477,5800"},
      {Currency{9223372036854775807}, u"0.0000", u"922337203685477,5807"},
      {exact("12345678901234567890.125"), u"0.00", u"12345678901234567890,13"},
      {1e20, u"0", u"100000000000000000000"},
      {u"12,5", u"0.00", u"12,50"},
      {u"abc", u"0.00", u"abc"},
      {true, u"0", u"-1"},
      {date(u"1900-01-01"), u"0", u"2"},
      {5, u"", u"5"},
      {1234.5, u"General Number", u"1234,5"},
      {1234.5, u"Fixed", u"1234,50"},
      {1234.5, u"Standard", u"1\u00A0234,50"},
      {-1234.5, u"Currency", u"-1\u00A0234,50 zł"},
      {0.125, u"Percent", u"12,50%"},
      {12345, u"Scientific", u"1,23E+04"},
      {0, u"Yes/No", u"No"},
      {2, u"True/False", u"True"},
      {true, u"on/off", u"On"},
      {true, u"", u"True"},
  };
  check(cases);
}

TEST(Format, Dates) {
  const Value moment = date(u"2026-11-05 09:07:03"), evening = date(u"2026-11-22 21:07");
  const Case cases[] = {
      {moment, u"", u"2026-11-05 09:07:03"},
      {moment, u"General Date", u"2026-11-05 09:07:03"},
      {date(u"2026-11-05"), u"general date", u"2026-11-05"},
      {Date{0.5}, u"General Date", u"12:00:00"},
      {moment, u"Short Date", u"2026-11-05"},
      {date(u"2026-11-22"), u"Long Date", u"22 listopada 2026"},
      {moment, u"Medium Date", u"05-lis-26"},
      {moment, u"Long Time", u"09:07:03"},
      {evening, u"Medium Time", u"09:07 PM"},
      {evening, u"Short Time", u"21:07"},
      {moment, u"dd.mm.yyyy", u"05.11.2026"},
      {moment, u"d.m.yy", u"5.11.26"},
      {moment, u"ddd, d mmm", u"Cz, 5 lis"},
      {moment, u"dddd", u"czwartek"},
      {moment, u"mmmm yyyy", u"listopad 2026"},
      {moment, u"d mmmm", u"5 listopada"},
      {moment, u"dd/mm/yyyy", u"05-11-2026"},
      {moment, u"h:n:s", u"9:7:3"},
      {moment, u"hh:mm:ss", u"09:07:03"},
      {moment, u"mm", u"11"},
      {moment, u"yyyymmddhhnnss", u"20261105090703"},
      {evening, u"h:nn am/pm", u"9:07 pm"},
      {date(u"2026-11-22 00:30"), u"h AM/PM", u"12 AM"},
      {moment, u"q w ww y", u"4 5 45 309"},
      {moment, u"\"dnia\" d\\d", u"dnia 5d"},
      {Date{-1.25}, u"yyyy-mm-dd hh:nn", u"1899-12-29 06:00"},
      {u"22.11.2026", u"yyyy", u"2026"},
      {u"wkrótce", u"yyyy", u"wkrótce"},
      {2, u"yyyy-mm-dd", u"1900-01-01"},
  };
  check(cases);
}

TEST(Format, Texts) {
  const Case cases[] = {
      {u"Łódź", u">", u"ŁÓDŹ"},
      {u"ŁÓDŹ", u"<", u"łódź"},
      {u"abc", u"@@@@@", u"  abc"},
      {u"abc", u"!@@@@@", u"abc  "},
      {u"abc", u"&&&&&", u"abc"},
      {u"12345678", u"@@-@@", u"123456-78"},
      {u"12345678", u"!@@-@@", u"12-345678"},
      {u"", u"@;\"pusty\"", u"pusty"},
      {Value(), u"@;\"pusty\"", u"pusty"},
      {u"ab", u">@\\x", u"ABx"},
      {12.5, u"@@@@@@", u"  12,5"},
  };
  check(cases);
}

}  // namespace
}  // namespace jet::sql
