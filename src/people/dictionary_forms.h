#pragma once

#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

#include "session/session.h"

// The five dictionaries: one form, told apart by a row of a table.
namespace tandeko {

struct DictionaryKind {
  QString form, caption, table;
  QString keyField;
  QString keyLabel, nameLabel;
  bool typedKey = false;  // a text typed by the user, else a number assigned automatically
  bool email = false;

  QString stem() const { return form.mid(3); }  // "SWGPC"
};
const QList<DictionaryKind>& dictionaryKinds();

class DictionaryForm : public ChildForm {
  Q_OBJECT

 public:
  DictionaryForm(Session& session, const DictionaryKind& kind);

  void KarRefresh() override;

 protected:
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void build();
  QLayout* buildFields();
  void fillList(const QVariant& select);
  void showEntry();
  void select(QTreeWidgetItem* current);
  void newEntry();
  void cancelEntry();
  void save();
  bool store();
  void remove();
  bool settleChanges();
  void setEdited(bool edited);
  void enableButtons();
  void tellForms();

  bool isNew() const;
  QVariant selectedKey() const;
  void markInList(const QVariant& key);
  QString entryQuery(const QVariant& key) const;

  Session& session_;
  DictionaryKind kind_;
  QTreeWidget* list_ = nullptr;
  QGroupBox* fraWlas_ = nullptr;
  QLineEdit *txtKey_ = nullptr, *txtNazwa_ = nullptr, *txtMail_ = nullptr;
  QPushButton *cmdNowy_ = nullptr, *cmdUsun_ = nullptr, *cmdZapisz_ = nullptr, *cmdAnuluj_ = nullptr,
              *cmdZamknij_ = nullptr;
  QVariant shown_;  // the key of the entry in the fields; of the one shown last while a new one is entered
  bool edited_ = false;
  bool filling_ = false;
};

// Opens or activates the dictionary form of that name, such as "sloSWGPC".
void openDictionary(Session& session, const QString& form);

}  // namespace tandeko
