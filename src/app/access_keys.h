#pragma once

#include <QKeyEvent>

#include "app/child_windows.h"

class QMenuBar;

namespace tandeko {

// The access keys of the form that has the focus go before those of the menu bar. Without this a key that
// both have, such as Alt+N of "&Nowy" and "&Narzędzia", is ambiguous and does neither.
class AccessKeys : public QObject {
 public:
  AccessKeys(QMenuBar& menus, ChildWindows& children);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  // The button or the label of the active form that the key belongs to; null unless a menu has it too.
  QWidget* target(const QKeyEvent& key) const;

  QMenuBar& menus_;
  ChildWindows& children_;
};

}  // namespace tandeko
