#include "lists/dlgFiltrEdycja.h"

#include <QSignalBlocker>

#include "lists/form_fields.h"
#include "lists/sql_text.h"
#include "ui_dlgFiltrEdycja.h"

namespace tandeko {

namespace {

const QString kAnd = QStringLiteral("And");
const QString kOr = QStringLiteral("Or");

}  // namespace

dlgFiltrEdycja::dlgFiltrEdycja(Session& session, KarForm& caller, const QString& filter, QWidget* parent)
    : QDialog(parent),
      session_(session),
      store_(session.registry(), caller.RegSection()),
      ui_(std::make_unique<Ui::dlgFiltrEdycja>()),
      stored_(filter) {
  ui_->setupUi(this);
  setWindowTitle(filter.isEmpty() ? QStringLiteral("Nowy filtr") : QStringLiteral("Filtr: ") + filter);
  ui_->cmbOperlog->addItem(QStringLiteral("i"), kAnd);
  ui_->cmbOperlog->addItem(QStringLiteral("lub"), kOr);
  ui_->cmbWartosc->addItems({QStringLiteral("Tak"), QStringLiteral("Nie")});
  readColumns(caller);
  ui_->txtNazwa->setText(filter);
  conditions_ = storedConditions_ = store_.load(filter);
  if (conditions_.isEmpty()) conditions_ << FilterCondition{};

  const auto touch = [this] {
    if (!loading_) touched_ = true;
  };
  connect(ui_->cmbKolumna, &QComboBox::currentIndexChanged, this, &dlgFiltrEdycja::columnChosen);
  connect(ui_->cmbOperpor, &QComboBox::currentIndexChanged, this, &dlgFiltrEdycja::operatorChosen);
  for (QComboBox* combo : {ui_->cmbKolumna, ui_->cmbOperpor, ui_->cmbOperlog, ui_->cmbWartosc})
    connect(combo, &QComboBox::currentIndexChanged, this, touch);
  for (QLineEdit* field :
       {ui_->txtWartosc, static_cast<QLineEdit*>(ui_->numWartosc), static_cast<QLineEdit*>(ui_->datWartosc)})
    connect(field, &QLineEdit::textChanged, this, touch);
  connect(ui_->lstWarunek, &QListWidget::currentRowChanged, this, &dlgFiltrEdycja::selectionMoved);
  connect(ui_->cmdNowy, &QPushButton::clicked, this, &dlgFiltrEdycja::addCondition);
  connect(ui_->cmdUsun, &QPushButton::clicked, this, &dlgFiltrEdycja::removeCondition);
  connect(ui_->cmdDodaj, &QPushButton::clicked, this, [this] { storeEntry(shown_); });
  connect(ui_->cmdZapisz, &QPushButton::clicked, this, [this] {
    if (saveFilter()) accept();
  });
  connect(ui_->cmdAnuluj, &QPushButton::clicked, this, &dlgFiltrEdycja::reject);
  showLines();
  ui_->lstWarunek->setCurrentRow(0);
  resize(fontMetrics().averageCharWidth() * 100, sizeHint().height() + fontMetrics().height() * 3);
}

dlgFiltrEdycja::~dlgFiltrEdycja() = default;

void dlgFiltrEdycja::readColumns(const KarForm& caller) {
  const QueryModel& model = caller.DataSource();
  const QList<QueryColumn> fields = queryColumns(caller.columnsQuery());
  // What the list does not show, such as the key of a row, says nothing to its user.
  for (const ListColumn& column : model.columns())
    if (column.field < fields.size())
      columns_ << Column{fields[column.field].expression, column.caption,
                         fieldKind(model.fieldType(column.field))};
  const QSignalBlocker blocker(ui_->cmbKolumna);
  for (const Column& column : std::as_const(columns_)) ui_->cmbKolumna->addItem(column.caption);
  ui_->cmbKolumna->setCurrentIndex(-1);
}

const dlgFiltrEdycja::Column* dlgFiltrEdycja::chosenColumn() const {
  const int at = ui_->cmbKolumna->currentIndex();
  return at < 0 ? nullptr : &columns_[at];
}

void dlgFiltrEdycja::columnChosen() {
  const QString before = ui_->cmbOperpor->currentText();
  ui_->cmbOperpor->clear();
  const Column* column = chosenColumn();
  if (column) {
    for (const FilterOperator& op : filterOperators(column->kind))
      ui_->cmbOperpor->addItem(op.display, op.sql);
    switch (column->kind) {
      case FieldKind::Text:
        ui_->stosWartosc->setCurrentWidget(ui_->stronaText);
        ui_->labWartosc->setBuddy(ui_->txtWartosc);
        break;
      case FieldKind::Number:
        ui_->stosWartosc->setCurrentWidget(ui_->stronaNum);
        ui_->labWartosc->setBuddy(ui_->numWartosc);
        break;
      case FieldKind::Date:
        ui_->stosWartosc->setCurrentWidget(ui_->stronaDat);
        ui_->labWartosc->setBuddy(ui_->datWartosc);
        break;
      case FieldKind::YesNo:
        ui_->stosWartosc->setCurrentWidget(ui_->stronaCmb);
        ui_->labWartosc->setBuddy(ui_->cmbWartosc);
        break;
    }
  }
  // The operator stays when the other kind of column has it too.
  ui_->cmbOperpor->setCurrentIndex(ui_->cmbOperpor->findText(before));
  operatorChosen();
}

void dlgFiltrEdycja::operatorChosen() {
  const QString sql = ui_->cmbOperpor->currentData().toString();
  ui_->stosWartosc->setEnabled(sql.isEmpty() || FilterOperator{{}, sql}.takesValue());
}

void dlgFiltrEdycja::refuse(const QString& text) {
  session_.messages().refuse(text, QStringLiteral("Błąd definicji warunku filtra"));
}

std::optional<FilterCondition> dlgFiltrEdycja::entered() {
  const Column* column = chosenColumn();
  if (!column) {
    refuse(QStringLiteral("Wybierz kolumnę warunku filtru."));
    ui_->cmbKolumna->setFocus();
    return std::nullopt;
  }
  if (ui_->cmbOperpor->currentIndex() < 0) {
    refuse(QStringLiteral("Ustal operator porówniania warunku."));
    ui_->cmbOperpor->setFocus();
    return std::nullopt;
  }
  const FilterOperator op{ui_->cmbOperpor->currentText(), ui_->cmbOperpor->currentData().toString()};
  const FilterEntry entry{ui_->txtWartosc->text(), ui_->numWartosc->text(), ui_->datWartosc->date(),
                          ui_->cmbWartosc->currentIndex() == 0};
  const auto value = filterValue(column->kind, op, entry);
  if (!value) {
    refuse(QStringLiteral("Wprowadź dane do pola wartość."));
    ui_->stosWartosc->currentWidget()->layout()->itemAt(0)->widget()->setFocus();
    return std::nullopt;
  }
  return FilterCondition{ui_->cmbOperlog->currentData().toString(),
                         column->expression,
                         column->caption,
                         op.sql,
                         *value,
                         op.display};
}

bool dlgFiltrEdycja::storeEntry(int line) {
  const auto condition = entered();
  if (!condition) return false;
  if (line < 0 || line >= conditions_.size()) {
    conditions_ << *condition;
    line = static_cast<int>(conditions_.size()) - 1;
  } else {
    conditions_[line] = *condition;
  }
  touched_ = false;
  shown_ = line;
  showLines();
  return true;
}

void dlgFiltrEdycja::showLines() {
  const QSignalBlocker blocker(ui_->lstWarunek);
  ui_->lstWarunek->clear();
  for (int i = 0; i < conditions_.size(); ++i) ui_->lstWarunek->addItem(conditionLine(i + 1, conditions_[i]));
  ui_->lstWarunek->setCurrentRow(shown_);
}

void dlgFiltrEdycja::selectionMoved(int row) {
  if (row == shown_) return;
  if (touched_ && shown_ >= 0 && !storeEntry(shown_)) {
    const QSignalBlocker blocker(ui_->lstWarunek);
    ui_->lstWarunek->setCurrentRow(shown_);
    return;
  }
  shown_ = row;
  showLines();
  showCondition(row >= 0 && row < conditions_.size() ? conditions_[row] : FilterCondition{});
}

void dlgFiltrEdycja::showCondition(const FilterCondition& condition) {
  loading_ = true;
  int at = -1;
  for (int i = 0; i < columns_.size() && at < 0; ++i)
    if (columns_[i].expression.compare(condition.field, Qt::CaseInsensitive) == 0) at = i;
  ui_->cmbOperlog->setCurrentIndex(condition.logical == kOr ? 1 : 0);
  ui_->cmbKolumna->setCurrentIndex(at);
  columnChosen();
  ui_->cmbOperpor->setCurrentIndex(ui_->cmbOperpor->findData(condition.sqlOperator));
  const FilterEntry entry = at < 0 ? FilterEntry{} : filterEntry(columns_[at].kind, condition.value);
  ui_->txtWartosc->setText(entry.text);
  ui_->numWartosc->setText(entry.number);
  ui_->datWartosc->setDate(entry.date);
  ui_->cmbWartosc->setCurrentIndex(entry.yes ? 0 : 1);
  ui_->cmbOperlog->setEnabled(shown_ > 0);  // nothing stands before the first condition
  ui_->cmdDodaj->setText(condition.isEmpty() ? QStringLiteral("&Dodaj") : QStringLiteral("&Zmień"));
  operatorChosen();
  loading_ = false;
  touched_ = false;
}

void dlgFiltrEdycja::addCondition() {
  if (touched_ && shown_ >= 0 && !storeEntry(shown_)) return;
  // One empty line is enough.
  if (conditions_.isEmpty() || !conditions_.last().isEmpty()) conditions_ << FilterCondition{};
  showLines();
  ui_->lstWarunek->setCurrentRow(static_cast<int>(conditions_.size()) - 1);
  ui_->cmbKolumna->setFocus();
}

void dlgFiltrEdycja::removeCondition() {
  const int line = ui_->lstWarunek->currentRow();
  if (line < 0) return;
  conditions_.removeAt(line);
  if (conditions_.isEmpty()) conditions_ << FilterCondition{};
  touched_ = false;
  shown_ = qMin(line, static_cast<int>(conditions_.size()) - 1);
  showLines();
  showCondition(conditions_[shown_]);
}

bool dlgFiltrEdycja::saveFilter() {
  const QString name = ui_->txtNazwa->text().trimmed();
  if (name.isEmpty()) {
    session_.messages().inform(QStringLiteral("Wprowadź nazwę filtra."),
                               QStringLiteral("Błąd Zapisu filtra"));
    ui_->txtNazwa->setFocus();
    return false;
  }
  if (touched_ && !storeEntry(shown_)) return false;
  const bool sameName = name.compare(stored_, Qt::CaseInsensitive) == 0;
  if (!sameName && store_.contains(name) &&
      !session_.messages().ask(
          QStringLiteral("Filtr: ") + name + QStringLiteral(" już istnieje. Zastąpić go?"),
          QStringLiteral("Filtr")))
    return false;
  if (!stored_.isEmpty()) store_.remove(stored_);
  if (!store_.save(name, conditions_)) {
    session_.messages().fail(QStringLiteral("Nie można zapisać filtra: ") + name,
                             QStringLiteral("Błąd Zapisu filtra"));
    return false;
  }
  stored_ = name;
  return true;
}

bool dlgFiltrEdycja::changed() const {
  QList<FilterCondition> now = conditions_;
  now.removeIf([](const FilterCondition& condition) { return condition.isEmpty(); });
  return touched_ || now != storedConditions_ || ui_->txtNazwa->text().trimmed() != stored_;
}

void dlgFiltrEdycja::reject() {
  if (changed()) {
    const Answer answer = session_.messages().show(
        {QStringLiteral("Dane filtra: ") + ui_->txtNazwa->text().trimmed() +
             QStringLiteral(" zostały zmienione. Zapisać zmiany?"),
         QStringLiteral("Filtr"), Icon::Question, Buttons::YesNoCancel, Answer::Yes});
    if (answer == Answer::Cancel) return;
    if (answer == Answer::Yes) {
      if (saveFilter()) accept();
      return;
    }
  }
  QDialog::reject();
}

}  // namespace tandeko
