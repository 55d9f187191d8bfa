#include "database/dlgBazaRejestr.h"

#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QIcon>
#include <QScreen>
#include <vector>

#include "database/handy_list.h"
#include "errors/error_reporter.h"
#include "platform/file_probe.h"
#include "session/names.h"
#include "ui_dlgBazaRejestr.h"

namespace tandeko {

namespace {

enum Column { kName, kFolder, kState };

constexpr int kPatience = 1000;  // milliseconds, for all the files together

QString stateText(const HandyEntry& entry, FileProbe& file) {
  if (!entry.active) return QStringLiteral("Nieaktywna");
  return file.answer(kPatience) == FileAnswer::Present ? QStringLiteral("Aktywna")
                                                       : QStringLiteral("Brak dostępu do pliku");
}

}  // namespace

dlgBazaRejestr::dlgBazaRejestr(Session& session, QWidget* parent)
    : QDialog(parent), session_(session), ui_(std::make_unique<Ui::dlgBazaRejestr>()) {
  ui_->setupUi(this);
  const QFontMetrics metrics(font());
  ui_->lstBazy->setHeaderLabels({QStringLiteral("Nazwa"), QStringLiteral("Folder"), QStringLiteral("Stan")});
  ui_->lstBazy->setMinimumSize(metrics.averageCharWidth() * 50, metrics.lineSpacing() * 8);
  ui_->lstBazy->header()->setStretchLastSection(false);
  ui_->lstBazy->header()->setSectionResizeMode(kFolder, QHeaderView::Stretch);
  for (const Column column : {kName, kState})
    ui_->lstBazy->header()->setSectionResizeMode(column, QHeaderView::ResizeToContents);
  ui_->lstBazy->setSortingEnabled(true);
  ui_->lstBazy->sortByColumn(kName, Qt::AscendingOrder);
  connect(ui_->lstBazy, &QTreeWidget::currentItemChanged, this, &dlgBazaRejestr::showChoice);
  connect(ui_->cmdDodaj, &QPushButton::clicked, this, &dlgBazaRejestr::add);
  connect(ui_->cmdUsun, &QPushButton::clicked, this, &dlgBazaRejestr::removeChosen);
  connect(ui_->cmdSprawdz, &QPushButton::clicked, this, &dlgBazaRejestr::checkChosen);
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
  const QList<HandyEntry> entries = handyList(session_);
  std::vector<FileProbe> files;
  for (const HandyEntry& entry : entries) files.emplace_back(entry.path());
  for (qsizetype i = 0; i < entries.size(); ++i) {
    const HandyEntry& entry = entries[i];
    const QString state = stateText(entry, files[static_cast<size_t>(i)]);
    auto* item = new QTreeWidgetItem(ui_->lstBazy, {entry.subkey, entry.folder, state});
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
  ui_->cmdSprawdz->setEnabled(item);
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
  const BaseCheckResult result = check(path, {}, true);
  if (!result.ok) return;
  handyAdd(session_, path);
  const QString subkey = handyEntryOf(session_, path).value_or(HandyEntry{}).subkey;
  if (result.keepPassword) handyKeepPassword(session_, subkey, result.password);
  fill(subkey);
}

// What a listed database asks of its own session is no matter of the one that goes on.
BaseCheckResult dlgBazaRejestr::check(const QString& path, const QString& password, bool quiet) {
  const bool forced = session_.readOnlyForced();
  const BaseCheckResult result =
      BaseCheck(session_, path, password, {.askToUpdate = true, .reportNames = true, .quiet = quiet});
  session_.setReadOnlyForced(forced);
  return result;
}

void dlgBazaRejestr::checkChosen() {
  const QString subkey = chosen();
  for (const HandyEntry& entry : handyList(session_)) {
    if (entry.subkey != subkey) continue;
    const BaseCheckResult result = check(entry.path(), handyPassword(session_, subkey), false);
    if (result.ok && result.keepPassword) handyKeepPassword(session_, subkey, result.password);
  }
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
