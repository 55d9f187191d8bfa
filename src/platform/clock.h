#pragma once

#include <QDateTime>

namespace tandeko {

class Clock {
 public:
  virtual ~Clock() = default;
  virtual QDateTime now() const = 0;
  // Milliseconds since some fixed moment, never going back.
  virtual qint64 ticks() const = 0;
  // Lets pending events of the windows run for about that many milliseconds; input from the user is
  // kept for later.
  virtual void idle(int milliseconds) = 0;

  QDate today() const { return now().date(); }
};

class SystemClock : public Clock {
 public:
  QDateTime now() const override;
  qint64 ticks() const override;
  void idle(int milliseconds) override;
};

}  // namespace tandeko
