#pragma once

#include <QStyledItemDelegate>
#include <functional>

namespace tandeko {

// Paints rows as their view does, and marks the one that a dragged item would drop into.
class DropDelegate : public QStyledItemDelegate {
 public:
  using Test = std::function<bool(const QModelIndex&)>;
  DropDelegate(Test isTarget, QObject* parent)
      : QStyledItemDelegate(parent), isTarget_(std::move(isTarget)) {}

  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

 private:
  Test isTarget_;
};

}  // namespace tandeko
