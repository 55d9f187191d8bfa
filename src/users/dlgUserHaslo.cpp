#include "users/dlgUserHaslo.h"

#include "errors/error_reporter.h"
#include "platform/text.h"
#include "session/names.h"
#include "ui_dlgUserHaslo.h"
#include "users/dlgBazaHaslo.h"
#include "users/password.h"

namespace tandeko {

bool passwordAccepted(QString& expected, const QString& typed) {
  if (expected.isEmpty()) return true;
  const auto end = expected.indexOf(QChar(kPasswordEnd));
  if (end >= 0) {
    expected.truncate(end);
    return typed == expected;
  }
  return !typed.isEmpty() && expected.startsWith(typed);
}

void storePassword(jet::Database& database, const QString& indoso, const QString& password) {
  const QString query =
      QStringLiteral("SELECT * FROM dboso WHERE indoso = '") + indoso + QStringLiteral("' ");
  const auto user = database.openRecordset(toU16(query), jet::RecordsetType::Dynaset);
  if (user->eof()) return;
  user->edit();
  user->field(u"haslo").setValue(
      fromText(password.isEmpty() ? QString(u""_qs) : PassEncode(kPasswordKey, password, kPasswordPad)));
  user->update();
}

dlgUserHaslo::dlgUserHaslo(Session& session, QWidget* parent)
    : QDialog(parent), session_(session), ui_(std::make_unique<Ui::dlgUserHaslo>()) {
  ui_->setupUi(this);
  const int character = fontMetrics().averageCharWidth();
  ui_->txtIndoso->setFixedWidth(character * 9);
  ui_->txtNazwisko->setMinimumWidth(character * 26);
  for (QLineEdit* field : {ui_->txtIndoso, ui_->txtNazwisko}) {
    QPalette colors = field->palette();
    colors.setColor(QPalette::Base, session.settings().program().readOnlyColor);
    field->setPalette(colors);
  }
  ui_->txtHaslo->setFocus();
  connect(ui_->txtIndoso, &QLineEdit::textChanged, this, &dlgUserHaslo::loadUser);
  connect(ui_->cmdOK, &QPushButton::clicked, this, &dlgUserHaslo::confirm);
  connect(ui_->cmdAnuluj, &QPushButton::clicked, this, &dlgUserHaslo::reject);
  connect(ui_->cmdZmien, &QPushButton::clicked, this, &dlgUserHaslo::changePassword);
}

dlgUserHaslo::~dlgUserHaslo() = default;

void dlgUserHaslo::setUser(const QString& indoso) { ui_->txtIndoso->setText(indoso); }

QString dlgUserHaslo::userName() const { return ui_->txtNazwisko->text(); }

QString dlgUserHaslo::typedPassword() const { return ui_->txtHaslo->text(); }

void dlgUserHaslo::loadUser(const QString& indoso) {
  guarded(session_, "dlgUserHaslo", [&] {
    const QString query =
        QStringLiteral(
            "SELECT dboso.imie, dboso.nazwisko, dbupr.Poziom, dboso.Haslo FROM dbupr RIGHT JOIN dboso ON "
            "dbupr.indoso = dboso.indoso WHERE dboso.Aktywny = True AND dboso.Indoso = '") +
        indoso + QStringLiteral("' AND ( dboso.Admin = True Or dbupr.indprg = '") + kProgramCode +
        QStringLiteral("' ) ");
    const auto user = database_->openRecordset(toU16(query), jet::RecordsetType::Snapshot);
    if (user->eof()) return;
    ui_->txtNazwisko->setText(toText(user->field(1).value()) + u' ' + toText(user->field(0).value()));
    level_ = toText(user->field(2).value());
    const jet::Value stored = user->field(3).value();
    expected_ = stored.isNull() ? QString() : PassDecode(kPasswordKey, toText(stored));
  });
}

void dlgUserHaslo::confirm() {
  if (passwordAccepted(expected_, typedPassword())) {
    tag_ = QStringLiteral("Ok");
    accept();
  } else {
    refuse(QStringLiteral("Błędne hasło, brak dostępu."), {});
  }
}

void dlgUserHaslo::changePassword() {
  const QString typed = typedPassword();
  if (!expected_.isEmpty() && (typed.isEmpty() || !expected_.startsWith(typed))) {
    refuse(QStringLiteral("Aby zmienić hasło należy podać aktualnie obowiązujące hasło."),
           QStringLiteral("Błędne hasło"));
    return;
  }
  tag_ = QStringLiteral("Zmien");
  dlgBazaHaslo dialog(session_, dlgBazaHaslo::Mode::NewUser, QStringLiteral("Hasło: ") + userName(), this);
  if (dialog.exec() != QDialog::Accepted) return;
  guarded(session_, "dlgUserHaslo", [&] {
    storePassword(*database_, ui_->txtIndoso->text(), dialog.password());
    ui_->txtHaslo->setText(dialog.password());
    expected_ = dialog.password();
  });
}

void dlgUserHaslo::refuse(const QString& text, const QString& title) {
  session_.messages().inform(text, title);
  ui_->txtHaslo->clear();
  ui_->txtHaslo->setFocus();
}

void dlgUserHaslo::reject() {
  tag_ = QStringLiteral("Anuluj");
  QDialog::reject();
}

}  // namespace tandeko
