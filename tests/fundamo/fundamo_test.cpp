// The structure tool's window, the repair that it offers, and its answers to the program.

#include <gtest/gtest.h>

#include <QFile>
#include <QInputDialog>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>

#include "handover.h"
#include "platform/secret.h"
#include "platform/statements.h"
#include "session/names.h"
#include "structure/create.h"
#include "structure/mend.h"
#include "support/dialogs.h"
#include "support/test_database.h"
#include "window.h"

using namespace tandeko;

namespace {

struct Tool : testing::Test, TestSession {
  Window window{messages};
  QString path = file(QStringLiteral("firma.mdb"));

  void click(const char* button) { child<QPushButton>(window, button)->click(); }
  QString report() { return child<QPlainTextEdit>(window, "txtRaport")->toPlainText(); }
  void makeOld(const QString& password = {}) {
    structure::createDatabase(toPath(path), toU16(password));
    runOn(path, QStringLiteral("DROP TABLE dblnk"), password);
    runOn(path, QStringLiteral("UPDATE dbprg SET VerMinor = 0, VerMajor = 0"), password);
  }
  // The pages of all indexes turned to zeros.
  void damage() {
    QFile damaged(path);
    ASSERT_TRUE(damaged.open(QIODevice::ReadWrite));
    QByteArray bytes = damaged.readAll();
    for (qsizetype at = 4096; at < bytes.size(); at += 4096)
      if (bytes[at] == 4 && bytes[at + 1] == 1) bytes.replace(at, 4096, QByteArray(4096, '\0'));
    damaged.seek(0);
    damaged.write(bytes);
  }
  QStringList copies() {
    return QDir(folder.path()).entryList({QStringLiteral("firma-kopia-*.mdb")}, QDir::Files);
  }
};

}  // namespace

TEST_F(Tool, MakesADatabaseAndRefusesToOverwriteOne) {
  messages.files = {path, path};
  click("cmdUtworz");
  EXPECT_TRUE(messages.shown.empty());
  EXPECT_TRUE(report().contains(QStringLiteral("Utworzono bazę: ")));
  EXPECT_TRUE(session.BaseConnect(path, {}));
  session.closeDatabase();
  click("cmdUtworz");
  const Message refusal = messages.takeOnly();
  EXPECT_EQ(refusal.icon, Icon::Exclamation);
  EXPECT_TRUE(refusal.text.contains(QStringLiteral("taki plik już istnieje"))) << refusal.text.toStdString();
  click("cmdUtworz");  // cancelled
  EXPECT_TRUE(messages.shown.empty());
  EXPECT_EQ(messages.choices.size(), 3u);
}

TEST_F(Tool, BringsAnOlderDatabaseUpToDateAndAsksForItsPassword) {
  makeOld(QStringLiteral("sezam"));
  messages.files = {path};
  onDialog<QInputDialog>([](QInputDialog& dialog) {
    EXPECT_EQ(dialog.windowTitle(), QStringLiteral("firma"));
    EXPECT_EQ(dialog.textEchoMode(), QLineEdit::Password);
    dialog.setTextValue(QStringLiteral("sezam"));
    dialog.accept();
  });
  click("cmdAktualizuj");
  for (const char16_t* line :
       {u"Plik bazy jest nieuszkodzony.", u"Dodano tablicę dblnk", u"Struktura bazy została zaktualizowana."})
    EXPECT_TRUE(report().contains(QString::fromUtf16(line))) << report().toStdString();
  EXPECT_EQ(copies().size(), 1);
  EXPECT_TRUE(messages.shown.empty());
  EXPECT_TRUE(child<QPushButton>(window, "cmdAktualizuj")->isEnabled());
}

TEST_F(Tool, RepairsADamagedDatabase) {
  structure::createDatabase(toPath(path));
  runOn(path, QStringLiteral("INSERT INTO swjed (Indjed, Nazwa) VALUES ('szt', 'Sztuki')"));
  damage();
  messages.files = {path};
  click("cmdAktualizuj");
  for (const char16_t* line :
       {u"Kopia uszkodzonego pliku: ", u"Znaleziono usterek w pliku: ",
        u"Plik bazy został naprawiony, niczego nie utracono.", u"Struktura bazy jest aktualna."})
    EXPECT_TRUE(report().contains(QString::fromUtf16(line))) << report().toStdString();
  EXPECT_TRUE(messages.shown.empty());
  EXPECT_EQ(copies().size(), 1);
  EXPECT_FALSE(structure::mendDatabase(toPath(path)).mended);
  ASSERT_TRUE(session.BaseConnect(path, {}));
  EXPECT_EQ(
      toText(openRows(session.database(), QStringLiteral("SELECT Nazwa FROM swjed WHERE Indjed = 'szt'"))
                 ->field(size_t{0})
                 .value()),
      QStringLiteral("Sztuki"));
}

TEST_F(Tool, SaysWhyAFileCannotBeSaved) {
  QFile junk(path);
  ASSERT_TRUE(junk.open(QIODevice::WriteOnly));
  junk.write("To nie jest baza danych.");
  junk.close();
  messages.files = {path};
  click("cmdAktualizuj");
  EXPECT_TRUE(messages.takeOnly().text.contains(QStringLiteral("nie jest to baza danych")));

  structure::createDatabase(toPath(file(QStringLiteral("zajeta.mdb"))));
  ASSERT_TRUE(session.BaseConnect(file(QStringLiteral("zajeta.mdb")), {}));
  messages.files = {file(QStringLiteral("zajeta.mdb"))};
  click("cmdAktualizuj");
  EXPECT_TRUE(
      messages.takeOnly().text.contains(QStringLiteral("baza jest używana przez innego użytkownika")));
}

TEST_F(Tool, LossesAreToldInPolish) {
  const struct {
    const char16_t *engine, *polish;
  } cases[] = {
      {u"table ewkar: 3 rows lost", u"Tablica ewkar: 3 rekordów utracono"},
      {u"table ewkar: 1 memo or OLE values lost", u"Tablica ewkar: 1 długich tekstów lub obiektów utracono"},
      {u"table swpra: 2 rows left out, whose keys other rows have already",
       u"Tablica swpra: 2 rekordów pominięto, bo ich klucze się powtarzają"},
      {u"table on page 7: its name is lost, it is called Lost7 now",
       u"Tablica na stronie 7: utracono jej nazwę, nowa nazwa: Lost7"},
      {u"properties of ewkar lost", u"Właściwości obiektu ewkar: utracono"},
      {u"relationship a: lost, the catalogue tells only a part of it",
       u"Powiązanie a: utracono, jego opis jest niepełny"},
  };
  for (const auto& c : cases) EXPECT_EQ(structure::lossInPolish(c.engine), c.polish);
}

TEST_F(Tool, AnswersTheProgramThroughTheRegistry) {
  const auto answer = [this] {
    return registry.read(kStructureToolKey, QStringLiteral("Aktualizacja status"));
  };
  EXPECT_EQ(upgradeForProgram(registry, path), 1) << "there is no such file";
  EXPECT_EQ(answer(), QStringLiteral("Error"));
  makeOld(QStringLiteral("sezam"));
  EXPECT_EQ(upgradeForProgram(registry, path), 1) << "its password is not known";
  EXPECT_EQ(answer(), QStringLiteral("Error"));
  const QString key = kDatabasesKey + QStringLiteral("\\firma.mdb");
  registry.write(key, QStringLiteral("Folder"), folder.path());
  registry.write(key, QStringLiteral("Haslo"), sealSecret(QStringLiteral("sezam")));
  EXPECT_EQ(upgradeForProgram(registry, path), 0);
  EXPECT_EQ(answer(), QStringLiteral("Ok"));
}
