#include "register/panel/pane.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QVBoxLayout>

namespace tandeko {

namespace {

// In a narrow pane the middle of the text gives way: whose items they are and how many stay legible.
class ElidedLabel : public QLabel {
 public:
  using QLabel::QLabel;

 protected:
  void paintEvent(QPaintEvent*) override {
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(contentsRect(), static_cast<int>(alignment()),
                     fontMetrics().elidedText(text(), Qt::ElideMiddle, contentsRect().width()));
  }
};

}  // namespace

Pane::Pane(const QString& name, const QString& labelName, const QString& caption, QWidget* control)
    : head_(new QWidget(this)),
      label_(new QLabel(caption, head_)),
      info_(new ElidedLabel(head_)),
      control_(control) {
  setObjectName(name);
  label_->setObjectName(labelName);
  label_->setBuddy(control);
  QFont bold = label_->font();
  bold.setBold(true);
  label_->setFont(bold);
  QPalette colors = info_->palette();
  colors.setColor(QPalette::WindowText, colors.color(QPalette::PlaceholderText));
  info_->setPalette(colors);
  info_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  info_->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
  head_->setToolTip(QStringLiteral("Przeciągnięcie na inne okienko zamienia je miejscami"));
  head_->installEventFilter(this);
  auto* head = new QHBoxLayout(head_);
  head->setContentsMargins(4, 3, 4, 3);
  head->addWidget(label_);
  head->addWidget(info_, 1);
  auto* column = new QVBoxLayout(this);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(0);
  column->addWidget(head_);
  column->addWidget(control, 1);
}

void Pane::setInfo(const QString& info) {
  info_->setText(info);
  info_->setToolTip(info);
}

void Pane::setTarget(bool target) {
  if (std::exchange(target_, target) != target) update();
}

// The mouse over the caption; while a pane is dragged also the keys of the application.
bool Pane::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::MouseButtonPress: {
      const auto& mouse = static_cast<const QMouseEvent&>(*event);
      if (watched != head_) return false;
      if (dragging_) {
        end({}, false);
        return true;
      }
      pressed_ = mouse.button() == Qt::LeftButton;
      pressedAt_ = mouse.globalPosition().toPoint();
      return pressed_;
    }
    case QEvent::MouseMove: {
      if (watched != head_ || !pressed_) return false;
      const QPoint at = static_cast<const QMouseEvent&>(*event).globalPosition().toPoint();
      if (!dragging_ && (at - pressedAt_).manhattanLength() >= QApplication::startDragDistance()) {
        dragging_ = true;
        QApplication::setOverrideCursor(Qt::ClosedHandCursor);
        qApp->installEventFilter(this);
      }
      if (dragging_) Q_EMIT dragged(at);
      return true;
    }
    case QEvent::MouseButtonRelease:
      if (watched != head_ || !pressed_) return false;
      pressed_ = false;
      if (dragging_) end(static_cast<const QMouseEvent&>(*event).globalPosition().toPoint(), true);
      return true;
    case QEvent::KeyPress:
      if (!dragging_ || static_cast<const QKeyEvent&>(*event).key() != Qt::Key_Escape) return false;
      end({}, false);
      return true;
    case QEvent::ApplicationDeactivate:
      if (dragging_) end({}, false);
      return false;
    default:
      return false;
  }
}

void Pane::end(const QPoint& globalPosition, bool given) {
  pressed_ = dragging_ = false;
  qApp->removeEventFilter(this);
  QApplication::restoreOverrideCursor();
  Q_EMIT dropped(globalPosition, given);
}

void Pane::paintEvent(QPaintEvent* event) {
  QFrame::paintEvent(event);
  if (!target_) return;
  QPainter painter(this);
  QColor fill = palette().highlight().color();
  fill.setAlphaF(0.3F);
  painter.fillRect(head_->geometry(), fill);
}

}  // namespace tandeko
