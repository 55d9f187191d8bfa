#pragma once

#include <QWidget>

namespace tandeko {

// The picture shown while the program starts. It gives way to any dialog.
class frmSplash : public QWidget {
  Q_OBJECT

 public:
  frmSplash();

 protected:
  void paintEvent(QPaintEvent* event) override;
  bool eventFilter(QObject* object, QEvent* event) override;
};

}  // namespace tandeko
