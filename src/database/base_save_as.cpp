#include <QDir>

#include "database/database_door.h"
#include "database/file_steps.h"
#include "database/upkeep.h"
#include "database/upkeep_names.h"
#include "database/work_window.h"
#include "errors/error_reporter.h"
#include "jet/pager/lock_file.h"
#include "platform/text.h"

namespace tandeko {

namespace {

// The file to save to; empty when the user cancels or it may not be written.
QString chooseTarget(const UpkeepTools& tools, const QString& path) {
  Session& session = tools.session;
  FileChoice choice;
  choice.title = QStringLiteral("Zapisz bazę: ") + baseName(path) + QStringLiteral(" jako...");
  choice.folder = session.settings().program().folderDatabases;
  choice.filter = QStringLiteral("Baza danych MS Access (*.mdb)");
  choice.extension = QStringLiteral("mdb");
  const QString chosen = session.messages().saveFile(choice);
  if (chosen.isEmpty()) return {};
  const QString target = QDir::toNativeSeparators(withOneExtension(chosen));
  if (sameFile(target, path)) {
    session.messages().inform(QStringLiteral("Nie można zapisać bazy w miejsce istniejącej bazy: ") +
                              QDir::toNativeSeparators(path));
    return {};
  }
  if (!FileSteps(tools.files).exists(target)) return target;
  const Answer answer =
      session.messages().show({QStringLiteral("Plik o nazwie ") + target +
                                   QStringLiteral(" istnieje na dysku. Zastapić istniejący plik?"),
                               {},
                               Icon::None,
                               Buttons::YesNo,
                               Answer::No});
  return answer == Answer::Yes ? target : QString();
}

void save(const UpkeepTools& tools, const QString& path, const QString& password, const QString& target,
          Work& work) {
  FileSteps steps(tools.files);
  const HeldDatabase held(tools.files, path, password);
  // Nobody may be working in a database that is replaced.
  std::optional<jet::LockFile> targetHeld;
  if (steps.exists(target))
    targetHeld.emplace(tools.files, toPath(target),
                       jet::LockFile::Options{.exclusive = true, .readOnly = true});
  work.step(QStringLiteral("Kopiowanie pliku bazy..."), 0.4);
  const QString staged = steps.stage(path, target, work.progress());
  try {
    work.step(QStringLiteral("Sprawdzanie kopii..."), 1);
    steps.check(staged, password, work.progress());
  } catch (...) {
    steps.tryRemove(staged);
    throw;
  }
  steps.place(staged, target);
  steps.settle(target);
}

}  // namespace

bool BaseSaveAs(const UpkeepTools& tools, const QString& path) {
  Session& session = tools.session;
  bool saved = false;
  guarded(session, "BaseSaveAs", [&] {
    const QString target = chooseTarget(tools, path);
    if (target.isEmpty()) return;
    DatabaseDoor door(session, path);
    const QString password = session.databasePassword();
    if (!door.closeForms(QStringLiteral("Przed zapisaniem bazy wymagane jest zamknięcie wszystkich okien "
                                        "programu. Zamknąć okna i kontynuować?")))
      return;
    door.close();
    saved = tryWork(
        session, QStringLiteral("Zapisywanie bazy"),
        [&](Work& work) { save(tools, path, password, target, work); },
        [&](const QString& reason) {
          session.messages().show({QStringLiteral("Błąd kopiowania pliku: ") + reason +
                                       QStringLiteral(" - Aby wykonać kopię bazy wymagane jest zamknięcie "
                                                      "innych aplikacji korzystających z bazy."),
                                   {},
                                   Icon::None,
                                   Buttons::Ok,
                                   Answer::Ok});
        });
    if (!door.reopen())
      refuseReopening(session, QStringLiteral("Ponowne otwarcie bazy po zapisaniu nie powiodło się. Zamknij "
                                              "i uruchom program ponownie."));
  });
  return saved;
}

}  // namespace tandeko
