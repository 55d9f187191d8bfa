#pragma once

#include <QDateTime>
#include <QString>
#include <optional>

namespace tandeko {

// The two kinds of upkeep that a database's schedule knows.
enum class Upkeep { Compact, Copy };

// A schedule as the registry keeps it, all texts.
struct Schedule {
  QString on;        // "1": runs by itself
  QString confirm;   // "1": asks first, and reports success
  QString interval;  // days, decimal
  QString last;      // date of the last run
};

struct ScheduleDecision {
  bool run = false;
  bool confirm = false;
};

// Whether a run is due at `now`: its interval has passed since the last one, or there is no telling when
// that was. A forced run is always due, and confirmed.
ScheduleDecision decideSchedule(const Schedule& schedule, const QDateTime& now, bool forced);

// A date in the system's short form.
QString shortDate(const QDate& date);

// The moment that a text names, in any form in which this or another system of the user may have written
// it; midnight when it has no time. Nothing when it is no date.
std::optional<QDateTime> dateOfText(const QString& text);

}  // namespace tandeko
