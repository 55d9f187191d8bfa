#pragma once

#include <QFrame>
#include <QLabel>

namespace tandeko {

// One part of the panel: a caption, what is shown on its right, and one control below. Dragged by its
// caption onto another part it changes places with that one.
class Pane : public QFrame {
  Q_OBJECT

 public:
  Pane(const QString& name, const QString& labelName, const QString& caption, QWidget* control);

  // Beside the caption, such as whose items are shown and how many.
  void setInfo(const QString& info);
  QWidget* control() const { return control_; }
  // Marks the pane as the one that a dragged pane would change places with.
  void setTarget(bool target);

 Q_SIGNALS:
  void dragged(const QPoint& globalPosition);
  // The button was released there; `given` false: the drag was given up.
  void dropped(const QPoint& globalPosition, bool given);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;

 private:
  void end(const QPoint& globalPosition, bool given);

  QWidget* head_;
  QLabel* label_;
  QLabel* info_;
  QWidget* control_;
  QPoint pressedAt_;
  bool pressed_ = false;
  bool dragging_ = false;
  bool target_ = false;
};

}  // namespace tandeko
