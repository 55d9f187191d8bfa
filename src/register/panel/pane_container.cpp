#include "register/panel/pane_container.h"

#include <QStringList>
#include <algorithm>

namespace tandeko {

namespace {

constexpr size_t kColumns = 2;  // of one pane; the others are above each other

const QList<int> kStandardColumns{330, 420, 420};
const QList<int> kStandardStack{400, 200};

}  // namespace

PaneContainer::PaneContainer(QWidget* parent)
    : QSplitter(Qt::Horizontal, parent), stack_(new QSplitter(Qt::Vertical, this)) {
  setChildrenCollapsible(false);
  stack_->setChildrenCollapsible(false);
}

void PaneContainer::setPanes(std::vector<Pane*> panes) {
  standard_ = placed_ = std::move(panes);
  arrange();
  for (Pane* pane : standard_) {
    connect(pane, &Pane::dragged, this, [this, pane](const QPoint& at) {
      const Pane* under = paneAt(at);
      for (Pane* other : standard_) other->setTarget(other == under && other != pane);
    });
    connect(pane, &Pane::dropped, this, [this, pane](const QPoint& at, bool given) {
      for (Pane* other : standard_) other->setTarget(false);
      if (Pane* under = given ? paneAt(at) : nullptr) swap(pane, under);
    });
  }
}

Pane* PaneContainer::paneAt(const QPoint& globalPosition) const {
  for (Pane* pane : standard_)
    if (pane->isVisible() && pane->rect().contains(pane->mapFromGlobal(globalPosition))) return pane;
  return nullptr;
}

void PaneContainer::swap(Pane* one, Pane* other) {
  if (one == other) return;
  std::iter_swap(std::find(placed_.begin(), placed_.end(), one),
                 std::find(placed_.begin(), placed_.end(), other));
  arrange();
}

// Puts the panes into their places; the places keep their sizes.
void PaneContainer::arrange() {
  const QList<int> columns = sizes();
  const QList<int> rows = stack_->sizes();
  for (size_t place = 0; place < placed_.size(); ++place) {
    if (place < kColumns)
      insertWidget(static_cast<int>(place), placed_[place]);
    else
      stack_->insertWidget(static_cast<int>(place - kColumns), placed_[place]);
    placed_[place]->setHidden(hidden_.contains(placed_[place]));
  }
  insertWidget(static_cast<int>(kColumns), stack_);
  const auto shown = [](const Pane* pane) { return !pane->isHidden(); };
  stack_->setVisible(std::any_of(placed_.begin() + kColumns, placed_.end(), shown));
  if (columns.size() == count()) setSizes(columns);
  if (rows.size() == stack_->count()) stack_->setSizes(rows);
  // The keyboard goes the way the eye does.
  for (size_t place = 1; place < placed_.size(); ++place)
    setTabOrder(placed_[place - 1]->control(), placed_[place]->control());
}

void PaneContainer::setPaneShown(Pane& pane, bool shown) {
  if (shown)
    hidden_.remove(&pane);
  else
    hidden_.insert(&pane);
  arrange();
}

QString PaneContainer::order() const {
  if (placed_ == standard_) return QStringLiteral("1");
  QStringList numbers;
  for (Pane* pane : placed_)
    numbers << QString::number(std::find(standard_.begin(), standard_.end(), pane) - standard_.begin() + 1);
  return numbers.join(u',');
}

void PaneContainer::setOrder(const QString& order) {
  placed_.clear();
  const auto place = [this](Pane* pane) {
    if (std::find(placed_.begin(), placed_.end(), pane) == placed_.end()) placed_.push_back(pane);
  };
  for (const QString& part : order.split(u',')) {
    const int number = part.toInt();
    if (number >= 1 && static_cast<size_t>(number) <= standard_.size())
      place(standard_[static_cast<size_t>(number) - 1]);
  }
  for (Pane* pane : standard_) place(pane);
  arrange();
}

void PaneContainer::setPaneSizes(const QList<int>& columns, const QList<int>& stack) {
  setSizes(columns.size() == count() ? columns : kStandardColumns);
  stack_->setSizes(stack.size() == stack_->count() ? stack : kStandardStack);
}

}  // namespace tandeko
