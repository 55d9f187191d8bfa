// The upkeep of the open database from the menu, in the real main window.

#include <gtest/gtest.h>

#include <QAction>
#include <QCloseEvent>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QPushButton>

#include "app/startup.h"
#include "database/dlgBazaWlas.h"
#include "database/handy_list.h"
#include "support/dialogs.h"
#include "support/test_database.h"

using namespace tandeko;

namespace {

class OpenForm : public ChildForm {
 public:
  OpenForm() { setObjectName(QStringLiteral("karEWKAR")); }
  bool refuses = false;

 protected:
  void closeEvent(QCloseEvent* event) override { event->setAccepted(!refuses); }
};

struct UpkeepMenu : testing::Test, TestSession {
  UpkeepMenu() {
    makeDatabase(path);
    runOn(path,
          QStringLiteral("INSERT INTO dboso (Indoso, Nazwisko, Imie, Aktywny, Admin) VALUES ('AD', 'Kos', "
                         "'Ewa', True, True)"));
    session.settings().store(QStringLiteral("Uzytkownik"), QStringLiteral("AD"));
    session.settings().store(QStringLiteral("Folder pakiet"), folder.path());
    session.settings().store(QStringLiteral("Folder roboczy"), folder.path());
    session.settings().store(QStringLiteral("Folder archiwum"), folder.path());
    session.settings().load();
    handyAdd(session, path);
    window = startUp(session, {});
    messages.shown.clear();
  }
  void trigger(const char* name) { window->findChild<QAction*>(QLatin1String(name))->trigger(); }
  OpenForm* show() {
    auto* form = new OpenForm;
    window->showForm(form);
    return form;
  }
  QString copy() const { return file(QStringLiteral("Kopia firma.mdb")); }

  QString path = file(QStringLiteral("firma.mdb"));
  std::unique_ptr<mdiMenu> window;
};

}  // namespace

TEST_F(UpkeepMenu, ClosesTheFormsOnlyWhenTheUserAgrees) {
  show();
  trigger("mnuNarzArchiw");
  EXPECT_EQ(window->forms().size(), 1) << "No is the default";
  messages.answers = {Answer::Yes};
  trigger("mnuNarzArchiw");
  EXPECT_TRUE(window->forms().isEmpty());
  EXPECT_TRUE(QFile::exists(copy()));
  EXPECT_TRUE(session.databaseOpen());
  EXPECT_EQ(window->findChild<QComboBox*>(QStringLiteral("cmbBaza"))->currentText(),
            QStringLiteral("firma.mdb"));
}

TEST_F(UpkeepMenu, AFormThatRefusesToCloseStopsIt) {
  show()->refuses = true;
  const QByteArray before = [this] {
    QFile database(path);
    return database.open(QIODevice::ReadOnly) ? database.readAll() : QByteArray();
  }();
  for (const char* command : {"mnuNarzArchiw", "mnuNarzDefrag", "mnuNarzNapraw"}) {
    messages.answers = {Answer::Yes, Answer::Yes};
    failures.failures.clear();
    trigger(command);
    ASSERT_EQ(failures.failures.size(), 1u) << command;
    EXPECT_EQ(failures.failures[0].procedure, QStringLiteral("FormCloseAll"));
    EXPECT_TRUE(session.databaseOpen()) << command;
  }
  EXPECT_FALSE(QFile::exists(copy()));
  QFile database(path);
  ASSERT_TRUE(database.open(QIODevice::ReadOnly));
  EXPECT_EQ(database.readAll(), before);
}

TEST_F(UpkeepMenu, ANewNameShowsInTheComboAndOpensLater) {
  onDialog<dlgBazaWlas>([this](dlgBazaWlas& dialog) {
    messages.answers = {Answer::Yes};
    messages.files = {QStringLiteral("nowa")};
    child<QPushButton>(dialog, "cmdZmienNazwe")->click();
    child<QPushButton>(dialog, "cmbOk")->click();
  });
  trigger("mnuBazaZab");
  auto* combo = window->findChild<QComboBox*>(QStringLiteral("cmbBaza"));
  EXPECT_EQ(combo->currentText(), QStringLiteral("nowa.mdb"));
  EXPECT_EQ(combo->count(), 1);
  EXPECT_EQ(session.databasePath(), QDir::toNativeSeparators(file(QStringLiteral("nowa.mdb"))));
  session.closeDatabase();
  EXPECT_TRUE(window->desk().openSelected());
}

TEST_F(UpkeepMenu, AnotherPasswordOpensLater) {
  onDialog<dlgBazaWlas>([](dlgBazaWlas& dialog) {
    child<QLineEdit>(dialog, "txtHasloNowe")->setText(QStringLiteral("nowe"));
    child<QLineEdit>(dialog, "txtHasloPotwierdz")->setText(QStringLiteral("nowe"));
    child<QPushButton>(dialog, "cmdZmienHaslo")->click();
    child<QPushButton>(dialog, "cmdAnuluj")->click();
  });
  trigger("mnuBazaZab");
  session.closeDatabase();
  EXPECT_TRUE(window->desk().openSelected());
  EXPECT_TRUE(failures.failures.empty());
}
