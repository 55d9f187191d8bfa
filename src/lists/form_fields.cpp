#include "lists/form_fields.h"

#include <QAbstractProxyModel>
#include <QAction>
#include <QCalendarWidget>
#include <QCompleter>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLocale>
#include <QMenu>
#include <QRegularExpression>
#include <QValidator>
#include <QWidgetAction>
#include <algorithm>

#include "platform/resources.h"
#include "platform/statements.h"
#include "platform/text.h"

namespace tandeko {

namespace {

constexpr int kDecimals = 6, kMoneyDecimals = 4;

// Keys of other characters do nothing, and what is pasted loses them: "1 234,50 zł" becomes 1234,50.
class NumberSigns : public QValidator {
 public:
  using QValidator::QValidator;
  State validate(QString& input, int& cursor) const override {
    for (qsizetype at = input.size(); at-- > 0;) {
      if (QStringView(u"0123456789,.-+").contains(input[at])) continue;
      input.remove(at, 1);
      if (at < cursor) --cursor;
    }
    return Acceptable;
  }
};

// The row of the only entry that the text is a part of; -1 for none or several.
int onlyMatch(QCompleter& completer, const QString& text) {
  completer.setCompletionPrefix(text);
  const auto* found = qobject_cast<const QAbstractProxyModel*>(completer.completionModel());
  return found && completer.completionCount() == 1 ? found->mapToSource(found->index(0, 0)).row() : -1;
}

}  // namespace

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
  combo.setDuplicatesEnabled(true);  // Enter must not go to another entry of the same name
  combo.completer()->setCompletionMode(QCompleter::PopupCompletion);
  combo.completer()->setFilterMode(Qt::MatchContains);
  combo.completer()->setCaseSensitivity(Qt::CaseInsensitive);
  // What was typed and fits one entry only chooses it; what is no entry gives way to the one that is chosen.
  QObject::connect(combo.lineEdit(), &QLineEdit::editingFinished, &combo, [&combo] {
    if (combo.currentText().compare(combo.itemText(combo.currentIndex()), Qt::CaseInsensitive) == 0) return;
    int at = combo.findText(combo.currentText(), Qt::MatchFixedString);
    if (at < 0 && !combo.currentText().isEmpty()) at = onlyMatch(*combo.completer(), combo.currentText());
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

CheckedField::CheckedField(QWidget* parent) : QLineEdit(parent) {
  // While the user types, an unfinished text is no fault.
  connect(this, &QLineEdit::textChanged, this, [this] {
    if (isSound() ? label_ != nullptr : !hasFocus()) showFault();
  });
  connect(this, &QLineEdit::editingFinished, this, &CheckedField::showFault);
}

void CheckedField::showFault() {
  const QString text = fault();
  QLayout* layout = parentWidget() ? parentWidget()->layout() : nullptr;
  if (!label_ && (text.isEmpty() || !layout)) return;
  if (!label_) {
    // The field shares its place with the label from now on.
    const bool focused = hasFocus();
    setMinimumWidth(
        std::min(width(), fontMetrics().horizontalAdvance(QStringLiteral("00.00.0000")) + 2 * height()));
    auto* place = new QWidget(parentWidget());
    delete layout->replaceWidget(this, place);
    auto* row = new QHBoxLayout(place);
    row->setContentsMargins(0, 0, 0, 0);
    label_ = new QLabel(place);
    label_->setObjectName(objectName() + QStringLiteral("Blad"));
    QPalette colors = label_->palette();
    colors.setColor(QPalette::WindowText, QColor(0xd3, 0x2f, 0x2f));
    label_->setPalette(colors);
    row->addWidget(this, 1);
    row->addWidget(label_);
    show();
    place->show();
    if (focused) setFocus();
  }
  label_->setText(text);
  label_->setVisible(!text.isEmpty());
  setAccessibleDescription(text);
}

bool fieldsSound(const QWidget& form, MessageService& messages) {
  for (auto* field : form.findChildren<CheckedField*>()) {
    if (field->isSound()) continue;
    field->showFault();
    messages.inform(field->fault() + QStringLiteral(": ") + field->text() +
                    QStringLiteral(". Popraw dane i spróbuj ponownie."));
    field->setFocus();
    return false;
  }
  return true;
}

QDate dateFromText(const QString& text) {
  static const QRegularExpression dayFirst(
      QStringLiteral(R"(^\s*(\d{1,2})[.\-/](\d{1,2})[.\-/](\d{4}|\d{2})\s*r?\.?\s*$)"));
  static const QRegularExpression yearFirst(
      QStringLiteral(R"(^\s*(\d{4})[.\-/](\d{1,2})[.\-/](\d{1,2})\s*$)"));
  constexpr int kFirstYear = 100;
  int year = 0, month = 0, day = 0;
  if (const auto match = dayFirst.match(text); match.hasMatch()) {
    year = match.captured(3).toInt();
    if (match.capturedLength(3) == 2) year += year < 30 ? 2000 : 1900;
    month = match.captured(2).toInt();
    day = match.captured(1).toInt();
  } else if (const auto other = yearFirst.match(text); other.hasMatch()) {
    year = other.captured(1).toInt();
    month = other.captured(2).toInt();
    day = other.captured(3).toInt();
  }
  return year >= kFirstYear ? QDate(year, month, day) : QDate();
}

DateField::DateField(QWidget* parent) : CheckedField(parent) {
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

QString DateField::fault() const {
  return text().trimmed().isEmpty() || date().isValid() ? QString() : QStringLiteral("Błędna data");
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

std::optional<double> numberFromText(const QString& text, int decimals) {
  static const QRegularExpression form(QStringLiteral(R"(^[-+]?(\d{0,12})(?:[.,](\d*))?$)"));
  QString typed = text.trimmed();
  const auto match = form.match(typed);
  const auto fraction = match.capturedLength(2);
  if (!match.hasMatch() || match.capturedLength(1) + fraction == 0 || fraction > decimals)
    return std::nullopt;
  return typed.replace(u',', u'.').toDouble();
}

NumberField::NumberField(QWidget* parent) : CheckedField(parent) {
  setValidator(new NumberSigns(this));
  setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  // A decimal point becomes a comma.
  connect(this, &QLineEdit::editingFinished, this, [this] {
    const auto typed = number();
    if (typed && text() != setText_) setNumber(typed);
  });
}

std::optional<double> NumberField::number() const {
  return text() == setText_ ? set_ : numberFromText(text(), money_ ? kMoneyDecimals : kDecimals);
}

void NumberField::setNumber(std::optional<double> number) {
  set_ = number;
  setText_ = number ? shown(*number) : QString();
  if (setText_ != text()) setText(setText_);
}

QString NumberField::shown(double number) const {
  QLocale locale;
  locale.setNumberOptions(QLocale::OmitGroupSeparator);
  QString digits = locale.toString(number, 'f', money_ ? kMoneyDecimals : kDecimals);
  const auto least = digits.indexOf(locale.decimalPoint()) + (money_ ? 3 : 1);
  while (digits.size() > least && digits.endsWith(u'0')) digits.chop(1);
  if (digits.endsWith(locale.decimalPoint())) digits.chop(1);
  return digits;
}

QString NumberField::fault() const {
  return text().trimmed().isEmpty() || number() ? QString() : QStringLiteral("Błędna liczba");
}

}  // namespace tandeko
