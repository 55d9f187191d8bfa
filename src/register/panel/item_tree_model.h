#pragma once

#include <QAbstractItemModel>

#include "register/item_tree.h"

namespace tandeko {

// Shows an ItemTree. Texts and icons are made when a view asks for them, so that a tree costs what is
// visible of it.
class ItemTreeModel : public QAbstractItemModel {
  Q_OBJECT

 public:
  using QAbstractItemModel::QAbstractItemModel;

  void setTree(ItemTree tree, const CurrentRegister& shown);
  void clear() { setTree({}, {}); }
  const ItemTree& tree() const { return tree_; }

  // 0 for an invalid index.
  int itemAt(const QModelIndex& index) const;
  const ItemRow* rowAt(const QModelIndex& index) const;
  // Invalid when the tree has no such item.
  QModelIndex indexOf(int item) const;
  // Keys of the nodes that have components.
  std::vector<int> sets() const;

  QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  QModelIndex parent(const QModelIndex& child) const override;
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  bool hasChildren(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;

 private:
  const ItemTree::Node& nodeAt(const QModelIndex& index) const;

  ItemTree tree_;
  CurrentRegister shown_;
};

}  // namespace tandeko
