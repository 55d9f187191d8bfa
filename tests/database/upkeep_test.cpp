// The operations on the open database as the user sees them: questions, texts, titles, icons, what is in the
// registry and in the folders afterwards.

#include "database/upkeep.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QPushButton>
#include <QTreeWidget>

#include "database/copy_choice.h"
#include "database/handy_list.h"
#include "database/repair_report.h"
#include "database/upkeep_names.h"
#include "database/work_window.h"
#include "jet/format/error.h"
#include "support/dialogs.h"
#include "support/test_database.h"

using namespace tandeko;

namespace {

struct UpkeepTest : testing::Test, DatabaseSession {
  UpkeepTest() {
    QDir(folder.path()).mkpath(QStringLiteral("praca"));
    QDir(folder.path()).mkpath(QStringLiteral("kopie"));
    session.settings().store(QStringLiteral("Folder roboczy"), file(QStringLiteral("praca")));
    session.settings().store(QStringLiteral("Folder archiwum"), file(QStringLiteral("kopie")));
    session.settings().load();
    handyAdd(session, path);
    addUser(QStringLiteral("AD"), true);
  }

  QString stored(const char16_t* name, const QString& subkey = QStringLiteral("firma.mdb")) {
    return registry.read(handyKey(subkey), QString::fromUtf16(name), QStringLiteral("(brak)"));
  }
  void store(const char16_t* name, const QString& value) {
    registry.write(handyKey(QStringLiteral("firma.mdb")), QString::fromUtf16(name), value);
  }
  QStringList filesIn(const QString& where) { return QDir(file(where)).entryList(QDir::Files, QDir::Name); }
  void maintain(Upkeep kind) { maintainOpenDatabase({session}, kind); }

  static void expectMessage(const Message& message, const QString& title, const QString& text, Icon icon) {
    EXPECT_EQ(message.title, title);
    EXPECT_EQ(message.text, text);
    EXPECT_EQ(message.icon, icon);
  }
  // Somebody else has the database open meanwhile.
  std::unique_ptr<jet::Database> openElsewhere() { return elsewhere_.openDatabase(toPath(path)); }

 private:
  jet::Workspace elsewhere_;
};

}  // namespace

TEST_F(UpkeepTest, CompactingOnDemandAsksAndTellsSuccess) {
  messages.answers = {Answer::Yes};
  maintain(Upkeep::Compact);
  ASSERT_EQ(messages.shown.size(), 2u);
  expectMessage(
      messages.shown[0], QStringLiteral("Defragmentacja bazy"),
      QStringLiteral("Wykonana zostanie defragmentacja bazy: firma. Ostatni raz defragmentacja została "
                     "wykonana: ?. Wykonać defragmentację teraz?"),
      Icon::Question);
  EXPECT_EQ(messages.shown[0].defaultButton, Answer::No);
  expectMessage(messages.shown[1], QStringLiteral("Sukces"),
                QStringLiteral("Defragmentacja bazy: firma została wykonana pomyślnie."), Icon::Information);
  EXPECT_EQ(filesIn(QStringLiteral("praca")), QStringList{QStringLiteral("firma przed defrag.mdb")});
  EXPECT_EQ(dateOfText(stored(u"Defragmentacja data"))->date(), clock.today());
  ASSERT_TRUE(session.databaseOpen());
  EXPECT_EQ(value(QStringLiteral("SELECT Nazwisko FROM dboso")), QStringLiteral("Nowak"));
}

TEST_F(UpkeepTest, SayingNoLeavesEverythingOpen) {
  for (const Upkeep kind : {Upkeep::Compact, Upkeep::Copy}) maintain(kind);
  EXPECT_EQ(messages.shown.size(), 2u);
  EXPECT_TRUE(session.databaseOpen());
  EXPECT_EQ(stored(u"Kopia data"), QString());
  EXPECT_TRUE(filesIn(QStringLiteral("kopie")).isEmpty());
}

TEST_F(UpkeepTest, CopiesKeepTheirNamesAndOneADay) {
  store(u"Kopia dzienna", QStringLiteral("1"));
  store(u"Kopia data", QStringLiteral("1.03.2024"));
  messages.answers = {Answer::Yes};
  maintain(Upkeep::Copy);
  ASSERT_EQ(messages.shown.size(), 2u);
  expectMessage(
      messages.shown[0], QStringLiteral("Archiwizacja bazy"),
      QStringLiteral("Wykonana zostanie kopia bazy: firma. Ostatni raz kopia została wykonana: 1.03.2024. "
                     "Wykonać kopię teraz?"),
      Icon::Question);
  expectMessage(
      messages.shown[1], QStringLiteral("Sukces"),
      QStringLiteral("Kopia bazy: firma została wykonana poprawnie. Kopia znajduje się w katalogu: ") +
          QDir::toNativeSeparators(file(QStringLiteral("kopie"))),
      Icon::Information);
  const QStringList copies = {QStringLiteral("Kopia firma z dnia 15-03-2024.mdb"),
                              QStringLiteral("Kopia firma.mdb")};
  EXPECT_EQ(filesIn(QStringLiteral("kopie")), copies);
  // A second one on the same day overwrites that day's.
  messages.answers = {Answer::Yes};
  maintain(Upkeep::Copy);
  EXPECT_EQ(filesIn(QStringLiteral("kopie")), copies);
  EXPECT_TRUE(session.databaseOpen());
}

TEST_F(UpkeepTest, AScheduledRunIsSilentUnlessItFailsOrAsks) {
  session.closeDatabase();
  store(u"Kopia", QStringLiteral("1"));
  BaseCopy({session}, path, {}, false);
  EXPECT_TRUE(messages.shown.empty());
  EXPECT_EQ(filesIn(QStringLiteral("kopie")).size(), 1);
  BaseCopy({session}, path, {}, false);
  EXPECT_EQ(filesIn(QStringLiteral("kopie")).size(), 1);
  BaseDefrag({session}, path, {}, false);
  EXPECT_TRUE(filesIn(QStringLiteral("praca")).isEmpty()) << "its schedule is off";
  clock.moment = clock.moment.addDays(4);
  QDir(file(QStringLiteral("kopie"))).removeRecursively();
  BaseCopy({session}, path, {}, false);
  expectMessage(
      messages.takeOnly(), QStringLiteral("Błąd kopiowania bazy"),
      QStringLiteral("Kopiowanie bazy: firma nie powiodło się. Błąd kopiowania pliku. Sprawdź czy baza nie "
                     "jest otwarta przez innego użytkownika lub program. Sprawdź ilość wolnego miejsca na "
                     "dysku."),
      Icon::Exclamation);
}

TEST_F(UpkeepTest, WithoutAFolderTheCopyPointsToTheProperties) {
  store(u"Kopia folder", QString());
  session.settings().store(QStringLiteral("Folder archiwum"), QString());
  session.settings().load();
  messages.answers = {Answer::Yes};
  maintain(Upkeep::Copy);
  expectMessage(
      messages.shown.back(), QStringLiteral("Błąd kopiowania bazy"),
      QStringLiteral("Ustaw folder kopiowania. Menu Baza, polecenie Właściwości, zakładka Kopia bazy."),
      Icon::Exclamation);
  EXPECT_EQ(stored(u"Kopia data"), QString());
}

TEST_F(UpkeepTest, WhatAnotherUserHasOpenIsLeftAlone) {
  const auto other = openElsewhere();
  const struct {
    Upkeep kind;
    QString title, text;
  } cases[] = {
      {Upkeep::Compact, QStringLiteral("Błąd defragmentacji bazy"),
       QStringLiteral(
           "Defragmentacja bazy: firma nie powiodła się. Błąd kopiowania pliku. Sprawdź czy baza nie jest "
           "otwarta przez innego użytkownika lub program. Sprawdź ilość wolnego miejsca na dysku.")},
      {Upkeep::Copy, QStringLiteral("Błąd kopiowania bazy"),
       QStringLiteral(
           "Kopiowanie bazy: firma nie powiodło się. Błąd kopiowania pliku. Sprawdź czy baza nie jest "
           "otwarta przez innego użytkownika lub program. Sprawdź ilość wolnego miejsca na dysku.")},
  };
  for (const auto& c : cases) {
    messages.answers = {Answer::Yes};
    maintain(c.kind);
    expectMessage(messages.shown.back(), c.title, c.text, Icon::Exclamation);
    EXPECT_TRUE(session.databaseOpen());
  }
}

TEST_F(UpkeepTest, ReopeningThatFailsIsTold) {
  messages.onShow = [this](const Message& message) {
    if (message.title == u"Sukces") QFile::remove(path);
  };
  messages.answers = {Answer::Yes};
  maintain(Upkeep::Copy);
  expectMessage(
      messages.shown.back(), QStringLiteral("Błąd otwarcia bazy"),
      QStringLiteral("Ponowne otwarcie bazy po defragmentacji nie powiodło się. Zamknij i uruchom program "
                     "ponownie."),
      Icon::None);
  EXPECT_FALSE(session.databaseOpen());
}

TEST_F(UpkeepTest, SavingUnderAnotherName) {
  messages.files = {path};
  EXPECT_FALSE(BaseSaveAs({session}, path));
  EXPECT_EQ(messages.choices.back().title, QStringLiteral("Zapisz bazę: firma jako..."));
  expectMessage(messages.takeOnly(), QString(),
                QStringLiteral("Nie można zapisać bazy w miejsce istniejącej bazy: ") + path,
                Icon::Information);
  // Every extension goes, one comes back.
  messages.files = {file(QStringLiteral("x.MDB.mdb"))};
  EXPECT_TRUE(BaseSaveAs({session}, path));
  EXPECT_TRUE(QFile::exists(file(QStringLiteral("x.mdb"))));
  EXPECT_TRUE(messages.shown.empty());
  EXPECT_EQ(session.databasePath(), path);
  messages.files = {file(QStringLiteral("x.mdb"))};
  EXPECT_FALSE(BaseSaveAs({session}, path));
  expectMessage(messages.takeOnly(), QString(),
                QStringLiteral("Plik o nazwie ") + file(QStringLiteral("x.mdb")) +
                    QStringLiteral(" istnieje na dysku. Zastapić istniejący plik?"),
                Icon::None);
  messages.files = {file(QStringLiteral("nie ma/x.mdb"))};
  EXPECT_FALSE(BaseSaveAs({session}, path));
  EXPECT_EQ(
      messages.takeOnly().text,
      QStringLiteral("Błąd kopiowania pliku: nie znaleziono folderu - Aby wykonać kopię bazy wymagane jest "
                     "zamknięcie innych aplikacji korzystających z bazy."));
  EXPECT_TRUE(session.databaseOpen());
}

TEST_F(UpkeepTest, RepairBringsBackADamagedFile) {
  session.closeDatabase();
  QFile damaged(path);
  ASSERT_TRUE(damaged.open(QIODevice::ReadWrite));
  damaged.write(QByteArray(24, '?'));
  damaged.close();
  EXPECT_FALSE(BaseReapir({session}, path)) << "No is the default";
  EXPECT_EQ(messages.takeOnly().text,
            QStringLiteral("Wykonana zostanie próba naprawy bazy danych firma. Naprawić bazę danych?"));
  messages.answers = {Answer::Yes};
  EXPECT_TRUE(BaseReapir({session}, path));
  ASSERT_GE(messages.shown.size(), 2u);
  expectMessage(messages.shown[1], QStringLiteral("Komunikat"),
                QStringLiteral("Operacja naprawy bazy: firma zakończyła się sukcesem."), Icon::Information);
  EXPECT_EQ(filesIn(QStringLiteral("praca")), QStringList{QStringLiteral("firma przed naprawą.mdb")});
  ASSERT_TRUE(session.BaseConnect(path, {}));
  EXPECT_EQ(value(QStringLiteral("SELECT Nazwisko FROM dboso")), QStringLiteral("Nowak"));
}

TEST(RepairReport, SpeaksTheUsersLanguage) {
  EXPECT_EQ(
      lossesText({QStringLiteral("table ewkar: 3 rows lost"), QStringLiteral("properties of swpra lost"),
                  QStringLiteral("the sort order of the file is not known, it is the General one now")}),
      QStringLiteral("Tabela ewkar: liczba utraconych wierszy: 3\nUtracone właściwości: swpra\nPorządek "
                     "sortowania pliku jest "
                     "nieznany: odtąd jest w nim porządek ogólny"));
  EXPECT_TRUE(lossesText(QStringList(20, QStringLiteral("x"))).endsWith(QStringLiteral("... i jeszcze: 8")));
}

TEST_F(UpkeepTest, RenamingCarriesTheRegistryValues) {
  EXPECT_FALSE(BaseRename({session}, path, QStringLiteral("firma"), folder.path())) << "the same name";
  EXPECT_TRUE(messages.shown.empty());
  store(u"Kopia co dni", QStringLiteral("9"));
  store(u"Kopia data", QStringLiteral("1.03.2024"));
  store(u"Kopia dzienna", QStringLiteral("1"));
  registry.removeValue(handyKey(QStringLiteral("firma.mdb")), QStringLiteral("Defragmentacja co dni"));
  handyKeepPassword(session, QStringLiteral("firma.mdb"), QStringLiteral("tajne"));
  // An entry of the new name is that of the file which goes.
  registry.write(handyKey(QStringLiteral("nowa")), QStringLiteral("Kopia data"), QStringLiteral("2.03.2024"));
  EXPECT_TRUE(BaseRename({session}, path, QStringLiteral("nowa"), folder.path()));
  EXPECT_TRUE(messages.shown.empty());
  EXPECT_FALSE(QFile::exists(path));
  EXPECT_EQ(session.databasePath(), file(QStringLiteral("nowa.mdb")));
  EXPECT_EQ(registry.subkeys(kDatabasesKey), QStringList{QStringLiteral("nowa.mdb")});
  const QString name = QStringLiteral("nowa.mdb");
  EXPECT_EQ(stored(u"Kopia co dni", name), QStringLiteral("9"));
  EXPECT_EQ(stored(u"Defragmentacja co dni", name), QStringLiteral("30"));
  EXPECT_EQ(stored(u"Aktywna", name), QStringLiteral("1"));
  EXPECT_EQ(stored(u"Replika", name), QStringLiteral("0"));
  EXPECT_EQ(handyPassword(session, name), QStringLiteral("tajne"));
  for (const char16_t* left : {u"Kopia data", u"Defragmentacja data", u"Kopia dzienna"})
    EXPECT_EQ(stored(left, name), QStringLiteral("(brak)"));
  EXPECT_EQ(filesIn(QStringLiteral("praca")), QStringList{QStringLiteral("firma przed zmianą nazwy.mdb")});
}

TEST_F(UpkeepTest, RenamingOverAnotherDatabaseAsksFirst) {
  makeDatabase(file(QStringLiteral("stara.mdb")));
  EXPECT_FALSE(BaseRename({session}, path, QStringLiteral("stara"), folder.path()));
  EXPECT_EQ(messages.takeOnly().text,
            QStringLiteral(
                "Baza danych o nazwie: stara istnieje na dysku. Baza może zawierać dane. Zamiana nazwy bazy "
                "spowoduje usunięcie istniejącego pliku bazy. Operacja jest nieodwracalna. Kontynuować?"));
  EXPECT_TRUE(session.databaseOpen());
  // Nor is one replaced in which somebody works.
  jet::Workspace elsewhere;
  const auto other = elsewhere.openDatabase(toPath(file(QStringLiteral("stara.mdb"))));
  messages.answers = {Answer::Yes};
  EXPECT_FALSE(BaseRename({session}, path, QStringLiteral("stara"), folder.path()));
  expectMessage(
      messages.shown.back(), QStringLiteral("Błąd zmiany bazy danych"),
      QStringLiteral("Błąd kopiowania pliku: ") + path +
          QStringLiteral(". Sprawź czy baza nie jest otwarta przez inny program i/lub użytkownika oraz "
                         "ilość wolnego miejsca na dysku."),
      Icon::Exclamation);
  EXPECT_EQ(session.databasePath(), path);
}

TEST_F(UpkeepTest, RestoringPutsTheCurrentVersionAside) {
  const QString copy = file(QStringLiteral("kopie/Kopia firma.mdb"));
  messages.answers = {Answer::Yes};
  maintain(Upkeep::Copy);
  addUser(QStringLiteral("X"), false);
  messages.shown.clear();
  onDialog<dlgBazaKopie>([](dlgBazaKopie& dialog) { child<QPushButton>(dialog, "cmdOdtworz")->click(); });
  messages.answers = {Answer::Yes};
  EXPECT_TRUE(BaseFromArchiw({session}, path));
  const Message question = messages.takeOnly();
  EXPECT_EQ(question.title, QStringLiteral("Komunikat"));
  EXPECT_TRUE(question.text.startsWith(QStringLiteral("Aktualna wersja bazy: ") + path +
                                       QStringLiteral(" zostanie zastąpiona kopią: ") + copy +
                                       QStringLiteral(" z dnia ")));
  EXPECT_TRUE(question.text.endsWith(QStringLiteral(". Zastąpić aktualną wersję bazy kopią?")));
  EXPECT_EQ(value(QStringLiteral("SELECT Count(*) FROM dboso")), QStringLiteral("1"));
  jet::Workspace workspace;
  const auto aside = workspace.openDatabase(toPath(file(QStringLiteral("praca/firma.mdb"))));
  EXPECT_EQ(aside->openRecordset(u"SELECT * FROM dboso WHERE indoso = 'X'")->eof(), false);
}

TEST_F(UpkeepTest, RestoringRefusesWhatCannotBe) {
  const QString copy = file(QStringLiteral("inna.mdb"));
  messages.files = {path};
  EXPECT_FALSE(BaseFromArchiw({session}, path));
  EXPECT_EQ(messages.choices.back().title, QStringLiteral("Odtwórz z kopi: firma"));
  EXPECT_EQ(messages.choices.back().fileName, QStringLiteral("Kopia firma"));
  EXPECT_EQ(messages.takeOnly().text,
            QStringLiteral("Baza archiwalna nie może być aktualną wersją bazy: ") + path);

  // Without a working folder no file is touched.
  QFile::copy(path, copy);
  QDir(file(QStringLiteral("praca"))).removeRecursively();
  messages.files = {copy};
  messages.answers = {Answer::Yes};
  EXPECT_FALSE(BaseFromArchiw({session}, path));
  EXPECT_EQ(
      messages.shown.back().text,
      QStringLiteral("Błędny folder roboczy: ") + file(QStringLiteral("praca")) +
          QStringLiteral(". Ustaw folder roboczy: Menu Narzędzia polecenie Parametry programu, zakładka "
                         "FOldery."));
  EXPECT_TRUE(session.databaseOpen());

  // A file that is no database does not become one.
  QDir(folder.path()).mkpath(QStringLiteral("praca"));
  QFile nonsense(copy);
  ASSERT_TRUE(nonsense.open(QIODevice::WriteOnly));
  nonsense.write("to nie jest baza");
  nonsense.close();
  messages.files = {copy};
  messages.answers = {Answer::Yes};
  EXPECT_FALSE(BaseFromArchiw({session}, path));
  EXPECT_EQ(messages.shown.back().text, QStringLiteral("Błąd kopiowania pliku z archiwum: ") + copy +
                                            QStringLiteral(". Przywrócona zostanie pierwotna wersja bazy."));
  EXPECT_EQ(value(QStringLiteral("SELECT Nazwisko FROM dboso")), QStringLiteral("Nowak"));
}

TEST_F(UpkeepTest, CopiesAreOfferedNewestFirst) {
  int age = 0;
  for (const char16_t* name :
       {u"Kopia firma.mdb", u"Kopia firma z dnia 14-03-2024.mdb", u"Temp Kopia firma.mdb",
        u"Kopia firma z dnia 13-03-2024.mdb", u"Kopia firmament.mdb", u"Kopia firma.txt"}) {
    QFile made(file(QStringLiteral("kopie/") + QString::fromUtf16(name)));
    ASSERT_TRUE(made.open(QIODevice::WriteOnly));
    made.setFileTime(clock.moment.addDays(-age++), QFileDevice::FileModificationTime);
  }
  QStringList names;
  for (const DatabaseCopy& copy : copiesOf(session, path)) names << QFileInfo(copy.path).fileName();
  EXPECT_EQ(names, (QStringList{QStringLiteral("Kopia firma.mdb"),
                                QStringLiteral("Kopia firma z dnia 14-03-2024.mdb"),
                                QStringLiteral("Temp Kopia firma.mdb"),
                                QStringLiteral("Kopia firma z dnia 13-03-2024.mdb")}));
}

TEST_F(UpkeepTest, APasswordGoesAlong) {
  EXPECT_TRUE(changePassword({session}, QStringLiteral("zażółć")));
  EXPECT_EQ(messages.takeOnly().text, QStringLiteral("Hasło bazy zostało zmienione."));
  EXPECT_EQ(session.databasePassword(), QStringLiteral("zażółć"));
  for (const Upkeep kind : {Upkeep::Compact, Upkeep::Copy}) {
    messages.answers = {Answer::Yes};
    maintain(kind);
    EXPECT_EQ(messages.shown.back().title, QStringLiteral("Sukces"));
  }
  ASSERT_TRUE(session.databaseOpen());
  session.closeDatabase();
  EXPECT_FALSE(session.BaseConnect(path, {})) << "the compacted file is protected still";
  EXPECT_FALSE(session.BaseConnect(file(QStringLiteral("kopie/Kopia firma.mdb")), {}));
}

TEST_F(UpkeepTest, LongWorkShowsAWindowThatCallsItOff) {
  // The work goes on until the window's button has called it off.
  onDialog<frmPostep>([](frmPostep& window) { child<QPushButton>(window, "cmdAnuluj")->click(); });
  const auto endless = [](Work& work) {
    for (work.step(QStringLiteral("Kopiowanie..."), 0.5);;
         std::this_thread::sleep_for(std::chrono::milliseconds(5)))
      if (!work.progress()(0.5)) throw jet::Error(3059);
  };
  EXPECT_THROW(runWork(session, QStringLiteral("Kopiowanie bazy"), endless), jet::Error);

  // Past the point of no return it cannot be.
  Work work;
  work.finalStep(QStringLiteral("Kończenie..."), 1);
  EXPECT_FALSE(work.cancel());
  EXPECT_TRUE(work.progress()(1));
  Work called;
  EXPECT_TRUE(called.cancel());
  EXPECT_THROW(called.finalStep(QStringLiteral("Kończenie..."), 1), jet::Error);
}
