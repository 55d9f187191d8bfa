#include "register/register_boxes.h"

#include <QGridLayout>
#include <QVBoxLayout>

namespace tandeko {

namespace {

template <typename Field>
Field* named(Field* field, const char16_t* name) {
  field->setObjectName(QString::fromUtf16(name));
  return field;
}

QCheckBox* check(QWidget* parent, const char16_t* name, const char16_t* caption) {
  return named(new QCheckBox(QString::fromUtf16(caption), parent), name);
}

void addRow(QGridLayout& grid, int row, const char16_t* caption, QWidget* field) {
  auto* label = new QLabel(QString::fromUtf16(caption), field->parentWidget());
  label->setBuddy(field);
  grid.addWidget(label, row, 0);
  grid.addWidget(field, row, 1);
}

}  // namespace

void RegisterBox::watch() {
  for (auto* field : findChildren<QCheckBox*>())
    connect(field, &QCheckBox::toggled, this, &RegisterBox::changed);
  for (auto* field : findChildren<QRadioButton*>())
    connect(field, &QRadioButton::toggled, this, &RegisterBox::changed);
  for (auto* field : findChildren<QComboBox*>())
    connect(field, &QComboBox::currentIndexChanged, this, &RegisterBox::changed);
  for (auto* field : findChildren<QLineEdit*>())
    connect(field, &QLineEdit::textChanged, this, &RegisterBox::changed);
}

KindBox::KindBox(QWidget* parent)
    : RegisterBox(QStringLiteral("Rejestr"), parent),
      cmbRodzaj_(named(new QComboBox(this), u"cmbRodzaj")),
      cbNumewi_(check(this, u"cbNumewi", u"Wyświetlaj numer ewidencyjny w nazwie przedmiotu")),
      cbNumkat_(check(this, u"cbNumkat", u"Wyświetlaj numer katalogowy w nazwie przedmiotu")),
      cbNumser_(check(this, u"cbNumser", u"Wyświetlaj numer seryjny w nazwie przedmiotu")),
      cbIlosc_(check(this, u"cbIlosc", u"Wyświetlaj ilość, j.m. w nazwie przedmiotu")),
      cbCena_(check(this, u"cbCena", u"Wyświetlaj cenę w nazwie przedmiotu")) {
  cmbRodzaj_->addItem(QStringLiteral("Lista - przedmioty bez struktury"), QStringLiteral("L"));
  cmbRodzaj_->addItem(QStringLiteral("Struktura - przedmioty mogą tworzyć zestawy"), QStringLiteral("S"));
  auto* grid = new QGridLayout(this);
  addRow(*grid, 0, u"Rodzaj rejestru", cmbRodzaj_);
  grid->setColumnStretch(1, 1);
  int row = 1;
  for (QCheckBox* box : {cbNumewi_, cbNumkat_, cbNumser_, cbIlosc_, cbCena_})
    grid->addWidget(box, row++, 0, 1, 2);
  auto* hint =
      new QLabel(QStringLiteral("Czego nie zaznaczysz, tego nie będzie też w oknie przedmiotu."), this);
  hint->setWordWrap(true);
  hint->setForegroundRole(QPalette::PlaceholderText);
  grid->addWidget(hint, row, 0, 1, 2);
  watch();
}

void KindBox::show(const RegisterData& record) {
  setComboKey(*cmbRodzaj_, record.kind);
  cbNumewi_->setChecked(record.showNumber);
  cbNumkat_->setChecked(record.showCatalogNumber);
  cbNumser_->setChecked(record.showSerialNumber);
  cbIlosc_->setChecked(record.showQuantity);
  cbCena_->setChecked(record.showPrice);
}

void KindBox::read(RegisterData& record) const {
  record.kind = comboKey(*cmbRodzaj_).toString();
  record.showNumber = cbNumewi_->isChecked();
  record.showCatalogNumber = cbNumkat_->isChecked();
  record.showSerialNumber = cbNumser_->isChecked();
  record.showQuantity = cbIlosc_->isChecked();
  record.showPrice = cbCena_->isChecked();
}

TemplateBox::TemplateBox(const QDate& today, QWidget* parent)
    : RegisterBox(QStringLiteral("Postać numeru ewidencyjnego"), parent),
      today_(today),
      cmbNumS_{named(new QComboBox(this), u"cmbNumS1"), named(new QComboBox(this), u"cmbNumS2"),
               named(new QComboBox(this), u"cmbNumS3")},
      txtNumPo_(named(new QLineEdit(this), u"txtNumPo")),
      cmbNumSeparator_(named(new QComboBox(this), u"cmbNumSeparator")),
      labNumery_(named(new QLabel(QStringLiteral("Przekładowe numery:"), this), u"labNumery")) {
  setObjectName(QStringLiteral("fraSposob"));
  auto* grid = new QGridLayout(this);
  const char16_t* const captions[] = {u"Składnik 1", u"Składnik 2", u"Składnik 3"};
  for (int at = 0; at < 3; ++at) {
    for (const NumPart& part : kNumParts)
      cmbNumS_[static_cast<size_t>(at)]->addItem(QString::fromUtf16(part.caption),
                                                 QString::fromUtf16(part.value));
    addRow(*grid, at, captions[at], cmbNumS_[static_cast<size_t>(at)]);
  }
  for (const QChar separator : QString::fromUtf16(kNumSeparators))
    cmbNumSeparator_->addItem(QString(separator), QString(separator));
  addRow(*grid, 3, u"Tekst", txtNumPo_);
  addRow(*grid, 4, u"Separator składników numeru ewidencyjnego", cmbNumSeparator_);
  grid->addWidget(labNumery_, 5, 0, 1, 2);
  grid->setColumnStretch(1, 1);
  txtNumPo_->setMaxLength(20);
  labNumery_->setTextFormat(Qt::PlainText);
  connect(this, &RegisterBox::changed, this, &TemplateBox::showSamples);
  watch();
}

void TemplateBox::show(const RegisterData& record) {
  for (size_t at = 0; at < cmbNumS_.size(); ++at) setComboKey(*cmbNumS_[at], record.numbering.parts[at]);
  setComboKey(*cmbNumSeparator_, record.numbering.separator);
  txtNumPo_->setText(record.numbering.text);
  showSamples();
}

void TemplateBox::read(RegisterData& record) const {
  for (size_t at = 0; at < cmbNumS_.size(); ++at)
    record.numbering.parts[at] = comboKey(*cmbNumS_[at]).toString();
  record.numbering.separator = comboKey(*cmbNumSeparator_).toString();
  record.numbering.text = txtNumPo_->text();
}

void TemplateBox::showSamples() {
  RegisterData record;
  read(record);
  labNumery_->setText(sampleNumbers(record, today_));
}

PeriodBox::PeriodBox(QWidget* parent)
    : RegisterBox(QStringLiteral("Ciągłość numeracji w ramach jednego"), parent),
      obNumGrupa_(named(new QRadioButton(QStringLiteral("Grupy"), this), u"obNumGrupa")),
      obNumRoczna_(named(new QRadioButton(QStringLiteral("Roku"), this), u"obNumRoczna")),
      obNumMiesieczna_(named(new QRadioButton(QStringLiteral("Miesiąca"), this), u"obNumMiesieczna")) {
  setObjectName(QStringLiteral("fraCiaglosc"));
  auto* column = new QVBoxLayout(this);
  for (QRadioButton* button : {obNumGrupa_, obNumRoczna_, obNumMiesieczna_}) column->addWidget(button);
  watch();
}

void PeriodBox::show(const RegisterData& record) {
  (record.monthly ? obNumMiesieczna_ : record.perGroup ? obNumGrupa_ : obNumRoczna_)->setChecked(true);
}

void PeriodBox::read(RegisterData& record) const {
  record.monthly = obNumMiesieczna_->isChecked();
  record.perGroup = obNumGrupa_->isChecked();
}

ProposalBox::ProposalBox(QWidget* parent)
    : RegisterBox(QStringLiteral("Numeracja"), parent),
      cbNumAuto_(check(this, u"cbNumAuto", u"Numeruj automatycznie")),
      cbNumEdycja_(check(this, u"cbNumEdycja", u"Zezwól na zmianę numeru przez użytkownika")) {
  auto* column = new QVBoxLayout(this);
  column->addWidget(cbNumAuto_);
  column->addWidget(cbNumEdycja_);
  watch();
}

void ProposalBox::show(const RegisterData& record) {
  cbNumAuto_->setChecked(record.numberAutomatic);
  cbNumEdycja_->setChecked(record.numberEditable);
}

void ProposalBox::read(RegisterData& record) const {
  record.numberAutomatic = cbNumAuto_->isChecked();
  record.numberEditable = cbNumEdycja_->isChecked();
}

StartBox::StartBox(jet::Database& database, QWidget* parent)
    : RegisterBox(QStringLiteral("Okno przedmiotów"), parent),
      cmbStartgew_(named(new QComboBox(this), u"cmbStartgew")),
      cmbStartsew_(named(new QComboBox(this), u"cmbStartsew")),
      cmbStartjed_(named(new QComboBox(this), u"cmbStartjed")),
      txtStartIlosc_(named(new NumberField(this), u"txtStartIlosc")) {
  setObjectName(QStringLiteral("fraPrzedmioty"));
  fillCombo(*cmbStartgew_, database, QStringLiteral("SELECT Indgew, Nazwa FROM swgew ORDER BY Nazwa"), true);
  fillCombo(*cmbStartsew_, database, QStringLiteral("SELECT Indsew, Nazwa FROM swsew ORDER BY Nazwa"), true);
  fillCombo(*cmbStartjed_, database, QStringLiteral("SELECT Indjed, Nazwa FROM swjed ORDER BY Nazwa"), true);
  auto* grid = new QGridLayout(this);
  addRow(*grid, 0, u"Grupa przedmiotów", cmbStartgew_);
  addRow(*grid, 1, u"Stan przedmiotu", cmbStartsew_);
  addRow(*grid, 2, u"Ilość", txtStartIlosc_);
  addRow(*grid, 3, u"Jednostka miary", cmbStartjed_);
  setTabOrder(cmbStartsew_, txtStartIlosc_);
  setTabOrder(txtStartIlosc_, cmbStartjed_);
  grid->setColumnStretch(1, 1);
  watch();
}

void StartBox::show(const RegisterData& record) {
  setComboKey(*cmbStartgew_, record.startGroup > 0 ? QVariant(record.startGroup) : QVariant());
  setComboKey(*cmbStartsew_, record.startState > 0 ? QVariant(record.startState) : QVariant());
  setComboKey(*cmbStartjed_, record.startUnit.isEmpty() ? QVariant() : QVariant(record.startUnit));
  txtStartIlosc_->setNumber(record.startQuantity);
}

void StartBox::read(RegisterData& record) const {
  record.startGroup = comboNumber(*cmbStartgew_);
  record.startState = comboNumber(*cmbStartsew_);
  record.startUnit = comboKey(*cmbStartjed_).toString();
  record.startQuantity = txtStartIlosc_->number();
}

}  // namespace tandeko
