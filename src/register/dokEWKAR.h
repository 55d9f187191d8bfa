#pragma once

#include <memory>

#include "lists/record_form.h"
#include "register/current_register.h"
#include "register/item_record.h"
#include "session/session.h"

namespace Ui {
class dokEWKAR;
}

namespace tandeko {

// How the item form is opened.
struct ItemFormRequest {
  int item = 0;             // 0: a new item
  int holder = kWarehouse;  // proposed for a new item
  int parent = 0;           // proposed for a new item
  QString karParent;        // the name of the view that opens it
};

// The form in which one item of the current register is created or changed.
class dokEWKAR : public RecordForm {
  Q_OBJECT

 public:
  // Brings the form of that item to the front when it is open. Null when the item is gone or there is no
  // register.
  static dokEWKAR* open(Session& session, const ItemFormRequest& request);
  ~dokEWKAR() override;

  int recordKey() const override { return item_.id; }

  bool supports(Command command) const override;
  void run(Command command) override;
  // Dictionaries, employees or items have changed.
  void KarRefresh() override;

 protected:
  bool save() override;

 private:
  dokEWKAR(Session& session, const CurrentRegister& current, const ItemFormRequest& request);

  void connectFields();
  void fillCombos();
  void hideFields();
  void limitTexts();
  void showItem(const ItemData& item);
  ItemData entered() const;
  void setRights();
  void fillSets();
  void proposeNumber();
  void showWorth();
  void showCaption();
  bool mayStore(const ItemData& item);
  bool askForDictionary(const QString& question, const QString& form);
  void tellViews();
  void addLinks(const QStringList& files);
  void openLink();

  CurrentRegister register_;
  ItemData item_;  // as last read or stored
  std::unique_ptr<Ui::dokEWKAR> ui_;
};

}  // namespace tandeko
