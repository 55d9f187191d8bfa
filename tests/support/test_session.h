#pragma once

#include <QDir>
#include <QTemporaryDir>
#include <functional>
#include <vector>

#include "session/session.h"
#include "support/scripted_messages.h"

namespace tandeko {

// A clock that stands still until it is moved; idle() moves it.
class FixedClock : public Clock {
 public:
  QDateTime now() const override { return moment; }
  qint64 ticks() const override { return ticksNow; }
  void idle(int milliseconds) override {
    ticksNow += milliseconds;
    if (onIdle) onIdle();
  }

  QDateTime moment{QDate(2024, 3, 15), QTime(10, 30)};
  qint64 ticksNow = 1000;
  std::function<void()> onIdle;
};

class RecordingShell : public Shell {
 public:
  ShellResult openDocument(const QString& path) override {
    opened << path;
    return result;
  }
  ShellResult openHelp(const QString& path, HelpView view) override {
    opened << path + (view == HelpView::Index ? QStringLiteral(" index") : QStringLiteral(" contents"));
    return result;
  }
  ShellResult openAddress(const QString& address) override {
    opened << address;
    return result;
  }
  ShellResult startProgram(const QString& program, const QStringList& arguments) override {
    started << program + QStringLiteral(" ") + arguments.join(u' ');
    if (onStart) onStart(program, arguments);
    return result;
  }

  QStringList opened;
  QStringList started;
  ShellResult result = ShellResult::Done;
  std::function<void(const QString&, const QStringList&)> onStart;
};

class RecordingMail : public Mail {
 public:
  ShellResult compose(const Letter& letter) override {
    letters.push_back(letter);
    return result;
  }

  std::vector<Letter> letters;
  ShellResult result = ShellResult::Done;
};

class ScriptedWindows : public WindowSearch {
 public:
  bool find(const QString& caption) override {
    searched << caption;
    return others.contains(caption);
  }
  void raise(const QString& caption) override { raised << caption; }
  void announce(const QString& caption, std::function<void()>) override { announced << caption; }

  QStringList others;
  QStringList searched;
  QStringList raised;
  QStringList announced;
};

// Takes failures instead of the error dialog.
class RecordedFailures : public FailureView {
 public:
  void showFailure(const Failure& failure, const QString& explanation) override {
    failures.push_back(failure);
    explanations << explanation;
  }

  std::vector<Failure> failures;
  QStringList explanations;
};

// A session with an in-memory registry, scripted boxes, a fixed clock and a folder of its own.
struct TestSession {
  TestSession() { session.setFailureView(&failures); }

  // As users of the system write it.
  QString file(const QString& fileName) const { return QDir::toNativeSeparators(folder.filePath(fileName)); }

  QTemporaryDir folder;
  MemoryRegistry registry;
  ScriptedMessages messages;
  RecordingShell shell;
  RecordingMail mail;
  FixedClock clock;
  ScriptedWindows windows;
  RecordedFailures failures;
  Session session{Platform{registry, messages, shell, mail, clock, windows}};
};

}  // namespace tandeko
