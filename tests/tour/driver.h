#pragma once

#include <QAbstractItemView>
#include <QPoint>
#include <QString>
#include <QStringList>
#include <functional>

#include "app/mdiMenu.h"
#include "session/session.h"

namespace tandeko::tour {

// What the tours share: the real mouse and keyboard (xdotool), screenshots, and the count of what failed.
class Driver {
 public:
  // `ofFile`: the open database; screenshots go to `folder`.
  Driver(Session& ofSession, mdiMenu& ofWindow, QString ofFile, QString folder)
      : session(ofSession), window(ofWindow), file(std::move(ofFile)), folder_(std::move(folder)) {}

  bool check(bool condition, const char* what);
  int failures() const { return failures_; }

  void shot(const QString& name);
  void move(const QPoint& to);
  void click(const QPoint& at, int button = 1);
  // Presses, moves there in steps, does `held` while the button is down, releases.
  void drag(const QPoint& from, const QPoint& to, const std::function<void()>& held = {});
  // Keys as xdotool names them: "ctrl+x", "Down".
  void keys(const QStringList& names);
  void type(const QString& text);
  // Does `meet` when the next modal window has opened, and fails when none does; `what` names it.
  void expectWindow(const char* what, const std::function<void(QWidget&)>& meet);
  // A click of the right button, a picture of the menu that it opens, Escape.
  void shotOfMenu(const QPoint& at, const QString& name);

  // A value of the first row of a query over the file, -1000 for Null or no row.
  int ask(const QString& query);
  // Runs a statement in another process on the same file.
  bool elsewhere(const QString& statement);

  static void wait(int milliseconds);
  static QPoint middleOf(QAbstractItemView& view, const QModelIndex& index);
  static QPoint emptySpot(QAbstractItemView& view);

  Session& session;
  mdiMenu& window;
  const QString file;

 private:
  QString folder_;
  int failures_ = 0;
};

// Each begins with the main window alone and the register of computers, and closes what it opened.
void tourPanel(Driver& driver);
void tourCardList(Driver& driver);

}  // namespace tandeko::tour
