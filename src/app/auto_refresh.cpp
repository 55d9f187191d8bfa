#include "app/auto_refresh.h"

namespace tandeko {

AutoRefresh::AutoRefresh(QObject* parent) : QObject(parent) {
  timer_.setInterval(60000);
  connect(&timer_, &QTimer::timeout, this, &AutoRefresh::minutePassed);
}

void AutoRefresh::setMinutes(int minutes) {
  minutes_ = minutes;
  counter_ = 0;
  if (minutes < 1)
    timer_.stop();
  else
    timer_.start();
}

void AutoRefresh::minutePassed() {
  if (++counter_ < minutes_) return;
  counter_ = 0;
  Q_EMIT due();
}

}  // namespace tandeko
