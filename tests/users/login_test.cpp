#include "users/login.h"

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

#include "support/dialogs.h"
#include "support/test_database.h"
#include "users/dlgBazaHaslo.h"
#include "users/dlgUserHaslo.h"
#include "users/dlgUserLista.h"
#include "users/password.h"

using namespace tandeko;

namespace {

struct Login : testing::Test, DatabaseSession {
  bool login(QString& user) { return BaseLogin(session, user, false); }

  static QString scrambled(const char16_t* password) {
    return QStringLiteral("'%1'").arg(PassEncode(kPasswordKey, QString::fromUtf16(password), kPasswordPad)
                                          .replace(u'\'', QStringLiteral("''")));
  }
  // Picks a user in the list; `passwords` are then tried one after the other, none cancels.
  static void pick(const QString& id, const QStringList& passwords) {
    onDialog<dlgUserLista>([id, passwords](dlgUserLista& dialog) {
      auto* list = child<QTreeWidget>(dialog, "lstUzyt");
      const auto found = list->findItems(id, Qt::MatchFixedString, 0);
      if (found.isEmpty()) return dialog.reject();
      list->setCurrentItem(found.first());
      onDialog<dlgUserHaslo>([passwords](dlgUserHaslo& password) {
        for (const QString& typed : passwords) {
          child<QLineEdit>(password, "txtHaslo")->setText(typed);
          child<QPushButton>(password, "cmdOK")->click();
        }
        if (password.isVisible()) password.reject();
      });
      child<QPushButton>(dialog, "cmdOK")->click();
      if (dialog.isVisible()) dialog.reject();
    });
  }
};

}  // namespace

TEST_F(Login, WithoutAdministratorOneIsMade) {
  addUser(QStringLiteral("JN"), false, QStringLiteral("Null"), QStringLiteral("E+W"));
  QString user = QStringLiteral("AD");
  EXPECT_TRUE(login(user));
  EXPECT_EQ(
      value(QStringLiteral("SELECT Nazwisko & Imie & Admin & Aktywny FROM dboso WHERE Indoso = 'AD'")),
      value(QStringLiteral("SELECT 'AdministratorProgramu' & True & True FROM dboso WHERE Indoso = 'AD'")));
}

TEST_F(Login, AnAdministratorWhoLostTheFlagGetsItBack) {
  addUser(QStringLiteral("AD"), false);
  execute(QStringLiteral("UPDATE dboso SET Aktywny = False"));
  QString user = QStringLiteral("AD");
  EXPECT_TRUE(login(user));
  EXPECT_EQ(value(QStringLiteral(
                "SELECT count(*) FROM dboso WHERE Indoso = 'AD' And Admin = True And Aktywny = True "
                "And Nazwisko = 'Nowak'")),
            QStringLiteral("1"));
}

TEST_F(Login, RememberedUserIsAcceptedOnlyWhenNothingHasToBeAsked) {
  const struct {
    const char* what;
    bool admin;
    QString password;
    bool accepted;
  } cases[] = {
      {"administrator without password", true, QStringLiteral("Null"), true},
      {"administrator with the empty text", true, QStringLiteral("''"), true},
      {"administrator with a password", true, scrambled(u"abc"), false},
      {"user with the empty text, nothing typed yet", false, QStringLiteral("''"), true},
      {"user without password", false, QStringLiteral("Null"), false},
  };
  addUser(QStringLiteral("ZZ"), true);
  for (const auto& c : cases) {
    execute(QStringLiteral("DELETE FROM dboso WHERE Indoso = 'JN'"));
    addUser(QStringLiteral("JN"), c.admin, c.password);
    QString user = QStringLiteral("JN");
    const DialogDismisser dialogs;
    EXPECT_EQ(login(user), c.accepted) << c.what;
    EXPECT_EQ(dialogs.count(), c.accepted ? 0 : 1) << c.what;
  }
}

TEST_F(Login, ListHoldsActiveUsersOfTheProgram) {
  addUser(QStringLiteral("A1"), true);
  addUser(QStringLiteral("U1"), false, QStringLiteral("Null"), QStringLiteral("E+W"));
  addUser(QStringLiteral("U2"), false);
  addUser(QStringLiteral("U3"), false, QStringLiteral("Null"), QStringLiteral("P+W"));
  execute(QStringLiteral("UPDATE dboso SET Aktywny = False WHERE Indoso = 'U3'"));
  QStringList ids;
  for (const ListedUser& user : usersOfProgram(session.database())) ids << user.indoso + u' ' + user.name;
  ids.sort();
  EXPECT_EQ(ids, (QStringList{QStringLiteral("A1 Nowak Jan"), QStringLiteral("U1 Nowak Jan")}));
}

TEST_F(Login, PasswordIsAskedUntilItFitsOrTheUserGivesUp) {
  addUser(QStringLiteral("AD"), true, scrambled(u"abc"));
  QString user;
  pick(QStringLiteral("AD"), {QStringLiteral("xyz"), QStringLiteral("abc")});
  EXPECT_TRUE(login(user));
  EXPECT_EQ(user, QStringLiteral("AD"));
  EXPECT_EQ(session.LastLoginPassword(), QStringLiteral("abc"));
  const Message refusal = messages.takeOnly();
  EXPECT_EQ(refusal.text, QStringLiteral("Błędne hasło, brak dostępu."));
  EXPECT_EQ(refusal.icon, Icon::Information);

  user.clear();
  pick(QStringLiteral("AD"), {QStringLiteral("xyz")});
  EXPECT_FALSE(login(user));
  EXPECT_EQ(user, QString());
}

TEST_F(Login, BothFormsOfStoredPasswordsAndTheSecondAttempt) {
  QString oldForm = PassEncode(kPasswordKey, QStringLiteral("abc"), kPasswordPad);
  oldForm.remove(QChar(kPasswordEnd));
  const struct {
    const char* what;
    QString stored;
    QStringList attempts;
    bool accepted;
    size_t refusals;
  } cases[] = {
      {"new form, whole", scrambled(u"abc"), {QStringLiteral("abc")}, true, 0},
      {"new form, a beginning at the first attempt", scrambled(u"abc"), {QStringLiteral("ab")}, false, 1},
      {"new form, a beginning at the second attempt",
       scrambled(u"abc"),
       {QStringLiteral("ab"), QStringLiteral("ab")},
       true,
       1},
      {"old form, a beginning",
       QStringLiteral("'%1'").arg(oldForm.replace(u'\'', QStringLiteral("''"))),
       {QStringLiteral("ab")},
       true,
       0},
      {"no password, anything typed", QStringLiteral("Null"), {QStringLiteral("xyz")}, true, 0},
  };
  addUser(QStringLiteral("ZZ"), true);
  for (const auto& c : cases) {
    execute(QStringLiteral("DELETE FROM dboso WHERE Indoso = 'JN'"));
    execute(QStringLiteral("DELETE FROM dbupr"));
    addUser(QStringLiteral("JN"), false, c.stored, QStringLiteral("E+W"));
    messages.shown.clear();
    QString user;
    pick(QStringLiteral("JN"), c.attempts);
    EXPECT_EQ(login(user), c.accepted) << c.what;
    EXPECT_EQ(messages.shown.size(), c.refusals) << c.what;
    EXPECT_EQ(user, c.accepted ? QStringLiteral("JN") : QString()) << c.what;
  }
}

TEST_F(Login, AnInactiveAdministratorWithoutPasswordIsStillTakenWhenRemembered) {
  addUser(QStringLiteral("AD"), true);
  execute(QStringLiteral("UPDATE dboso SET Aktywny = False"));
  QString user = QStringLiteral("AD");
  const DialogDismisser dialogs;
  EXPECT_TRUE(login(user));
  EXPECT_EQ(dialogs.count(), 0);
}

TEST_F(Login, CaptionNamesTheDatabase) {
  dlgUserLista dialog(session, nullptr);
  dialog.SetDatabase(session.database());
  EXPECT_EQ(dialog.windowTitle(), QStringLiteral("Logowanie do: firma"));
}

TEST_F(Login, ChangingThePasswordNeedsTheOldOne) {
  addUser(QStringLiteral("AD"), true, scrambled(u"abc"));
  dlgUserHaslo dialog(session, nullptr);
  dialog.SetDatabase(session.database());
  dialog.setUser(QStringLiteral("AD"));
  auto* typed = child<QLineEdit>(dialog, "txtHaslo");
  auto* change = child<QPushButton>(dialog, "cmdZmien");

  change->click();
  const Message refusal = messages.takeOnly();
  EXPECT_EQ(refusal.icon, Icon::Information);
  EXPECT_EQ(refusal.text, QStringLiteral("Aby zmienić hasło należy podać aktualnie obowiązujące hasło."));
  EXPECT_EQ(refusal.title, QStringLiteral("Błędne hasło"));

  typed->setText(QStringLiteral("abc"));
  onDialog<dlgBazaHaslo>([this](dlgBazaHaslo& fresh) {
    EXPECT_EQ(fresh.windowTitle(), QStringLiteral("Hasło: Nowak Jan"));
    child<QLineEdit>(fresh, "txtHaslo")->setText(QStringLiteral("nowe1"));
    child<QPushButton>(fresh, "cmdOK")->click();
    EXPECT_EQ(
        messages.takeOnly().text,
        QStringLiteral("Hasła wprowadzone w polach: 'Wprowadź' i 'Potwierdź' muszą być identyczne. Popraw "
                       "hasło i spróbuj ponownie."));
    child<QLineEdit>(fresh, "txtPotwierdz")->setText(QStringLiteral("nowe1"));
    child<QPushButton>(fresh, "cmdOK")->click();
  });
  change->click();
  EXPECT_EQ(dialog.Tag(), QStringLiteral("Zmien"));
  EXPECT_EQ(PassDecode(kPasswordKey, value(QStringLiteral("SELECT Haslo FROM dboso WHERE Indoso = 'AD'"))),
            QStringLiteral("nowe1") + QChar(kPasswordEnd));
  child<QPushButton>(dialog, "cmdOK")->click();
  EXPECT_EQ(dialog.Tag(), QStringLiteral("Ok"));

  storePassword(session.database(), QStringLiteral("AD"), {});
  EXPECT_EQ(value(QStringLiteral("SELECT count(*) FROM dboso WHERE Indoso = 'AD' And Haslo = ''")),
            QStringLiteral("1"));
}

TEST_F(Login, SessionTakesTheUsersRecordAndRights) {
  addUser(QStringLiteral("JN"), false, QStringLiteral("Null"), QStringLiteral("P+W"));
  execute(QStringLiteral("UPDATE dboso SET Telefon = '12', Indkom = 3"));
  EXPECT_TRUE(BaseSetUser(session, QStringLiteral("JN")));
  EXPECT_EQ(session.CurrentUserId(), QStringLiteral("JN"));
  EXPECT_EQ(session.CurrentUserName(), QStringLiteral("Jan Nowak"));
  EXPECT_EQ(session.CurrentUserPhone(), QStringLiteral("12"));
  EXPECT_EQ(session.CurrentUserDept(), 3);
  EXPECT_FALSE(session.CurrentUserAdmin());
  EXPECT_EQ(session.CurrentLevel(), QStringLiteral("P+W"));
  EXPECT_TRUE(session.UserCanWrite());

  EXPECT_TRUE(BaseSetUser(session, QStringLiteral("XX")));
  EXPECT_EQ(session.CurrentUserId(), QStringLiteral("AD"));
  EXPECT_EQ(session.CurrentUserName(), QStringLiteral("Administrator Programu"));
  EXPECT_TRUE(session.CurrentUserAdmin());
  EXPECT_EQ(session.CurrentLevel(), QStringLiteral("E+W"));
}

TEST_F(Login, AReplicaNarrowsTheRights) {
  addUser(QStringLiteral("AD"), true);
  session.setDatabaseName(QStringLiteral("Replika firma.mdb"));
  EXPECT_TRUE(BaseSetUser(session, QStringLiteral("AD")));
  EXPECT_EQ(session.CurrentLevel(), QStringLiteral("E+W+R"));
  EXPECT_EQ(session.parameterRead(QStringLiteral("BaseReplicaOpen")), QStringLiteral("1"));
  EXPECT_TRUE(messages.shown.empty());

  session.parameterWrite(QStringLiteral("BaseReplicaSync"), QStringLiteral("1"));
  EXPECT_TRUE(BaseSetUser(session, QStringLiteral("AD")));
  EXPECT_EQ(session.CurrentLevel(), QStringLiteral("P+W"));
  const Message notice = messages.takeOnly();
  EXPECT_EQ(notice.icon, Icon::Information);
  EXPECT_EQ(
      notice.text,
      QStringLiteral(
          "Dane z repliki bazy zostały już wczytane do bazy źródłowej, co uniemożliwia jej edycję. Baza "
          "zostanie otwarta w trybie: Tylko odczyt. Aby móc edytować bazę repliki otwórz bazę źródłową i "
          "utwórz ponownie replikę bazy."));
}

TEST_F(Login, ReadOnlyRules) {
  addUser(QStringLiteral("JN"), false, QStringLiteral("Null"), QStringLiteral("E+W"));
  const struct {
    const char* level;
    const char* rights;  // parameter UPRJNswrew
    const char* table;
    int key;
    bool readOnly;
  } cases[] = {
      {"E+W", "", "", 0, false},
      {"P+W", "", "", 0, true},
      {"E+W", "", "swrew", 5, false},
      {"E+W", "", "swrew", 0, true},
      {"P+W", "12e,", "swrew", 12, false},
      {"P+W", "12e,", "swrew", 2, true},  // 2 is not 12
      {"E+W", "12e,15p,", "swrew", 15, true},
      {"E+W", "12e,15p,", "swrew", 5, false},
      {"E+W", "0e,", "swrew", 0, true},
      {"E+W", "15p,", "swgew", 15, false},
  };
  for (const auto& c : cases) {
    UserState user;
    user.id = QStringLiteral("JN");
    user.level = QLatin1String(c.level);
    session.setUser(user);
    session.parameterWrite(QStringLiteral("UPRJNswrew"), QLatin1String(c.rights));
    EXPECT_EQ(session.UserReadOnly(QLatin1String(c.table), c.key), c.readOnly)
        << c.level << " " << c.rights << " " << c.table << " " << c.key;
  }
}

TEST_F(Login, AFailureIsReportedUnderTheProceduresName) {
  session.closeDatabase();
  QString user;
  EXPECT_FALSE(login(user));
  EXPECT_FALSE(BaseSetUser(session, QStringLiteral("AD")));
  ASSERT_EQ(failures.failures.size(), 2u);
  EXPECT_EQ(failures.failures[0].procedure, QStringLiteral("BaseLogin"));
  EXPECT_EQ(failures.failures[1].procedure, QStringLiteral("BaseSetUser"));
  EXPECT_EQ(failures.failures[0].kind(), QStringLiteral("DAO"));
}
