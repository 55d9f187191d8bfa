#include "app/frmSplash.h"

#include <QApplication>
#include <QDialog>
#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QScreen>
#include <QVBoxLayout>

#include "session/names.h"

namespace tandeko {

frmSplash::frmSplash() : QWidget(nullptr, Qt::SplashScreen | Qt::FramelessWindowHint) {
  setObjectName(QStringLiteral("frmSplash"));
  setWindowTitle(QStringLiteral("Uruchamianie"));
  const int unit = fontMetrics().height();

  auto* picture = new QLabel(this);
  picture->setPixmap(QPixmap(QStringLiteral(":/icons/tandeko-48.png")));
  auto* programName = new QLabel(kProgramName, this);
  QFont big = font();
  big.setPointSizeF(big.pointSizeF() * 2.4);
  big.setBold(true);
  programName->setFont(big);
  auto* purpose = new QLabel(QStringLiteral("Ewidencja wyposażenia pracowników"), this);
  auto* version = new QLabel(QStringLiteral("Wersja ") + programVersion().text(), this);
  version->setObjectName(QStringLiteral("labWersja"));

  auto* head = new QHBoxLayout;
  head->addWidget(picture);
  head->addSpacing(unit);
  head->addWidget(programName);
  head->addStretch();
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(unit * 2, unit * 2, unit * 2, unit);
  layout->addLayout(head);
  layout->addSpacing(unit / 2);
  layout->addWidget(purpose);
  layout->addStretch();
  layout->addWidget(version, 0, Qt::AlignRight);
  resize(unit * 24, unit * 11);
  move(screen()->availableGeometry().center() - rect().center());
  qApp->installEventFilter(this);
}

void frmSplash::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().base());
  painter.fillRect(0, 0, width(), fontMetrics().height() / 3, palette().highlight());
  painter.setPen(palette().color(QPalette::Mid));
  painter.drawRect(rect().adjusted(0, 0, -1, -1));
}

bool frmSplash::eventFilter(QObject* object, QEvent* event) {
  if (event->type() == QEvent::Show && qobject_cast<QDialog*>(object)) close();
  return QWidget::eventFilter(object, event);
}

}  // namespace tandeko
