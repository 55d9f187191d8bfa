#include "lists/form_fields.h"

#include <QAction>
#include <QCalendarWidget>
#include <QCompleter>
#include <QKeyEvent>
#include <QMenu>
#include <QRegularExpressionValidator>
#include <QWidgetAction>

#include "platform/resources.h"
#include "platform/statements.h"
#include "platform/text.h"

namespace tandeko {

void fillCombo(QComboBox& combo, jet::Database& database, const QString& sql, bool empty) {
  const QVariant chosen = comboKey(combo);
  const auto rows = openRows(database, sql);
  combo.clear();
  if (empty) combo.addItem(QString(), QVariant());
  for (; !rows->eof(); rows->moveNext()) {
    const jet::Value key = rows->field(size_t{0}).value();
    const bool isText = key.getIf<jet::Text>() != nullptr;
    combo.addItem(toText(rows->field(size_t{1}).value()),
                  isText ? QVariant(toText(key)) : QVariant(toInt(key)));
  }
  setComboKey(combo, chosen);
}

QVariant comboKey(const QComboBox& combo) { return combo.currentData(); }

std::optional<int> chosenKey(const QComboBox& combo) {
  const QVariant key = comboKey(combo);
  return key.isValid() ? std::optional(key.toInt()) : std::nullopt;
}

int comboNumber(const QComboBox& combo) { return comboKey(combo).toInt(); }

bool setComboKey(QComboBox& combo, const QVariant& key) {
  const int at = key.isValid() ? combo.findData(key) : -1;
  combo.setCurrentIndex(at >= 0 || combo.count() == 0 || combo.itemData(0).isValid() ? at : 0);
  if (combo.isEditable() && combo.currentIndex() < 0) combo.clearEditText();
  return at >= 0;
}

void makeSearchable(QComboBox& combo) {
  combo.setEditable(true);
  combo.setInsertPolicy(QComboBox::NoInsert);
  combo.completer()->setCompletionMode(QCompleter::PopupCompletion);
  combo.completer()->setFilterMode(Qt::MatchContains);
  combo.completer()->setCaseSensitivity(Qt::CaseInsensitive);
  // What was typed and is no entry gives way to the entry that is chosen.
  QObject::connect(combo.lineEdit(), &QLineEdit::editingFinished, &combo, [&combo] {
    const int at = combo.findText(combo.currentText(), Qt::MatchFixedString);
    if (at >= 0)
      combo.setCurrentIndex(at);
    else
      combo.setEditText(combo.itemText(combo.currentIndex()));
  });
}

void setFieldReadOnly(QWidget& field, bool readOnly, const QColor& background) {
  if (auto* line = qobject_cast<QLineEdit*>(&field))
    line->setReadOnly(readOnly);
  else if (field.metaObject()->indexOfProperty("readOnly") >= 0)
    field.setProperty("readOnly", readOnly);
  else
    field.setEnabled(!readOnly);
  QPalette colors = field.palette();
  const QPalette usual;
  colors.setColor(QPalette::Base,
                  readOnly && background.isValid() ? background : usual.color(QPalette::Base));
  if (readOnly && background.isValid())
    colors.setColor(QPalette::Text, background.lightness() > 127 ? Qt::black : Qt::white);
  field.setPalette(readOnly ? colors : usual);
}

QDate dateFromText(const QString& text) {
  static const QRegularExpression dayFirst(
      QStringLiteral(R"(^\s*(\d{1,2})[.\-/](\d{1,2})[.\-/](\d{4}|\d{2})\s*r?\.?\s*$)"));
  static const QRegularExpression yearFirst(
      QStringLiteral(R"(^\s*(\d{4})[.\-/](\d{1,2})[.\-/](\d{1,2})\s*$)"));
  if (const auto match = dayFirst.match(text); match.hasMatch()) {
    int year = match.captured(3).toInt();
    if (match.capturedLength(3) == 2) year += year < 30 ? 2000 : 1900;
    return QDate(year, match.captured(2).toInt(), match.captured(1).toInt());
  }
  const auto match = yearFirst.match(text);
  return match.hasMatch()
             ? QDate(match.captured(1).toInt(), match.captured(2).toInt(), match.captured(3).toInt())
             : QDate();
}

DateField::DateField(QWidget* parent) : QLineEdit(parent) {
  auto* calendar = addAction(icon("calendar"), TrailingPosition);
  calendar->setToolTip(QStringLiteral("Kalendarz (F4)"));
  connect(calendar, &QAction::triggered, this, &DateField::openCalendar);
  connect(this, &QLineEdit::textChanged, this, [this] { Q_EMIT dateChanged(date()); });
  // A date typed in another way is shown in the usual one.
  connect(this, &QLineEdit::editingFinished, this, [this] {
    if (date().isValid()) setDate(date());
  });
}

QDate DateField::date() const { return dateFromText(text()); }

void DateField::setDate(const QDate& date) {
  const QString shown = date.isValid() ? date.toString(QStringLiteral("dd.MM.yyyy")) : QString();
  if (shown != text()) setText(shown);
}

void DateField::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_F4 || (event->key() == Qt::Key_Down && event->modifiers() == Qt::AltModifier))
    openCalendar();
  else
    QLineEdit::keyPressEvent(event);
}

void DateField::openCalendar() {
  if (isReadOnly()) return;
  QMenu menu(this);
  auto* calendar = new QCalendarWidget(&menu);
  calendar->setFirstDayOfWeek(Qt::Monday);
  calendar->setGridVisible(true);
  if (date().isValid()) calendar->setSelectedDate(date());
  const auto take = [this, &menu](const QDate& chosen) {
    setDate(chosen);
    menu.close();
  };
  connect(calendar, &QCalendarWidget::clicked, &menu, take);
  connect(calendar, &QCalendarWidget::activated, &menu, take);
  auto* action = new QWidgetAction(&menu);
  action->setDefaultWidget(calendar);
  menu.addAction(action);
  calendar->setFocus();
  menu.exec(mapToGlobal(QPoint(0, height())));
}

NumberField::NumberField(QWidget* parent) : QLineEdit(parent) {
  setAlignment(Qt::AlignRight);
  setValidator(new QRegularExpressionValidator(
      QRegularExpression(QStringLiteral(R"(-?\d{0,12}([.,]\d{0,6})?)")), this));
}

std::optional<double> NumberField::number() const {
  QString typed = text().trimmed();
  bool ok = false;
  const double value = typed.replace(u',', u'.').toDouble(&ok);
  return ok ? std::optional(value) : std::nullopt;
}

void NumberField::setNumber(std::optional<double> number) {
  setText(number ? toText(jet::Value(*number)) : QString());
}

}  // namespace tandeko
