// Renaming in an order in which the database or its copy exists at every moment: it is copied to the working
// folder, then beside its new name; only when both are complete the old file goes, and the new one gets its
// name.

#include <QDir>
#include <QFileInfo>

#include "database/database_door.h"
#include "database/file_steps.h"
#include "database/rename_entry.h"
#include "database/upkeep.h"
#include "database/upkeep_names.h"
#include "database/work_window.h"
#include "errors/error_reporter.h"
#include "jet/pager/lock_file.h"
#include "platform/text.h"

namespace tandeko {

namespace {

const QString kFailed = QStringLiteral("Błąd zmiany nazwy bazy danych");

class Renaming {
 public:
  Renaming(const UpkeepTools& tools, const QString& path, const QString& newName, const QString& folder)
      : session_(tools.session),
        files_(tools.files),
        steps_(tools.files),
        path_(QDir::toNativeSeparators(path)),
        newName_(newName),
        folder_(QDir::toNativeSeparators(folder)),
        target_(joinedPath(folder, newName + QStringLiteral(".mdb"))),
        workFolder_(workFolder(tools.session)),
        saved_(joinedPath(workFolder_, baseName(path) + QStringLiteral(" przed zmianą nazwy.mdb"))) {}

  const QString& target() const { return target_; }

  bool mayReplace() {
    steps_.tryRemove(saved_);
    if (sameFile(path_, target_) || !steps_.exists(target_)) return true;
    return session_.messages().show(
               {QStringLiteral("Baza danych o nazwie: ") + newName_ +
                    QStringLiteral(" istnieje na dysku. Baza może zawierać dane. Zamiana nazwy bazy "
                                   "spowoduje usunięcie istniejącego pliku bazy. Operacja jest "
                                   "nieodwracalna. Kontynuować?"),
                {},
                Icon::None,
                Buttons::YesNo,
                Answer::No}) == Answer::Yes;
  }

  bool run(const QString& password) {
    return tryWork(
        session_, QStringLiteral("Zmiana nazwy bazy danych"), [&](Work& work) { rename(work, password); },
        [this](const QString&) { fail(); });
  }

 private:
  enum class Stage { Copying, Deleting, Placing };

  void rename(Work& work, const QString& password) {
    HeldDatabase held(files_, path_, password, true);
    std::optional<jet::LockFile> targetHeld;
    if (!sameFile(path_, target_) && steps_.exists(target_))
      targetHeld.emplace(files_, toPath(target_),
                         jet::LockFile::Options{.exclusive = true, .readOnly = true});
    work.step(QStringLiteral("Kopiowanie pliku bazy..."), 0.45);
    steps_.copy(path_, saved_, work.progress());
    work.step(QStringLiteral("Kopiowanie pliku bazy..."), 0.95);
    const QString staged = steps_.stage(saved_, target_, work.progress());
    try {
      work.finalStep(QStringLiteral("Zmiana nazwy..."), 1);
      stage_ = Stage::Deleting;
      steps_.remove(path_);
    } catch (...) {
      steps_.tryRemove(staged);
      throw;
    }
    stage_ = Stage::Placing;
    steps_.place(staged, target_);
    steps_.trySettle(target_);
  }

  void fail() {
    switch (stage_) {
      case Stage::Copying:
        return session_.messages().refuse(QStringLiteral("Błąd kopiowania pliku: ") + path_ +
                                              QStringLiteral(". Sprawź czy baza nie jest otwarta przez inny "
                                                             "program i/lub użytkownika oraz ilość wolnego "
                                                             "miejsca na dysku."),
                                          QStringLiteral("Błąd zmiany bazy danych"));
      case Stage::Deleting:
        return tell(QStringLiteral("Błąd zmiany nazwy bazy: ") + path_ +
                    QStringLiteral(". Sprawź czy baza nie jest otwarta przez inny program i/lub "
                                   "użytkownika."));
      case Stage::Placing:
        return tell(
            QStringLiteral("Błąd zmiany nazwy. Baza została usunięta. Zamknij program, przekopiuj bazę z "
                           "katalogu: ") +
            workFolder_ + QStringLiteral(" do folderu: ") + folder_ +
            QStringLiteral(". Zmień nazwę przekopiowanej bazy na: ") + newName_ +
            QStringLiteral(".mdb i uruchom program ponownie"));
    }
  }

  void tell(const QString& text) {
    session_.messages().show({text, kFailed, Icon::None, Buttons::Ok, Answer::Ok});
  }

  Session& session_;
  jet::Environment& files_;
  FileSteps steps_;
  QString path_, newName_, folder_, target_, workFolder_, saved_;
  Stage stage_ = Stage::Copying;  // written by the work's thread, read when that has ended
};

}  // namespace

bool BaseRename(const UpkeepTools& tools, const QString& path, const QString& newName,
                const QString& folder) {
  Session& session = tools.session;
  bool renamed = false;
  guarded(session, "BaseRename", [&] {
    if (newName == baseName(path)) return;
    Renaming renaming(tools, path, newName, folder);
    if (!renaming.mayReplace()) return;
    DatabaseDoor door(session, path);
    const auto entry = handyEntryOf(session, path);
    const QString password = session.databasePassword();
    door.close();
    renamed = renaming.run(password);
    if (renamed && entry) handyCarry(session, *entry, renaming.target());
    if (!renamed && !FileSteps(tools.files).exists(path)) return;
    if (!door.reopen(renamed ? renaming.target() : path))
      refuseReopening(session, QStringLiteral("Ponowne otwarcie bazy po zmianie nazwy nie powiodło się. "
                                              "Zamknij i uruchom program ponownie."));
  });
  return renamed;
}

}  // namespace tandeko
