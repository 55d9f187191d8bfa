#include "database/dlgBazaWlas.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTabWidget>
#include <QTreeWidget>

#include "database/handy_list.h"
#include "support/dialogs.h"
#include "support/test_database.h"

using namespace tandeko;

namespace {

struct Properties : testing::Test, DatabaseSession {
  Properties() {
    session.settings().store(QStringLiteral("Folder roboczy"), folder.path());
    session.settings().load();
    addUser(QStringLiteral("AD"), true);
    handyAdd(session, path);
  }
  void open() { dialog = std::make_unique<dlgBazaWlas>(session, nullptr); }
  QString text(const char* name) { return child<QLineEdit>(*dialog, name)->text(); }
  void type(const char* name, const QString& value) { child<QLineEdit>(*dialog, name)->setText(value); }
  QCheckBox* box(const char* name) { return child<QCheckBox>(*dialog, name); }
  void click(const char* name) { child<QPushButton>(*dialog, name)->click(); }
  QString stored(const char16_t* name, const QString& subkey = QStringLiteral("firma.mdb")) {
    return registry.read(handyKey(subkey), QString::fromUtf16(name), QStringLiteral("(brak)"));
  }
  void store(const char16_t* name, const QString& value) {
    registry.write(handyKey(QStringLiteral("firma.mdb")), QString::fromUtf16(name), value);
  }

  std::unique_ptr<dlgBazaWlas> dialog;
};

}  // namespace

TEST_F(Properties, TellWhatTheDatabaseIs) {
  open();
  EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Właściwości bazy: firma"));
  EXPECT_EQ(text("txtSciezka"), QDir::toNativeSeparators(path));
  EXPECT_EQ(text("txtWersja"),
            QStringLiteral("%1.%2").arg(programVersion().major).arg(programVersion().minor));
  EXPECT_EQ(text("txtSortowanie"), QStringLiteral("polski"));
  EXPECT_TRUE(text("txtRozmiar").contains(QStringLiteral("bajtów")));
  EXPECT_TRUE(text("txtUtworzona").contains(QString::number(QDate::currentDate().year())));
  auto* rows = child<QTreeWidget>(*dialog, "lstTabele");
  ASSERT_EQ(rows->findItems(QStringLiteral("Użytkownicy"), Qt::MatchExactly).size(), 1);
  EXPECT_EQ(rows->findItems(QStringLiteral("Użytkownicy"), Qt::MatchExactly)[0]->text(1),
            QStringLiteral("1"));

  auto* users = child<QListWidget>(*dialog, "lstUzytkownicy");
  EXPECT_EQ(users->count(), 1) << "this copy";
  jet::Workspace workspace;
  auto elsewhere = workspace.openDatabase(toPath(path));
  click("cmdOdswiez");
  EXPECT_EQ(users->count(), 2);
  elsewhere.reset();
  click("cmdOdswiez");
  EXPECT_EQ(users->count(), 1);
}

TEST_F(Properties, ScheduleIsReadAndWrittenOnOk) {
  store(u"Defragmentacja", QStringLiteral("1"));
  store(u"Defragmentacja data", QStringLiteral("2.03.2024"));
  store(u"Kopia co dni", QStringLiteral("7"));
  store(u"Kopia dzienna", QStringLiteral("1"));
  open();
  EXPECT_TRUE(box("cbDefrag")->isChecked());
  EXPECT_FALSE(box("cbKopia")->isChecked());
  EXPECT_TRUE(box("cbKopiadzien")->isChecked());
  EXPECT_EQ(text("txtDefragDni"), QStringLiteral("30"));
  EXPECT_EQ(text("txtDefragData"), QStringLiteral("2.03.2024"));
  EXPECT_EQ(text("txtKopiadni"), QStringLiteral("7"));

  box("cbKopia")->setChecked(true);
  box("cbKopiaPot")->setChecked(true);
  box("cbDefrag")->setChecked(false);
  box("cbKopiadzien")->setChecked(false);
  type("txtKopiadni", QStringLiteral("0"));
  click("cmbOk");
  EXPECT_EQ(messages.takeOnly().text, QStringLiteral("Wprowadź liczbę dni, nie mniejszą niż 1."));
  EXPECT_EQ(stored(u"Kopia"), QStringLiteral("0")) << "nothing is written by halves";
  type("txtKopiadni", QStringLiteral("5"));
  messages.files = {folder.path()};
  click("cmdKopiaFolder");
  EXPECT_EQ(messages.choices.back().title, QStringLiteral("Wybierz folder"));
  click("cmbOk");
  EXPECT_EQ(dialog->result(), QDialog::Accepted);
  EXPECT_EQ(stored(u"Kopia"), QStringLiteral("1"));
  EXPECT_EQ(stored(u"Kopia potwierdz"), QStringLiteral("1"));
  EXPECT_EQ(stored(u"Kopia co dni"), QStringLiteral("5"));
  EXPECT_EQ(stored(u"Kopia dzienna"), QStringLiteral("0"));
  EXPECT_EQ(stored(u"Kopia folder"), QDir::toNativeSeparators(folder.path()));
  EXPECT_EQ(stored(u"Defragmentacja"), QStringLiteral("0"));
  EXPECT_EQ(stored(u"Defragmentacja data"), QStringLiteral("2.03.2024"));
}

TEST_F(Properties, CancellingWritesNothing) {
  const QByteArray before = registry.toBytes();
  open();
  box("cbKopia")->setChecked(true);
  click("cmdAnuluj");
  EXPECT_EQ(registry.toBytes(), before);
}

TEST_F(Properties, AnUnlistedDatabaseCanBeAdded) {
  handyRemove(session, QStringLiteral("firma.mdb"));
  open();
  EXPECT_FALSE(box("cbKopia")->isEnabled());
  click("cmbOk");
  EXPECT_FALSE(registry.hasKey(handyKey(QStringLiteral("firma.mdb"))));
  click("cmdDodaj");
  EXPECT_TRUE(box("cbKopia")->isEnabled());
  EXPECT_EQ(stored(u"Aktywna"), QStringLiteral("1"));
}

TEST_F(Properties, ButtonsRunAtOnceByWhatTheTabShows) {
  open();
  messages.files = {folder.path()};
  click("cmdKopiaFolder");
  messages.answers = {Answer::Yes};
  click("cmdKopiuj");
  EXPECT_TRUE(QFile::exists(file(QStringLiteral("Kopia firma.mdb"))));
  EXPECT_EQ(text("txtKopiaData"), stored(u"Kopia data"));
  EXPECT_FALSE(text("txtKopiaData").isEmpty());
  messages.answers = {Answer::Yes};
  click("cmbDefrag");
  EXPECT_TRUE(QFile::exists(file(QStringLiteral("firma przed defrag.mdb"))));
  EXPECT_FALSE(text("txtDefragData").isEmpty());
  EXPECT_TRUE(session.databaseOpen());
}

TEST_F(Properties, RenameAsksForTheName) {
  open();
  messages.answers = {Answer::Yes};
  messages.files = {QStringLiteral("a/b")};
  click("cmdZmienNazwe");
  ASSERT_EQ(messages.shown.size(), 2u);
  EXPECT_EQ(
      messages.shown[0].text,
      QStringLiteral("Aby zmienić nazwę bazy wymagane jest zamknięcie wszystkich okien programu. Zamknąć "
                     "okna i kontynuować?"));
  EXPECT_EQ(messages.shown[0].title, QStringLiteral("Komunikat"));
  EXPECT_EQ(messages.shown[0].icon, Icon::Question);
  EXPECT_EQ(messages.choices.back().title, QStringLiteral("Zmiana nazwy bazy danych"));
  EXPECT_EQ(messages.choices.back().folder, QStringLiteral("Podaj nazwę bazy danych"));
  EXPECT_EQ(messages.choices.back().fileName, QStringLiteral("firma"));
  EXPECT_EQ(session.databasePath(), path);
  messages.answers = {Answer::Yes};
  messages.files = {QStringLiteral("Łódź.mdb")};
  click("cmdZmienNazwe");
  EXPECT_EQ(session.databasePath(), file(QStringLiteral("Łódź.mdb")));
  EXPECT_EQ(text("txtNazwa"), QStringLiteral("Łódź"));
}

TEST_F(Properties, PasswordNeedsTheOldOneAndTwiceTheNew) {
  open();
  type("txtHasloNowe", QStringLiteral("nowe"));
  click("cmdZmienHaslo");
  EXPECT_EQ(messages.takeOnly().text,
            QStringLiteral(
                "Hasła wprowadzone w polach: 'Wprowadź' i 'Potwierdź' muszą być identyczne. Popraw hasło "
                "i spróbuj ponownie."));
  type("txtHasloPotwierdz", QStringLiteral("nowe"));
  click("cmdZmienHaslo");
  EXPECT_EQ(session.databasePassword(), QStringLiteral("nowe"));
  messages.shown.clear();
  type("txtHaslo", QStringLiteral("złe"));
  click("cmdZmienHaslo");
  EXPECT_EQ(messages.takeOnly().text, QStringLiteral("Błędne dotychczasowe hasło bazy."));
  type("txtHaslo", QStringLiteral("nowe"));
  click("cmdZmienHaslo");
  EXPECT_EQ(messages.takeOnly().text, QStringLiteral("Hasło bazy zostało zmienione."));
  EXPECT_EQ(session.databasePassword(), QString());
}
