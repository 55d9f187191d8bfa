#pragma once

#include <gtest/gtest.h>

#include <QStringList>
#include <deque>
#include <functional>
#include <vector>

#include "platform/message_box.h"

namespace tandeko {

// Records every box and chooser, answers from a script; an unscripted box gets its default button, an
// unscripted chooser is cancelled.
class ScriptedMessages : public MessageService {
 public:
  Answer show(const Message& message) override {
    shown.push_back(message);
    if (onShow) onShow(message);
    if (answers.empty()) return message.defaultButton;
    const Answer answer = answers.front();
    answers.pop_front();
    return answer;
  }
  QString openFile(const FileChoice& choice) override { return choose(choice); }
  QString saveFile(const FileChoice& choice) override { return choose(choice); }
  QString chooseFolder(const QString& title, const QString& start) override {
    return choose({title, start, {}, {}, {}});
  }
  QString inputText(const QString& title, const QString& label, const QString& initial) override {
    return choose({title, label, {}, {}, initial});
  }

  // The only box shown since the last call; fails the test when there was none or more than one.
  Message takeOnly() {
    EXPECT_EQ(shown.size(), 1u);
    const Message last = shown.empty() ? Message{} : shown.back();
    shown.clear();
    return last;
  }

  std::vector<Message> shown;
  std::vector<FileChoice> choices;
  std::deque<Answer> answers;
  QStringList files;
  std::function<void(const Message&)> onShow;

 private:
  QString choose(const FileChoice& choice) {
    choices.push_back(choice);
    return files.isEmpty() ? QString() : files.takeFirst();
  }
};

inline void PrintTo(const Answer& answer, std::ostream* out) { *out << static_cast<int>(answer); }

}  // namespace tandeko

// Readable failures of QString comparisons.
inline void PrintTo(const QString& text, std::ostream* out) { *out << '"' << text.toStdString() << '"'; }
