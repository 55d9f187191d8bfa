#include "session/forms.h"

#include <QMdiArea>
#include <QMdiSubWindow>

namespace tandeko {

void ChildForm::bringToFront() {
  if (auto* window = qobject_cast<QMdiSubWindow*>(parentWidget())) {
    if (window->isMinimized()) window->showNormal();
    window->mdiArea()->setActiveSubWindow(window);
  }
  setFocus();
}

}  // namespace tandeko
