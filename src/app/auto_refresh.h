#pragma once

#include <QTimer>

namespace tandeko {

// Tells every so many minutes that the open lists are to be read again.
class AutoRefresh : public QObject {
  Q_OBJECT

 public:
  explicit AutoRefresh(QObject* parent = nullptr);

  // Starts counting anew; less than one minute turns it off.
  void setMinutes(int minutes);
  bool isOn() const { return timer_.isActive(); }
  // What the timer does each minute.
  void minutePassed();

 Q_SIGNALS:
  void due();

 private:
  QTimer timer_;
  int minutes_ = 0;
  int counter_ = 0;
};

}  // namespace tandeko
