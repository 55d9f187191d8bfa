#include <gtest/gtest.h>

#include <QAction>
#include <QCheckBox>
#include <QCloseEvent>
#include <QColorDialog>
#include <QComboBox>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QSet>
#include <QSpinBox>
#include <QToolBar>
#include <QTreeWidget>

#include "app/dlgParPakiet.h"
#include "app/frmSplash.h"
#include "app/instance_check.h"
#include "app/menu_commands.h"
#include "app/startup.h"
#include "app/window_place.h"
#include "database/handy_list.h"
#include "lists/form_fields.h"
#include "support/dialogs.h"
#include "support/test_database.h"

using namespace tandeko;

namespace {

class TestForm : public ChildForm {
 public:
  explicit TestForm(const QString& formName) {
    setObjectName(formName);
    setWindowTitle(formName);
  }
  bool supports(Command command) const override { return commands.contains(command); }
  void run(Command command) override { ran << command; }
  bool hasLayout() const override { return true; }
  void KarRefresh() override { ++refreshed; }
  void KarSaveParam(bool save) override { saved << save; }

  QList<Command> commands;
  QList<Command> ran;
  QList<bool> saved;
  int refreshed = 0;
  bool refuses = false;

 protected:
  void closeEvent(QCloseEvent* event) override { event->setAccepted(!refuses); }
};

struct Desktop : testing::Test, TestSession {
  Desktop() {
    session.settings().store(QStringLiteral("Folder pakiet"), folder.path());
    session.settings().load();
  }

  QString addDatabase(const QString& name) {
    makeDatabase(file(name));
    runOn(file(name),
          QStringLiteral("INSERT INTO dboso (Indoso, Nazwisko, Imie, Aktywny, Admin) VALUES ('AD', 'Kos', "
                         "'Ewa', True, True)"));
    handyAdd(session, file(name));
    return file(name);
  }
  void start() {
    // An administrator without password is accepted at once when he is the default user.
    session.settings().store(QStringLiteral("Uzytkownik"), QStringLiteral("AD"));
    window = startUp(session, {});
  }
  TestForm* show(const QString& name) {
    auto* form = new TestForm(name);
    window->showForm(form);
    return form;
  }
  QAction* action(const char* name) { return window->findChild<QAction*>(QLatin1String(name)); }
  QComboBox* combo(const char* name) { return window->findChild<QComboBox*>(QLatin1String(name)); }
  QAction* tool(const QString& tip) {
    for (QAction* button : window->findChild<QToolBar*>(QStringLiteral("toolMenu"))->actions())
      if (button->toolTip() == tip) return button;
    return nullptr;
  }

  std::unique_ptr<mdiMenu> window;
};

}  // namespace

TEST_F(Desktop, SeveralCopiesMayRunUnlessTheUserForbidsIt) {
  windows.others = {QStringLiteral("Tandeko")};
  EXPECT_FALSE(InstanceCheck(session));
  EXPECT_TRUE(windows.searched.isEmpty()) << "no search at all";

  session.settings().store(QStringLiteral("Instancje"), QStringLiteral("0"));
  EXPECT_TRUE(InstanceCheck(session));
  const Message question = messages.takeOnly();
  EXPECT_EQ(question.text,
            QStringLiteral("Aplikacja o nazwie Tandeko została już uruchomiona. Uruchomić drugą kopię "
                           "aplikacji?"));
  EXPECT_EQ(question.title, QStringLiteral("Program Tandeko"));
  EXPECT_EQ(question.icon, Icon::Question);
  EXPECT_EQ(question.buttons, Buttons::YesNo);
  EXPECT_EQ(question.defaultButton, Answer::No);
  EXPECT_EQ(windows.raised, QStringList{QStringLiteral("Tandeko")});

  session.setTitle(kProgramName);
  messages.answers = {Answer::Yes};
  EXPECT_FALSE(InstanceCheck(session));
  EXPECT_EQ(session.title(), QStringLiteral("Tandeko(1)"));

  session.setTitle(kProgramName);
  windows.others.clear();
  EXPECT_FALSE(InstanceCheck(session));
  EXPECT_EQ(session.title(), kProgramName);
}

TEST_F(Desktop, ARefusedCopyEndsWithoutAWindow) {
  session.settings().store(QStringLiteral("Instancje"), QStringLiteral("0"));
  windows.others = {QStringLiteral("Tandeko")};
  addDatabase(QStringLiteral("a.mdb"));
  start();
  EXPECT_EQ(window, nullptr);
  EXPECT_FALSE(session.databaseOpen());
  EXPECT_EQ(QApplication::overrideCursor(), nullptr);
}

TEST_F(Desktop, FirstStartHasNoDatabaseAndAllButtonsOff) {
  session.settings().remove(QStringLiteral("Folder pakiet"));
  start();
  ASSERT_NE(window, nullptr);
  for (QAction* button : window->findChild<QToolBar*>(QStringLiteral("toolMenu"))->actions())
    EXPECT_FALSE(!button->icon().isNull() && button->isEnabled()) << button->toolTip().toStdString();
  EXPECT_TRUE(action("mnuBazaOtworz")->isEnabled());
  EXPECT_TRUE(action("mnuBazaLista")->isEnabled());
  EXPECT_FALSE(action("mnuNarzZmienUzyt")->isEnabled());
  EXPECT_FALSE(session.databaseOpen());
  EXPECT_TRUE(messages.shown.empty());
  EXPECT_EQ(session.settings().stored(QStringLiteral("Wersja")), programVersion().text());
  EXPECT_TRUE(registry.hasKey(kFiltersKey));
  EXPECT_EQ(windows.announced, QStringList{QStringLiteral("Tandeko")});
  EXPECT_EQ(window->findChild<QLabel*>(QStringLiteral("statusDate"))->text(),
            QStringLiteral("piątek, 15 marca 2024"));
}

TEST_F(Desktop, EveryEntryHasItsOwnNameAndDoesSomething) {
  start();
  const auto handlers = menuHandlers(session, *window);
  QSet<QString> names;
  for (QAction* entry : window->menuBar()->findChildren<QAction*>()) {
    const MenuLine* line = lineOf(entry);
    if (!line) continue;
    EXPECT_FALSE(names.contains(entry->objectName())) << entry->objectName().toStdString();
    names << entry->objectName();
    if (entry->isSeparator() || entry->menu() || line->need == Need::Later) continue;
    EXPECT_TRUE(line->command || !formOfMenu(entry->objectName()).isEmpty() ||
                handlers.contains(entry->objectName()))
        << entry->objectName().toStdString();
  }
  EXPECT_EQ(names.size(), 79);
}

TEST_F(Desktop, LastDatabaseAndRegisterAreOpenedAgain) {
  addDatabase(QStringLiteral("a.mdb"));
  const QString path = addDatabase(QStringLiteral("b.mdb"));
  runOn(path, QStringLiteral("INSERT INTO swrew (Nazwa) VALUES ('Odzież')"));
  runOn(path, QStringLiteral("INSERT INTO swrew (Nazwa) VALUES ('Komputery')"));
  session.settings().store(QStringLiteral("Baza"), QStringLiteral("b.mdb"));
  session.settings().store(QStringLiteral("Rejestr"), QStringLiteral("1"));
  start();
  EXPECT_EQ(session.databaseFile(), QStringLiteral("b.mdb"));
  EXPECT_EQ(session.CurrentUserName(), QStringLiteral("Ewa Kos"));
  EXPECT_EQ(window->findChild<QLabel*>(QStringLiteral("statusUser"))->text(), QStringLiteral("Ewa Kos"));
  EXPECT_EQ(session.currentRegister(), 1);
  EXPECT_EQ(combo("cmbEwiRejestr")->currentText(), QStringLiteral("Odzież"));
  EXPECT_TRUE(messages.shown.empty());
  EXPECT_TRUE(failures.failures.empty());
}

TEST_F(Desktop, EndOfSessionWritesTheLastSettingsWhenWanted) {
  for (const QString& option : {QStringLiteral("0"), QStringLiteral("1")}) {
    TestSession fresh;
    fresh.session.settings().store(QStringLiteral("Zapisz przy wyjsciu"), option);
    fresh.session.settings().store(QStringLiteral("Uzytkownik"), QStringLiteral("AD"));
    makeDatabase(fresh.file(QStringLiteral("a.mdb")));
    handyAdd(fresh.session, fresh.file(QStringLiteral("a.mdb")));
    auto main = startUp(fresh.session, {});
    ASSERT_TRUE(fresh.session.databaseOpen());
    EXPECT_TRUE(main->close());
    EXPECT_FALSE(fresh.session.databaseOpen());
    const bool saved = option == u"1";
    EXPECT_EQ(fresh.session.settings().stored(QStringLiteral("Baza"), QStringLiteral("-")),
              fresh.registry.read(kProgramKey, QStringLiteral("Baza"), QStringLiteral("-")));
    EXPECT_EQ(fresh.registry.read(kProgramKey, QStringLiteral("Baza"), QStringLiteral("-")),
              saved ? QStringLiteral("a.mdb") : QStringLiteral("-"));
    EXPECT_EQ(fresh.registry.read(kProgramKey, QStringLiteral("Rok"), QStringLiteral("-")),
              saved ? QStringLiteral("2024") : QStringLiteral("-"));
  }
}

TEST_F(Desktop, SwitchingClosesTheOldDatabasesForms) {
  addDatabase(QStringLiteral("a.mdb"));
  addDatabase(QStringLiteral("b.mdb"));
  start();
  TestForm* list = show(QStringLiteral("karEWKAR"));
  show(QStringLiteral("sloSWGPC"));
  show(QStringLiteral("dlgParRejEwi"));
  show(QStringLiteral("frmInne"));
  list->refuses = true;
  combo("cmbBaza")->setCurrentIndex(1);
  Q_EMIT combo("cmbBaza")->activated(1);
  EXPECT_EQ(session.databaseFile(), QStringLiteral("a.mdb")) << "a form that refuses stops the switch";
  EXPECT_EQ(combo("cmbBaza")->currentText(), QStringLiteral("a.mdb"));

  list->refuses = false;
  combo("cmbBaza")->setCurrentIndex(1);
  Q_EMIT combo("cmbBaza")->activated(1);
  EXPECT_EQ(session.databaseFile(), QStringLiteral("b.mdb"));
  ASSERT_EQ(window->forms().size(), 1);
  EXPECT_EQ(window->forms()[0]->formName(), QStringLiteral("frmInne"));
}

TEST_F(Desktop, FormCloseAllReportsAFormThatRefuses) {
  start();
  TestForm* first = show(QStringLiteral("karEWKAR"));
  TestForm* second = show(QStringLiteral("dokEWKAR"));
  second->refuses = true;
  EXPECT_FALSE(session.FormCloseAll());
  ASSERT_EQ(failures.failures.size(), 1u);
  EXPECT_EQ(failures.failures[0].procedure, QStringLiteral("FormCloseAll"));
  EXPECT_EQ(window->forms(), QList<ChildForm*>{second});
  EXPECT_TRUE(session.FormCloseAll(second));
  EXPECT_EQ(window->forms(), QList<ChildForm*>{second});
  second->refuses = false;
  EXPECT_TRUE(session.FormCloseAll());
  EXPECT_TRUE(window->forms().isEmpty());
  Q_UNUSED(first);
}

TEST_F(Desktop, CommandsFollowTheActiveFormAndTheRights) {
  addDatabase(QStringLiteral("a.mdb"));
  start();
  EXPECT_FALSE(tool(QStringLiteral("Filtr..."))->isEnabled());
  TestForm* form = show(QStringLiteral("karEWKAR"));
  form->commands = {Command::Filtr, Command::Nowy, Command::Popraw};
  Q_EMIT form->commandsChanged();
  EXPECT_TRUE(tool(QStringLiteral("Filtr..."))->isEnabled());
  EXPECT_FALSE(tool(QStringLiteral("Sumuj"))->isEnabled());
  EXPECT_TRUE(action("mnuRSNowy")->isEnabled());

  UserState reader = session.user();
  reader.level = QStringLiteral("P");
  session.setUser(reader);
  window->updateCommands();
  EXPECT_FALSE(action("mnuRSNowy")->isEnabled());
  EXPECT_TRUE(action("mnuRSPopraw")->isEnabled());

  tool(QStringLiteral("Filtr..."))->trigger();
  EXPECT_EQ(form->ran, QList<Command>{Command::Filtr});
  form->parentWidget()->close();
  EXPECT_FALSE(tool(QStringLiteral("Filtr..."))->isEnabled());
}

TEST_F(Desktop, LayoutQuestion) {
  start();
  TestForm* form = show(QStringLiteral("karEWKAR"));
  messages.answers = {Answer::Yes, Answer::No, Answer::Cancel};
  for (int i = 0; i < 3; ++i) action("mnuRSZapisz")->trigger();
  EXPECT_EQ(form->saved, (QList<bool>{true, false}));
  EXPECT_EQ(messages.shown[0].buttons, Buttons::YesNoCancel);
  EXPECT_EQ(messages.shown[0].icon, Icon::Question);
  EXPECT_EQ(
      messages.shown[0].text,
      QStringLiteral(
          "Ustawienia wyglądu okna, takie jak: szerokość pól wyboru, porządek sortowania oraz szerokość "
          "kolumn tablicy zostaną zapisane.\n[Tak] - zapisanie ustawień użytkownika\n[Nie] - "
          "przywrócenie ustawień standardowych\n[Anuluj] - rezygnacja z zapisu ustawień"));
}

TEST_F(Desktop, AutomaticRefreshCountsMinutes) {
  start();
  TestForm* list = show(QStringLiteral("karEWKAR"));
  TestForm* record = show(QStringLiteral("dokEWKAR"));
  AutoRefresh& refresh = window->autoRefresh();
  refresh.setMinutes(3);
  EXPECT_TRUE(refresh.isOn());
  for (int minute = 1; minute <= 7; ++minute) refresh.minutePassed();
  EXPECT_EQ(list->refreshed, 2);
  EXPECT_EQ(record->refreshed, 0);
  refresh.setMinutes(0);
  EXPECT_FALSE(refresh.isOn());
}

TEST_F(Desktop, SettingsAreAppliedUpToTheFolderThatIsRefused) {
  session.settings().store(QStringLiteral("Folder raport"), QStringLiteral("/raporty"));
  dlgParPakiet dialog(session, nullptr);
  for (const char* name : {"txtFolderPakiet", "txtFolderBaza", "txtFolderArch", "txtFolderTemp",
                           "txtFolderDokum", "txtFolderPomoc"})
    child<QLineEdit>(dialog, name)->setText(folder.path());
  child<QLineEdit>(dialog, "txtFolderArch")->setText(QStringLiteral("/nie/ma"));
  child<QLineEdit>(dialog, "txtFolderDokum")->setText(QStringLiteral("/nie/ma"));
  child<QCheckBox>(dialog, "cbNieZamykaj")->setChecked(true);
  child<QCheckBox>(dialog, "cbAutoRefresh")->setChecked(true);
  child<QSpinBox>(dialog, "txtAutoRefresh")->setValue(7);
  child<QComboBox>(dialog, "cmbOkno")->setCurrentIndex(1);
  dialog.show();
  child<QPushButton>(dialog, "cmdOk")->click();
  const Message refusal = messages.takeOnly();
  EXPECT_EQ(refusal.text,
            QStringLiteral("Błędny folder archiwum. Wprowadź istniejący folder i spróbuj ponownie."));
  EXPECT_EQ(refusal.icon, Icon::Exclamation);
  EXPECT_TRUE(dialog.isVisible());
  const auto stored = [this](const char16_t* name) {
    return session.settings().stored(QString::fromUtf16(name), QStringLiteral("-"));
  };
  EXPECT_EQ(stored(u"Nie zamykaj"), QStringLiteral("1"));
  EXPECT_EQ(stored(u"Auto Refresh"), QStringLiteral("7"));
  EXPECT_EQ(stored(u"Folder baza"), QStringLiteral("-"));
  EXPECT_EQ(stored(u"Okno start"), QStringLiteral("-"));

  child<QLineEdit>(dialog, "txtFolderArch")->setText(folder.path());
  child<QLineEdit>(dialog, "txtFolderDokum")->setText(folder.path());
  child<QPushButton>(dialog, "cmdOk")->click();
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_EQ(stored(u"Folder baza"), folder.path());
  EXPECT_EQ(stored(u"Okno start"), QStringLiteral("Panel"));
  EXPECT_EQ(stored(u"Folder raport"), QStringLiteral("/raporty"));
  EXPECT_EQ(session.settings().program().autoRefreshMinutes, 7);
}

TEST_F(Desktop, EveryFolderIsRefusedInItsOwnWords) {
  const struct {
    const char* field;
    const char16_t* refusal;
  } cases[] = {
      {"txtFolderPakiet", u"Błędny folder programu. Wprowadź istniejący folder i spróbuj ponownie."},
      {"txtFolderBaza", u"Błędny folder bazy. Wprowadź istniejący folder i spróbuj ponownie."},
      {"txtFolderArch", u"Błędny folder archiwum. Wprowadź istniejący folder i spróbuj ponownie."},
      {"txtFolderTemp", u"Błędny folder roboczy. Wprowadź istniejący folder i spróbuj ponownie."},
      {"txtFolderDokum", u"Błędny folder dokumentów. Wprowadź istniejący folder i spróbuj ponownie."},
      {"txtFolderPomoc", u"Błędny folder plików pomocy. Wprowadź istniejący folder i spróbuj ponownie."},
  };
  dlgParPakiet dialog(session, nullptr);
  for (const auto& c : cases) child<QLineEdit>(dialog, c.field)->setText(QStringLiteral("/nie/ma"));
  dialog.show();
  for (const auto& c : cases) {  // each is found only when those before it are right
    child<QPushButton>(dialog, "cmdZastosuj")->click();
    const Message refusal = messages.takeOnly();
    EXPECT_EQ(refusal.text, QString::fromUtf16(c.refusal));
    EXPECT_EQ(refusal.icon, Icon::Exclamation);
    EXPECT_TRUE(dialog.isVisible());
    child<QLineEdit>(dialog, c.field)->setText(folder.path());
  }
  child<QPushButton>(dialog, "cmdZastosuj")->click();
  EXPECT_TRUE(messages.shown.empty());
  EXPECT_TRUE(dialog.isVisible()) << "only OK closes it";

  child<QCheckBox>(dialog, "cbPopraw")->setChecked(false);
  child<QPushButton>(dialog, "cmdZamknij")->click();
  EXPECT_TRUE(session.settings().program().openOnDoubleClick) << "Anuluj stores nothing";
  EXPECT_FALSE(dialog.isVisible());
}

TEST_F(Desktop, FoldersAreChosenUnderTheirOwnTitles) {
  dlgParPakiet dialog(session, nullptr);
  const char* buttons[] = {"cmdFolderPakiet", "cmdFolderBaza",  "cmdFolderArch",
                           "cmdFolderTemp",   "cmdFolderDokum", "cmdFolderPomoc"};
  for (const char* button : buttons) {
    messages.files = {folder.path()};
    child<QPushButton>(dialog, button)->click();
  }
  QStringList titles;
  for (const FileChoice& choice : messages.choices) titles << choice.title;
  EXPECT_EQ(titles, (QStringList{QStringLiteral("Wybierz folder programu"),
                                 QStringLiteral("Wybierz folder baz danych"),
                                 QStringLiteral("Wybierz folder"), QStringLiteral("Wybierz folder roboczy"),
                                 QStringLiteral("Wybierz folder dokumentów"),
                                 QStringLiteral("Wybierz folder plików pomocy")}));
  EXPECT_EQ(child<QLineEdit>(dialog, "txtFolderArch")->text(), QDir::toNativeSeparators(folder.path()));
}

TEST_F(Desktop, FoldersThatCannotBeStoredAreTold) {
  struct FullRegistry : MemoryRegistry {
    bool write(const QString& key, const QString& name, const QString& value) override {
      return !name.startsWith(u"Folder") && MemoryRegistry::write(key, name, value);
    }
  } full;
  Session other{Platform{full, messages, shell, mail, clock, windows}};
  other.settings().load();
  dlgParPakiet dialog(other, nullptr);
  for (const char* name : {"txtFolderPakiet", "txtFolderBaza", "txtFolderArch", "txtFolderTemp",
                           "txtFolderDokum", "txtFolderPomoc"})
    child<QLineEdit>(dialog, name)->setText(folder.path());
  dialog.show();
  child<QPushButton>(dialog, "cmdOk")->click();
  EXPECT_EQ(messages.takeOnly().title, QStringLiteral("Błąd zapisu folderu"));
  EXPECT_TRUE(dialog.isVisible());
}

TEST_F(Desktop, SettingsTakeEffectAtOnce) {
  addDatabase(QStringLiteral("a.mdb"));
  start();
  EXPECT_FALSE(window->autoRefresh().isOn());
  TestForm* form = show(QStringLiteral("sloSWGPC"));
  auto* edited = new QLineEdit(form);
  auto* shown = new QLineEdit(form);
  auto* list = new QTreeWidget(form);
  setFieldReadOnly(*edited, false, session.settings().program().readOnlyColor);
  setFieldReadOnly(*shown, true, session.settings().program().readOnlyColor);
  const QColor usual = edited->palette().color(QPalette::Base), chosen(QStringLiteral("#aabbcc"));
  onDialog<dlgParPakiet>([&](dlgParPakiet& dialog) {
    onDialog<QColorDialog>([&](QColorDialog& colors) {
      colors.setCurrentColor(chosen);
      colors.accept();
    });
    child<QPushButton>(dialog, "kolTlo")->click();
    auto* users = child<QComboBox>(dialog, "cmbUzyt");
    EXPECT_GE(users->findText(QStringLiteral("Kos Ewa")), 0);
    EXPECT_EQ(users->currentData().toString(), QStringLiteral("AD"));
    for (const char* name : {"txtFolderPakiet", "txtFolderBaza", "txtFolderArch", "txtFolderTemp",
                             "txtFolderDokum", "txtFolderPomoc"})
      child<QLineEdit>(dialog, name)->setText(folder.path());
    child<QCheckBox>(dialog, "cbAutoRefresh")->setChecked(true);
    child<QComboBox>(dialog, "cmbKarFontSize")->setCurrentText(QStringLiteral("12"));
    child<QComboBox>(dialog, "cmbSloFontSize")->setCurrentText(QStringLiteral("14"));
    child<QPushButton>(dialog, "cmdOk")->click();
  });
  action("mnuParPakiet")->trigger();
  EXPECT_TRUE(window->autoRefresh().isOn());
  EXPECT_EQ(session.settings().program().listFontSize, 12);
  EXPECT_EQ(session.settings().helpFile(), folder.path() + QStringLiteral("/Tandeko.chm"));
  EXPECT_EQ(shown->palette().color(QPalette::Base), chosen);
  EXPECT_EQ(edited->palette().color(QPalette::Base), usual);
  EXPECT_EQ(list->font().pointSize(), 14);
}

TEST_F(Desktop, HelpFileLiesWithTheProgramOrInTheHelpFolder) {
  session.settings().setOwnFolder(folder.path());
  session.settings().store(QStringLiteral("Folder pomoc"), QStringLiteral("/pomoc"));
  session.settings().load();
  EXPECT_EQ(helpFile(session), QStringLiteral("/pomoc/Tandeko.chm"));
  QDir(folder.path()).mkdir(QStringLiteral("Help"));
  QFile(file(QStringLiteral("Help/Tandeko.chm"))).open(QIODevice::WriteOnly);
  EXPECT_EQ(helpFile(session), file(QStringLiteral("Help/Tandeko.chm")));
}

TEST_F(Desktop, WindowsAreArrangedWithoutOverlapping) {
  start();
  window->resize(1000, 700);
  window->show();
  for (const char16_t* name : {u"dokA", u"dokB", u"dokC"}) show(QString::fromUtf16(name));
  const auto places = [this] {
    QList<QRect> all;
    for (const ChildForm* form : window->forms()) all << form->parentWidget()->geometry();
    return all;
  };
  const auto apart = [](const QList<QRect>& all) {
    for (int i = 0; i < all.size(); ++i)
      for (int j = 0; j < i; ++j)
        if (all[i].intersects(all[j])) return false;
    return true;
  };
  action("mnuOknoPoziomo")->trigger();
  QList<QRect> rows = places();
  EXPECT_TRUE(apart(rows));
  EXPECT_EQ(rows[0].left(), rows[2].left());
  EXPECT_LT(rows[0].top(), rows[1].top());
  action("mnuOknoPionowo")->trigger();
  QList<QRect> columns = places();
  EXPECT_TRUE(apart(columns));
  EXPECT_EQ(columns[0].top(), columns[2].top());
  EXPECT_LT(columns[0].left(), columns[1].left());
  action("mnuOknoKaskada")->trigger();
  EXPECT_FALSE(apart(places()));
  for (ChildForm* form : window->forms()) form->parentWidget()->showMinimized();
  window->forms()[0]->parentWidget()->move(300, 50);
  action("mnuOknoUporzadkuj")->trigger();
  EXPECT_TRUE(apart(places()));
  EXPECT_EQ(places()[0].bottom(), places()[1].bottom());
}

TEST_F(Desktop, CommandsOfLaterVersionsAreOffAndSaySo) {
  addDatabase(QStringLiteral("a.mdb"));
  start();
  int later = 0;
  for (QAction* entry : window->menuBar()->findChildren<QAction*>()) {
    const MenuLine* line = lineOf(entry);
    if (!line || line->need != Need::Later) continue;
    ++later;
    EXPECT_FALSE(entry->isEnabled()) << entry->objectName().toStdString();
    EXPECT_FALSE(entry->statusTip().isEmpty()) << entry->objectName().toStdString();
  }
  EXPECT_GT(later, 0);
}

TEST_F(Desktop, TheWindowComesBackWhereItWasButNeverOutsideTheScreen) {
  const QRect screen = QGuiApplication::primaryScreen()->availableGeometry();
  const struct {
    const char16_t *size, *place;
    QSize expected;  // empty: whatever fits
    bool maximised;
  } cases[] = {
      {u"", u"", {}, false},
      {u"max", u"10 20 600 400", {}, true},
      {u"640x480", u"10 20 600 400", {640, 480}, false},
      {u"99999x99999", u"", screen.size(), false},
      {u"", u"10 20 600 400", {600, 400}, false},
      {u"", u"10 20 600 400 max", {}, true},
      {u"", u"90000 90000 600 400", {}, false},
      {u"", u"a b c", {}, false},
  };
  for (const auto& c : cases) {
    const std::string what = (QString::fromUtf16(c.size) + u'/' + QString::fromUtf16(c.place)).toStdString();
    session.settings().store(QStringLiteral("Rozmiar MDI"), QString::fromUtf16(c.size));
    session.settings().store(QStringLiteral("Polozenie MDI"), QString::fromUtf16(c.place));
    session.settings().load();
    QMainWindow main;
    placeMainWindow(main, session.settings());
    EXPECT_EQ(main.isMaximized(), c.maximised) << what;
    if (!c.expected.isEmpty()) {
      EXPECT_EQ(main.size(), c.expected) << what;
    }
    EXPECT_TRUE(screen.intersects(main.geometry())) << what;
    EXPECT_GE(main.width(), 200) << what;
  }
  start();
  window->setGeometry(30, 40, 500, 350);
  EXPECT_TRUE(window->close());
  EXPECT_EQ(session.settings().stored(QStringLiteral("Polozenie MDI")), QStringLiteral("30 40 500 350"));
}

TEST_F(Desktop, TheSplashGivesWayToAQuestion) {
  frmSplash splash;
  splash.show();
  QDialog question;
  question.show();
  EXPECT_FALSE(splash.isVisible());
}

TEST_F(Desktop, HelpShowsItsContentsOrIndexOrSaysWhyNot) {
  start();
  const QString path = session.settings().helpFile();
  action("mnuPomocSpis")->trigger();
  action("mnuPomocIndeks")->trigger();
  EXPECT_EQ(shell.opened, QStringList({path + QStringLiteral(" contents"), path + QStringLiteral(" index")}));
  EXPECT_TRUE(messages.shown.empty());

  const QString opening = QStringLiteral("Nie można otworzyć pliku pomocy: ") + path;
  const std::pair<ShellResult, QString> refusals[] = {
      {ShellResult::NotFound, QStringLiteral("Nie można zlokalizować pliku pomocy: ") + path},
      {ShellResult::Failed, opening},
      {ShellResult::NoProgram, opening + QStringLiteral(" - brak programu do wyświetlania plików pomocy. "
                                                        "Podręcznik użytkownika (pdf) w menu Pomoc ma tę "
                                                        "samą treść.")},
  };
  for (const auto& [result, text] : refusals) {
    shell.result = result;
    action("mnuPomocSpis")->trigger();
    EXPECT_EQ(messages.takeOnly().text, text);
  }
}

TEST_F(Desktop, MissingToolsAreNamed) {
  // Beside the test programs lies the tool itself.
  session.settings().setOwnFolder(folder.path());
  start();
  action("mnuNarzWersja")->trigger();
  action("mnuNarzFundamo")->trigger();
  ASSERT_EQ(messages.shown.size(), 2u);
  EXPECT_EQ(messages.shown[1].icon, Icon::Information);
  EXPECT_EQ(
      messages.shown[1].text,
      QStringLiteral(
          "Nie można zlokalizować pliku: Fundamo.exe, plik ten powinien znajdować się w katalogu programów "
          "pakietu Lorvel: ") +
          folder.path());
  messages.shown.pop_back();
  EXPECT_EQ(
      messages.takeOnly().text,
      QStringLiteral(
          "Nie można zlokalizować pliku: Update.exe, plik ten powinien znajdować się w katalogu programów "
          "pakietu Lorvel: ") +
          folder.path());
  shell.result = ShellResult::NotFound;
  action("mnuPomocPodrecznik")->trigger();
  EXPECT_TRUE(messages.takeOnly().text.startsWith(
      QStringLiteral("Aby otworzyć podręcznik użytkownika wymagane jest zainstalowanie przeglądarki Acrobat "
                     "Reader. Program do pobrania pod adresem: http")));
}
