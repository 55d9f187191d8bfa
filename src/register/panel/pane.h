#pragma once

#include <QFrame>
#include <QLabel>

namespace tandeko {

// One part of the panel: a caption, what is shown on its right, and one control below.
class Pane : public QFrame {
 public:
  Pane(const QString& name, const QString& labelName, const QString& caption, QWidget* control);

  // Beside the caption, such as whose items are shown and how many.
  void setInfo(const QString& info);
  QWidget* control() const { return control_; }

 private:
  QLabel* label_;
  QLabel* info_;
  QWidget* control_;
};

}  // namespace tandeko
