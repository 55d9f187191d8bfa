#include "database/schedule.h"

#include <gtest/gtest.h>

#include <QLocale>

#include "support/scripted_messages.h"

using namespace tandeko;

TEST(ScheduleTable, DecidesByTheLastRunAndTheInterval) {
  const QString on = QStringLiteral("1"), off = QStringLiteral("0"), none;
  const QDateTime morning(QDate(2024, 3, 4), QTime(8, 0));
  const struct {
    Schedule schedule;
    QDateTime now;
    bool forced, run, confirm;
  } cases[] = {
      // Off in every way it can be off.
      {{off, on, QStringLiteral("3"), none}, morning, false, false, false},
      {{none, none, none, none}, morning, false, false, false},
      {{QStringLiteral("tak"), on, QStringLiteral("3"), none}, morning, false, false, false},
      // Never run, or nobody knows when.
      {{on, off, QStringLiteral("30"), none}, morning, false, true, false},
      {{on, on, QStringLiteral("30"), QStringLiteral("kiedyś")}, morning, false, true, true},
      {{on, off, QStringLiteral("30"), QStringLiteral("31.02.2024")}, morning, false, true, false},
      // A run on the 1st is due again from midnight of the 4th.
      {{on, off, QStringLiteral("3"), QStringLiteral("1.03.2024")}, morning, false, true, false},
      {{on, off, QStringLiteral("3"), QStringLiteral("1.03.2024")},
       QDateTime(QDate(2024, 3, 4), QTime(0, 0, 1)),
       false,
       true,
       false},
      {{on, off, QStringLiteral("3"), QStringLiteral("1.03.2024")},
       QDateTime(QDate(2024, 3, 4), QTime(0, 0)),
       false,
       false,
       false},
      {{on, off, QStringLiteral("3"), QStringLiteral("1.03.2024")},
       QDateTime(QDate(2024, 3, 3), QTime(23, 59)),
       false,
       false,
       false},
      {{on, on, QStringLiteral("3"), QStringLiteral("4.03.2024")}, morning, false, false, false},
      // Intervals that are no plain number.
      {{on, off, none, QStringLiteral("4.03.2024")}, morning, false, true, false},
      {{on, off, QStringLiteral("-7"), QStringLiteral("5.03.2024")}, morning, false, false, false},
      {{on, off, QStringLiteral("2 dni"), QStringLiteral("2.03.2024")}, morning, false, true, false},
      {{on, off, QStringLiteral("99999999999"), QStringLiteral("2.03.2024")}, morning, false, false, false},
      // Across the change of the clock.
      {{on, off, QStringLiteral("1"), QStringLiteral("31.03.2024")},
       QDateTime(QDate(2024, 4, 1), QTime(0, 30)),
       false,
       true,
       false},
      // Forcing sets both flags, whatever the schedule says.
      {{off, off, QStringLiteral("30"), QStringLiteral("4.03.2024")}, morning, true, true, true},
      {{none, none, none, none}, morning, true, true, true},
  };
  for (const auto& c : cases) {
    const ScheduleDecision decision = decideSchedule(c.schedule, c.now, c.forced);
    const std::string name =
        (c.schedule.on + u'/' + c.schedule.interval + u'/' + c.schedule.last).toStdString();
    EXPECT_EQ(decision.run, c.run) << name;
    EXPECT_EQ(decision.confirm, c.confirm) << name;
  }
}

TEST(ScheduleTable, ReadsEveryFormThatASystemWrites) {
  const QDate date(2024, 11, 22);
  for (const char16_t* text :
       {u"22.11.2024", u"2024-11-22", u"22-11-2024", u"22/11/2024", u"2024/11/22", u"11/22/2024", u"11/22/24",
        u"22.11.24", u"22 lis 2024", u"22 listopada 2024", u" 22.11.2024 ", u"2024-11-22 14:30",
        u"22.11.2024 14:30:15", u"22 Nov 2024"}) {
    const auto read = dateOfText(QString::fromUtf16(text));
    ASSERT_TRUE(read.has_value()) << QString::fromUtf16(text).toStdString();
    EXPECT_EQ(read->date(), date) << QString::fromUtf16(text).toStdString();
  }
  for (const char16_t* text : {u"", u"?", u"wczoraj", u"99.99.2024", u"12"})
    EXPECT_FALSE(dateOfText(QString::fromUtf16(text)).has_value()) << QString::fromUtf16(text).toStdString();
  // Whatever day it is, what was written is read as that day.
  for (QDate day(2024, 1, 1); day.year() < 2026; day = day.addDays(1))
    ASSERT_EQ(dateOfText(shortDate(day))->date(), day) << shortDate(day).toStdString();
}
