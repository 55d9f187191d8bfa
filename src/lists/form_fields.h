#pragma once

#include <QComboBox>
#include <QDate>
#include <QLabel>
#include <QLineEdit>
#include <optional>

#include "jet/dao/dao.h"
#include "platform/message_box.h"

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
// A combo with many entries is searched by typing any part of a name; a part of one name only chooses it. Other
// text gives way to the chosen entry when the field is left.
void makeSearchable(QComboBox& combo);

// Makes a field read-only, in the colour that the user chose for such fields.
void setFieldReadOnly(QWidget& field, bool readOnly, const QColor& background);

// A field whose text may be impossible; what is wrong is shown beside it once it is left, until it is mended.
class CheckedField : public QLineEdit {
  Q_OBJECT

 public:
  explicit CheckedField(QWidget* parent);

  // What is wrong with the text, in two words; empty for nothing. An empty field is sound.
  virtual QString fault() const = 0;
  bool isSound() const { return fault().isEmpty(); }
  // Shows the fault, if there is one, without waiting until the field is left.
  void showFault();

 private:
  QLabel* label_ = nullptr;
};

// False, with the first fault told and its field focused, when a field of the form cannot be stored.
bool fieldsSound(const QWidget& form, MessageService& messages);

// A date that may be missing, typed in one of the usual ways or taken from a calendar (F4, Alt+Down).
class DateField : public CheckedField {
  Q_OBJECT

 public:
  explicit DateField(QWidget* parent = nullptr);

  // Invalid when the field is empty or holds no date.
  QDate date() const;
  void setDate(const QDate& date);
  QString fault() const override;

 Q_SIGNALS:
  void dateChanged(const QDate& date);

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void openCalendar();
};

// d.m.yyyy, d-m-yyyy, d.m.yy, yyyy-mm-dd; invalid for anything else and for years that a file cannot hold.
QDate dateFromText(const QString& text);

// A number with a decimal comma or point, at most twelve digits before it and as many decimals as allowed.
class NumberField : public CheckedField {
  Q_OBJECT

 public:
  explicit NumberField(QWidget* parent = nullptr);

  // nullopt when the field is empty or holds no number.
  std::optional<double> number() const;
  void setNumber(std::optional<double> number);
  // Prices take four decimals and show at least two.
  void setMoney() { money_ = true; }
  QString fault() const override;

 private:
  QString shown(double number) const;

  bool money_ = false;
  std::optional<double> set_;  // what setNumber showed as setText_, with all its decimals
  QString setText_;
};

// With a decimal comma or point; nullopt for anything else.
std::optional<double> numberFromText(const QString& text, int decimals);

}  // namespace tandeko
