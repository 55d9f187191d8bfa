#include "app/dlgParPakiet.h"

#include <QColorDialog>
#include <QDir>
#include <QFileInfo>

#include "app/startup.h"
#include "app/window_place.h"
#include "errors/error_reporter.h"
#include "ui_dlgParPakiet.h"
#include "users/dlgUserLista.h"

namespace tandeko {

namespace {

const QString kOne = QStringLiteral("1");
const QString kZero = QStringLiteral("0");

QString flag(const QCheckBox* box) { return box->isChecked() ? kOne : kZero; }

void selectData(QComboBox* combo, const QVariant& data) {
  combo->setCurrentIndex(qMax(0, combo->findData(data)));
}

}  // namespace

dlgParPakiet::dlgParPakiet(Session& session, QWidget* parent)
    : QDialog(parent), session_(session), ui_(std::make_unique<Ui::dlgParPakiet>()) {
  ui_->setupUi(this);
  ui_->txtFolderPakiet->setMinimumWidth(fontMetrics().averageCharWidth() * 45);
  folders_ = {
      {ui_->txtFolderPakiet, QStringLiteral("Folder pakiet"), QStringLiteral("Wybierz folder programu"),
       QStringLiteral("Błędny folder programu. Wprowadź istniejący folder i spróbuj ponownie.")},
      {ui_->txtFolderBaza, QStringLiteral("Folder baza"), QStringLiteral("Wybierz folder baz danych"),
       QStringLiteral("Błędny folder bazy. Wprowadź istniejący folder i spróbuj ponownie.")},
      {ui_->txtFolderArch, QStringLiteral("Folder archiwum"), QStringLiteral("Wybierz folder"),
       QStringLiteral("Błędny folder archiwum. Wprowadź istniejący folder i spróbuj ponownie.")},
      {ui_->txtFolderTemp, QStringLiteral("Folder roboczy"), QStringLiteral("Wybierz folder roboczy"),
       QStringLiteral("Błędny folder roboczy. Wprowadź istniejący folder i spróbuj ponownie.")},
      {ui_->txtFolderDokum, QStringLiteral("Folder dokumenty"), QStringLiteral("Wybierz folder dokumentów"),
       QStringLiteral("Błędny folder dokumentów. Wprowadź istniejący folder i spróbuj ponownie.")},
      {ui_->txtFolderPomoc, QStringLiteral("Folder pomoc"), QStringLiteral("Wybierz folder plików pomocy"),
       QStringLiteral("Błędny folder plików pomocy. Wprowadź istniejący folder i spróbuj ponownie.")},
  };
  const QList<QPushButton*> choosers = {ui_->cmdFolderPakiet, ui_->cmdFolderBaza,  ui_->cmdFolderArch,
                                        ui_->cmdFolderTemp,   ui_->cmdFolderDokum, ui_->cmdFolderPomoc};
  for (int i = 0; i < choosers.size(); ++i) {
    choosers[i]->setFixedWidth(choosers[i]->sizeHint().height() * 3 / 2);
    connect(choosers[i], &QPushButton::clicked, this, [this, i] { chooseFolder(folders_[i]); });
  }
  connect(ui_->kolTlo, &QPushButton::clicked, this, &dlgParPakiet::chooseColor);
  connect(ui_->cbAutoRefresh, &QCheckBox::toggled, ui_->txtAutoRefresh, &QWidget::setEnabled);
  connect(ui_->cmdOk, &QPushButton::clicked, this, [this] {
    if (apply()) accept();
  });
  connect(ui_->cmdZastosuj, &QPushButton::clicked, this, &dlgParPakiet::apply);
  connect(ui_->cmdZamknij, &QPushButton::clicked, this, &QDialog::reject);
  fillCombos();
  load();
}

dlgParPakiet::~dlgParPakiet() = default;

void dlgParPakiet::fillCombos() {
  for (const WindowSizeChoice& choice : windowSizeChoices())
    ui_->cmbRozmiar->addItem(choice.text, choice.value);
  ui_->cmbOkno->addItem(QStringLiteral("(żadne)"), QString());
  ui_->cmbOkno->addItem(QStringLiteral("Panel operacyjny"), QStringLiteral("Panel"));
  ui_->cmbOkno->addItem(QStringLiteral("Pracownicy"), QStringLiteral("Pracownicy"));
  ui_->cmbOkno->addItem(QStringLiteral("Przedmioty"), QStringLiteral("Przedmioty"));
  ui_->cmbPoczta->addItem(QStringLiteral("Interfejsu poczty systemu (MAPI)"), kZero);
  ui_->cmbPoczta->addItem(QStringLiteral("Domyślnego programu pocztowego (mailto)"), kOne);
  for (QComboBox* combo : {ui_->cmbKarFontSize, ui_->cmbSloFontSize})
    for (const int size : {7, 8, 9, 10, 11, 12, 14, 16, 18}) combo->addItem(QString::number(size), size);
  ui_->cmbUzyt->addItem(QStringLiteral("(brak)"), QString());
  fillUsers();
}

// The users of the open database; the stored one stays choosable though it is not among them.
void dlgParPakiet::fillUsers() {
  if (session_.databaseOpen())
    guarded(session_, "dlgParPakiet", [this] {
      for (const ListedUser& user : usersOfProgram(session_.database()))
        ui_->cmbUzyt->addItem(user.name, user.indoso);
    });
  const QString stored = session_.settings().program().defaultUser;
  if (!stored.isEmpty() && ui_->cmbUzyt->findData(stored) < 0) ui_->cmbUzyt->addItem(stored, stored);
}

void dlgParPakiet::load() {
  Settings& settings = session_.settings();
  const ProgramSettings& program = settings.program();
  const auto stored = [&settings](const QString& name, const QString& fallback) {
    return settings.stored(name, fallback) == kOne;
  };
  for (const FolderField& folder : std::as_const(folders_))
    folder.field->setText(
        QDir::toNativeSeparators(settings.stored(folder.setting, builtInFolder(folder.setting))));
  ui_->cbZapiszWyjscie->setChecked(stored(QStringLiteral("Zapisz przy wyjsciu"), kZero));
  ui_->cbInstancje->setChecked(stored(QStringLiteral("Instancje"), kOne));
  ui_->cbPopraw->setChecked(program.openOnDoubleClick);
  ui_->cbNieZamykaj->setChecked(program.keepNewFormOpen);
  ui_->cbAutoRefresh->setChecked(program.autoRefreshMinutes > 0);
  ui_->txtAutoRefresh->setValue(qMax(1, program.autoRefreshMinutes));
  ui_->txtAutoRefresh->setEnabled(program.autoRefreshMinutes > 0);
  selectData(ui_->cmbRozmiar, program.windowSize);
  selectData(ui_->cmbOkno, program.startForm);
  selectData(ui_->cmbUzyt, program.defaultUser);
  selectData(ui_->cmbPoczta, program.withoutMapi ? kOne : kZero);
  for (const auto& [combo, size] : {std::pair(ui_->cmbKarFontSize, program.listFontSize),
                                    std::pair(ui_->cmbSloFontSize, program.dictionaryFontSize)}) {
    if (combo->findData(size) < 0) combo->addItem(QString::number(size), size);
    selectData(combo, size);
  }
  showColor(program.readOnlyColor);
}

void dlgParPakiet::showColor(const QColor& color) {
  color_ = color;
  QPalette palette = ui_->txtPole->palette();
  palette.setColor(QPalette::Base, color);
  ui_->txtPole->setPalette(palette);
}

void dlgParPakiet::chooseColor() {
  const QColor color = QColorDialog::getColor(color_, this, QStringLiteral("Kolor tła nieaktywnego pola"),
                                              QColorDialog::DontUseNativeDialog);
  if (color.isValid()) showColor(color);
}

void dlgParPakiet::chooseFolder(const FolderField& folder) {
  const QString chosen = session_.messages().chooseFolder(folder.chooserTitle, folder.field->text());
  if (!chosen.isEmpty()) folder.field->setText(QDir::toNativeSeparators(chosen));
}

// The first group is stored although a folder may be refused afterwards.
bool dlgParPakiet::apply() {
  Settings& settings = session_.settings();
  settings.store(QStringLiteral("Kolor tla"), color_.name());
  settings.store(QStringLiteral("Zapisz przy wyjsciu"), flag(ui_->cbZapiszWyjscie));
  settings.store(QStringLiteral("Instancje"), flag(ui_->cbInstancje));
  settings.store(QStringLiteral("Bez MAPI"), ui_->cmbPoczta->currentData().toString());
  settings.store(QStringLiteral("Popraw2Click"), flag(ui_->cbPopraw));
  settings.store(QStringLiteral("Nie zamykaj"), flag(ui_->cbNieZamykaj));
  settings.store(QStringLiteral("Auto Refresh"),
                 QString::number(ui_->cbAutoRefresh->isChecked() ? ui_->txtAutoRefresh->value() : 0));
  settings.store(QStringLiteral("Rozmiar czcionki kartoteki"), ui_->cmbKarFontSize->currentText());
  settings.store(QStringLiteral("Rozmiar czcionki slownika"), ui_->cmbSloFontSize->currentText());
  if (!foldersExist() || !storeFolders()) return false;
  settings.store(QStringLiteral("Uzytkownik"), ui_->cmbUzyt->currentData().toString());
  settings.store(QStringLiteral("Okno start"), ui_->cmbOkno->currentData().toString());
  settings.store(QStringLiteral("Rozmiar MDI"), ui_->cmbRozmiar->currentData().toString());
  settings.load();
  settings.setHelpFile(helpFile(session_));
  return true;
}

bool dlgParPakiet::foldersExist() {
  for (const FolderField& folder : std::as_const(folders_)) {
    const QString path = folder.field->text().trimmed();
    // A built-in folder that nobody needed so far is made now; any other is to exist.
    if (QDir(path) == QDir(builtInFolder(folder.setting))) QDir().mkpath(path);
    if (!path.isEmpty() && QFileInfo(path).isDir()) continue;
    session_.messages().refuse(folder.refusal);
    ui_->tabParametry->setCurrentWidget(ui_->pagFoldery);
    folder.field->selectAll();
    folder.field->setFocus();
    return false;
  }
  return true;
}

bool dlgParPakiet::storeFolders() {
  for (const FolderField& folder : std::as_const(folders_)) {
    if (session_.settings().store(folder.setting, folder.field->text().trimmed())) continue;
    session_.messages().fail(QStringLiteral("Nie można zapisać folderu: ") + folder.field->text(),
                             QStringLiteral("Błąd zapisu folderu"));
    return false;
  }
  return true;
}

}  // namespace tandeko
