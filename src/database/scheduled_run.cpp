#include "database/scheduled_run.h"

#include "database/database_door.h"
#include "database/upkeep.h"
#include "database/upkeep_names.h"

namespace tandeko {

namespace {

bool agrees(Session& session, const QString& path, Upkeep kind, const Schedule& schedule) {
  const QString last = schedule.last.isEmpty() ? QStringLiteral("?") : schedule.last;
  if (kind == Upkeep::Compact)
    return session.messages().ask(QStringLiteral("Wykonana zostanie defragmentacja bazy: ") + baseName(path) +
                                      QStringLiteral(". Ostatni raz defragmentacja została wykonana: ") +
                                      last + QStringLiteral(". Wykonać defragmentację teraz?"),
                                  QStringLiteral("Defragmentacja bazy"));
  return session.messages().ask(QStringLiteral("Wykonana zostanie kopia bazy: ") + baseName(path) +
                                    QStringLiteral(". Ostatni raz kopia została wykonana: ") + last +
                                    QStringLiteral(". Wykonać kopię teraz?"),
                                QStringLiteral("Archiwizacja bazy"));
}

}  // namespace

bool mayRun(Session& session, const QString& path, Upkeep kind, bool forced, bool& confirm,
            const std::function<bool()>& before) {
  const Schedule schedule = readSchedule(session, path, kind);
  const ScheduleDecision decision = decideSchedule(schedule, session.clock().now(), forced);
  confirm = decision.confirm;
  return decision.run && (!confirm || agrees(session, path, kind, schedule)) && (!before || before());
}

void maintainOpenDatabase(const UpkeepTools& tools, Upkeep kind) {
  Session& session = tools.session;
  const QString path = session.databasePath();
  const QString password = session.databasePassword();
  DatabaseDoor door(session, path);
  bool closed = false;
  const auto close = [&] {
    if (!door.closeForms()) return false;
    door.close();
    return closed = true;
  };
  if (kind == Upkeep::Compact)
    BaseDefrag(tools, path, password, true, close);
  else
    BaseCopy(tools, path, password, true, close);
  if (!closed || door.reopen()) return;
  refuseReopening(session,
                  QStringLiteral("Ponowne otwarcie bazy po defragmentacji nie powiodło się. Zamknij i "
                                 "uruchom program ponownie."));
  session.FormCloseAll();
}

}  // namespace tandeko
