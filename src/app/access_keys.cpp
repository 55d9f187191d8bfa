#include "app/access_keys.h"

#include <QAbstractButton>
#include <QApplication>
#include <QLabel>
#include <QMenuBar>

namespace tandeko {

AccessKeys::AccessKeys(QMenuBar& menus, ChildWindows& children)
    : QObject(&children), menus_(menus), children_(children) {
  qApp->installEventFilter(this);
}

QWidget* AccessKeys::target(const QKeyEvent& key) const {
  const QKeySequence pressed(key.keyCombination());
  const ChildForm* form = children_.activeForm();
  if (!form || !form->isAncestorOf(QApplication::focusWidget())) return nullptr;
  const QList<QAction*> menus = menus_.actions();
  if (std::none_of(menus.begin(), menus.end(),
                   [&](const QAction* menu) { return QKeySequence::mnemonic(menu->text()) == pressed; }))
    return nullptr;
  for (QWidget* widget : form->findChildren<QWidget*>()) {
    if (!widget->isVisible() || !widget->isEnabled()) continue;
    if (const auto* button = qobject_cast<QAbstractButton*>(widget)) {
      if (button->shortcut() == pressed) return widget;
    } else if (const auto* label = qobject_cast<QLabel*>(widget)) {
      if (label->buddy() && QKeySequence::mnemonic(label->text()) == pressed) return widget;
    }
  }
  return nullptr;
}

bool AccessKeys::eventFilter(QObject* watched, QEvent* event) {
  const bool override = event->type() == QEvent::ShortcutOverride;
  if (!override && event->type() != QEvent::KeyPress) return QObject::eventFilter(watched, event);
  auto* key = static_cast<QKeyEvent*>(event);
  QWidget* widget = key->modifiers() == Qt::AltModifier ? target(*key) : nullptr;
  if (!widget) return QObject::eventFilter(watched, event);
  event->accept();  // an override: the key comes again, as a press
  if (override) return true;
  if (auto* button = qobject_cast<QAbstractButton*>(widget))
    button->click();  // the focus stays in the list, so that its keys work afterwards
  else if (QWidget* field = static_cast<QLabel*>(widget)->buddy())
    field->setFocus(Qt::ShortcutFocusReason);
  return true;
}

}  // namespace tandeko
