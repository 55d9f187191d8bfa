#pragma once

#include <QLabel>
#include <QObject>
#include <QPersistentModelIndex>
#include <QPoint>
#include <QTimer>
#include <functional>
#include <vector>

#include "register/panel/employee_list.h"
#include "register/panel/item_tree_view.h"

namespace tandeko {

// Dragging of items between the panel's trees and onto employees, with mouse events of our own: the drag
// stays inside the panel, shows where it would drop, and ends with one call.
//
// A drag begins when the pointer has moved, as |dx| + |dy|, the distance that the desktop uses for all
// drags (10 pixels usually) from where the left button went down: a shorter way begins drags by accident.
class ItemDrag : public QObject {
  Q_OBJECT

 public:
  // What the dragged item is dropped on.
  struct Target {
    ItemTreeView* tree = nullptr;  // null: the employee list
    int item = 0;                  // the node's item, 0 beside the nodes
    int employee = 0;              // the entry's employee
  };

  ItemDrag(std::vector<ItemTreeView*> trees, EmployeeList* employees, QWidget* panel);
  ~ItemDrag() override;

  // Whether a drag may begin: asked once, at its beginning.
  std::function<bool()> mayBegin;
  // Whether a dropped item becomes a component of the node under the pointer.
  std::function<bool()> makesSets;
  // Whether the tree has a holder; one without takes nothing.
  std::function<bool(const ItemTreeView&)> hasHolder;
  std::function<void(ItemTreeView& source, int item, const Target& target)> dropped;
  std::function<void()> ended;  // after a drag, dropped or not

  bool dragging() const { return state_ != State::Idle && state_ != State::Pressed; }
  void cancel();

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  enum class State { Idle, Pressed, Move, None };  // None: nothing can be dropped here

  bool mouseMoved(const QPoint& global);
  void begin();
  void track(const QPoint& global);
  void setState(State state);
  void finish(const QPoint& global);
  void clearMarks();
  void autoScroll();
  ItemTreeView* treeAt(const QPoint& global) const;
  std::optional<Target> targetAt(const QPoint& global) const;

  std::vector<ItemTreeView*> trees_;
  EmployeeList* employees_;
  QWidget* panel_;
  QLabel* image_;  // the item, following the pointer
  QTimer expandTimer_, scrollTimer_;
  QPersistentModelIndex hovered_;
  State state_ = State::Idle;
  ItemTreeView* source_ = nullptr;
  int item_ = 0;
  QPoint pressedAt_;
  QPoint lastAt_;
};

}  // namespace tandeko
