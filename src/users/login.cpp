#include "users/login.h"

#include <QApplication>

#include "errors/error_reporter.h"
#include "platform/text.h"
#include "session/names.h"
#include "users/dlgUserLista.h"

namespace tandeko {

namespace {

class WaitCursor {
 public:
  WaitCursor() { QApplication::setOverrideCursor(Qt::WaitCursor); }
  ~WaitCursor() { QApplication::restoreOverrideCursor(); }
  WaitCursor(const WaitCursor&) = delete;
  WaitCursor& operator=(const WaitCursor&) = delete;
};

std::unique_ptr<jet::Recordset> snapshot(jet::Database& database, const QString& query) {
  return database.openRecordset(toU16(query), jet::RecordsetType::Snapshot);
}

// A database always has an administrator: without one, "AD" is added or gets its rights back.
void ensureAdministrator(jet::Database& database) {
  if (!snapshot(database, QStringLiteral("SELECT * FROM dboso WHERE Admin = True "))->eof()) return;
  const auto user =
      database.openRecordset(u"SELECT * FROM dboso WHERE indoso = 'AD' ", jet::RecordsetType::Dynaset);
  if (user->eof()) {
    user->addNew();
    user->field(u"Indoso").setValue(u"AD");
    user->field(u"Nazwisko").setValue(u"Administrator");
    user->field(u"Imie").setValue(u"Programu");
  } else {
    user->edit();
  }
  user->field(u"Aktywny").setValue(true);
  user->field(u"Admin").setValue(true);
  user->update();
}

QString userQuery(const QString& userId) {
  return QStringLiteral("SELECT * FROM dboso WHERE indoso = '") + userId + u'\'';
}

// A remembered user who needs no dialog.
bool acceptedAtOnce(Session& session, const QString& userId) {
  if (userId.isEmpty()) return false;
  const auto user = snapshot(session.database(), userQuery(userId));
  if (user->eof()) return false;
  const jet::Value stored = user->value(u"Haslo");
  if (toBool(user->value(u"Admin")) && (stored.isNull() || toText(stored).isEmpty())) return true;
  return !stored.isNull() && toText(stored) == session.LastLoginPassword();
}

}  // namespace

bool BaseLogin(Session& session, QString& userId, bool closeForms) {
  return guarded(session, "BaseLogin", [&] {
    const WaitCursor cursor;
    jet::Database& database = session.database();
    ensureAdministrator(database);
    if (acceptedAtOnce(session, userId)) return true;
    dlgUserLista dialog(session, session.frame() ? session.frame()->window() : nullptr);
    dialog.SetDatabase(database);
    dialog.setProposedUser(userId);
    QApplication::setOverrideCursor(Qt::ArrowCursor);
    dialog.exec();
    QApplication::restoreOverrideCursor();
    if (dialog.Tag() != u"Ok") return false;
    if (closeForms && !session.FormCloseAll()) return false;
    userId = dialog.chosenUser();
    return true;
  });
}

bool BaseSetUser(Session& session, const QString& userId) {
  return guarded(session, "BaseSetUser", [&] {
    UserState state;
    state.id = userId;
    const auto user = snapshot(session.database(), userQuery(userId));
    if (user->eof()) {
      state.id = QStringLiteral("AD");
      state.name = QStringLiteral("Administrator Programu");
      state.admin = true;
    } else {
      state.firstName = toText(user->value(u"Imie"));
      state.surname = toText(user->value(u"Nazwisko"));
      state.name = state.firstName + u' ' + state.surname;
      state.phone = toText(user->value(u"Telefon"));
      state.email = toText(user->value(u"Email"));
      state.admin = toBool(user->value(u"Admin"));
      state.dept = toInt(user->value(u"Indkom"));
    }
    const auto rights =
        snapshot(session.database(), QStringLiteral("SELECT * FROM dbupr WHERE indprg = '") + kProgramCode +
                                         QStringLiteral("' And indoso = '") + userId + u'\'');
    state.level = rights->eof() ? QStringLiteral("E+W") : toText(rights->value(u"Poziom"));
    if (session.databaseName().contains(u"Replika")) {
      state.level += QStringLiteral("+R");
      if (session.parameterRead(QStringLiteral("BaseReplicaSync"), QStringLiteral("0")) == u"1") {
        session.messages().inform(QStringLiteral(
            "Dane z repliki bazy zostały już wczytane do bazy źródłowej, co uniemożliwia jej edycję. Baza "
            "zostanie otwarta w trybie: Tylko odczyt. Aby móc edytować bazę repliki otwórz bazę źródłową i "
            "utwórz ponownie replikę bazy."));
        state.level = QStringLiteral("P+W");
      }
      session.parameterWrite(QStringLiteral("BaseReplicaOpen"), QStringLiteral("1"));
    }
    session.setUser(state);
    if (session.frame()) {
      session.frame()->showUserName(state.name);
      session.frame()->updateCommands();
    }
  });
}

}  // namespace tandeko
