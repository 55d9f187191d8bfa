#include "register/card_list_form.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QScrollBar>

#include "errors/error_reporter.h"
#include "lists/form_fields.h"
#include "lists/long_work.h"
#include "platform/resources.h"
#include "platform/statements.h"
#include "platform/text.h"
#include "register/dokEWKAR.h"
#include "register/holder.h"

namespace tandeko {

namespace {

const QString kRegisterTable = QStringLiteral("swrew");
const QString kOrder = QStringLiteral("Order ");
const QString kBandWidths = QStringLiteral("Order Width");
const QString kStandardOrder = QStringLiteral("1");
const QString kCommunique = QStringLiteral("Komunikat");

}  // namespace

karEWKAR::karEWKAR(Session& session)
    : KarForm(session, QStringLiteral("karEWKAR"), cardColumns(), kCardSort) {
  setWindowTitle(QStringLiteral("Przedmioty"));
  setWindowIcon(icon("items"));
  grid().setObjectName(QStringLiteral("gridEWKAR"));
  grid().setAccessibleName(QStringLiteral("Przedmioty"));
  DataSource().setObjectName(QStringLiteral("dataWPKAR"));
  buildBands();
  open();
  buildSums();
  const auto& registry = this->session().registry();
  coolWPKAR_->setOrder(registry.read(layoutGroup(), kOrder, kStandardOrder));
  coolWPKAR_->setWidths(registry.read(layoutGroup(), kBandWidths));
  connect(&this->session(), &Session::registerChanged, this, &karEWKAR::requery);
  connect(&this->session(), &Session::databaseChanged, this, [this] { KarRefresh(); });
  connect(this, &ChildForm::commandsChanged, this, &karEWKAR::enableButtons);
  enableButtons();
}

void karEWKAR::buildBands() {
  coolWPKAR_ = new BandContainer(this);
  coolWPKAR_->setObjectName(QStringLiteral("coolWPKAR"));
  const auto addBand = [this](const char16_t* band, const char16_t* label, const char16_t* caption,
                              QWidget* field, const char16_t* name, int width) {
    field->setObjectName(QString::fromUtf16(name));
    auto* made = new Band(QString::fromUtf16(band), width);
    made->setField(QString::fromUtf16(label), QString::fromUtf16(caption), field);
    coolWPKAR_->addBand(made);
  };
  for (QLineEdit** field : {&txtNazwa_, &txtNumewi_, &txtNumser_}) {
    *field = new QLineEdit(this);
    addQuickText(*field);
  }
  for (QComboBox** combo : {&cmbGrupa_, &cmbPracownik_}) {
    *combo = new QComboBox(this);
    makeSearchable(**combo);
    (*combo)->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    (*combo)->setMinimumContentsLength(8);
    (*combo)->lineEdit()->setPlaceholderText(QStringLiteral("(wszystkie)"));
    addQuickCombo(*combo);
  }
  cmbPracownik_->lineEdit()->setPlaceholderText(QStringLiteral("(wszyscy)"));
  addBand(u"pboxNazwa", u"labNazwa", u"Nazwa przedmiotu", txtNazwa_, u"txtNazwa", 46);
  addBand(u"pboxNumewi", u"labNumer", u"Nr ewidencyjny", txtNumewi_, u"txtNumewi", 34);
  addBand(u"pboxNumser", u"labKOntrah", u"Nr seryjny", txtNumser_, u"txtNumser", 30);
  addBand(u"pboxGrupa", u"labGrupa", u"Grupa", cmbGrupa_, u"cmbGrupa", 38);
  addBand(u"pboxPracownik", u"labIndjed", u"Użytkownik", cmbPracownik_, u"cmbPracownik", 42);
  buildButtons();
  page().addWidget(coolWPKAR_);
}

void karEWKAR::buildButtons() {
  auto* row = new QHBoxLayout;
  const auto add = [this, row](const char16_t* name, const char16_t* caption, auto clicked) {
    auto* button = new QPushButton(QString::fromUtf16(caption), this);
    button->setObjectName(QString::fromUtf16(name));
    button->setAutoDefault(false);
    connect(button, &QPushButton::clicked, this, clicked);
    row->addWidget(button);
    return button;
  };
  cmdNowy_ = add(u"cmdNowy", u"&Nowy", [this] { run(Command::Nowy); });
  cmdPopraw_ = add(u"cmdPopraw", u"&Popraw", [this] { run(Command::Popraw); });
  cmdUsun_ = add(u"cmdUsun", u"&Usuń", [this] { run(Command::Usun); });
  add(u"cmdWybierz", u"Wybierz", [this] { KarRefresh(); });
  add(u"cmdZamknij", u"Z&amknij", [this] { closeWindow(); });
  auto* band = new Band(QStringLiteral("pboxButtons"), 0);
  band->setContent(row);
  coolWPKAR_->addBand(band);
}

void karEWKAR::buildSums() {
  pboxSuma_ = new QWidget(this);
  pboxSuma_->setObjectName(QStringLiteral("pboxSuma"));
  auto* lineSuma = new QFrame(pboxSuma_);
  lineSuma->setObjectName(QStringLiteral("lineSuma"));
  lineSuma->setFrameShape(QFrame::HLine);
  gridSuma_ = new QTableWidget(1, 3, pboxSuma_);
  gridSuma_->setObjectName(QStringLiteral("gridSuma"));
  gridSuma_->setAccessibleName(QStringLiteral("Sumy"));
  gridSuma_->horizontalScrollBar()->setObjectName(QStringLiteral("scrSuma"));
  gridSuma_->setHorizontalHeaderLabels(
      {QStringLiteral("Ilość"), QStringLiteral("Liczba przedmiotów"), QStringLiteral("Wartość nabycia")});
  gridSuma_->verticalHeader()->hide();
  gridSuma_->horizontalHeader()->setHighlightSections(false);
  gridSuma_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  gridSuma_->setSelectionMode(QAbstractItemView::ContiguousSelection);
  gridSuma_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  gridSuma_->setTabKeyNavigation(false);
  const int character = gridSuma_->fontMetrics().averageCharWidth();
  for (int column = 0; column < 3; ++column) {
    gridSuma_->setColumnWidth(column, character * 24);
    auto* cell = new QTableWidgetItem;
    cell->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
    gridSuma_->setItem(0, column, cell);
  }
  const int height = gridSuma_->fontMetrics().height() + 8;
  gridSuma_->verticalHeader()->setDefaultSectionSize(height);
  gridSuma_->setFixedHeight(gridSuma_->horizontalHeader()->sizeHint().height() + height +
                            2 * gridSuma_->frameWidth());
  auto* column = new QVBoxLayout(pboxSuma_);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(3);
  column->addWidget(lineSuma);
  column->addWidget(gridSuma_);
  page().addWidget(pboxSuma_);
  pboxSuma_->hide();
}

bool karEWKAR::supports(Command command) const {
  if (command == Command::Sumuj || command == Command::WszystkieRejestry) return session().databaseOpen();
  return KarForm::supports(command);
}

void karEWKAR::run(Command command) {
  if (!supports(command)) return;
  if (command == Command::Sumuj) return KarSumuj();
  if (command == Command::WszystkieRejestry) {
    allRegisters_ = !allRegisters_;
    return KarRefresh();
  }
  KarForm::run(command);
}

bool karEWKAR::isOn(Command command) const {
  if (command == Command::WszystkieRejestry) return allRegisters_;
  return command == Command::Sumuj && !pboxSuma_->isHidden();
}

Conditions karEWKAR::quickConditions() const {
  const auto chosen = [](const QComboBox& combo) {
    const QVariant key = comboKey(combo);
    return key.isValid() ? std::optional(key.toInt()) : std::nullopt;
  };
  const auto shown = [](const QComboBox& combo) { return combo.itemText(combo.currentIndex()); };
  QuickFilter quick;
  quick.allRegisters = allRegisters_;
  quick.registerKey = session().currentRegister();
  quick.group = chosen(*cmbGrupa_);
  quick.groupName = shown(*cmbGrupa_);
  quick.holder = chosen(*cmbPracownik_);
  quick.holderName = shown(*cmbPracownik_);
  quick.name = txtNazwa_->text();
  quick.number = txtNumewi_->text();
  quick.serialNumber = txtNumser_->text();
  return cardConditions(quick);
}

QString karEWKAR::buildStatement(const QString& quickCondition, const QString& filterCondition) const {
  return cardStatement(quickCondition, filterCondition);
}

void karEWKAR::clearQuickFilters() {
  for (QLineEdit* field : {txtNazwa_, txtNumewi_, txtNumser_}) field->clear();
  for (QComboBox* combo : {cmbGrupa_, cmbPracownik_}) setComboKey(*combo, {});
}

void karEWKAR::reloadChoices() {
  if (!session().databaseOpen()) return;
  fillCombo(*cmbGrupa_, session().database(),
            QStringLiteral("SELECT Indgew, Nazwa FROM swgew ORDER BY Nazwa"), true);
  const QVariant holder = comboKey(*cmbPracownik_);
  fillCombo(*cmbPracownik_, session().database(),
            QStringLiteral("SELECT indpra, nazwisko & ' ' & imie FROM swpra ORDER BY nazwisko, imie"), true);
  cmbPracownik_->insertItem(1, QStringLiteral("[Magazyn]"), kWarehouse);
  cmbPracownik_->insertItem(2, QStringLiteral("[Kosz]"), kBin);
  setComboKey(*cmbPracownik_, holder);
}

void karEWKAR::rowsChanged() {
  if (pboxSuma_ && !pboxSuma_->isHidden()) showSums();
}

void karEWKAR::KarSumuj() {
  pboxSuma_->setVisible(pboxSuma_->isHidden());
  rowsChanged();
  Q_EMIT commandsChanged();
}

void karEWKAR::showSums() {
  // Of the rows that are there already: the same totals as three more queries, and always those of the list.
  const QueryModel& rows = DataSource();
  const double values[] = {rows.sum(kQuantityField), static_cast<double>(rows.rows()), rows.sum(kWorthField)};
  for (int column = 0; column < 3; ++column) gridSuma_->item(0, column)->setText(sumText(values[column]));
}

void karEWKAR::storeLayout(bool save) {
  auto& registry = session().registry();
  if (save) {
    registry.createKey(layoutGroup());
    registry.write(layoutGroup(), kOrder, coolWPKAR_->order());
    registry.write(layoutGroup(), kBandWidths, coolWPKAR_->widths());
    return;
  }
  registry.removeValue(layoutGroup(), kOrder);
  registry.removeValue(layoutGroup(), kBandWidths);
  coolWPKAR_->setOrder(kStandardOrder);
  coolWPKAR_->setWidths({});
}

bool karEWKAR::mayChange() const {
  if (!KarForm::mayChange()) return false;
  try {
    return !session().UserReadOnly(kRegisterTable, session().currentRegister());
  } catch (const jet::Error&) {
    return false;  // rights that cannot be read are none
  }
}

void karEWKAR::newRecord() { openItem(0); }

void karEWKAR::editRecord() { openItem(currentKey()); }

void karEWKAR::openItem(int item) {
  ItemFormRequest request;
  request.item = item;
  if (const QVariant holder = comboKey(*cmbPracownik_); holder.isValid()) request.holder = holder.toInt();
  request.karParent = formName();
  dokEWKAR* form = dokEWKAR::open(session(), request);
  if (!form) {
    if (item > 0) KarRefresh();  // deleted by another copy in the meantime
    return;
  }
  connect(form, &RecordForm::saved, this, &karEWKAR::goToKey, Qt::UniqueConnection);
}

bool karEWKAR::mayDelete(const QList<int>& items) {
  if (!allRegisters_) return true;
  for (const int key : registersOf(session().database(), items))
    if (session().UserReadOnly(kRegisterTable, key)) {
      session().messages().refuse(
          QStringLiteral("Brak prawa do zmiany danych jednego z rejestrów, do których należą przedmioty."));
      return false;
    }
  return true;
}

void karEWKAR::deleteRecords() {
  const QList<int> rows = grid().selectedRows();
  const bool several = rows.size() > 1;
  QList<int> items;
  if (several)
    for (const int row : rows) items << DataSource().key(row);
  else
    items << currentKey();
  const QString question =
      several
          ? QStringLiteral("Zostało zaznaczonych ") + str(static_cast<int>(items.size())) +
                QStringLiteral(" przedmiotów do usunięcia. Usunąc z kartoteki zaznaczone przedmioty?")
          : QStringLiteral("Przedmiot: ") + toText(DataSource().fieldValue(grid().currentRow(), kNameField)) +
                QStringLiteral(" zostanie usunięty. Usunąć przedmiot?");
  guarded(session(), "cmdUsun_Click", [&] {
    if (!mayDelete(items) || !session().messages().ask(question, kCommunique)) return;
    {
      const Busy busy(*this);
      LongWork work(session(), QStringLiteral("Usuwanie przedmiotów..."));
      deleteItems(session().workspace(), session().database(), items, [&](qsizetype done) {
        work.step(
            [&] { return QStringLiteral("Usuwanie przedmiotów: %1 z %2").arg(done).arg(items.size()); });
      });
    }
    session().setStatusText(QStringLiteral("Usunięto przedmiotów: ") + str(static_cast<int>(items.size())));
    session().KarRefresh(QStringLiteral("karEWPAN"));
  });
  KarRefresh();
}

void karEWKAR::enableButtons() {
  cmdNowy_->setEnabled(supports(Command::Nowy));
  cmdPopraw_->setEnabled(supports(Command::Popraw));
  cmdUsun_->setEnabled(supports(Command::Usun));
}

}  // namespace tandeko
