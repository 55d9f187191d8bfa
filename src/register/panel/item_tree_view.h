#pragma once

#include <QPersistentModelIndex>
#include <QSet>
#include <QTreeView>

#include "register/panel/item_tree_model.h"

namespace tandeko {

// One holder's tree in the panel.
class ItemTreeView : public QTreeView {
  Q_OBJECT

 public:
  explicit ItemTreeView(QWidget* parent = nullptr);

  ItemTreeModel& items() { return model_; }
  const ItemTreeModel& items() const { return model_; }

  // Shows another tree. Sets that were open stay open; `select` (0: the item that was selected) is selected
  // and made visible when the tree has it, and the place scrolled to is kept otherwise.
  void setTree(ItemTree tree, const CurrentRegister& shown, int select = 0);

  // The selected item, 0 for none.
  int selectedItem() const;
  bool selectedIsSet() const;
  QString selectedText() const;

  // The node that a drag would drop into; with an invalid index the whole tree is the target.
  void showDropTarget(const QModelIndex& index);
  void hideDropTarget();
  bool isDropTarget(const QModelIndex& index) const { return dropping_ && index == dropIndex_; }

 Q_SIGNALS:
  void selectionMoved();
  void newItemKey();
  void deleteKey();
  void editKey();
  void copyKey();
  void cutKey();
  void pasteKey();
  void leafDoubleClicked();
  void menuRequested(const QPoint& globalPosition);

 protected:
  bool event(QEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void currentChanged(const QModelIndex& current, const QModelIndex& previous) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void restoreExpanded();

  ItemTreeModel model_;
  QSet<int> expanded_;  // items, also of trees shown earlier
  QPersistentModelIndex dropIndex_;
  bool dropping_ = false;
  bool filling_ = false;
};

}  // namespace tandeko
