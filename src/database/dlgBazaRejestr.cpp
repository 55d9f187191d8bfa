#include "database/dlgBazaRejestr.h"

#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QIcon>
#include <QScreen>

#include "database/base_check.h"
#include "database/handy_list.h"
#include "errors/error_reporter.h"
#include "platform/file_probe.h"
#include "session/names.h"
#include "ui_dlgBazaRejestr.h"

namespace tandeko {

namespace {

enum Column { kName, kFolder, kState };

QString stateText(const HandyEntry& entry) {
  if (!entry.active) return QStringLiteral("Nieaktywna");
  return probeFile(entry.path(), 1000) == FileAnswer::Present ? QStringLiteral("Aktywna")
                                                              : QStringLiteral("Brak dostępu do pliku");
}

}  // namespace

dlgBazaRejestr::dlgBazaRejestr(Session& session, QWidget* parent)
    : QDialog(parent), session_(session), ui_(std::make_unique<Ui::dlgBazaRejestr>()) {
  ui_->setupUi(this);
  const QFontMetrics metrics(font());
  ui_->lstBazy->setHeaderLabels({QStringLiteral("Nazwa"), QStringLiteral("Folder"), QStringLiteral("Stan")});
  ui_->lstBazy->setMinimumSize(metrics.averageCharWidth() * 50, metrics.lineSpacing() * 8);
  ui_->lstBazy->header()->resizeSection(kName, metrics.averageCharWidth() * 26);
  ui_->lstBazy->header()->resizeSection(kFolder, metrics.averageCharWidth() * 40);
  ui_->lstBazy->setSortingEnabled(true);
  ui_->lstBazy->sortByColumn(kName, Qt::AscendingOrder);
  connect(ui_->lstBazy, &QTreeWidget::currentItemChanged, this, &dlgBazaRejestr::showChoice);
  connect(ui_->cmdDodaj, &QPushButton::clicked, this, &dlgBazaRejestr::add);
  connect(ui_->cmdUsun, &QPushButton::clicked, this, &dlgBazaRejestr::removeChosen);
  connect(ui_->cbAktywna, &QCheckBox::clicked, this, &dlgBazaRejestr::toggleActive);
  connect(ui_->cmdZamknij, &QPushButton::clicked, this, &QDialog::accept);
  const QSize wanted(metrics.averageCharWidth() * 110, metrics.lineSpacing() * 18);
  resize(wanted.boundedTo(screen()->availableSize() * 0.9));
  fill(session.databaseName());
}

dlgBazaRejestr::~dlgBazaRejestr() = default;

QString dlgBazaRejestr::chosen() const {
  const QTreeWidgetItem* item = ui_->lstBazy->currentItem();
  return item ? item->text(kName) : QString();
}

void dlgBazaRejestr::fill(const QString& selected) {
  ui_->lstBazy->clear();
  for (const HandyEntry& entry : handyList(session_)) {
    auto* item = new QTreeWidgetItem(ui_->lstBazy, {entry.subkey, entry.folder, stateText(entry)});
    item->setIcon(kName, QIcon(QStringLiteral(":/icons/database-16.png")));
    item->setToolTip(kFolder, entry.path());
    item->setData(kName, Qt::UserRole, entry.active);
    if (entry.subkey == selected) ui_->lstBazy->setCurrentItem(item);
  }
  if (!ui_->lstBazy->currentItem()) ui_->lstBazy->setCurrentItem(ui_->lstBazy->topLevelItem(0));
  showChoice();
}

void dlgBazaRejestr::showChoice() {
  const QTreeWidgetItem* item = ui_->lstBazy->currentItem();
  ui_->cmdUsun->setEnabled(item);
  ui_->cbAktywna->setEnabled(item);
  ui_->cbAktywna->setChecked(item && item->data(kName, Qt::UserRole).toBool());
}

void dlgBazaRejestr::add() {
  FileChoice choice;
  choice.title = QStringLiteral("Wskaż bazę danych programu ") + kProgramName;
  choice.folder = session_.settings().program().folderDatabases;
  choice.filter = QStringLiteral("Baza danych MS Access (*.mdb)");
  choice.extension = QStringLiteral("mdb");
  const QString path = session_.messages().openFile(choice);
  if (path.isEmpty()) return;
  const BaseCheckResult result = BaseCheck(session_, path, {});
  if (!result.ok) return;
  handyAdd(session_, path);
  const QString subkey = handyEntryOf(session_, path).value_or(HandyEntry{}).subkey;
  if (result.keepPassword) handyKeepPassword(session_, subkey, result.password);
  fill(subkey);
}

void dlgBazaRejestr::removeChosen() {
  const QString subkey = chosen();
  const bool sure =
      session_.messages().ask(QStringLiteral("Usunąć bazę: ") + subkey +
                              QStringLiteral(" z podręcznej listy baz? Plik bazy pozostanie na dysku."));
  if (!sure) return;
  if (!handyRemove(session_, subkey))
    session_.messages().show(
        {QStringLiteral("Błąd usuwania klucza bazy z rejestru."), {}, Icon::None, Buttons::Ok, Answer::Ok});
  fill({});
}

void dlgBazaRejestr::toggleActive(bool active) {
  const QString subkey = chosen();
  handySetActive(session_, subkey, active);
  fill(subkey);
}

}  // namespace tandeko
