// Compacting in an order in which the database or its last version exists at every moment:
//
//  1. The file is held, so that nobody opens it, and copied to "NAME przed defrag.mdb" in the working folder.
//  2. The copy is compacted to "NAME po defrag.mdb", which is checked.
//  3. The result is copied beside the database, takes its place in one step, and is opened there.
//
// Up to step 3 the database itself is only read.

#include <QDir>
#include <QFileInfo>

#include "database/database_door.h"
#include "database/file_steps.h"
#include "database/scheduled_run.h"
#include "database/upkeep.h"
#include "database/upkeep_names.h"
#include "database/work_window.h"
#include "errors/error_reporter.h"
#include "platform/text.h"

namespace tandeko {

namespace {

const QString kFailed = QStringLiteral("Błąd defragmentacji bazy");

class Compacting {
 public:
  Compacting(const UpkeepTools& tools, const QString& path, const QString& password)
      : session_(tools.session),
        files_(tools.files),
        steps_(tools.files),
        path_(path),
        password_(password),
        name_(baseName(path)),
        folder_(workFolder(tools.session)),
        before_(joinedPath(folder_, name_ + QStringLiteral(" przed defrag.mdb"))),
        after_(joinedPath(folder_, name_ + QStringLiteral(" po defrag.mdb"))) {}

  // False when it failed, which is told, or was called off.
  bool run() {
    return tryWork(
        session_, QStringLiteral("Defragmentacja bazy"), [this](Work& work) { compact(work); },
        [this](const QString&) { fail(); });
  }

 private:
  void compact(Work& work) {
    steps_.tryRemove(before_);
    steps_.tryRemove(after_);
    auto held = std::make_unique<HeldDatabase>(files_, path_, password_);
    work.step(QStringLiteral("Kopiowanie pliku bazy..."), 0.15);
    steps_.copy(path_, before_, work.progress());
    copied_ = true;
    work.step(QStringLiteral("Defragmentacja..."), 0.6);
    jet::CompactOptions options;
    options.locale = jet::kPolishLocale;
    options.connect = connectText(password_);
    options.progress = work.progress();
    jet::Workspace(files_).compactDatabase(toPath(before_), toPath(after_), options);
    work.step(QStringLiteral("Sprawdzanie..."), 0.8);
    steps_.check(after_, password_, work.progress());
    work.step(QStringLiteral("Kopiowanie pliku bazy..."), 0.95);
    const QString staged = steps_.stage(after_, path_, work.progress());
    work.finalStep(QStringLiteral("Kończenie..."), 1);
    steps_.place(staged, path_);
    replaced_ = true;
    steps_.settle(path_);
    held.reset();
    steps_.prove(path_, password_);
    steps_.tryRemove(after_);
  }

  void fail() {
    if (!copied_)
      return session_.messages().refuse(
          QStringLiteral("Defragmentacja bazy: ") + name_ +
              QStringLiteral(" nie powiodła się. Błąd kopiowania pliku. Sprawdź czy baza nie jest otwarta "
                             "przez innego użytkownika lub program. Sprawdź ilość wolnego miejsca na dysku."),
          kFailed);
    session_.messages().refuse(
        QStringLiteral("Defragmentacja bazy: ") + name_ +
            QStringLiteral(
                " nie powiodła się. Sprawdź czy baza nie jest otwarta przez innego użytkownika lub "
                "program. Sprawdź ilość wolnego miejsca na dysku. Zostanie przywrócona ostatnia "
                "wersja bazy."),
        kFailed);
    if (replaced_) restore();
  }

  void restore() {
    try {
      runWork(session_, kFailed, [this](Work& work) {
        work.finalStep(QStringLiteral("Przywracanie ostatniej wersji bazy..."), 1);
        steps_.copy(before_, path_, work.progress());
      });
    } catch (...) {
      reportFailure(session_, currentFailure(QStringLiteral("BaseDefrag")));
      session_.messages().refuse(
          QStringLiteral("Nie można przywrócić ostatniej wersji bazy. Plik bazy znajduje się w folderze: ") +
              folder_ +
              QStringLiteral(
                  ". Sprawdź ilość wolnego miejsca na dysku (opróżnij kosz), usuń przyczynę błędu, "
                  "a następnie przekopiuj plik do katalogu: ") +
              QDir::toNativeSeparators(QFileInfo(path_).absolutePath()),
          kFailed);
    }
  }

  Session& session_;
  jet::Environment& files_;
  FileSteps steps_;
  QString path_, password_, name_, folder_, before_, after_;
  // How far it came; written by the work's thread, read when that has ended.
  bool copied_ = false, replaced_ = false;
};

}  // namespace

void BaseDefrag(const UpkeepTools& tools, const QString& path, const QString& password, bool forced,
                const std::function<bool()>& before) {
  Session& session = tools.session;
  guarded(session, "BaseDefrag", [&] {
    bool confirm = false;
    if (!mayRun(session, path, Upkeep::Compact, forced, confirm, before)) return;
    const QString name = baseName(path);
    const StatusText status(session, QStringLiteral("Defragmentacja bazy ") + name + QStringLiteral("..."));
    if (!Compacting(tools, path, password).run()) return;
    noteRun(session, path, Upkeep::Compact);
    if (confirm)
      session.messages().inform(
          QStringLiteral("Defragmentacja bazy: ") + name + QStringLiteral(" została wykonana pomyślnie."),
          QStringLiteral("Sukces"));
  });
}

}  // namespace tandeko
