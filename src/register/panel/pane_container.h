#pragma once

#include <QSet>
#include <QSplitter>
#include <vector>

#include "register/panel/pane.h"

namespace tandeko {

// CoolOkno: the panes in three columns, the last of two panes above each other. Dividers size them, a pane
// that is dragged onto another changes places with it.
class PaneContainer : public QSplitter {
  Q_OBJECT

 public:
  explicit PaneContainer(QWidget* parent = nullptr);

  // The panes in their standard places: from left to right, the last two above each other.
  void setPanes(std::vector<Pane*> panes);
  void setPaneShown(Pane& pane, bool shown);

  // The panes' numbers from 1, place by place, "3,1,2,4"; "1" is the standard order.
  QString order() const;
  // Places that the text does not name get the panes that are left.
  void setOrder(const QString& order);
  // Pixels, of the columns and of the two panes above each other; an empty list brings the standard back.
  QList<int> stackSizes() const { return stack_->sizes(); }
  void setPaneSizes(const QList<int>& columns, const QList<int>& stack);

 private:
  void arrange();
  Pane* paneAt(const QPoint& globalPosition) const;
  void swap(Pane* one, Pane* other);

  QSplitter* stack_;
  std::vector<Pane*> standard_, placed_;
  QSet<const Pane*> hidden_;
};

}  // namespace tandeko
