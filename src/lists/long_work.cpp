#include "lists/long_work.h"

#include <QApplication>
#include <QKeyEvent>
#include <QWidget>

namespace tandeko {

LongWork::LongWork(Session& session, const QString& statusText, QWidget* open)
    : session_(session), open_(open) {
  session_.setStatusText(statusText);
  QApplication::setOverrideCursor(open_ ? Qt::BusyCursor : Qt::WaitCursor);
  timer_.start();
}

LongWork::~LongWork() {
  QApplication::restoreOverrideCursor();
  session_.setStatusText({});
}

bool LongWork::pause(const QString& statusText) {
  session_.setStatusText(statusText);
  qApp->installEventFilter(this);
  QApplication::processEvents();
  qApp->removeEventFilter(this);
  timer_.start();
  return std::exchange(escape_, false);
}

bool LongWork::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::ShortcutOverride:
      if (static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape && event->type() == QEvent::KeyPress)
        escape_ = true;
      [[fallthrough]];
    case QEvent::KeyRelease:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::Drop:
    case QEvent::ContextMenu:
    case QEvent::Close: {
      const auto* widget = qobject_cast<QWidget*>(watched);
      // Events of native windows reach the widgets of `open_` as well.
      if (open_ && (!widget || widget->window() == open_)) return false;
      event->ignore();
      return true;
    }
    default:
      return false;
  }
}

}  // namespace tandeko
