#pragma once

#include <array>
#include <string_view>

namespace jet::sql {

// What a Polish system shows and reads: the one place for everything that depends on the locale. The date
// and time patterns are those of Format.
struct Locale {
  using Names12 = std::array<std::u16string_view, 12>;
  using Names7 = std::array<std::u16string_view, 7>;

  char16_t decimalSeparator = u',';
  char16_t groupSeparator = u'\u00A0';  // a no-break space
  std::u16string_view currencySuffix = u" zł";
  char16_t dateSeparator = u'-';
  char16_t timeSeparator = u':';
  std::u16string_view shortDate = u"yyyy-mm-dd";
  std::u16string_view mediumDate = u"dd-mmm-yy";
  std::u16string_view longDate = u"d mmmm yyyy";
  std::u16string_view shortTime = u"hh:nn";
  std::u16string_view mediumTime = u"hh:nn AM/PM";
  std::u16string_view longTime = u"hh:nn:ss";
  int firstWeekday = 2;  // Monday, counted from Sunday = 1
  int codePage = 1250;   // of Asc and Chr

  Names12 months = {u"styczeń", u"luty",     u"marzec",   u"kwiecień",    u"maj",      u"czerwiec",
                    u"lipiec",  u"sierpień", u"wrzesień", u"październik", u"listopad", u"grudzień"};
  // After a day's number: 22 listopada.
  Names12 monthsOfDay = {u"stycznia", u"lutego",   u"marca",    u"kwietnia",     u"maja",      u"czerwca",
                         u"lipca",    u"sierpnia", u"września", u"października", u"listopada", u"grudnia"};
  Names12 shortMonths = {u"sty", u"lut", u"mar", u"kwi", u"maj", u"cze",
                         u"lip", u"sie", u"wrz", u"paź", u"lis", u"gru"};
  // From Sunday.
  Names7 days = {u"niedziela", u"poniedziałek", u"wtorek", u"środa", u"czwartek", u"piątek", u"sobota"};
  Names7 shortDays = {u"N", u"Pn", u"Wt", u"Śr", u"Cz", u"Pt", u"So"};
};

inline constexpr Locale kLocale{};

// Month names of date literals, whatever the locale.
inline constexpr Locale::Names12 kEnglishMonths = {u"january",   u"february", u"march",    u"april",
                                                   u"may",       u"june",     u"july",     u"august",
                                                   u"september", u"october",  u"november", u"december"};

}  // namespace jet::sql
