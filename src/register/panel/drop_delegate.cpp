#include "register/panel/drop_delegate.h"

#include <QPainter>

namespace tandeko {

QSize DropDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
  return rowSize_.isValid() ? rowSize_ : QStyledItemDelegate::sizeHint(option, index);
}

void DropDelegate::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
  QStyledItemDelegate::initStyleOption(option, index);
  if (below_) option->displayAlignment = Qt::AlignHCenter | Qt::AlignTop;
}

void DropDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                         const QModelIndex& index) const {
  if (!isTarget_(index)) {
    QStyledItemDelegate::paint(painter, option, index);
    return;
  }
  QColor fill = option.palette.highlight().color();
  fill.setAlphaF(0.3F);
  painter->fillRect(option.rect, fill);
  QStyledItemDelegate::paint(painter, option, index);
  painter->save();
  painter->setPen(option.palette.highlight().color());
  painter->drawRect(option.rect.adjusted(0, 0, -1, -1));
  painter->restore();
}

}  // namespace tandeko
