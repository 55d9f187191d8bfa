#pragma once

#include <QString>
#include <QStringList>

class QWidget;

namespace tandeko {

enum class Icon { None, Information, Question, Exclamation, Critical };
enum class Buttons { Ok, OkCancel, YesNo, YesNoCancel };
enum class Answer { Ok, Cancel, Yes, No };

struct Message {
  QString text;
  QString title;  // empty: the program's name
  Icon icon = Icon::None;
  Buttons buttons = Buttons::Ok;
  Answer defaultButton = Answer::Ok;
};

// `filter` is one line "description (*.ext)"; several are joined by ";;".
struct FileChoice {
  QString title;
  QString folder;
  QString filter;
  QString extension;  // added to a name typed without one, without the dot
  QString fileName;   // proposed
};

// Every message box, question and chooser of the program goes through this service.
class MessageService {
 public:
  virtual ~MessageService() = default;

  // Closing the box without choosing gives Cancel where there is one, else No, else Ok.
  virtual Answer show(const Message& message) = 0;
  // Each returns an empty text when the user cancels.
  virtual QString openFile(const FileChoice& choice) = 0;
  virtual QString saveFile(const FileChoice& choice) = 0;
  virtual QString chooseFolder(const QString& title, const QString& start) = 0;
  // A line of text; a null QString when cancelled.
  virtual QString inputText(const QString& title, const QString& label, const QString& initial) = 0;

  void inform(const QString& text, const QString& title = {}) { show({text, title, Icon::Information}); }
  void refuse(const QString& text, const QString& title = {}) { show({text, title, Icon::Exclamation}); }
  void fail(const QString& text, const QString& title = {}) { show({text, title, Icon::Critical}); }
  // Yes or No with the question icon.
  bool ask(const QString& text, const QString& title = {}, Answer defaultButton = Answer::No) {
    return show({text, title, Icon::Question, Buttons::YesNo, defaultButton}) == Answer::Yes;
  }
};

// Shows them on the screen, over the window that is active.
class ScreenMessages : public MessageService {
 public:
  Answer show(const Message& message) override;
  QString openFile(const FileChoice& choice) override;
  QString saveFile(const FileChoice& choice) override;
  QString chooseFolder(const QString& title, const QString& start) override;
  QString inputText(const QString& title, const QString& label, const QString& initial) override;
};

}  // namespace tandeko
