#include "platform/message_box.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QInputDialog>
#include <QMessageBox>

namespace tandeko {

namespace {

QMessageBox::Icon iconOf(Icon icon) {
  switch (icon) {
    case Icon::None:
      return QMessageBox::NoIcon;
    case Icon::Information:
      return QMessageBox::Information;
    case Icon::Question:
      return QMessageBox::Question;
    case Icon::Exclamation:
      return QMessageBox::Warning;
    case Icon::Critical:
      return QMessageBox::Critical;
  }
  return QMessageBox::NoIcon;
}

QMessageBox::StandardButton buttonOf(Answer answer) {
  switch (answer) {
    case Answer::Ok:
      return QMessageBox::Ok;
    case Answer::Cancel:
      return QMessageBox::Cancel;
    case Answer::Yes:
      return QMessageBox::Yes;
    case Answer::No:
      return QMessageBox::No;
  }
  return QMessageBox::Ok;
}

std::initializer_list<Answer> answersOf(Buttons buttons) {
  static constexpr std::initializer_list<Answer> ok = {Answer::Ok};
  static constexpr std::initializer_list<Answer> okCancel = {Answer::Ok, Answer::Cancel};
  static constexpr std::initializer_list<Answer> yesNo = {Answer::Yes, Answer::No};
  static constexpr std::initializer_list<Answer> yesNoCancel = {Answer::Yes, Answer::No, Answer::Cancel};
  switch (buttons) {
    case Buttons::Ok:
      return ok;
    case Buttons::OkCancel:
      return okCancel;
    case Buttons::YesNo:
      return yesNo;
    case Buttons::YesNoCancel:
      return yesNoCancel;
  }
  return ok;
}

// A question in the middle of long work must not be shown under the busy pointer.
class PlainCursor {
 public:
  PlainCursor() { QApplication::setOverrideCursor(Qt::ArrowCursor); }
  ~PlainCursor() { QApplication::restoreOverrideCursor(); }
  PlainCursor(const PlainCursor&) = delete;
  PlainCursor& operator=(const PlainCursor&) = delete;
};

// The folder, or the nearest above it that is there: choosers take the name of a missing one for a file's.
QString existing(const QString& folder) {
  QFileInfo place(folder);
  while (!folder.isEmpty() && !place.isDir() && place.absolutePath() != place.absoluteFilePath())
    place.setFile(place.absolutePath());
  return folder.isEmpty() ? folder : place.absoluteFilePath();
}

QString chooseFile(const FileChoice& choice, QFileDialog::AcceptMode mode) {
  const PlainCursor cursor;
  QFileDialog dialog(QApplication::activeWindow(), choice.title, existing(choice.folder), choice.filter);
  dialog.setAcceptMode(mode);
  dialog.setFileMode(mode == QFileDialog::AcceptOpen ? QFileDialog::ExistingFile : QFileDialog::AnyFile);
  dialog.setDefaultSuffix(choice.extension);
  // Whoever saves asks by himself, in his own words.
  dialog.setOption(QFileDialog::DontConfirmOverwrite);
  if (!choice.fileName.isEmpty()) dialog.selectFile(choice.fileName);
  if (dialog.exec() != QDialog::Accepted) return {};
  return dialog.selectedFiles().value(0);
}

}  // namespace

Answer ScreenMessages::show(const Message& message) {
  const PlainCursor cursor;
  QMessageBox box(QApplication::activeWindow());
  box.setIcon(iconOf(message.icon));
  box.setWindowTitle(message.title.isEmpty() ? QApplication::applicationDisplayName() : message.title);
  box.setTextFormat(Qt::PlainText);
  box.setText(message.text);
  for (const Answer answer : answersOf(message.buttons)) box.addButton(buttonOf(answer));
  box.setDefaultButton(buttonOf(message.defaultButton));
  if (message.buttons == Buttons::YesNo) box.setEscapeButton(QMessageBox::No);
  const int chosen = box.exec();
  for (const Answer answer : answersOf(message.buttons))
    if (buttonOf(answer) == chosen) return answer;
  return message.defaultButton;
}

QString ScreenMessages::openFile(const FileChoice& choice) {
  return chooseFile(choice, QFileDialog::AcceptOpen);
}

QString ScreenMessages::saveFile(const FileChoice& choice) {
  return chooseFile(choice, QFileDialog::AcceptSave);
}

QString ScreenMessages::chooseFolder(const QString& title, const QString& start) {
  const PlainCursor cursor;
  return QFileDialog::getExistingDirectory(QApplication::activeWindow(), title, existing(start));
}

QString ScreenMessages::inputText(const QString& title, const QString& label, const QString& initial) {
  const PlainCursor cursor;
  QInputDialog dialog(QApplication::activeWindow());
  dialog.setWindowTitle(title);
  dialog.setLabelText(label);
  dialog.setTextValue(initial);
  // Wide enough for the title and for a name.
  dialog.resize(dialog.fontMetrics().averageCharWidth() * 50, dialog.sizeHint().height());
  if (dialog.exec() != QDialog::Accepted) return {};
  const QString text = dialog.textValue();
  return text.isNull() ? QString(u""_qs) : text;
}

}  // namespace tandeko
