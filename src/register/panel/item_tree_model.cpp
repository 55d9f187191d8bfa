#include "register/panel/item_tree_model.h"

#include "register/panel/item_icons.h"

namespace tandeko {

void ItemTreeModel::setTree(ItemTree tree, const CurrentRegister& shown) {
  beginResetModel();
  tree_ = std::move(tree);
  shown_ = shown;
  endResetModel();
}

const ItemTree::Node& ItemTreeModel::nodeAt(const QModelIndex& index) const {
  return tree_.nodes()[static_cast<size_t>(index.internalId())];
}

int ItemTreeModel::itemAt(const QModelIndex& index) const {
  return index.isValid() ? nodeAt(index).item.id : 0;
}

const ItemRow* ItemTreeModel::rowAt(const QModelIndex& index) const {
  return index.isValid() ? &nodeAt(index).item : nullptr;
}

QModelIndex ItemTreeModel::indexOf(int item) const {
  const int node = tree_.find(item);
  if (node < 0) return {};
  return createIndex(tree_.nodes()[static_cast<size_t>(node)].row, 0, static_cast<quintptr>(node));
}

std::vector<int> ItemTreeModel::sets() const {
  std::vector<int> keys;
  for (const auto& node : tree_.nodes())
    if (node.childCount > 0) keys.push_back(node.item.id);
  return keys;
}

QModelIndex ItemTreeModel::index(int row, int column, const QModelIndex& parent) const {
  if (!hasIndex(row, column, parent)) return {};
  const int first = parent.isValid() ? nodeAt(parent).firstChild : 0;
  return createIndex(row, column, static_cast<quintptr>(first + row));
}

QModelIndex ItemTreeModel::parent(const QModelIndex& child) const {
  if (!child.isValid()) return {};
  const int set = nodeAt(child).parent;
  if (set < 0) return {};
  return createIndex(tree_.nodes()[static_cast<size_t>(set)].row, 0, static_cast<quintptr>(set));
}

int ItemTreeModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? nodeAt(parent).childCount : tree_.topLevelCount();
}

int ItemTreeModel::columnCount(const QModelIndex&) const { return 1; }

bool ItemTreeModel::hasChildren(const QModelIndex& parent) const { return rowCount(parent) > 0; }

QVariant ItemTreeModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const ItemTree::Node& node = nodeAt(index);
  switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
      return PanelNodeText(node.item, shown_);
    case Qt::DecorationRole:
      return itemIcon(node.item.icon.value_or(0), node.childCount > 0);
    default:
      return {};
  }
}

}  // namespace tandeko
