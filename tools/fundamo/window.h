#pragma once

#include <QWidget>

#include "platform/message_box.h"

class QLabel;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;

// The tool's window: makes databases and brings older ones up to date, and tells what was done.
class Window : public QWidget {
 public:
  explicit Window(tandeko::MessageService& messages);

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void createDatabase();
  void upgradeDatabase();
  // False when a password is needed.
  bool tryUpgrade(const QString& file, const QString& password);
  void mend(const QString& file, const QString& password);
  void upgrade(const QString& file, const QString& password);
  void tell(const QString& line);
  void showFailure(const QString& what, const std::exception& failure);
  void showProgress(int done, int total, const QString& what);
  void setBusy(bool busy);

  tandeko::MessageService& messages_;
  QPushButton* create_;
  QPushButton* upgrade_;
  QLabel* step_;
  QProgressBar* progress_;
  QPlainTextEdit* report_;
  bool busy_ = false;
};
