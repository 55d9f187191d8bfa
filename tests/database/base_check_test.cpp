#include "database/base_check.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

#include "database/base_list.h"
#include "database/dlgBazaRejestr.h"
#include "database/handy_list.h"
#include "database/structure_update.h"
#include "support/dialogs.h"
#include "support/recorded_frame.h"
#include "support/test_database.h"
#include "users/dlgBazaHaslo.h"

using namespace tandeko;

namespace {

struct Checking : testing::Test, TestSession {
  QString path = file(QStringLiteral("firma.mdb"));
  QString shown = QDir::toNativeSeparators(path);

  BaseCheckResult check() { return BaseCheck(session, path, {}); }
  void expectRefusal(const QString& text, Icon icon, const QString& title = {}) {
    const Message message = messages.takeOnly();
    EXPECT_EQ(message.text, text);
    EXPECT_EQ(message.icon, icon);
    EXPECT_EQ(message.title, title);
  }
  // Someone has opened the database again: nothing was left open.
  void expectFree() {
    jet::Workspace workspace;
    jet::Workspace::OpenOptions options;
    options.exclusive = true;
    EXPECT_NO_THROW(workspace.openDatabase(toPath(path), options));
  }
};

}  // namespace

TEST_F(Checking, AGoodDatabasePasses) {
  makeDatabase(path);
  session.settings().store(QStringLiteral("Uzytkownik"), QStringLiteral("JN"));
  const BaseCheckResult result = check();
  EXPECT_TRUE(result.ok);
  EXPECT_EQ(result.user, QStringLiteral("JN"));
  EXPECT_FALSE(result.readOnly);
  EXPECT_FALSE(session.readOnlyForced());
  EXPECT_TRUE(messages.shown.empty());
  expectFree();
}

TEST_F(Checking, ADatabaseCanAskToBeOpenedReadOnly) {
  makeDatabase(path);
  runOn(path, QStringLiteral("INSERT INTO dbpar (Indpar, Wartosc) VALUES ('BaseReadOnly', '1')"));
  EXPECT_TRUE(check().readOnly);
  EXPECT_TRUE(session.readOnlyForced());
  EXPECT_TRUE(session.BaseConnect(path, {}, false, false));
  EXPECT_TRUE(session.database().readOnly());
}

TEST_F(Checking, CallersChooseWhatIsShown) {
  makeDatabase(path);
  RecordedFrame frame;
  session.setFrame(&frame);
  EXPECT_TRUE(BaseCheck(session, path, {}, {.askToUpdate = true, .reportNames = true, .quiet = true}).ok);
  EXPECT_EQ(frame.status, (QStringList{QStringLiteral("Sprawdzanie bazy firma.mdb..."), QString()}));
  EXPECT_TRUE(messages.shown.empty());
  EXPECT_TRUE(BaseCheck(session, path, {}, {.askToUpdate = true, .reportNames = false, .quiet = false}).ok);
  EXPECT_EQ(frame.status.size(), 2);
  const ProgramVersion version = programVersion();
  expectRefusal(
      QStringLiteral("Baza: %1 posiada strukturę danych programu: Tandeko w wersji: %2.%3. Baza może "
                     "zostać otwarta.")
          .arg(shown)
          .arg(version.major)
          .arg(version.minor),
      Icon::Information);
  runOn(path, QStringLiteral("UPDATE dbprg SET VerMajor = 0"));
  EXPECT_FALSE(BaseCheck(session, path, {}, {.askToUpdate = false, .reportNames = false, .quiet = true}).ok);
  EXPECT_TRUE(messages.shown.empty()) << "no question about the structure";
  session.setFrame(nullptr);
}

TEST_F(Checking, HeldExclusivelyByAnother) {
  makeDatabase(path);
  jet::Workspace other;
  jet::Workspace::OpenOptions options;
  options.exclusive = true;
  const auto held = other.openDatabase(toPath(path), options);
  EXPECT_FALSE(check().ok);
  expectRefusal(
      QStringLiteral("Baza: ") + shown +
          QStringLiteral(" została otwarta w trybie wyłączności przez innego użytkownika. W tej sesji baza "
                         "nie zostanie dołączona do listy podręcznej. Możesz otworzyć bazę później "
                         "wybierając z menu Baza polecenie Otwórz."),
      Icon::Exclamation, QStringLiteral("Błąd otwarcia bazy"));
}

TEST_F(Checking, NotADatabase) {
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("to nie jest baza");
  file.close();
  EXPECT_FALSE(check().ok);
  ASSERT_EQ(failures.failures.size(), 1u);
  EXPECT_EQ(failures.failures[0].procedure, QStringLiteral("BaseCheck"));
  EXPECT_EQ(failures.failures[0].kind(), QStringLiteral("DAO"));
}

TEST_F(Checking, WithoutTheProgramsTables) {
  makeDatabase(path);
  runOn(path, QStringLiteral("DELETE FROM dbprg"));
  EXPECT_FALSE(check().ok);
  expectRefusal(
      QStringLiteral("Baza: ") + shown +
          QStringLiteral(" nie posiada struktury danych programu: Tandeko. Baza nie może zostać otwarta. "
                         "Jeżeli chcesz dodać bazę do podręcznej listy baz użyj polecenia Podręczna lista "
                         "baz z menu Baza."),
      Icon::Exclamation);
  runOn(path, QStringLiteral("DROP TABLE dboso"));
  EXPECT_FALSE(check().ok);
  expectRefusal(
      QStringLiteral("Baza: ") + shown +
          QStringLiteral(" lub tabela została otwarta w trybie wyłączności przez innego użytkownika. "
                         "Program nie może zidentyfikować struktury bazy. Baza nie zostanie dołączona do "
                         "listy podręcznej."),
      Icon::Information);
  runOn(path, QStringLiteral("DROP TABLE dbprg"));
  EXPECT_FALSE(check().ok);
  expectRefusal(
      QStringLiteral("Baza: ") + shown +
          QStringLiteral(" nie posiada struktury danych dla programu: Tandeko. Baza nie może zostać "
                         "otwarta. Program może otworzyć tylko bazy utworzone przez program Fundamo bazy."),
      Icon::Exclamation);
  expectFree();
}

TEST_F(Checking, PasswordIsAskedAndMayBeKept) {
  makeDatabase(path, programVersion().major, programVersion().minor, QStringLiteral("sezam"));
  const auto type = [](const QString& password, bool keep) {
    onDialog<dlgBazaHaslo>([password, keep](dlgBazaHaslo& dialog) {
      EXPECT_EQ(dialog.windowTitle(), QStringLiteral("firma"));
      child<QPushButton>(dialog, "cmdOK")->click();  // nothing typed yet
      EXPECT_TRUE(dialog.isVisible());
      if (password.isEmpty()) return dialog.reject();
      child<QLineEdit>(dialog, "txtHaslo")->setText(password);
      child<QCheckBox>(dialog, "cbZapisz")->setChecked(keep);
      child<QPushButton>(dialog, "cmdOK")->click();
    });
  };
  type(QStringLiteral("sezam"), true);
  const BaseCheckResult result = check();
  EXPECT_TRUE(result.ok);
  EXPECT_EQ(result.password, QStringLiteral("sezam"));
  EXPECT_TRUE(result.keepPassword);
  expectRefusal(QStringLiteral("Wprowadź haslo dostępu do bazy lub naciśnij Anuluj."), Icon::Exclamation);
  EXPECT_TRUE(BaseCheck(session, path, QStringLiteral("sezam")).ok) << "the right password asks nothing";

  type({}, false);
  EXPECT_FALSE(check().ok);
  ASSERT_EQ(messages.shown.size(), 2u);
  EXPECT_EQ(
      messages.shown[1].text,
      QStringLiteral("Błąd otwarcia bazy danych: ") + shown +
          QStringLiteral(" - sprawdź czy hasło zostało wprowadzone poprawnie. W tej sesji baza nie zostanie "
                         "dołączona do listy podręcznej. Możesz otworzyć bazę później wybierając z menu Baza "
                         "polecenie Otwórz lub uruchamiając program ponownie."));
  EXPECT_EQ(messages.shown[1].icon, Icon::Exclamation);
  EXPECT_EQ(messages.shown[1].title, QStringLiteral("Błąd otwarcia bazy"));
}

namespace {

struct Upgrading : Checking {
  Upgrading() {
    session.settings().store(QStringLiteral("Folder pakiet"), folder.path());
    session.settings().load();
    QFile tool(file(structureToolFile()));
    EXPECT_TRUE(tool.open(QIODevice::WriteOnly));
    makeDatabase(path, 0, 9);
  }
  // The tool answers "Ok" and has, or has not, upgraded the file.
  void toolAnswers(bool upgrades) {
    shell.onStart = [this, upgrades](const QString&, const QStringList& arguments) {
      EXPECT_EQ(arguments, QStringList{QStringLiteral("A|") + path});
      if (upgrades)
        runOn(path, QStringLiteral("UPDATE dbprg SET VerMajor = %1, VerMinor = %2")
                        .arg(programVersion().major)
                        .arg(programVersion().minor));
      registry.write(kStructureToolKey, QStringLiteral("Aktualizacja status"), QStringLiteral("Ok"));
    };
  }
};

}  // namespace

TEST_F(Upgrading, TheUserDecides) {
  messages.answers = {Answer::No};
  EXPECT_FALSE(check().ok);
  const Message question = messages.takeOnly();
  const ProgramVersion version = programVersion();
  EXPECT_EQ(question.text,
            QStringLiteral("Baza: ") + shown +
                QStringLiteral(
                    " posiada strukturę danych w wersji: 0.9. Wymagana jest struktura bazy w wersji: %1.%2. "
                    "Aktualizacja struktury może trwać od kilku sekund do kilkunastu minut. Nie należy jej "
                    "przerywać. Chcesz aktualizować strukture bazy teraz?")
                    .arg(version.major)
                    .arg(version.minor));
  EXPECT_EQ(question.title, QStringLiteral("Błąd weryfikacji struktury bazy"));
  EXPECT_EQ(question.icon, Icon::Exclamation);
  EXPECT_EQ(question.buttons, Buttons::YesNo);
  EXPECT_EQ(question.defaultButton, Answer::Yes);
  EXPECT_TRUE(shell.started.isEmpty());
  expectFree();
}

TEST_F(Upgrading, AnUpgradedDatabasePasses) {
  messages.answers = {Answer::Yes};
  toolAnswers(true);
  EXPECT_TRUE(check().ok);
  EXPECT_EQ(messages.shown.size(), 1u);
}

TEST_F(Upgrading, AToolThatChangedNothingIsFoundOut) {
  messages.answers = {Answer::Yes};
  toolAnswers(false);
  EXPECT_FALSE(check().ok);
  ASSERT_EQ(messages.shown.size(), 2u);
  EXPECT_EQ(messages.shown[1].text,
            QStringLiteral("Struktura bazy: firma.mdb  nie została zaktualizowana. Sprawdź "
                           "wersję pliku: Tandeko.stb"));
  EXPECT_EQ(messages.shown[1].icon, Icon::Critical);
}

TEST_F(Upgrading, AToolThatFailsIsTold) {
  messages.answers = {Answer::Yes};
  shell.onStart = [this](const QString&, const QStringList&) {
    registry.write(kStructureToolKey, QStringLiteral("Aktualizacja status"), QStringLiteral("Error"));
  };
  EXPECT_FALSE(check().ok);
  ASSERT_EQ(messages.shown.size(), 2u);
  EXPECT_TRUE(
      messages.shown[1].text.startsWith(QStringLiteral("Aktualizacja bazy: firma.mdb nie powiodła się.")));
  expectFree();
}

TEST_F(Checking, ListReadingSelectsTheDatabaseOfTheLastSession) {
  for (const QString& name : {QStringLiteral("a.mdb"), QStringLiteral("b.mdb"), QStringLiteral("c.mdb")}) {
    makeDatabase(file(name));
    handyAdd(session, file(name));
  }
  runOn(file(QStringLiteral("c.mdb")), QStringLiteral("DELETE FROM dbprg"));
  const struct {
    QString last;
    bool chosen;
    QString selected;
  } cases[] = {{QStringLiteral("b.mdb"), true, QStringLiteral("b.mdb")},
               {QString(), true, QStringLiteral("a.mdb")},
               {QStringLiteral("c.mdb"), false, QString()}};
  for (const auto& c : cases) {
    session.settings().SettingSet(QStringLiteral("Baza"), c.last);
    Catalogue catalogue;
    QComboBox combo;
    QStringList maintained;
    EXPECT_EQ(BaseListRead(session, catalogue, combo,
                           [&](const CatalogueEntry& entry) { maintained << entry.name; }),
              c.chosen);
    EXPECT_EQ(combo.currentText(), c.selected);
    EXPECT_EQ(combo.count(), 2) << "the refused database is not offered";
    EXPECT_EQ(maintained, (QStringList{QStringLiteral("a.mdb"), QStringLiteral("b.mdb")}));
  }
}

TEST_F(Checking, AReplicaStandsInForAnUnreachableSource) {
  const QString key = handyKey(QStringLiteral("x.mdb"));
  makeDatabase(file(QStringLiteral("Replika x.mdb")));
  for (const auto& [name, value] :
       {std::pair("Folder", QStringLiteral("/nie/ma")), std::pair("Aktywna", QStringLiteral("1")),
        std::pair("Replika", QStringLiteral("1")), std::pair("Replika otworz", QStringLiteral("1")),
        std::pair("Replika folder", folder.path())})
    registry.write(key, QLatin1String(name), value);
  Catalogue catalogue;
  QComboBox combo;
  EXPECT_TRUE(BaseListRead(session, catalogue, combo));
  EXPECT_EQ(combo.currentText(), QStringLiteral("Replika x.mdb"));
  EXPECT_TRUE(messages.shown.empty());
}

TEST_F(Checking, AChosenFileIsOfferedToTheList) {
  makeDatabase(path);
  session.settings().load();
  messages.files = {path, path};
  messages.answers = {Answer::Yes};
  EXPECT_EQ(chooseDatabase(session).name, QStringLiteral("firma.mdb"));
  ASSERT_EQ(messages.choices.size(), 1u);
  EXPECT_EQ(messages.choices[0].title, QStringLiteral("Wskaż bazę danych programu Tandeko"));
  const Message question = messages.takeOnly();
  EXPECT_EQ(question.text, QStringLiteral("Dodać bazę: firma.mdb do podręcznej listy baz?"));
  EXPECT_EQ(question.icon, Icon::Question);
  EXPECT_EQ(question.defaultButton, Answer::Yes);
  EXPECT_TRUE(handyEntryOf(session, path).has_value());
  EXPECT_FALSE(chooseDatabase(session).path.isEmpty());
  EXPECT_TRUE(messages.shown.empty()) << "a listed file is not offered again";
  EXPECT_TRUE(chooseDatabase(session).path.isEmpty()) << "cancelled";
}

TEST_F(Checking, HandyListDialogAddsDeactivatesAndRemoves) {
  makeDatabase(path);
  dlgBazaRejestr dialog(session, nullptr);
  auto* list = child<QTreeWidget>(dialog, "lstBazy");
  messages.files = {path};
  child<QPushButton>(dialog, "cmdDodaj")->click();
  ASSERT_EQ(list->topLevelItemCount(), 1);
  EXPECT_EQ(list->topLevelItem(0)->text(0), QStringLiteral("firma.mdb"));
  EXPECT_EQ(list->topLevelItem(0)->text(2), QStringLiteral("Aktywna"));
  runOn(path, QStringLiteral("INSERT INTO dbpar (Indpar, Wartosc) VALUES ('BaseReadOnly', '1')"));
  child<QPushButton>(dialog, "cmdSprawdz")->click();
  EXPECT_TRUE(messages.takeOnly().text.contains(QStringLiteral("Baza może zostać otwarta.")));
  EXPECT_FALSE(session.readOnlyForced()) << "it is not the database that is worked with";
  child<QCheckBox>(dialog, "cbAktywna")->click();
  EXPECT_EQ(list->topLevelItem(0)->text(2), QStringLiteral("Nieaktywna"));
  EXPECT_FALSE(handyList(session)[0].active);
  child<QPushButton>(dialog, "cmdUsun")->click();
  EXPECT_EQ(list->topLevelItemCount(), 1) << "No is the default";
  messages.answers = {Answer::Yes};
  child<QPushButton>(dialog, "cmdUsun")->click();
  EXPECT_EQ(list->topLevelItemCount(), 0);
  EXPECT_TRUE(QFile::exists(path));
}
