// The start of a session step by step, and the databases that it opens, closes and changes.

#include <gtest/gtest.h>

#include <QAction>
#include <QCloseEvent>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QToolBar>
#include <QTreeWidget>
#include <functional>
#include <utility>

#include "app/frmSplash.h"
#include "app/startup.h"
#include "database/handy_list.h"
#include "structure/create.h"
#include "support/dialogs.h"
#include "support/test_database.h"
#include "users/dlgUserHaslo.h"
#include "users/dlgUserLista.h"
#include "users/password.h"

using namespace tandeko;

namespace {

QWidget* topLevel(const char* name) {
  for (QWidget* widget : QApplication::topLevelWidgets())
    if (widget->objectName() == QLatin1String(name) && widget->isVisible()) return widget;
  return nullptr;
}

bool isBusy() { return QApplication::overrideCursor() != nullptr; }

// Writes down what happens, each with what is on the screen then.
struct Diary {
  QStringList steps;
  void note(const QString& step) {
    steps << step + (topLevel("frmSplash") ? QStringLiteral(" [splash]") : QString()) +
                 (topLevel("mdiMenu") ? QStringLiteral(" [okno]") : QString()) +
                 (isBusy() ? QString() : QStringLiteral(" [wolne]"));
  }
};

class DiaryRegistry : public MemoryRegistry {
 public:
  explicit DiaryRegistry(Diary& diary) : diary_(diary) {}
  bool createKey(const QString& key) override {
    if (on) diary_.note(QStringLiteral("klucz ") + key.mid(key.lastIndexOf(u'\\') + 1));
    if (on && onFirst) std::exchange(onFirst, {})();
    return MemoryRegistry::createKey(key);
  }
  bool write(const QString& key, const QString& name, const QString& value) override {
    if (on) diary_.note(QStringLiteral("zapis ") + name);
    return MemoryRegistry::write(key, name, value);
  }
  QString read(const QString& key, const QString& name, const QString& fallback) const override {
    static const QStringList told = {QStringLiteral("Folder baza"),    QStringLiteral("Rozmiar MDI"),
                                     QStringLiteral("Kolor tla"),      QStringLiteral("Instancje"),
                                     QStringLiteral("Baza"),           QStringLiteral("Aktywna"),
                                     QStringLiteral("Defragmentacja"), QStringLiteral("Kopia")};
    if (on && told.contains(name)) diary_.note(QStringLiteral("odczyt ") + name);
    return MemoryRegistry::read(key, name, fallback);
  }
  bool on = false;
  std::function<void()> onFirst;

 private:
  Diary& diary_;
};

class DiaryWindows : public ScriptedWindows {
 public:
  explicit DiaryWindows(Diary& diary) : diary_(diary) {}
  void announce(const QString& caption, std::function<void()> raise) override {
    diary_.note(QStringLiteral("okno ") + caption);
    ScriptedWindows::announce(caption, raise);
  }

 private:
  Diary& diary_;
};

struct Start : testing::Test, TestSession {
  QString addDatabase(const QString& name, const QString& password = QStringLiteral("Null")) {
    makeDatabase(file(name));
    addUser(file(name), QStringLiteral("AD"), password);
    handyAdd(session, file(name));
    return file(name);
  }
  static void addUser(const QString& path, const QString& id, const QString& password) {
    runOn(path, QStringLiteral("INSERT INTO dboso (Indoso, Nazwisko, Imie, Aktywny, Admin, Haslo) VALUES "
                               "('%1', 'Kos', 'Ewa', True, True, %2)")
                    .arg(id, password));
  }
  static QString scrambled(const QString& password) {
    return QStringLiteral("'%1'").arg(
        PassEncode(kPasswordKey, password, kPasswordPad).replace(u'\'', QStringLiteral("''")));
  }
  // The next login: picks the user and types the password; without a user it is cancelled.
  static void logInAs(const QString& id, const QString& password = {}) {
    onDialog<dlgUserLista>([id, password](dlgUserLista& dialog) {
      if (id.isEmpty()) return dialog.reject();
      auto* list = child<QTreeWidget>(dialog, "lstUzyt");
      list->setCurrentItem(list->findItems(id, Qt::MatchFixedString, 0).value(0));
      onDialog<dlgUserHaslo>([password](dlgUserHaslo& asked) {
        child<QLineEdit>(asked, "txtHaslo")->setText(password);
        child<QPushButton>(asked, "cmdOK")->click();
      });
      child<QPushButton>(dialog, "cmdOK")->click();
    });
  }
  void choose(int index) {
    auto* combo = window->findChild<QComboBox*>(QStringLiteral("cmbBaza"));
    combo->setCurrentIndex(index);
    Q_EMIT combo->activated(index);
  }
  QString comboText() { return window->findChild<QComboBox*>(QStringLiteral("cmbBaza"))->currentText(); }
  bool anyToolEnabled() {
    for (QAction* button : window->findChild<QToolBar*>(QStringLiteral("toolMenu"))->actions())
      if (!button->icon().isNull() && button->isEnabled()) return true;
    return false;
  }
  QAction* action(const char* name) { return window->findChild<QAction*>(QLatin1String(name)); }

  std::unique_ptr<mdiMenu> window;
};

class TestForm : public ChildForm {
 public:
  explicit TestForm(const QString& formName) { setObjectName(formName); }
  bool refuses = false;

 protected:
  void closeEvent(QCloseEvent* event) override { event->setAccepted(!refuses); }
};

}  // namespace

TEST_F(Start, GoesThroughItsStepsInOrder) {
  Diary diary;
  DiaryRegistry own(diary);
  DiaryWindows otherCopies(diary);
  own.write(kProgramKey, QStringLiteral("Instancje"), QStringLiteral("0"));
  own.write(kProgramKey, QStringLiteral("Auto Refresh"), QStringLiteral("5"));
  Session recorded{Platform{own, messages, shell, mail, clock, otherCopies}};
  recorded.setFailureView(&failures);
  makeDatabase(file(QStringLiteral("a.mdb")));
  handyAdd(recorded, file(QStringLiteral("a.mdb")));
  own.write(kProgramKey, QStringLiteral("Baza"), QStringLiteral("a.mdb"));
  otherCopies.others = {kProgramName};
  messages.answers = {Answer::Yes};
  messages.onShow = [&](const Message&) { diary.note(QStringLiteral("pytanie")); };
  QString version;
  own.onFirst = [&version] {
    version = topLevel("frmSplash")->findChild<QLabel*>(QStringLiteral("labWersja"))->text();
  };
  QObject::connect(&recorded, &Session::databaseChanged, [&] { diary.note(QStringLiteral("baza otwarta")); });
  QObject::connect(&recorded, &Session::userChanged, [&] { diary.note(QStringLiteral("użytkownik")); });
  onDialog<dlgUserLista>([&](dlgUserLista& dialog) {
    diary.note(QStringLiteral("logowanie"));
    onDialog<dlgUserHaslo>([](dlgUserHaslo& asked) { child<QPushButton>(asked, "cmdOK")->click(); });
    child<QPushButton>(dialog, "cmdOK")->click();
  });
  own.on = true;
  const auto main = startUp(recorded, {});
  own.on = false;
  diary.note(QStringLiteral("koniec"));
  EXPECT_EQ(diary.steps.join(u'\n'), QStringLiteral("klucz Lorvel [splash]\n"
                                                    "klucz Bazy danych [splash]\n"
                                                    "klucz Filtry [splash]\n"
                                                    "klucz Tandeko [splash]\n"
                                                    "klucz Raporty [splash]\n"
                                                    "odczyt Folder baza [splash]\n"
                                                    "odczyt Rozmiar MDI [splash]\n"
                                                    "odczyt Kolor tla [splash]\n"
                                                    "zapis Wersja [splash]\n"
                                                    "odczyt Instancje [splash]\n"
                                                    "pytanie [splash]\n"
                                                    "okno Tandeko(1) [splash]\n"
                                                    "odczyt Aktywna [splash] [okno]\n"
                                                    "odczyt Aktywna [splash] [okno]\n"
                                                    "odczyt Defragmentacja [splash] [okno]\n"
                                                    "odczyt Aktywna [splash] [okno]\n"
                                                    "odczyt Kopia [splash] [okno]\n"
                                                    "odczyt Baza [splash] [okno]\n"
                                                    "baza otwarta [okno]\n"
                                                    "logowanie [okno]\n"
                                                    "użytkownik [okno] [wolne]\n"
                                                    "koniec [okno] [wolne]"));
  EXPECT_EQ(version, QStringLiteral("Wersja ") + programVersion().text());
  EXPECT_TRUE(main->autoRefresh().isOn());
  EXPECT_EQ(main->windowTitle(), QStringLiteral("Tandeko(1)"));
}

TEST_F(Start, ALoginThatIsGivenUpLeavesNoDatabase) {
  addDatabase(QStringLiteral("a.mdb"), scrambled(QStringLiteral("abc")));
  logInAs({});
  window = startUp(session, {});
  EXPECT_FALSE(session.databaseOpen());
  EXPECT_EQ(comboText(), QString());
  EXPECT_FALSE(anyToolEnabled());
  EXPECT_FALSE(isBusy());

  logInAs(QStringLiteral("AD"), QStringLiteral("abc"));
  choose(0);
  EXPECT_TRUE(session.databaseOpen()) << "the combo opens it later";
  EXPECT_TRUE(anyToolEnabled());
}

TEST_F(Start, AFileChosenFromTheMenuIsOpenedAndListed) {
  makeDatabase(file(QStringLiteral("nowa.mdb")));
  window = startUp(session, {});
  EXPECT_FALSE(anyToolEnabled());
  messages.files = {file(QStringLiteral("nowa.mdb"))};
  logInAs(QStringLiteral("AD"));
  action("mnuBazaOtworz")->trigger();
  EXPECT_EQ(session.databaseFile(), QStringLiteral("nowa.mdb"));
  EXPECT_EQ(comboText(), QStringLiteral("nowa.mdb"));
  EXPECT_TRUE(anyToolEnabled());
  EXPECT_TRUE(handyEntryOf(session, file(QStringLiteral("nowa.mdb"))).has_value());
  EXPECT_EQ(session.CurrentUserName(), QStringLiteral("Programu Administrator"));
  messages.shown.clear();
  action("mnuBazaOtworz")->trigger();  // cancelled
  EXPECT_EQ(session.databaseFile(), QStringLiteral("nowa.mdb"));
  EXPECT_TRUE(messages.shown.empty());
}

TEST_F(Start, APasswordTypedOnceOpensTheOtherDatabaseToo) {
  const QString secret = scrambled(QStringLiteral("abc"));
  addDatabase(QStringLiteral("a.mdb"), secret);
  addDatabase(QStringLiteral("b.mdb"), secret);
  addDatabase(QStringLiteral("c.mdb"), QStringLiteral("'abc'"));
  logInAs(QStringLiteral("AD"), QStringLiteral("abc"));
  window = startUp(session, {});
  EXPECT_EQ(session.databaseFile(), QStringLiteral("a.mdb"));
  {
    const DialogDismisser dialogs;
    choose(2);  // stored as it is typed
    EXPECT_EQ(dialogs.count(), 0);
    EXPECT_EQ(session.databaseFile(), QStringLiteral("c.mdb"));
    choose(1);  // stored scrambled: asked again, and given up
    EXPECT_EQ(dialogs.count(), 1);
  }
  EXPECT_FALSE(session.databaseOpen());
  EXPECT_EQ(comboText(), QString());
}

TEST_F(Start, ADatabaseTakenMeanwhileIsRefused) {
  addDatabase(QStringLiteral("a.mdb"));
  addDatabase(QStringLiteral("b.mdb"));
  session.settings().store(QStringLiteral("Uzytkownik"), QStringLiteral("AD"));
  window = startUp(session, {});
  jet::Workspace other;
  jet::Workspace::OpenOptions options;
  options.exclusive = true;
  auto held = other.openDatabase(toPath(file(QStringLiteral("b.mdb"))), options);
  choose(1);
  const Message refusal = messages.takeOnly();
  EXPECT_EQ(refusal.title, QStringLiteral("Błąd otwarcia bazy"));
  EXPECT_EQ(refusal.icon, Icon::Exclamation);
  EXPECT_TRUE(refusal.text.contains(QStringLiteral("została otwarta w trybie wyłączności")));
  EXPECT_FALSE(session.databaseOpen());
  EXPECT_FALSE(anyToolEnabled());
  held.reset();
  choose(1);
  EXPECT_EQ(session.databaseFile(), QStringLiteral("b.mdb"));
}

TEST_F(Start, ChangeOfUserClosesTheForms) {
  const QString path = addDatabase(QStringLiteral("a.mdb"));
  addUser(path, QStringLiteral("EK"), scrambled(QStringLiteral("abc")));
  runOn(path, QStringLiteral("UPDATE dboso SET Imie = 'Ala' WHERE Indoso = 'EK'"));
  session.settings().store(QStringLiteral("Uzytkownik"), QStringLiteral("AD"));
  window = startUp(session, {});
  auto* form = new TestForm(QStringLiteral("dokEWKAR"));
  window->showForm(form);

  logInAs({});
  action("mnuNarzZmienUzyt")->trigger();
  EXPECT_EQ(session.CurrentUserId(), QStringLiteral("AD")) << "given up";
  EXPECT_EQ(window->forms().size(), 1);

  form->refuses = true;
  logInAs(QStringLiteral("EK"), QStringLiteral("abc"));
  action("mnuNarzZmienUzyt")->trigger();
  EXPECT_EQ(session.CurrentUserId(), QStringLiteral("AD")) << "a form refused";
  ASSERT_EQ(failures.failures.size(), 1u);

  form->refuses = false;
  logInAs(QStringLiteral("EK"), QStringLiteral("abc"));
  action("mnuNarzZmienUzyt")->trigger();
  EXPECT_EQ(session.CurrentUserId(), QStringLiteral("EK"));
  EXPECT_TRUE(window->forms().isEmpty());
  EXPECT_EQ(window->findChild<QLabel*>(QStringLiteral("statusUser"))->text(), QStringLiteral("Ala Kos"));
  EXPECT_TRUE(session.databaseOpen());
}

TEST_F(Start, AReadOnlyDatabaseForcesOnlyItself) {
  addDatabase(QStringLiteral("a.mdb"));
  runOn(addDatabase(QStringLiteral("b.mdb")),
        QStringLiteral("INSERT INTO dbpar (Indpar, Wartosc) VALUES ('BaseReadOnly', '1')"));
  session.settings().store(QStringLiteral("Uzytkownik"), QStringLiteral("AD"));
  window = startUp(session, {});
  EXPECT_FALSE(session.database().readOnly());
  choose(1);
  EXPECT_TRUE(session.database().readOnly());
  choose(0);
  EXPECT_FALSE(session.database().readOnly());

  // A form keeps the present database open: the other one must not have changed it.
  auto* form = new TestForm(QStringLiteral("dokEWKAR"));
  window->showForm(form);
  form->refuses = true;
  messages.files = {file(QStringLiteral("b.mdb"))};
  action("mnuBazaOtworz")->trigger();
  EXPECT_EQ(session.databaseFile(), QStringLiteral("a.mdb"));
  EXPECT_TRUE(session.BaseConnect(file(QStringLiteral("a.mdb")), {}));
  EXPECT_FALSE(session.database().readOnly());
  form->refuses = false;
}

TEST_F(Start, TheWantedFormOpensAfterTheLogin) {
  const struct {
    const char16_t* setting;
    const char16_t* form;
  } cases[] = {{u"Przedmioty", u"karEWKAR"}, {u"Panel", u"karEWPAN"}, {u"Kalendarz", u""}, {u"", u""}};
  const QString path = file(QStringLiteral("pelna.mdb"));
  structure::createDatabase(toPath(path));
  addUser(path, QStringLiteral("EK"), QStringLiteral("Null"));
  runOn(path, QStringLiteral("INSERT INTO swrew (Nazwa, Rodzaj) VALUES ('Sprzęt', 'L')"));
  handyAdd(session, path);
  session.settings().store(QStringLiteral("Uzytkownik"), QStringLiteral("EK"));
  for (const auto& c : cases) {
    session.settings().store(QStringLiteral("Okno start"), QString::fromUtf16(c.setting));
    window.reset();
    window = startUp(session, {});
    QStringList open;
    for (const ChildForm* form : window->forms()) open << form->formName();
    EXPECT_EQ(open.join(u' '), QString::fromUtf16(c.form));
    if (open.isEmpty()) continue;
    window->openForm(open[0]);
    EXPECT_EQ(window->forms().size(), 1) << "it is brought to the front, not opened twice";
    EXPECT_TRUE(window->close());
  }
  EXPECT_TRUE(failures.failures.empty());
}
