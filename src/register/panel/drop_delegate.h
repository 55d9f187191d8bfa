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

  // The size of every row; an invalid one leaves it to the texts. `below`: texts stand below their pictures.
  void setRowSize(const QSize& size, bool below) {
    rowSize_ = size;
    below_ = below;
  }

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;

 private:
  Test isTarget_;
  QSize rowSize_;
  bool below_ = false;
};

}  // namespace tandeko
