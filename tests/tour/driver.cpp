#include "driver.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QPointer>
#include <QProcess>
#include <QScreen>
#include <QTimer>
#include <cstdio>

#include "platform/statements.h"
#include "platform/text.h"

namespace tandeko::tour {

namespace {

constexpr int kStepMs = 40;  // between two events

void xdotool(const QStringList& words) {
  QProcess::execute(QStringLiteral("xdotool"), words);
  Driver::wait(kStepMs);
}

}  // namespace

void Driver::wait(int milliseconds) {
  QElapsedTimer timer;
  timer.start();
  while (timer.elapsed() < milliseconds) QApplication::processEvents(QEventLoop::AllEvents, 10);
}

bool Driver::check(bool condition, const char* what) {
  std::printf("%s: %s\n", condition ? "ok" : "FAILED", what);
  std::fflush(stdout);
  failures_ += !condition;
  return condition;
}

void Driver::shot(const QString& name) {
  wait(200);
  window.screen()->grabWindow(0).save(folder_ + u'/' + name + QStringLiteral(".png"));
}

void Driver::move(const QPoint& to) {
  xdotool({QStringLiteral("mousemove"), QString::number(to.x()), QString::number(to.y())});
}

void Driver::click(const QPoint& at, int button) {
  move(at);
  xdotool({QStringLiteral("click"), QString::number(button)});
  wait(150);
}

void Driver::drag(const QPoint& from, const QPoint& to, const std::function<void()>& held) {
  move(from);
  xdotool({QStringLiteral("mousedown"), QStringLiteral("1")});
  for (int step = 1; step <= 8; ++step) move(from + (to - from) * step / 8);
  move(to + QPoint(1, 1));
  if (held) held();
  xdotool({QStringLiteral("mouseup"), QStringLiteral("1")});
  wait(300);
}

void Driver::keys(const QStringList& names) {
  for (const QString& name : names) {
    xdotool({QStringLiteral("key"), name});
    wait(80);
  }
}

void Driver::type(const QString& text) {
  xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("20"), text});
  wait(400);
}

void Driver::expectWindow(const char* what, const std::function<void(QWidget&)>& meet) {
  auto* timer = new QTimer(&window);
  timer->setSingleShot(true);
  QObject::connect(timer, &QTimer::timeout, &window, [this, what, meet, timer] {
    timer->deleteLater();
    QPointer<QWidget> opened = QApplication::activeModalWidget();
    if (!check(opened != nullptr, what)) return;
    meet(*opened);
    if (opened && opened->isVisible()) opened->close();
  });
  timer->start(1'500);
}

void Driver::shotOfMenu(const QPoint& at, const QString& name) {
  // The menu may have an event loop of its own.
  QTimer::singleShot(1'000, &window, [this, name] {
    if (!check(QApplication::activePopupWidget() != nullptr, "a right click opens a menu")) return;
    shot(name);
    keys({QStringLiteral("Escape")});
    if (QWidget* menu = QApplication::activePopupWidget()) menu->close();
  });
  click(at, 3);
  wait(1'300);
}

int Driver::ask(const QString& query) {
  const auto rows = openRows(session.database(), query);
  return rows->eof() ? -1000 : toInt(rows->field(size_t{0}).value(), -1000);
}

bool Driver::elsewhere(const QString& statement) {
  return QProcess::execute(QApplication::applicationDirPath() + QStringLiteral("/jetsql"), {file, statement}) == 0;
}

QPoint Driver::middleOf(QAbstractItemView& view, const QModelIndex& index) {
  view.scrollTo(index, QAbstractItemView::PositionAtCenter);
  wait(100);
  const QRect rect = view.visualRect(index);
  return view.viewport()->mapToGlobal(QPoint(rect.left() + qMin(40, rect.width() / 2), rect.center().y()));
}

QPoint Driver::emptySpot(QAbstractItemView& view) {
  // Right of the texts and above the edge that scrolls.
  return view.viewport()->mapToGlobal(QPoint(view.viewport()->width() - 20, view.viewport()->height() - 8));
}

}  // namespace tandeko::tour
