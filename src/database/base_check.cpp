#include "database/base_check.h"

#include <QApplication>
#include <QDir>
#include <QFileInfo>

#include "database/structure_update.h"
#include "errors/error_reporter.h"
#include "jet/format/error.h"
#include "platform/text.h"
#include "users/dlgBazaHaslo.h"

namespace tandeko {

namespace {

constexpr int kInvalidArgument = 3001;
constexpr int kWrongPassword = 3031;
constexpr int kInUse = 3045;
constexpr int kHeldExclusively = 3356;
constexpr int kNoSuchTable = 3078;

const QString kOpenTitle = QStringLiteral("Błąd otwarcia bazy");
const QString kStructureFile = QStringLiteral("Tandeko.stb");

// One run of the check; each step tells the user why it fails.
class Check {
 public:
  Check(Session& session, const QString& path, const QString& password, const CheckOptions& options)
      : session_(session), path_(path), shownPath_(QDir::toNativeSeparators(path)), options_(options) {
    result_.password = password;
  }

  BaseCheckResult run() {
    if (options_.reportNames)
      session_.setStatusText(QStringLiteral("Sprawdzanie bazy ") + fileName() + QStringLiteral("..."));
    result_.ok = guarded(session_, "BaseCheck", [this] { return steps(); });
    database_.reset();
    if (options_.reportNames) session_.setStatusText({});
    if (result_.ok && !options_.quiet) tellPassed();
    return result_;
  }

 private:
  bool steps() {
    if (!path_.contains(u".mdb", Qt::CaseInsensitive) || path_ == u"*.mdb") return false;
    return open() && hasPrograms() && hasUsers() && hasStructure() && versionFits() && readSettings();
  }

  bool open() {
    for (;;) {
      try {
        reopen();
        return true;
      } catch (const jet::Error& error) {
        database_.reset();
        if (error.number() == kWrongPassword && askPassword()) continue;
        return refuseOpening(error.number());
      }
    }
  }

  void reopen() {
    database_.reset();
    jet::Workspace::OpenOptions options;
    options.connect = u";pwd=" + toU16(result_.password) + u";";
    database_ = workspace_.openDatabase(toPath(path_), options);
  }

  bool askPassword() {
    QApplication::setOverrideCursor(Qt::ArrowCursor);
    dlgBazaHaslo dialog(session_, dlgBazaHaslo::Mode::Open, fileName().chopped(4), parentWindow());
    const bool given = dialog.exec() == QDialog::Accepted;
    QApplication::restoreOverrideCursor();
    if (given) {
      result_.password = dialog.password();
      result_.keepPassword = dialog.keep();
    }
    return given;
  }

  // To be called where the opening failed.
  bool refuseOpening(int number) {
    if (number == kInUse || number == kHeldExclusively) {
      refuseExclusive(session_, path_);
    } else if (number == kWrongPassword || number == kInvalidArgument) {
      session_.messages().refuse(
          QStringLiteral("Błąd otwarcia bazy danych: ") + shownPath_ +
              QStringLiteral(
                  " - sprawdź czy hasło zostało wprowadzone poprawnie. W tej sesji baza nie zostanie "
                  "dołączona do listy podręcznej. Możesz otworzyć bazę później wybierając z menu Baza "
                  "polecenie Otwórz lub uruchamiając program ponownie."),
          kOpenTitle);
    } else {
      throw;
    }
    return false;
  }

  bool hasPrograms() {
    try {
      openQuery(QStringLiteral("SELECT * FROM dbprg"));
      return true;
    } catch (const jet::Error& error) {
      if (error.number() == kNoSuchTable) {
        session_.messages().refuse(
            QStringLiteral("Baza: ") + shownPath_ +
            QStringLiteral(" nie posiada struktury danych dla programu: ") + kProgramName +
            QStringLiteral(". Baza nie może zostać otwarta. Program może otworzyć tylko bazy utworzone przez "
                           "program Fundamo bazy."));
      } else {
        session_.messages().inform(lockedText() + QStringLiteral("Baza nie może zostac otwarta."));
      }
      return false;
    }
  }

  bool hasUsers() {
    try {
      openQuery(QStringLiteral("SELECT * FROM dboso"));
      return true;
    } catch (const jet::Error&) {
      session_.messages().inform(lockedText() +
                                 QStringLiteral("Baza nie zostanie dołączona do listy podręcznej."));
      return false;
    }
  }

  bool hasStructure() {
    const auto program = programRow();
    if (!program->eof()) return true;
    session_.messages().refuse(
        QStringLiteral("Baza: ") + shownPath_ + QStringLiteral(" nie posiada struktury danych programu: ") +
        kProgramName +
        QStringLiteral(
            ". Baza nie może zostać otwarta. Jeżeli chcesz dodać bazę do podręcznej listy baz użyj "
            "polecenia Podręczna lista baz z menu Baza."));
    return false;
  }

  bool versionFits() {
    const ProgramVersion required = programVersion();
    if (!outdated(required)) return true;
    if (!options_.askToUpdate || !agreesToUpdate(required)) return false;
    database_.reset();
    if (!updateStructure(session_, path_, fileName())) return false;
    reopen();
    if (!outdated(required)) return true;
    session_.messages().fail(QStringLiteral("Struktura bazy: ") + fileName() +
                             QStringLiteral("  nie została zaktualizowana. Sprawdź wersję pliku: ") +
                             kStructureFile);
    return false;
  }

  bool outdated(const ProgramVersion& required) {
    const auto program = programRow();
    if (program->eof()) return true;
    major_ = toInt(program->value(u"VerMajor"));
    minor_ = toInt(program->value(u"VerMinor"));
    return structureOutdated(major_, minor_, required);
  }

  bool agreesToUpdate(const ProgramVersion& required) {
    const QString text =
        QStringLiteral("Baza: ") + shownPath_ + QStringLiteral(" posiada strukturę danych w wersji: ") +
        QString::number(major_) + u'.' + QString::number(minor_) +
        QStringLiteral(". Wymagana jest struktura bazy w wersji: ") + QString::number(required.major) + u'.' +
        QString::number(required.minor) +
        QStringLiteral(
            ". Aktualizacja struktury może trwać od kilku sekund do kilkunastu minut. Nie należy jej "
            "przerywać. Chcesz aktualizować strukture bazy teraz?");
    return session_.messages().show({text, QStringLiteral("Błąd weryfikacji struktury bazy"),
                                     Icon::Exclamation, Buttons::YesNo, Answer::Yes}) == Answer::Yes;
  }

  bool readSettings() {
    result_.user = session_.settings().stored(QStringLiteral("Uzytkownik"));
    openQuery(QStringLiteral("SELECT * FROM dbupr"));
    const auto parameter = openQuery(QStringLiteral("SELECT * FROM dbpar WHERE indpar = 'BaseReadOnly'"));
    result_.readOnly = !parameter->eof() && toText(parameter->value(u"wartosc")) == u"1";
    if (result_.readOnly) session_.setReadOnlyForced(true);
    return true;
  }

  void tellPassed() {
    session_.messages().inform(QStringLiteral("Baza: ") + shownPath_ +
                               QStringLiteral(" posiada strukturę danych programu: ") + kProgramName +
                               QStringLiteral(" w wersji: ") + QString::number(major_) + u'.' +
                               QString::number(minor_) + QStringLiteral(". Baza może zostać otwarta."));
  }

  std::unique_ptr<jet::Recordset> openQuery(const QString& query) {
    return database_->openRecordset(toU16(query), jet::RecordsetType::Snapshot);
  }
  std::unique_ptr<jet::Recordset> programRow() {
    return openQuery(QStringLiteral("SELECT * FROM dbprg WHERE indprg = '") + kProgramCode +
                     QStringLiteral("' "));
  }

  QString lockedText() const {
    return QStringLiteral("Baza: ") + shownPath_ +
           QStringLiteral(
               " lub tabela została otwarta w trybie wyłączności przez innego użytkownika. Program nie "
               "może zidentyfikować struktury bazy. ");
  }
  QString fileName() const { return QFileInfo(path_).fileName(); }
  QWidget* parentWindow() const { return session_.frame() ? session_.frame()->window() : nullptr; }

  Session& session_;
  QString path_;
  QString shownPath_;
  CheckOptions options_;
  BaseCheckResult result_;
  jet::Workspace workspace_;
  std::unique_ptr<jet::Database> database_;
  int major_ = 0;
  int minor_ = 0;
};

}  // namespace

bool structureOutdated(int major, int minor, const ProgramVersion& required) {
  return major < required.major || minor < required.minor;
}

void refuseExclusive(Session& session, const QString& path) {
  session.messages().refuse(
      QStringLiteral("Baza: ") + QDir::toNativeSeparators(path) +
          QStringLiteral(
              " została otwarta w trybie wyłączności przez innego użytkownika. W tej sesji baza nie "
              "zostanie dołączona do listy podręcznej. Możesz otworzyć bazę później wybierając z menu "
              "Baza polecenie Otwórz."),
      kOpenTitle);
}

BaseCheckResult BaseCheck(Session& session, const QString& path, const QString& password,
                          const CheckOptions& options) {
  return Check(session, path, password, options).run();
}

}  // namespace tandeko
