#include <QDir>

#include "database/database_door.h"
#include "database/file_steps.h"
#include "database/repair_report.h"
#include "database/upkeep.h"
#include "database/upkeep_names.h"
#include "database/work_window.h"
#include "errors/error_reporter.h"
#include "jet/format/error.h"
#include "platform/text.h"

namespace tandeko {

namespace {

class Repairing {
 public:
  Repairing(const UpkeepTools& tools, const QString& path)
      : session_(tools.session),
        files_(tools.files),
        path_(path),
        saved_(joinedPath(workFolder(tools.session), baseName(path) + QStringLiteral(" przed naprawą.mdb"))) {
  }

  // Throws what the repair throws; false when it was called off.
  bool run() {
    try {
      runWork(session_, QStringLiteral("Naprawa bazy"), [this](Work& work) { repair(work); });
    } catch (const jet::Error& error) {
      if (error.number() == kCancelled) return false;
      throw;
    }
    return true;
  }

  void tellLosses() {
    if (lines_.isEmpty()) return;
    QString text =
        QStringLiteral("Nie wszystko dało się odczytać z uszkodzonego pliku:\n\n") + lossesText(lines_);
    if (savedBefore_)
      text += QStringLiteral("\n\nPlik sprzed naprawy pozostał jako: ") + QDir::toNativeSeparators(saved_);
    session_.messages().refuse(text, QStringLiteral("Komunikat"));
  }

 private:
  void repair(Work& work) {
    work.step(QStringLiteral("Kopiowanie pliku bazy..."), 0.2);
    keepDamagedFile(work);
    work.step(QStringLiteral("Naprawa..."), 1);
    jet::Workspace(files_).repairDatabase(
        toPath(path_), [this](const std::u16string& line) { lines_ << toQString(line); }, work.progress());
  }

  // What the repair cannot bring back somebody else may; without room for the copy the repair goes on.
  void keepDamagedFile(Work& work) {
    try {
      FileSteps(files_).copy(path_, saved_, work.progress());
      savedBefore_ = true;
    } catch (const jet::Error& error) {
      if (error.number() == kCancelled) throw;
    }
  }

  Session& session_;
  jet::Environment& files_;
  QString path_, saved_;
  // Written by the work's thread, read when that has ended.
  QStringList lines_;
  bool savedBefore_ = false;
};

bool agrees(Session& session, const QString& name) {
  return session.messages().show({QStringLiteral("Wykonana zostanie próba naprawy bazy danych ") + name +
                                      QStringLiteral(". Naprawić bazę danych?"),
                                  {},
                                  Icon::None,
                                  Buttons::YesNo,
                                  Answer::No}) == Answer::Yes;
}

}  // namespace

bool BaseReapir(const UpkeepTools& tools, const QString& path) {
  Session& session = tools.session;
  bool repaired = false;
  guarded(session, "BaseReapir", [&] {
    const QString name = baseName(path);
    if (!FileSteps(tools.files).exists(path)) throw jet::Error(3024, {toU16(path)}, "DAO.Workspace");
    if (!agrees(session, name)) return;
    DatabaseDoor door(session, path);
    if (!door.closeForms(QStringLiteral("Przed wykonaniem naprawy bazy wymagane jest zamknięcie wszystkich "
                                        "okien programu. Zamknąć okna i kontynuować?")))
      return;
    const StatusText status(session, QStringLiteral("Naprawa bazy ") + name + QStringLiteral("..."));
    door.close();
    guarded(session, "BaseReapir", [&] {
      Repairing repairing(tools, path);
      repaired = repairing.run();
      if (!repaired) return;
      session.messages().inform(
          QStringLiteral("Operacja naprawy bazy: ") + name + QStringLiteral(" zakończyła się sukcesem."),
          QStringLiteral("Komunikat"));
      repairing.tellLosses();
    });
    if (!door.reopen())
      failReopening(session, QStringLiteral("Ponowne otwarcie bazy po naprawie nie powiodło się. Zamknij i "
                                            "uruchom program ponownie."));
  });
  return repaired;
}

}  // namespace tandeko
