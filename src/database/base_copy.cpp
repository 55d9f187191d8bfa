// The copy in an order in which one good copy exists at every moment: the last one is put aside under the
// name "Temp Kopia NAME.mdb", the new one is made under a name of its own and checked before it gets that of
// the copy, and only then the last one goes.

#include <QDir>

#include "database/database_door.h"
#include "database/file_steps.h"
#include "database/scheduled_run.h"
#include "database/upkeep.h"
#include "database/upkeep_names.h"
#include "database/work_window.h"
#include "errors/error_reporter.h"
#include "session/settings.h"

namespace tandeko {

namespace {

const QString kFailed = QStringLiteral("Błąd kopiowania bazy");

class Copying {
 public:
  Copying(const UpkeepTools& tools, const QString& path, const QString& password, const QString& folder)
      : session_(tools.session),
        files_(tools.files),
        steps_(tools.files),
        path_(path),
        password_(password),
        name_(baseName(path)),
        copy_(joinedPath(folder, copyFileName(name_))),
        previous_(joinedPath(folder, previousCopyFileName(name_))) {
    const QString daily =
        session_.registry().read(scheduleKey(session_, path), QStringLiteral("Kopia dzienna"));
    if (daily == u"1") dated_ = joinedPath(folder, datedCopyFileName(name_, session_.clock().today()));
  }

  // False when it failed, which is told, or was called off.
  bool run() {
    const bool done = tryWork(
        session_, QStringLiteral("Kopiowanie bazy"), [this](Work& work) { copy(work); },
        [this](const QString&) { fail(); });
    if (!done) return false;
    if (datedFailed_)
      tell(QStringLiteral("Kopiowanie pliku dziennego bazy: ") + name_ +
           QStringLiteral(
               " nie powiodło się. Błąd kopiowania pliku. Sprawdź ilość wolnego miejsca na dysku."));
    return true;
  }

 private:
  void fail() {
    tell(QStringLiteral("Kopiowanie bazy: ") + name_ +
         QStringLiteral(" nie powiodło się. Błąd kopiowania pliku. Sprawdź czy baza nie jest otwarta przez "
                        "innego użytkownika lub program. Sprawdź ilość wolnego miejsca na dysku."));
  }

  void tell(const QString& text) { session_.messages().refuse(text, kFailed); }

  void copy(Work& work) {
    steps_.tryRename(copy_, previous_);
    try {
      const HeldDatabase held(files_, path_, password_);
      makeCopy(work, copy_, dated_.isEmpty() ? 0.95 : 0.5);
      if (!dated_.isEmpty()) makeDated(work);
      steps_.tryRemove(previous_);
    } catch (const jet::Error& error) {
      if (error.number() == kCancelled && !steps_.exists(copy_)) steps_.tryRename(previous_, copy_);
      throw;
    }
  }

  void makeCopy(Work& work, const QString& to, double end) {
    const double begin = work.done();
    work.step(QStringLiteral("Kopiowanie pliku bazy..."), begin + (end - begin) * 0.4);
    const QString staged = steps_.stage(path_, to, work.progress());
    try {
      work.step(QStringLiteral("Sprawdzanie kopii..."), end);
      steps_.check(staged, password_, work.progress());
    } catch (...) {
      steps_.tryRemove(staged);
      throw;
    }
    steps_.place(staged, to);
    steps_.settle(to);
  }

  // Its failure does not undo the copy.
  void makeDated(Work& work) {
    try {
      makeCopy(work, dated_, 0.98);
    } catch (const jet::Error& error) {
      if (error.number() != kCancelled) datedFailed_ = true;
    } catch (const std::exception&) {
      datedFailed_ = true;
    }
  }

  Session& session_;
  jet::Environment& files_;
  FileSteps steps_;
  QString path_, password_, name_, copy_, previous_, dated_;
  bool datedFailed_ = false;  // written by the work's thread, read when that has ended
};

// The program's own folder of copies is made when nobody has needed it so far; any other is to exist.
void makeBuiltInFolder(const QString& folder) {
  if (QDir(folder) == QDir(builtInFolder(QStringLiteral("Folder archiwum")))) QDir().mkpath(folder);
}

}  // namespace

void BaseCopy(const UpkeepTools& tools, const QString& path, const QString& password, bool forced,
              const std::function<bool()>& before) {
  Session& session = tools.session;
  guarded(session, "BaseCopy", [&] {
    bool confirm = false;
    if (!mayRun(session, path, Upkeep::Copy, forced, confirm, before)) return;
    const QString name = baseName(path);
    const StatusText status(session, QStringLiteral("Kopiowanie bazy ") + name + QStringLiteral("..."));
    const QString folder = copyFolder(session, path);
    if (folder.isEmpty())
      return session.messages().refuse(QStringLiteral("Ustaw folder kopiowania. Menu Baza, polecenie "
                                                      "Właściwości, zakładka Kopia bazy."),
                                       kFailed);
    makeBuiltInFolder(folder);
    if (!Copying(tools, path, password, folder).run()) return;
    noteRun(session, path, Upkeep::Copy);
    if (confirm)
      session.messages().inform(QStringLiteral("Kopia bazy: ") + name +
                                    QStringLiteral(" została wykonana poprawnie. Kopia znajduje się w "
                                                   "katalogu: ") +
                                    folder,
                                QStringLiteral("Sukces"));
  });
}

}  // namespace tandeko
