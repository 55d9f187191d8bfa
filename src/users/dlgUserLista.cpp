#include "users/dlgUserLista.h"

#include <QApplication>
#include <QFileInfo>
#include <QHeaderView>

#include "errors/error_reporter.h"
#include "platform/text.h"
#include "session/names.h"
#include "ui_dlgUserLista.h"
#include "users/dlgUserHaslo.h"

namespace tandeko {

namespace {

// How far below the top of this dialog the password dialog stands, in inches.
constexpr double kPasswordOffset = 1000.0 / 1440.0;

}  // namespace

QList<ListedUser> usersOfProgram(jet::Database& database) {
  const QString query =
      QStringLiteral(
          "SELECT dboso.indoso, dboso.indoso & '\t' & dboso.nazwisko & ' ' & dboso.imie FROM dbupr RIGHT "
          "JOIN "
          "dboso ON dbupr.indoso = dboso.indoso WHERE dboso.Aktywny = True AND ( dboso.Admin = True Or "
          "dbupr.indprg = '") +
      kProgramCode + QStringLiteral("' ) ORDER BY dboso.Nazwisko, dboso.Imie ");
  QList<ListedUser> users;
  const auto rows = database.openRecordset(toU16(query), jet::RecordsetType::Snapshot);
  for (; !rows->eof(); rows->moveNext()) {
    const QString shown = toText(rows->field(1).value());
    users << ListedUser{toText(rows->field(size_t{0}).value()), shown.section(u'\t', 1)};
  }
  return users;
}

dlgUserLista::dlgUserLista(Session& session, QWidget* parent)
    : QDialog(parent), session_(session), ui_(std::make_unique<Ui::dlgUserLista>()) {
  ui_->setupUi(this);
  const QFontMetrics metrics(font());
  ui_->lstUzyt->setMinimumSize(metrics.averageCharWidth() * 48, metrics.lineSpacing() * 9);
  ui_->lstUzyt->setColumnWidth(0, metrics.averageCharWidth() * 12);
  connect(ui_->cmdOK, &QPushButton::clicked, this, &dlgUserLista::askPassword);
  connect(ui_->cmdAnuluj, &QPushButton::clicked, this, &dlgUserLista::reject);
  connect(ui_->lstUzyt, &QTreeWidget::itemDoubleClicked, this, &dlgUserLista::askPassword);
}

dlgUserLista::~dlgUserLista() = default;

void dlgUserLista::SetDatabase(jet::Database& database) {
  database_ = &database;
  setWindowTitle(QStringLiteral("Logowanie do: ") +
                 QFileInfo(fromPath(database.path())).fileName().chopped(4));
  // The caption names the firm: it is to be read whole, beside the buttons of the frame.
  const QFontMetrics metrics(font());
  const int captionWidth = metrics.horizontalAdvance(windowTitle()) + metrics.averageCharWidth() * 24;
  ui_->lstUzyt->setMinimumWidth(qMax(ui_->lstUzyt->minimumWidth(), captionWidth));
  ui_->lstUzyt->clear();
  for (const ListedUser& user : usersOfProgram(database))
    new QTreeWidgetItem(ui_->lstUzyt, {user.indoso, user.name});
  setProposedUser({});
}

void dlgUserLista::setProposedUser(const QString& indoso) {
  const auto found = ui_->lstUzyt->findItems(indoso, Qt::MatchFixedString, 0);
  ui_->lstUzyt->setCurrentItem(found.isEmpty() ? ui_->lstUzyt->topLevelItem(0) : found.first());
}

void dlgUserLista::askPassword() {
  const QTreeWidgetItem* item = ui_->lstUzyt->currentItem();
  if (!item) return;
  QApplication::setOverrideCursor(Qt::WaitCursor);
  dlgUserHaslo dialog(session_, this);
  dialog.SetDatabase(*database_);
  dialog.setUser(item->text(0));
  dialog.adjustSize();
  dialog.move(x() + (width() - dialog.width()) / 2, y() + static_cast<int>(kPasswordOffset * logicalDpiY()));
  QApplication::restoreOverrideCursor();
  dialog.exec();
  if (dialog.Tag() != u"Ok") return;
  tag_ = QStringLiteral("Ok");
  chosen_ = item->text(0);
  name_ = dialog.userName();
  level_ = dialog.level();
  session_.setLastLoginPassword(dialog.typedPassword());
  accept();
}

void dlgUserLista::reject() {
  tag_ = QStringLiteral("Anuluj");
  QDialog::reject();
}

}  // namespace tandeko
