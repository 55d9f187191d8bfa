// Restoring in an order in which the current version exists at every moment: it is copied to the working
// folder, the chosen copy is copied beside it and takes its place in one step.

#include <QDir>
#include <QFileInfo>
#include <QLocale>

#include "database/copy_choice.h"
#include "database/database_door.h"
#include "database/file_steps.h"
#include "database/upkeep.h"
#include "database/upkeep_names.h"
#include "database/work_window.h"
#include "errors/error_reporter.h"
#include "jet/pager/journal.h"
#include "platform/text.h"

namespace tandeko {

namespace {

const QString kRefusedCopy = QStringLiteral("Baza archiwalna nie może być aktualną wersją bazy: ");

QString fileDate(const QString& path) {
  return QLocale().toString(QFileInfo(path).lastModified(), QLocale::ShortFormat);
}

class Restoring {
 public:
  Restoring(const UpkeepTools& tools, const QString& path, const QString& copy)
      : session_(tools.session),
        files_(tools.files),
        steps_(tools.files),
        path_(QDir::toNativeSeparators(path)),
        copy_(QDir::toNativeSeparators(copy)),
        folder_(workFolder(tools.session)),
        saved_(joinedPath(folder_, QFileInfo(path).fileName())) {
    // Neither the database nor the chosen copy may be overwritten by the version that is put aside.
    if (sameFile(saved_, path_) || sameFile(saved_, copy_))
      saved_ = joinedPath(folder_, baseName(path) + QStringLiteral(" przed odtworzeniem.mdb"));
  }

  bool agreed() {
    return session_.messages().ask(
        QStringLiteral("Aktualna wersja bazy: ") + path_ + QStringLiteral(" zostanie zastąpiona kopią: ") +
            copy_ + QStringLiteral(" z dnia ") + fileDate(copy_) +
            QStringLiteral(". Przed zastąpieniem aktualna wersja bazy zostanie skopiowana do katalogu "
                           "roboczego: ") +
            folder_ + QStringLiteral(". Zastąpić aktualną wersję bazy kopią?"),
        QStringLiteral("Komunikat"));
  }

  bool hasFolder() {
    if (QFileInfo(folder_).isDir()) return true;
    tell(QStringLiteral("Błędny folder roboczy: ") + folder_ +
         QStringLiteral(". Ustaw folder roboczy: Menu Narzędzia polecenie Parametry programu, zakładka "
                        "FOldery."));
    return false;
  }

  bool run(const QString& password) {
    return tryWork(
        session_, QStringLiteral("Odtwarzanie bazy"), [&](Work& work) { restore(work, password); },
        [this](const QString& reason) { fail(reason); });
  }

 private:
  enum class Stage { Saving, CopyingBack, Deleting, Placed };

  void restore(Work& work, const QString& password) {
    const HeldDatabase held(files_, path_, password, true);
    work.step(QStringLiteral("Kopiowanie aktualnej wersji bazy..."), 0.3);
    steps_.copy(path_, saved_, work.progress());
    keepJournal();
    stage_ = Stage::CopyingBack;
    work.step(QStringLiteral("Kopiowanie pliku z archiwum..."), 0.55);
    const QString staged = steps_.stage(copy_, path_, work.progress());
    try {
      proveCopy(work, staged, password);
      work.finalStep(QStringLiteral("Zastępowanie bazy..."), 1);
    } catch (...) {
      steps_.tryRemove(staged);
      throw;
    }
    stage_ = Stage::Deleting;
    steps_.place(staged, path_);
    stage_ = Stage::Placed;
    steps_.settle(path_);
  }

  // What a crash left beside a database that cannot be opened belongs to its saved version.
  void keepJournal() {
    const auto journal = [](const QString& path) { return fromPath(jet::Journal::pathOf(toPath(path))); };
    if (steps_.exists(journal(path_))) steps_.copy(journal(path_), journal(saved_));
  }

  // A copy from the time of another password is sound as far as can be told without it.
  void proveCopy(Work& work, const QString& staged, const QString& password) {
    work.step(QStringLiteral("Sprawdzanie kopii..."), 0.95);
    try {
      steps_.check(staged, password, work.progress());
    } catch (const jet::Error& error) {
      if (error.number() != 3031) throw;
    }
  }

  void fail(const QString& reason) {
    switch (stage_) {
      case Stage::Saving:
        return tell(QStringLiteral("Błąd kopiowania pliku bazy: ") + path_ + QStringLiteral(" - ") + reason);
      case Stage::Deleting:
        return tell(QStringLiteral("Błąd usuwania pliku bazy: ") + path_);
      case Stage::CopyingBack:
      case Stage::Placed:
        tell(QStringLiteral("Błąd kopiowania pliku z archiwum: ") + copy_ +
             QStringLiteral(". Przywrócona zostanie pierwotna wersja bazy."));
        if (stage_ == Stage::Placed) bringBack();
    }
  }

  void bringBack() {
    try {
      runWork(session_, QStringLiteral("Odtwarzanie bazy"), [this](Work& work) {
        work.finalStep(QStringLiteral("Przywracanie pierwotnej wersji bazy..."), 1);
        steps_.copy(saved_, path_, work.progress());
      });
    } catch (const std::exception&) {
      tell(QStringLiteral("Baza nie została odtworzona. Ostatnia wersja bazy znajduje się w folderze: ") +
           folder_ + u'.');
    }
  }

  void tell(const QString& text) {
    session_.messages().show({text, {}, Icon::None, Buttons::Ok, Answer::Ok});
  }

  Session& session_;
  jet::Environment& files_;
  FileSteps steps_;
  QString path_, copy_, folder_, saved_;
  Stage stage_ = Stage::Saving;  // written by the work's thread, read when that has ended
};

}  // namespace

bool BaseFromArchiw(const UpkeepTools& tools, const QString& path) {
  Session& session = tools.session;
  bool restored = false;
  guarded(session, "BaseFromArchiw", [&] {
    const QString chosen = chooseCopy(session, path);
    if (chosen.isEmpty()) return;
    // The extension in capitals counts where the file is really called so.
    const QString tidied = withOneExtension(chosen);
    const QString copy = FileSteps(tools.files).exists(tidied) ? tidied : chosen;
    const QString shownPath = QDir::toNativeSeparators(path);
    if (sameFile(copy, path)) return session.messages().inform(kRefusedCopy + shownPath);
    DatabaseDoor door(session, path);
    if (!door.closeForms(QStringLiteral("Przed odtworzeniem bazy wymagane jest zamknięcie wszystkich okien "
                                        "programu. Zamknąć okna i kontynuować?")))
      return;
    Restoring restoring(tools, shownPath, copy);
    if (!restoring.agreed()) return;
    const QString password = session.databasePassword();
    door.close();
    restored = restoring.hasFolder() && restoring.run(password);
    if (!(restored ? door.reopenChecked() : door.reopen()))
      refuseReopening(session, QStringLiteral("Ponowne otwarcie bazy nie powiodło się. Zamknij i uruchom "
                                              "program ponownie."));
  });
  return restored;
}

}  // namespace tandeko
