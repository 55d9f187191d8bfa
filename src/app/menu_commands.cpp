#include "app/menu_commands.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QFileInfo>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>

#include "app/dlgParPakiet.h"
#include "app/mdiMenu.h"
#include "database/dlgBazaRejestr.h"
#include "database/dlgBazaWlas.h"
#include "database/structure_update.h"
#include "database/upkeep.h"
#include "errors/error_reporter.h"
#include "errors/support_letter.h"
#include "register/kreRejewi.h"

namespace tandeko {

namespace {

const QString kReaderPage = QStringLiteral("https://get.adobe.com/reader/");

// Calls a slot that every text field has ("cut", "copy", "paste") on the focused one.
void callOnTextField(const char* slot) {
  QWidget* focused = QApplication::focusWidget();
  if (qobject_cast<QLineEdit*>(focused) || qobject_cast<QTextEdit*>(focused) ||
      qobject_cast<QPlainTextEdit*>(focused))
    QMetaObject::invokeMethod(focused, slot);
}

QString executableName(const QString& program) {
#ifdef Q_OS_WIN
  return program + QStringLiteral(".exe");
#else
  return program.toLower();
#endif
}

// Starts a program of the package; `file` is its name as the users know it.
void startPackageProgram(Session& session, const QString& program) {
  const QString path = packageProgram(session, executableName(program));
  if (!path.isEmpty() && session.shell().startProgram(path, {}) == ShellResult::Done) return;
  session.messages().inform(
      QStringLiteral("Nie można zlokalizować pliku: ") + program +
      QStringLiteral(".exe, plik ten powinien znajdować się w katalogu programów pakietu "
                     "Lorvel: ") +
      session.settings().program().folderPrograms);
}

void openHelp(Session& session, HelpView view) {
  const QString path = session.settings().helpFile();
  const QString shown = QDir::toNativeSeparators(path);
  switch (session.shell().openHelp(path, view)) {
    case ShellResult::Done:
      return;
    case ShellResult::NotFound:
      return session.messages().refuse(QStringLiteral("Nie można zlokalizować pliku pomocy: ") + shown);
    case ShellResult::NoProgram:
      return session.messages().refuse(QStringLiteral("Nie można otworzyć pliku pomocy: ") + shown +
                                       QStringLiteral(" - brak programu do wyświetlania plików pomocy. "
                                                      "Podręcznik użytkownika (pdf) w menu Pomoc ma tę "
                                                      "samą treść."));
    default:
      return session.messages().refuse(QStringLiteral("Nie można otworzyć pliku pomocy: ") + shown);
  }
}

void openManual(Session& session) {
  const QString path =
      QFileInfo(session.settings().helpFile()).absolutePath() + QStringLiteral("/Tandeko.pdf");
  if (session.shell().openDocument(path) == ShellResult::Done) return;
  session.messages().refuse(QStringLiteral("Aby otworzyć podręcznik użytkownika wymagane jest zainstalowanie "
                                           "przeglądarki Acrobat Reader. Program do pobrania pod adresem: ") +
                            kReaderPage);
}

void openWebPage(Session& session) {
  if (session.shell().openAddress(kWebPage) != ShellResult::Done)
    session.messages().refuse(QStringLiteral("Nie można otworzyć strony: ") + kWebPage);
}

void askQuestion(Session& session) {
  if (!sendQuestion(session))
    session.messages().refuse(QStringLiteral("Nie można uruchomić programu poczty elektronicznej."));
}

// A database that is too damaged to be opened is pointed at.
void repairChosen(Session& session) {
  QString path = session.databasePath();
  if (!session.databaseOpen()) {
    FileChoice choice;
    choice.title = QStringLiteral("Wskaż bazę danych do naprawy");
    choice.folder = session.settings().program().folderDatabases;
    choice.filter = QStringLiteral("Baza danych MS Access (*.mdb)");
    choice.extension = QStringLiteral("mdb");
    path = session.messages().openFile(choice);
  }
  if (!path.isEmpty()) BaseReapir({session}, path);
}

void showAbout(Session& session) {
  session.messages().inform(kProgramName + QStringLiteral("\nWersja ") + programVersion().text() +
                                QStringLiteral("\n\nEwidencja wyposażenia pracowników"),
                            QStringLiteral("O programie"));
}

}  // namespace

TextFieldState focusedTextField() {
  const QWidget* focused = QApplication::focusWidget();
  const bool clipboard = !QApplication::clipboard()->text().isEmpty();
  const auto state = [clipboard](bool selected, bool readOnly) {
    return TextFieldState{selected && !readOnly, selected, clipboard && !readOnly};
  };
  if (const auto* line = qobject_cast<const QLineEdit*>(focused))
    return state(line->hasSelectedText() && line->echoMode() == QLineEdit::Normal, line->isReadOnly());
  if (const auto* text = qobject_cast<const QPlainTextEdit*>(focused))
    return state(text->textCursor().hasSelection(), text->isReadOnly());
  if (const auto* text = qobject_cast<const QTextEdit*>(focused))
    return state(text->textCursor().hasSelection(), text->isReadOnly());
  return {};
}

QMap<QString, std::function<void()>> menuHandlers(Session& session, mdiMenu& window) {
  const auto dialog = [&session, &window](auto make) {
    return [&session, &window, make] {
      guarded(session, "mdiMenu", [&] { make()->exec(); });
      window.updateCommands();
    };
  };
  const auto upkeep = [&session, &window](auto work) {
    return [&session, &window, work] {
      const QString path = session.databasePath();
      work(path);
      window.desk().follow(path);
    };
  };
  return {
      {QStringLiteral("mnuBazaOtworz"), [&window] { window.desk().chooseFile(); }},
      {QStringLiteral("mnuNarzOdtworz"),
       upkeep([&session](const QString& path) { BaseFromArchiw({session}, path); })},
      {QStringLiteral("mnuNarzArchiw"),
       upkeep([&session](const QString&) { maintainOpenDatabase({session}, Upkeep::Copy); })},
      {QStringLiteral("mnuNarzZapisz"),
       upkeep([&session](const QString& path) { BaseSaveAs({session}, path); })},
      {QStringLiteral("mnuNarzDefrag"),
       upkeep([&session](const QString&) { maintainOpenDatabase({session}, Upkeep::Compact); })},
      {QStringLiteral("mnuNarzNapraw"), upkeep([&session](const QString&) { repairChosen(session); })},
      {QStringLiteral("mnuNarzFundamo"),
       [&session] { startPackageProgram(session, QStringLiteral("Fundamo")); }},
      {QStringLiteral("mnuBazaLista"),
       dialog([&session, &window] { return std::make_unique<dlgBazaRejestr>(session, &window); })},
      {QStringLiteral("mnuBazaZab"), upkeep([&session, &window](const QString&) {
         guarded(session, "dlgBazaWlas", [&] { dlgBazaWlas(session, &window).exec(); });
       })},
      {QStringLiteral("mnuNarzZmienUzyt"), [&window] { window.desk().changeUser(); }},
      {QStringLiteral("mnuZakoncz"), [&window] { window.close(); }},
      {QStringLiteral("mnuEdycjaWytnij"), [] { callOnTextField("cut"); }},
      {QStringLiteral("mnuEdycjaKopiuj"), [] { callOnTextField("copy"); }},
      {QStringLiteral("mnuEdycjaWklej"), [] { callOnTextField("paste"); }},
      {QStringLiteral("mnuParPakiet"),
       dialog([&session, &window] { return std::make_unique<dlgParPakiet>(session, &window); })},
      {QStringLiteral("mnuNarzKreRejestr"), [&session] { runRegisterWizard(session); }},
      {QStringLiteral("mnuNarzWersja"),
       [&session] { startPackageProgram(session, QStringLiteral("Update")); }},
      {QStringLiteral("mnuOknoKaskada"), [&window] { window.children().arrangeCascaded(); }},
      {QStringLiteral("mnuOknoPoziomo"), [&window] { window.children().arrangeRows(); }},
      {QStringLiteral("mnuOknoPionowo"), [&window] { window.children().arrangeColumns(); }},
      {QStringLiteral("mnuOknoUporzadkuj"), [&window] { window.children().arrangeIcons(); }},
      {QStringLiteral("mnuPomocSpis"), [&session] { openHelp(session, HelpView::Contents); }},
      {QStringLiteral("mnuPomocIndeks"), [&session] { openHelp(session, HelpView::Index); }},
      {QStringLiteral("mnuPomocPodrecznik"), [&session] { openManual(session); }},
      {QStringLiteral("mnuPomocInternet"), [&session] { openWebPage(session); }},
      {QStringLiteral("mnuPomocPytanie"), [&session] { askQuestion(session); }},
      {QStringLiteral("mnuPomocOprog"), [&session] { showAbout(session); }},
  };
}

}  // namespace tandeko
