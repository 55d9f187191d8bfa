#include "register/panel/item_tree_view.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include "register/panel/drop_delegate.h"

namespace tandeko {

namespace {

// The keys that belong to the tree even where the main window has a shortcut of the same key.
bool isOwnKey(const QKeyEvent& key) {
  // With Alt they are the menus'.
  const bool ours = (key.modifiers() & (Qt::AltModifier | Qt::MetaModifier)) == 0;
  switch (key.key()) {
    case Qt::Key_Insert:
    case Qt::Key_Delete:
    case Qt::Key_C:
    case Qt::Key_V:
      return ours;
    case Qt::Key_X:
    case Qt::Key_Return:
    case Qt::Key_Enter:
      return (key.modifiers() & ~Qt::KeypadModifier) == Qt::ControlModifier;
    default:
      return false;
  }
}

}  // namespace

ItemTreeView::ItemTreeView(QWidget* parent) : QTreeView(parent) {
  setModel(&model_);
  setHeaderHidden(true);
  setUniformRowHeights(true);
  setSelectionMode(SingleSelection);
  setEditTriggers(NoEditTriggers);
  setItemDelegate(new DropDelegate([this](const QModelIndex& index) { return isDropTarget(index); }, this));
  connect(this, &QTreeView::expanded, this, [this](const QModelIndex& index) {
    if (!filling_) expanded_.insert(model_.itemAt(index));
  });
  connect(this, &QTreeView::collapsed, this, [this](const QModelIndex& index) {
    if (!filling_) expanded_.remove(model_.itemAt(index));
  });
}

void ItemTreeView::setTree(ItemTree tree, const CurrentRegister& shown, int select) {
  const int wanted = select > 0 ? select : selectedItem();
  const int scrolled = verticalScrollBar()->value();
  filling_ = true;
  setUpdatesEnabled(false);
  model_.setTree(std::move(tree), shown);
  restoreExpanded();
  filling_ = false;
  const QModelIndex index = model_.indexOf(wanted);
  if (select <= 0) verticalScrollBar()->setValue(scrolled);
  if (index.isValid()) {
    setCurrentIndex(index);
    scrollTo(index);
  } else {
    setCurrentIndex({});
  }
  setUpdatesEnabled(true);
  Q_EMIT selectionMoved();
}

void ItemTreeView::restoreExpanded() {
  if (expanded_.isEmpty()) return;
  for (const int item : model_.sets())
    if (expanded_.contains(item)) setExpanded(model_.indexOf(item), true);
}

int ItemTreeView::selectedItem() const { return model_.itemAt(currentIndex()); }

bool ItemTreeView::selectedIsSet() const {
  return currentIndex().isValid() && model_.hasChildren(currentIndex());
}

QString ItemTreeView::selectedText() const { return currentIndex().data().toString(); }

void ItemTreeView::showDropTarget(const QModelIndex& index) {
  if (dropping_ && dropIndex_ == index) return;
  dropping_ = true;
  dropIndex_ = index;
  viewport()->update();
}

void ItemTreeView::hideDropTarget() {
  if (!dropping_) return;
  dropping_ = false;
  dropIndex_ = QModelIndex();
  viewport()->update();
}

bool ItemTreeView::event(QEvent* event) {
  if (event->type() == QEvent::ShortcutOverride && isOwnKey(static_cast<const QKeyEvent&>(*event))) {
    event->accept();
    return true;
  }
  return QTreeView::event(event);
}

void ItemTreeView::keyPressEvent(QKeyEvent* event) {
  if (!isOwnKey(*event)) {
    QTreeView::keyPressEvent(event);
    return;
  }
  switch (event->key()) {
    case Qt::Key_Insert:
      Q_EMIT newItemKey();
      break;
    case Qt::Key_Delete:
      Q_EMIT deleteKey();
      break;
    case Qt::Key_C:
      Q_EMIT copyKey();
      break;
    case Qt::Key_V:
      Q_EMIT pasteKey();
      break;
    case Qt::Key_X:
      Q_EMIT cutKey();
      break;
    default:
      Q_EMIT editKey();
  }
}

void ItemTreeView::mousePressEvent(QMouseEvent* event) {
  // A press beside the nodes takes the selection away, so that the top level can be chosen.
  if (!indexAt(event->position().toPoint()).isValid()) setCurrentIndex({});
  QTreeView::mousePressEvent(event);
}

void ItemTreeView::mouseDoubleClickEvent(QMouseEvent* event) {
  const QModelIndex index = indexAt(event->position().toPoint());
  QTreeView::mouseDoubleClickEvent(event);
  if (event->button() == Qt::LeftButton && index.isValid() && !model_.hasChildren(index))
    Q_EMIT leafDoubleClicked();
}

void ItemTreeView::contextMenuEvent(QContextMenuEvent* event) {
  QPoint place = event->globalPos();
  if (event->reason() == QContextMenuEvent::Keyboard && currentIndex().isValid())
    place = viewport()->mapToGlobal(visualRect(currentIndex()).center());
  Q_EMIT menuRequested(place);
}

void ItemTreeView::currentChanged(const QModelIndex& current, const QModelIndex& previous) {
  QTreeView::currentChanged(current, previous);
  if (!filling_) Q_EMIT selectionMoved();
}

void ItemTreeView::paintEvent(QPaintEvent* event) {
  QTreeView::paintEvent(event);
  if (!dropping_ || dropIndex_.isValid()) return;
  QPainter painter(viewport());
  painter.setPen(QPen(palette().highlight().color(), 2));
  painter.drawRect(viewport()->rect().adjusted(1, 1, -1, -1));
}

}  // namespace tandeko
