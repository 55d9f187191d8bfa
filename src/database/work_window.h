#pragma once

#include <QDialog>
#include <atomic>
#include <functional>
#include <mutex>

#include "jet/dao/dao.h"
#include "session/session.h"

class QLabel;
class QProgressBar;
class QPushButton;

namespace tandeko {

// What work on a file tells about itself, and whether the user has called it off. The work runs on a thread
// of its own, the window reads on the program's.
class Work {
 public:
  // Begins the next step: what it does, and the part of the whole (0 to 1) that is done at its end. Throws
  // jet::Error 3059 when the work was called off.
  void step(const QString& text, double end);
  // As above; from here on the work cannot be called off.
  void finalStep(const QString& text, double end);
  // For the calls of the current step.
  jet::Progress progress();

  // False when it is too late.
  bool cancel();
  bool mayCancel() const { return state_ == State::Open; }
  QString text() const;
  double done() const { return done_; }

 private:
  void begin(const QString& text, double end);

  mutable std::mutex mutex_;  // of text_
  QString text_;
  std::atomic<double> done_ = 0;
  double from_ = 0, end_ = 0;
  enum class State { Open, Cancelled, Final };
  std::atomic<State> state_ = State::Open;
};

// Runs `work` while the windows stay painted; work that takes long is shown in a window that can call it
// off. Everything else waits. Throws what the work throws.
void runWork(Session& session, const QString& title, const std::function<void(Work&)>& work);
// The same without throwing: false when it was called off, or when it failed, which `failed` is told with the
// reason in words.
bool tryWork(Session& session, const QString& title, const std::function<void(Work&)>& work,
             const std::function<void(const QString& reason)>& failed);

// The window of such work.
class frmPostep : public QDialog {
  Q_OBJECT

 public:
  frmPostep(Work& work, const QString& title, QWidget* parent);
  void refresh();
  // Calls the work off; the window stays until it has ended.
  void reject() override;

 private:
  Work& work_;
  QLabel* labCzynnosc_;
  QProgressBar* barPostep_;
  QPushButton* cmdAnuluj_;
  bool calledOff_ = false;
};

}  // namespace tandeko
