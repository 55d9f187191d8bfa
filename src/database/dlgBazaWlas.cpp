#include "database/dlgBazaWlas.h"

#include <QDir>
#include <QFileInfo>
#include <QHeaderView>
#include <QIntValidator>
#include <QLocale>
#include <QRegularExpression>

#include "database/base_facts.h"
#include "database/handy_list.h"
#include "database/upkeep.h"
#include "database/upkeep_names.h"
#include "errors/error_reporter.h"
#include "ui_dlgBazaWlas.h"

namespace tandeko {

namespace {

constexpr int kMostDays = 9999;
constexpr int kLongestPassword = 20;

const QString kOne = QStringLiteral("1");
const QString kZero = QStringLiteral("0");
const QString kRenameTitle = QStringLiteral("Zmiana nazwy bazy danych");

QString valueName(Upkeep kind, const QString& rest) {
  return (kind == Upkeep::Compact ? QStringLiteral("Defragmentacja") : QStringLiteral("Kopia")) + rest;
}

// What no system takes in the name of a file, and what would end in another folder.
bool isFileName(const QString& name) {
  static const QRegularExpression forbidden(QStringLiteral("[\\\\/:*?\"<>|\\x00-\\x1f]"));
  return !name.contains(forbidden) && !name.startsWith(u'.');
}

}  // namespace

dlgBazaWlas::dlgBazaWlas(Session& session, QWidget* parent)
    : QDialog(parent), session_(session), ui_(std::make_unique<Ui::dlgBazaWlas>()) {
  ui_->setupUi(this);
  const int unit = fontMetrics().averageCharWidth();
  setMinimumWidth(unit * 80);
  ui_->lstTabele->setHeaderLabels({QStringLiteral("Dane"), QStringLiteral("Liczba")});
  ui_->lstTabele->header()->setStretchLastSection(false);
  ui_->lstTabele->header()->setSectionResizeMode(0, QHeaderView::Stretch);
  ui_->lstTabele->header()->setSectionResizeMode(1, QHeaderView::ResizeToContents);
  ui_->lstTabele->setMinimumHeight(fontMetrics().lineSpacing() * 9);
  for (const ScheduleFields& fields : scheduleFields()) {
    fields.days->setValidator(new QIntValidator(1, kMostDays, this));
    fields.days->setFixedWidth(unit * 8);
    fields.last->setFixedWidth(unit * 18);
    connect(fields.on, &QCheckBox::toggled, this, &dlgBazaWlas::showScheduleState);
  }
  for (QLineEdit* field : findChildren<QLineEdit*>()) {
    if (!field->isReadOnly()) continue;
    QPalette palette = field->palette();
    palette.setColor(QPalette::Base, session.settings().program().readOnlyColor);
    field->setPalette(palette);
  }
  ui_->cmdKopiaFolder->setFixedWidth(ui_->cmdKopiaFolder->sizeHint().height() * 3 / 2);
  for (QLineEdit* field : {ui_->txtHaslo, ui_->txtHasloNowe, ui_->txtHasloPotwierdz})
    field->setMaxLength(kLongestPassword);
  connect(ui_->cmdZmienNazwe, &QPushButton::clicked, this, &dlgBazaWlas::rename);
  connect(ui_->cmdOdswiez, &QPushButton::clicked, this, &dlgBazaWlas::showUsers);
  connect(ui_->cmdDodaj, &QPushButton::clicked, this, &dlgBazaWlas::addToList);
  connect(ui_->cmdKopiaFolder, &QPushButton::clicked, this, &dlgBazaWlas::chooseCopyFolder);
  connect(ui_->cmbDefrag, &QPushButton::clicked, this, [this] { runNow(Upkeep::Compact); });
  connect(ui_->cmdKopiuj, &QPushButton::clicked, this, [this] { runNow(Upkeep::Copy); });
  connect(ui_->cmdZmienHaslo, &QPushButton::clicked, this, &dlgBazaWlas::changePassword);
  connect(ui_->cmbOk, &QPushButton::clicked, this, &dlgBazaWlas::accept);
  connect(ui_->cmdAnuluj, &QPushButton::clicked, this, &QDialog::reject);
  showAll();
}

dlgBazaWlas::~dlgBazaWlas() = default;

QList<dlgBazaWlas::ScheduleFields> dlgBazaWlas::scheduleFields() const {
  return {
      {Upkeep::Compact, ui_->cbDefrag, ui_->cbDejragPot, ui_->txtDefragDni, ui_->txtDefragData},
      {Upkeep::Copy, ui_->cbKopia, ui_->cbKopiaPot, ui_->txtKopiadni, ui_->txtKopiaData},
  };
}

void dlgBazaWlas::showAll() {
  guarded(session_, "dlgBazaWlas", [this] { showFacts(); });
  showUsers();
  showSchedules();
  const bool mayChange = session_.CurrentUserAdmin() && !session_.database().readOnly();
  ui_->pagHaslo->setEnabled(mayChange);
  ui_->labHasloUwaga->setVisible(!mayChange);
  ui_->cmdZmienNazwe->setEnabled(!session_.database().readOnly());
  const bool protectedNow = !session_.databasePassword().isEmpty();
  ui_->labHaslo->setVisible(protectedNow);
  ui_->txtHaslo->setVisible(protectedNow);
}

void dlgBazaWlas::showFacts() {
  const DatabaseFacts facts = databaseFacts(session_);
  const QLocale locale;
  setWindowTitle(QStringLiteral("Właściwości bazy: ") + facts.name);
  ui_->txtNazwa->setText(facts.name);
  ui_->txtSciezka->setText(facts.path);
  ui_->txtSciezka->setToolTip(facts.path);
  ui_->txtSciezka->setCursorPosition(0);
  ui_->txtRozmiar->setText(locale.formattedDataSize(facts.size, 1, QLocale::DataSizeTraditionalFormat) +
                           QStringLiteral(" (") + locale.toString(facts.size) + QStringLiteral(" bajtów)"));
  ui_->txtWersja->setText(facts.structureVersion);
  ui_->txtFormat->setText(facts.format);
  ui_->txtUtworzona->setText(facts.created.isValid() ? locale.toString(facts.created, QLocale::ShortFormat)
                                                     : QStringLiteral("?"));
  ui_->txtSortowanie->setText(facts.sortOrder);
  ui_->lstTabele->clear();
  for (const auto& [caption, rows] : facts.rows) {
    auto* item = new QTreeWidgetItem(ui_->lstTabele, {caption, locale.toString(qlonglong{rows})});
    item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
  }
}

void dlgBazaWlas::showUsers() {
  ui_->lstUzytkownicy->clear();
  ui_->lstUzytkownicy->addItems(databaseUsers(session_.databasePath()));
}

void dlgBazaWlas::showSchedules() {
  const QString key = scheduleKey(session_, session_.databasePath());
  for (const ScheduleFields& fields : scheduleFields()) {
    const Schedule schedule = readSchedule(session_, session_.databasePath(), fields.kind);
    fields.on->setChecked(schedule.on == kOne);
    fields.confirm->setChecked(schedule.confirm == kOne);
    fields.days->setText(schedule.interval);
    fields.last->setText(schedule.last);
  }
  ui_->cbKopiadzien->setChecked(session_.registry().read(key, QStringLiteral("Kopia dzienna")) == kOne);
  ui_->txtKopiaFolder->setText(
      QDir::toNativeSeparators(session_.registry().read(key, QStringLiteral("Kopia folder"))));
  ui_->txtKopiaFolder->setPlaceholderText(
      QDir::toNativeSeparators(session_.settings().program().folderCopies));
  showScheduleState();
}

// What an unlisted database or a schedule that is off does not need cannot be edited.
void dlgBazaWlas::showScheduleState() {
  const bool listed = !scheduleKey(session_, session_.databasePath()).isEmpty();
  ui_->ramLista->setVisible(!listed);
  for (const ScheduleFields& fields : scheduleFields()) {
    fields.on->setEnabled(listed);
    fields.confirm->setEnabled(listed && fields.on->isChecked());
    fields.days->setEnabled(listed && fields.on->isChecked());
  }
  for (QWidget* widget : QList<QWidget*>{ui_->cbKopiadzien, ui_->txtKopiaFolder, ui_->cmdKopiaFolder})
    widget->setEnabled(listed);
}

bool dlgBazaWlas::storeSchedules() {
  const QString key = scheduleKey(session_, session_.databasePath());
  if (key.isEmpty()) return true;
  const auto refuse = [this](QLineEdit* field, const QString& text) {
    session_.messages().refuse(text);
    ui_->tabWlas->setCurrentWidget(ui_->pagKopia);
    field->selectAll();
    field->setFocus();
    return false;
  };
  for (const ScheduleFields& fields : scheduleFields())
    if (fields.on->isChecked() && !fields.days->hasAcceptableInput())
      return refuse(fields.days, QStringLiteral("Wprowadź liczbę dni, nie mniejszą niż 1."));
  const QString folder = ui_->txtKopiaFolder->text().trimmed();
  Registry& registry = session_.registry();
  const QString before = QDir::toNativeSeparators(registry.read(key, QStringLiteral("Kopia folder")));
  // A folder that was there before may only be out of reach today.
  if (folder != before && !folder.isEmpty() && !QFileInfo(folder).isDir())
    return refuse(ui_->txtKopiaFolder,
                  QStringLiteral("Błędny folder archiwum. Wprowadź istniejący folder i spróbuj ponownie."));
  for (const ScheduleFields& fields : scheduleFields()) {
    registry.write(key, valueName(fields.kind, QString()), fields.on->isChecked() ? kOne : kZero);
    registry.write(key, valueName(fields.kind, QStringLiteral(" potwierdz")),
                   fields.confirm->isChecked() ? kOne : kZero);
    registry.write(key, valueName(fields.kind, QStringLiteral(" co dni")), fields.days->text());
  }
  registry.write(key, QStringLiteral("Kopia dzienna"), ui_->cbKopiadzien->isChecked() ? kOne : kZero);
  registry.write(key, QStringLiteral("Kopia folder"), folder);
  return true;
}

void dlgBazaWlas::addToList() {
  handyAdd(session_, session_.databasePath());
  showSchedules();
  ui_->cbDefrag->setFocus();
}

void dlgBazaWlas::chooseCopyFolder() {
  const QString start = ui_->txtKopiaFolder->text().isEmpty() ? ui_->txtKopiaFolder->placeholderText()
                                                              : ui_->txtKopiaFolder->text();
  const QString chosen = session_.messages().chooseFolder(QStringLiteral("Wybierz folder"), start);
  if (!chosen.isEmpty()) ui_->txtKopiaFolder->setText(QDir::toNativeSeparators(chosen));
}

// The run goes by what the tab shows.
void dlgBazaWlas::runNow(Upkeep kind) {
  if (!storeSchedules()) return;
  maintainOpenDatabase({session_}, kind);
  refreshAfterWork();
}

void dlgBazaWlas::rename() {
  if (!session_.messages().ask(QStringLiteral("Aby zmienić nazwę bazy wymagane jest zamknięcie wszystkich "
                                              "okien programu. Zamknąć okna i kontynuować?"),
                               QStringLiteral("Komunikat")))
    return;
  const QString path = session_.databasePath();
  const QString typed =
      session_.messages().inputText(kRenameTitle, QStringLiteral("Podaj nazwę bazy danych"), baseName(path));
  const QString name = baseName(typed.trimmed());
  if (name.isEmpty()) return;
  if (!isFileName(typed))
    return session_.messages().refuse(
        QStringLiteral("Nazwa bazy nie może zaczynać się od kropki ani zawierać znaków: \\ / : * ? \" < > |"),
        kRenameTitle);
  if (!session_.FormCloseAll()) return;
  BaseRename({session_}, path, name, session_.databaseFolder());
  refreshAfterWork();
}

void dlgBazaWlas::changePassword() {
  const auto refuse = [this](QLineEdit* field, const QString& text) {
    session_.messages().refuse(text);
    field->selectAll();
    field->setFocus();
  };
  if (ui_->txtHaslo->text() != session_.databasePassword())
    return refuse(ui_->txtHaslo, QStringLiteral("Błędne dotychczasowe hasło bazy."));
  const QString password = ui_->txtHasloNowe->text();
  // The semicolon ends the password where it is handed to the engine.
  if (password.contains(u';'))
    return refuse(ui_->txtHasloNowe, QStringLiteral("Hasło bazy nie może zawierać średnika."));
  if (password != ui_->txtHasloPotwierdz->text())
    return refuse(ui_->txtHasloPotwierdz,
                  QStringLiteral("Hasła wprowadzone w polach: 'Wprowadź' i 'Potwierdź' muszą być identyczne. "
                                 "Popraw hasło i spróbuj ponownie."));
  if (password == session_.databasePassword()) return;
  if (!tandeko::changePassword({session_}, password)) return refreshAfterWork();
  for (QLineEdit* field : {ui_->txtHaslo, ui_->txtHasloNowe, ui_->txtHasloPotwierdz}) field->clear();
  refreshAfterWork();
}

void dlgBazaWlas::accept() {
  if (storeSchedules()) QDialog::accept();
}

void dlgBazaWlas::refreshAfterWork() {
  if (session_.databaseOpen())
    showAll();
  else
    reject();
}

}  // namespace tandeko
