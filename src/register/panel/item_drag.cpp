#include "register/panel/item_drag.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QToolTip>
#include <algorithm>

namespace tandeko {

namespace {

constexpr int kExpandAfter = 700;  // ms over a closed set
constexpr int kScrollEvery = 60;   // ms near an edge
constexpr int kScrollEdge = 20;    // pixels
constexpr int kImageOffset = 14;   // pixels right of and below the pointer
constexpr int kImageWidth = 400;   // pixels, at most

// The rows to scroll by when the pointer is near the upper or lower edge, or beyond it.
int scrollStep(const QAbstractItemView& view, const QPoint& global) {
  const QPoint at = view.viewport()->mapFromGlobal(global);
  if (at.x() < 0 || at.x() >= view.viewport()->width()) return 0;
  if (at.y() < -kScrollEdge || at.y() > view.viewport()->height() + kScrollEdge) return 0;
  if (at.y() < kScrollEdge) return -1;
  return at.y() > view.viewport()->height() - kScrollEdge ? 1 : 0;
}

}  // namespace

ItemDrag::ItemDrag(std::vector<ItemTreeView*> trees, EmployeeList* employees, QWidget* panel)
    : QObject(panel),
      trees_(std::move(trees)),
      employees_(employees),
      panel_(panel),
      image_(new QLabel(panel)) {
  for (ItemTreeView* tree : trees_) tree->viewport()->installEventFilter(this);
  image_->setObjectName(QStringLiteral("labPrzesuwany"));
  image_->setAttribute(Qt::WA_TransparentForMouseEvents);
  image_->setFrameShape(QFrame::Box);
  image_->setAutoFillBackground(true);
  image_->setPalette(QToolTip::palette());
  image_->setBackgroundRole(QPalette::ToolTipBase);
  image_->setForegroundRole(QPalette::ToolTipText);
  image_->setMargin(2);
  image_->hide();
  expandTimer_.setSingleShot(true);
  expandTimer_.setInterval(kExpandAfter);
  scrollTimer_.setInterval(kScrollEvery);
  connect(&expandTimer_, &QTimer::timeout, this, [this] {
    ItemTreeView* tree = treeAt(lastAt_);
    if (dragging() && tree && hovered_.isValid()) tree->expand(hovered_);
  });
  connect(&scrollTimer_, &QTimer::timeout, this, &ItemDrag::autoScroll);
}

ItemDrag::~ItemDrag() {
  if (dragging()) QApplication::restoreOverrideCursor();
}

bool ItemDrag::eventFilter(QObject* watched, QEvent* event) {
  if (dynamic_cast<QMouseEvent*>(event)) {
    const auto isTree = [watched](const ItemTreeView* tree) { return tree->viewport() == watched; };
    if (std::none_of(trees_.begin(), trees_.end(), isTree)) return false;
  }
  switch (event->type()) {
    case QEvent::MouseButtonPress: {
      const auto& mouse = static_cast<const QMouseEvent&>(*event);
      if (dragging()) {
        cancel();  // another button gives the drag up
        return true;
      }
      state_ = State::Idle;
      for (ItemTreeView* tree : trees_) {
        if (tree->viewport() != watched || mouse.button() != Qt::LeftButton) continue;
        source_ = tree;
        item_ = tree->items().itemAt(tree->indexAt(mouse.position().toPoint()));
        pressedAt_ = mouse.globalPosition().toPoint();
        if (item_ > 0) state_ = State::Pressed;
      }
      return false;
    }
    case QEvent::MouseMove: {
      const auto& mouse = static_cast<const QMouseEvent&>(*event);
      return mouse.buttons().testFlag(Qt::LeftButton) && mouseMoved(mouse.globalPosition().toPoint());
    }
    case QEvent::MouseButtonRelease: {
      const auto& mouse = static_cast<const QMouseEvent&>(*event);
      if (mouse.button() != Qt::LeftButton) return false;
      if (!dragging()) {
        state_ = State::Idle;
        return false;
      }
      finish(mouse.globalPosition().toPoint());
      return true;
    }
    case QEvent::KeyPress:
    case QEvent::ShortcutOverride:  // only while dragging, of the whole application
      if (!dragging()) return false;
      event->accept();
      if (event->type() == QEvent::KeyPress && static_cast<const QKeyEvent&>(*event).key() == Qt::Key_Escape)
        cancel();
      return true;
    case QEvent::ApplicationDeactivate:
      if (dragging()) cancel();
      return false;
    default:
      return false;
  }
}

// True when the tree is not to see the movement.
bool ItemDrag::mouseMoved(const QPoint& global) {
  if (state_ == State::Idle) return true;  // a pressed tree would select what the pointer passes
  if (state_ == State::Pressed) {
    if ((global - pressedAt_).manhattanLength() < QApplication::startDragDistance()) return true;
    if (mayBegin && !mayBegin()) {
      state_ = State::Idle;
      return true;
    }
    begin();
  }
  track(global);
  return true;
}

void ItemDrag::begin() {
  const QModelIndex index = source_->items().indexOf(item_);
  if (!index.isValid()) return;  // the tree was filled again meanwhile
  source_->setCurrentIndex(index);
  const QIcon icon = index.data(Qt::DecorationRole).value<QIcon>();
  const QString text = image_->fontMetrics().elidedText(index.data().toString(), Qt::ElideRight, kImageWidth);
  const int side = source_->style()->pixelMetric(QStyle::PM_SmallIconSize);
  const int height = qMax(side, image_->fontMetrics().height());
  QPixmap picture(QSize(side + 4 + image_->fontMetrics().horizontalAdvance(text) + 2, height) *
                  panel_->devicePixelRatioF());
  picture.setDevicePixelRatio(panel_->devicePixelRatioF());
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  icon.paint(&painter, 0, (height - side) / 2, side, side);
  painter.setPen(image_->palette().toolTipText().color());
  painter.setFont(image_->font());
  painter.drawText(QRect(side + 4, 0, 2 * kImageWidth, height), Qt::AlignLeft | Qt::AlignVCenter, text);
  painter.end();
  image_->setPixmap(picture);
  image_->adjustSize();
  image_->show();
  image_->raise();
  QApplication::setOverrideCursor(Qt::ClosedHandCursor);
  state_ = State::Move;
  scrollTimer_.start();
  qApp->installEventFilter(this);
}

void ItemDrag::setState(State state) {
  if (state_ == state) return;
  state_ = state;
  QApplication::changeOverrideCursor(state == State::Move ? Qt::ClosedHandCursor : Qt::ForbiddenCursor);
}

ItemTreeView* ItemDrag::treeAt(const QPoint& global) const {
  for (ItemTreeView* tree : trees_)
    if (tree->isVisible() && tree->viewport()->rect().contains(tree->viewport()->mapFromGlobal(global)))
      return tree;
  return nullptr;
}

std::optional<ItemDrag::Target> ItemDrag::targetAt(const QPoint& global) const {
  if (employees_->isEmpty()) return std::nullopt;
  Target target;
  target.tree = treeAt(global);
  if (target.tree) {
    if (hasHolder && !hasHolder(*target.tree)) return std::nullopt;
    const QPoint local = target.tree->viewport()->mapFromGlobal(global);
    target.item = target.tree->items().itemAt(target.tree->indexAt(local));
    return target;
  }
  target.employee = employees_->employeeAt(employees_->indexAtGlobal(global));
  if (target.employee > 0) return target;
  return std::nullopt;
}

void ItemDrag::track(const QPoint& global) {
  lastAt_ = global;
  image_->move(panel_->mapFromGlobal(global) + QPoint(kImageOffset, kImageOffset));
  const auto target = targetAt(global);
  setState(target ? State::Move : State::None);
  for (ItemTreeView* tree : trees_)
    if (!target || target->tree != tree) tree->hideDropTarget();
  employees_->showDropTarget(target && !target->tree ? employees_->indexAtGlobal(global) : QModelIndex());

  QModelIndex hovered;
  if (target && target->tree) {
    const QModelIndex node = target->tree->items().indexOf(target->item);
    const bool intoSet = !makesSets || makesSets();
    target->tree->showDropTarget(intoSet ? node : QModelIndex());
    if (node.isValid() && target->tree->items().hasChildren(node) && !target->tree->isExpanded(node))
      hovered = node;
  }
  if (hovered_ != hovered) {
    hovered_ = hovered;
    if (hovered.isValid())
      expandTimer_.start();
    else
      expandTimer_.stop();
  }
}

void ItemDrag::autoScroll() {
  std::vector<QAbstractItemView*> views(trees_.begin(), trees_.end());
  views.push_back(&employees_->view());
  for (QAbstractItemView* view : views) {
    const int step = view->isVisible() ? scrollStep(*view, lastAt_) : 0;
    if (step == 0) continue;
    QScrollBar& bar = *view->verticalScrollBar();
    const int before = bar.value();
    bar.setValue(before + step * bar.singleStep());
    if (bar.value() != before) track(lastAt_);
  }
}

void ItemDrag::clearMarks() {
  qApp->removeEventFilter(this);
  scrollTimer_.stop();
  expandTimer_.stop();
  hovered_ = QModelIndex();
  image_->hide();
  for (ItemTreeView* tree : trees_) tree->hideDropTarget();
  employees_->hideDropTarget();
  QApplication::restoreOverrideCursor();
  state_ = State::Idle;
}

void ItemDrag::finish(const QPoint& global) {
  track(global);
  const auto target = targetAt(global);
  clearMarks();
  if (target && dropped) dropped(*source_, item_, *target);
  if (ended) ended();
}

void ItemDrag::cancel() {
  if (!dragging()) return;
  clearMarks();
  if (ended) ended();
}

}  // namespace tandeko
