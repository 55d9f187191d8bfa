#pragma once

#include <QApplication>
#include <QDialog>
#include <QTimer>
#include <functional>

namespace tandeko {

// Runs `use` on the next modal dialog of that class once it is shown, before its exec() returns.
template <typename Dialog>
void onDialog(std::function<void(Dialog&)> use) {
  auto* timer = new QTimer(qApp);
  QObject::connect(timer, &QTimer::timeout, timer, [timer, use] {
    auto* dialog = qobject_cast<Dialog*>(QApplication::activeModalWidget());
    if (!dialog) return;
    timer->stop();
    timer->deleteLater();
    use(*dialog);
  });
  timer->start(5);
}

// Dismisses every modal dialog that is shown during its life, and counts them.
class DialogDismisser {
 public:
  DialogDismisser() {
    QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] {
      if (auto* dialog = qobject_cast<QDialog*>(QApplication::activeModalWidget())) {
        ++count_;
        dialog->reject();
      }
    });
    timer_.start(5);
  }
  int count() const { return count_; }

 private:
  QTimer timer_;
  int count_ = 0;
};

template <typename Widget>
Widget* child(const QObject& parent, const char* name) {
  return parent.findChild<Widget*>(QLatin1String(name));
}

}  // namespace tandeko
