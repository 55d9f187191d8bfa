#pragma once

#include <QDialog>
#include <memory>

#include "register/item_record.h"
#include "session/session.h"

namespace Ui {
class frmPodziel;
}

namespace tandeko {

// Splits part of an item's quantity off into a new item.
class frmPodziel : public QDialog {
  Q_OBJECT

 public:
  frmPodziel(Session& session, const ItemData& item, int registerKey, QWidget* parent);
  ~frmPodziel() override;

  // The item that was made; 0 before.
  int newItem() const { return newItem_; }

 private:
  void showQuantities();
  void save();

  Session& session_;
  ItemData item_;
  int registerKey_;
  int newItem_ = 0;
  std::unique_ptr<Ui::frmPodziel> ui_;
};

}  // namespace tandeko
