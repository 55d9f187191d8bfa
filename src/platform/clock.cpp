#include "platform/clock.h"

#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

namespace tandeko {

QDateTime SystemClock::now() const { return QDateTime::currentDateTime(); }

qint64 SystemClock::ticks() const { return QDeadlineTimer::current(Qt::PreciseTimer).deadline(); }

void SystemClock::idle(int milliseconds) {
  QEventLoop loop;
  QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
  loop.exec(QEventLoop::ExcludeUserInputEvents);
}

}  // namespace tandeko
