#include "database/base_check.h"
#include "database/database_door.h"
#include "database/file_steps.h"
#include "database/handy_list.h"
#include "database/upkeep.h"
#include "errors/error_reporter.h"
#include "jet/format/error.h"
#include "platform/text.h"

namespace tandeko {

namespace {

bool isInUse(const jet::Error& error) { return error.number() == 3045 || error.number() == 3356; }

// The list entry that kept the old password keeps the new one.
void keepPassword(Session& session, const QString& path, const QString& password) {
  const auto entry = handyEntryOf(session, path);
  if (!entry || handyPassword(session, entry->subkey).isEmpty()) return;
  if (password.isEmpty())
    session.registry().removeValue(handyKey(entry->subkey), QStringLiteral("Haslo"));
  else
    handyKeepPassword(session, entry->subkey, password);
}

}  // namespace

bool changePassword(const UpkeepTools& tools, const QString& newPassword) {
  Session& session = tools.session;
  bool changed = false;
  guarded(session, "BasePassword", [&] {
    const QString path = session.databasePath();
    const QString old = session.databasePassword();
    DatabaseDoor door(session, path);
    if (!door.closeForms(QStringLiteral("Przed zmianą hasła bazy wymagane jest zamknięcie wszystkich okien "
                                        "programu. Zamknąć okna i kontynuować?")))
      return;
    door.close();
    guarded(session, "BasePassword", [&] {
      try {
        jet::Workspace workspace(tools.files);
        workspace.openDatabase(toPath(path), {.exclusive = true, .connect = connectText(old)})
            ->newPassword(toU16(old), toU16(newPassword));
        changed = true;
      } catch (const jet::Error& error) {
        if (!isInUse(error)) throw;
        session.messages().refuse(
            QStringLiteral("Nie można zmienić hasła, ponieważ baza jest otwarta przez innego użytkownika lub "
                           "program. Spróbuj ponownie, gdy nikt w niej nie pracuje."));
      }
    });
    if (changed) {
      door.usePassword(newPassword);
      keepPassword(session, path, newPassword);
      session.messages().inform(QStringLiteral("Hasło bazy zostało zmienione."));
    }
    if (!door.reopen())
      refuseReopening(session, QStringLiteral("Ponowne otwarcie bazy nie powiodło się. Zamknij i uruchom "
                                              "program ponownie."));
  });
  return changed;
}

}  // namespace tandeko
