#pragma once

#include <QComboBox>
#include <QDate>
#include <QLineEdit>
#include <optional>

#include "jet/dao/dao.h"

// What record forms are made of: combos over dictionaries, dates, numbers.
namespace tandeko {

// Fills a combo from a query of two columns, key and name. `empty` adds a first entry without key. The key
// that was chosen stays so when it is still there.
void fillCombo(QComboBox& combo, jet::Database& database, const QString& sql, bool empty = false);
// The chosen key: a number, a text, or an invalid variant for none.
QVariant comboKey(const QComboBox& combo);
std::optional<int> chosenKey(const QComboBox& combo);
// 0 for none.
int comboNumber(const QComboBox& combo);
// False, and nothing chosen, when there is no such entry.
bool setComboKey(QComboBox& combo, const QVariant& key);
// A combo with many entries is searched by typing any part of a name.
void makeSearchable(QComboBox& combo);

// Makes a field read-only, in the colour that the user chose for such fields.
void setFieldReadOnly(QWidget& field, bool readOnly, const QColor& background);

// A date that may be missing, typed in one of the usual ways or taken from a calendar (F4, Alt+Down).
class DateField : public QLineEdit {
  Q_OBJECT

 public:
  explicit DateField(QWidget* parent = nullptr);

  // Invalid when the field is empty or holds no date.
  QDate date() const;
  void setDate(const QDate& date);
  // Empty or a date.
  bool isSound() const { return text().trimmed().isEmpty() || date().isValid(); }

 Q_SIGNALS:
  void dateChanged(const QDate& date);

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void openCalendar();
};

// d.m.yyyy, d-m-yyyy, d.m.yy, yyyy-mm-dd; invalid for anything else.
QDate dateFromText(const QString& text);

// A number with a decimal comma or point; the keys of other characters do nothing.
class NumberField : public QLineEdit {
 public:
  explicit NumberField(QWidget* parent = nullptr);

  // nullopt when the field is empty.
  std::optional<double> number() const;
  void setNumber(std::optional<double> number);
};

}  // namespace tandeko
