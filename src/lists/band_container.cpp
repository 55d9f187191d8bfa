#include "lists/band_container.h"

#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

namespace tandeko {

namespace {

constexpr int kGrip = 7;  // pixels of the edge that is dragged
constexpr int kGap = 2;   // pixels between bands
constexpr int kNarrowest = 60;
constexpr int kWidest = 2000;

QList<int> numbers(const QString& text) {
  QList<int> list;
  for (const QString& part : text.split(u',', Qt::SkipEmptyParts)) list << part.toInt();
  return list;
}

}  // namespace

Band::Band(const QString& name, int width, QWidget* parent) : QWidget(parent), characters_(width) {
  setObjectName(name);
  setMouseTracking(true);
}

void Band::setField(const QString& labelName, const QString& caption, QWidget* field) {
  auto* row = new QHBoxLayout;
  auto* label = new QLabel(caption, this);
  label->setObjectName(labelName);
  label->setBuddy(field);
  row->addWidget(label);
  row->addWidget(field, 1);
  setContent(row);
}

void Band::setContent(QLayout* content) {
  content->setContentsMargins(kGrip + 3, 2, kGrip, 2);
  content->setSpacing(4);
  setLayout(content);
}

int Band::wantedWidth() const {
  const int needed = layout() ? layout()->minimumSize().width() : 0;
  if (characters_ == 0) return layout() ? layout()->sizeHint().width() : 0;
  return std::max(needed, width_ > 0 ? width_ : characters_ * fontMetrics().averageCharWidth());
}

Band::Grip Band::gripAt(const QPoint& at) const {
  if (at.x() < kGrip) return Grip::Move;
  return characters_ > 0 && at.x() >= width() - kGrip ? Grip::Size : Grip::None;
}

void Band::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  const int middle = kGrip / 2;
  painter.setPen(palette().color(QPalette::Mid));
  for (int y = 5; y < height() - 4; y += 3) painter.drawLine(middle - 1, y, middle + 1, y);
}

void Band::mousePressEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton) held_ = gripAt(event->pos());
}

void Band::mouseMoveEvent(QMouseEvent* event) {
  const Grip grip = held_ == Grip::None ? gripAt(event->pos()) : held_;
  setCursor(grip == Grip::Move ? Qt::SizeAllCursor : grip == Grip::Size ? Qt::SplitHCursor : Qt::ArrowCursor);
  if (held_ == Grip::Size) {
    width_ = std::clamp(event->pos().x(), kNarrowest, kWidest);
    Q_EMIT resized();
  }
}

void Band::mouseReleaseEvent(QMouseEvent* event) {
  if (std::exchange(held_, Grip::None) == Grip::Move) Q_EMIT draggedTo(mapToParent(event->pos()));
}

BandContainer::BandContainer(QWidget* parent) : QWidget(parent) {}

void BandContainer::addBand(Band* band) {
  band->setParent(this);
  added_ << band;
  bands_ << band;
  connect(band, &Band::resized, this, &BandContainer::layOut);
  connect(band, &Band::draggedTo, this, [this, band](const QPoint& to) { moveBand(band, to); });
  layOut();
}

void BandContainer::layOut() {
  int x = 0;
  int y = 0;
  int rowHeight = 0;
  for (Band* band : std::as_const(bands_)) rowHeight = std::max(rowHeight, band->sizeHint().height());
  for (Band* band : std::as_const(bands_)) {
    const int wanted = std::min(band->wantedWidth(), std::max(width(), kNarrowest));
    if (x > 0 && x + wanted > width()) {
      x = 0;
      y += rowHeight + kGap;
    }
    band->setGeometry(x, y, wanted, rowHeight);
    x += wanted + kGap;
  }
  setFixedHeight(y + rowHeight);
}

void BandContainer::moveBand(Band* band, const QPoint& to) {
  bands_.removeAll(band);
  qsizetype place = 0;
  for (; place < bands_.size(); ++place) {
    const QRect other = bands_[place]->geometry();
    if (to.y() < other.top() || (to.y() <= other.bottom() && to.x() < other.center().x())) break;
  }
  bands_.insert(place, band);
  layOut();
  // The keyboard goes the way the eye does.
  for (qsizetype i = 1; i < bands_.size(); ++i) setTabOrder(bands_[i - 1], bands_[i]);
}

QString BandContainer::order() const {
  if (bands_ == added_) return QStringLiteral("1");
  QStringList parts;
  for (Band* band : bands_) parts << QString::number(added_.indexOf(band) + 1);
  return parts.join(u',');
}

void BandContainer::setOrder(const QString& order) {
  QList<Band*> wanted;
  for (const int number : numbers(order))
    if (Band* band = added_.value(number - 1); band && !wanted.contains(band)) wanted << band;
  // Bands that the text does not name follow.
  for (Band* band : std::as_const(added_))
    if (!wanted.contains(band)) wanted << band;
  bands_ = wanted;
  layOut();
}

QString BandContainer::widths() const {
  QStringList parts;
  for (const Band* band : added_) parts << QString::number(band->chosenWidth());
  return parts.join(u',');
}

void BandContainer::setWidths(const QString& widths) {
  const QList<int> list = numbers(widths);
  for (qsizetype i = 0; i < added_.size(); ++i) {
    const int width = list.value(i, 0);
    added_[i]->setWantedWidth(width <= 0 ? 0 : std::clamp(width, kNarrowest, kWidest));
  }
  layOut();
}

void BandContainer::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  layOut();
}

bool BandContainer::event(QEvent* event) {
  const bool done = QWidget::event(event);
  if (event->type() == QEvent::FontChange || event->type() == QEvent::LayoutRequest ||
      event->type() == QEvent::Show || event->type() == QEvent::Polish)
    layOut();
  return done;
}

}  // namespace tandeko
