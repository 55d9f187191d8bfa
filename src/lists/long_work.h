#pragma once

#include <QElapsedTimer>
#include <QObject>

#include "session/session.h"

namespace tandeko {

// Work on many rows on the one thread there is: shows its progress in the status bar, keeps the windows
// painted, notes when Esc is pressed. Other input is dropped meanwhile, except for the window in `open`;
// the status text is cleared at the end.
class LongWork : public QObject {
 public:
  LongWork(Session& session, const QString& statusText, QWidget* open = nullptr);
  ~LongWork() override;

  // To be called often; costs next to nothing until a tenth of a second has passed, and then calls
  // `statusText` and lets events run. True when Esc was pressed since the last call.
  template <typename Text>
  bool step(Text&& statusText) {
    if (timer_.elapsed() < kInterval) return false;
    return pause(statusText());
  }

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  static constexpr int kInterval = 100;  // milliseconds
  bool pause(const QString& statusText);

  Session& session_;
  QWidget* open_;
  QElapsedTimer timer_;
  bool escape_ = false;
};

}  // namespace tandeko
