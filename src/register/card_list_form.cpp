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
  connect(&this->session(), &Session::registerChanged, this, &karEWKAR::requery);
  connect(&this->session(), &Session::databaseChanged, this, [this] { KarRefresh(); });
}

void karEWKAR::buildBands() {
  makeBands(QStringLiteral("coolWPKAR"));
  txtNazwa_ = addTextBand({u"pboxNazwa", u"labNazwa", u"Nazwa przedmiotu", u"txtNazwa", 46});
  txtNumewi_ = addTextBand({u"pboxNumewi", u"labNumer", u"Nr ewidencyjny", u"txtNumewi", 34});
  txtNumser_ = addTextBand({u"pboxNumser", u"labKOntrah", u"Nr seryjny", u"txtNumser", 30});
  cmbGrupa_ =
      addComboBand({u"pboxGrupa", u"labGrupa", u"Grupa", u"cmbGrupa", 38}, QStringLiteral("(wszystkie)"));
  cmbPracownik_ = addComboBand({u"pboxPracownik", u"labIndjed", u"Użytkownik", u"cmbPracownik", 42},
                               QStringLiteral("(wszyscy)"));
  addButtonBand();
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
  const auto shown = [](const QComboBox& combo) { return combo.itemText(combo.currentIndex()); };
  QuickFilter quick;
  quick.allRegisters = allRegisters_;
  quick.registerKey = session().currentRegister();
  quick.group = chosenKey(*cmbGrupa_);
  quick.groupName = shown(*cmbGrupa_);
  quick.holder = chosenKey(*cmbPracownik_);
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

}  // namespace tandeko
