#include "database/work_window.h"

#include <QApplication>
#include <QEventLoop>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <exception>
#include <thread>

#include "database/file_steps.h"
#include "jet/format/error.h"

namespace tandeko {

namespace {

constexpr int kPatienceMs = 300;  // work that is done by then shows no window
constexpr int kRefreshMs = 50;
constexpr int kBarSteps = 1000;

QWidget* windowBelow(Session& session) {
  if (QWidget* dialog = QApplication::activeModalWidget()) return dialog;
  return session.frame() ? session.frame()->window() : nullptr;
}

// The window must not vanish with the work still running.
void waitWithWindow(Work& work, const QString& title, QWidget* parent, QEventLoop& loop,
                    const std::atomic<bool>& ended) {
  QApplication::setOverrideCursor(Qt::ArrowCursor);
  frmPostep window(work, title, parent);
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, &window, &frmPostep::refresh);
  timer.start(kRefreshMs);
  window.show();
  while (!ended) loop.exec();
  QApplication::restoreOverrideCursor();
}

}  // namespace

void Work::begin(const QString& text, double end) {
  from_ = end_;
  end_ = end;
  done_ = from_;
  const std::lock_guard lock(mutex_);
  text_ = text;
}

void Work::step(const QString& text, double end) {
  if (state_ == State::Cancelled) throw jet::Error(kCancelled, {}, "DAO.Workspace");
  begin(text, end);
}

void Work::finalStep(const QString& text, double end) {
  State open = State::Open;
  state_.compare_exchange_strong(open, State::Final);
  step(text, end);
}

bool Work::cancel() {
  State open = State::Open;
  return state_.compare_exchange_strong(open, State::Cancelled);
}

jet::Progress Work::progress() {
  return [this](double part) {
    done_ = from_ + (end_ - from_) * part;
    return state_ != State::Cancelled;
  };
}

QString Work::text() const {
  const std::lock_guard lock(mutex_);
  return text_;
}

void runWork(Session& session, const QString& title, const std::function<void(Work&)>& body) {
  Work work;
  std::exception_ptr failure;
  std::atomic<bool> ended = false;
  QEventLoop loop;
  std::thread thread([&] {
    try {
      body(work);
    } catch (...) {
      failure = std::current_exception();
    }
    ended = true;
    QMetaObject::invokeMethod(&loop, &QEventLoop::quit, Qt::QueuedConnection);
  });
  QTimer::singleShot(kPatienceMs, &loop, &QEventLoop::quit);
  QApplication::setOverrideCursor(Qt::WaitCursor);
  loop.exec(QEventLoop::ExcludeUserInputEvents);
  if (!ended) waitWithWindow(work, title, windowBelow(session), loop, ended);
  QApplication::restoreOverrideCursor();
  thread.join();
  if (failure) std::rethrow_exception(failure);
}

bool tryWork(Session& session, const QString& title, const std::function<void(Work&)>& body,
             const std::function<void(const QString&)>& failed) {
  try {
    runWork(session, title, body);
    return true;
  } catch (const jet::Error& error) {
    if (error.number() != kCancelled) failed(fileErrorText(error));
  } catch (const std::exception& error) {
    failed(QString::fromUtf8(error.what()));
  }
  return false;
}

frmPostep::frmPostep(Work& work, const QString& title, QWidget* parent) : QDialog(parent), work_(work) {
  setObjectName(QStringLiteral("frmPostep"));
  setWindowTitle(title);
  setModal(true);
  labCzynnosc_ = new QLabel(this);
  labCzynnosc_->setObjectName(QStringLiteral("labCzynnosc"));
  barPostep_ = new QProgressBar(this);
  barPostep_->setObjectName(QStringLiteral("barPostep"));
  barPostep_->setRange(0, kBarSteps);
  cmdAnuluj_ = new QPushButton(QStringLiteral("Anuluj"), this);
  cmdAnuluj_->setObjectName(QStringLiteral("cmdAnuluj"));
  cmdAnuluj_->setDefault(false);
  cmdAnuluj_->setAutoDefault(false);
  auto* layout = new QVBoxLayout(this);
  layout->addWidget(labCzynnosc_);
  layout->addWidget(barPostep_);
  layout->addWidget(cmdAnuluj_, 0, Qt::AlignRight);
  setMinimumWidth(fontMetrics().averageCharWidth() * 60);
  connect(cmdAnuluj_, &QPushButton::clicked, this, &frmPostep::reject);
  refresh();
}

void frmPostep::refresh() {
  labCzynnosc_->setText(calledOff_ ? QStringLiteral("Przerywanie...") : work_.text());
  barPostep_->setValue(static_cast<int>(work_.done() * kBarSteps));
  cmdAnuluj_->setEnabled(work_.mayCancel());
}

void frmPostep::reject() {
  calledOff_ = calledOff_ || work_.cancel();
  refresh();
}

}  // namespace tandeko
