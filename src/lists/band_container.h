#pragma once

#include <QLabel>
#include <QList>
#include <QWidget>

namespace tandeko {

// One band of the container: a label with its field, or a row of buttons. Dragged by its left edge, sized
// by its right one.
class Band : public QWidget {
  Q_OBJECT

 public:
  // `width`: the standard width in characters of the font; 0: as wide as its content needs.
  Band(const QString& name, int width, QWidget* parent = nullptr);

  // The label becomes the field's buddy.
  void setField(const QString& labelName, const QString& caption, QWidget* field);
  void setContent(QLayout* content);

  int wantedWidth() const;
  // Pixels; 0 brings the standard width back.
  void setWantedWidth(int width) { width_ = width; }
  int chosenWidth() const { return width_; }

 Q_SIGNALS:
  void draggedTo(const QPoint& inContainer);
  void resized();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;

 private:
  enum class Grip { None, Move, Size };
  Grip gripAt(const QPoint& at) const;

  int characters_;
  int width_ = 0;
  Grip held_ = Grip::None;
};

// Bands beside each other, in as many rows as the width makes necessary.
class BandContainer : public QWidget {
  Q_OBJECT

 public:
  explicit BandContainer(QWidget* parent = nullptr);

  void addBand(Band* band);
  const QList<Band*>& bands() const { return bands_; }  // as shown

  // The bands by their numbers from 1 as they were added, "3,1,2"; "1" is the standard order.
  QString order() const;
  void setOrder(const QString& order);
  // The chosen width of each band as added, "0,140,0"; 0 is the standard one.
  QString widths() const;
  void setWidths(const QString& widths);

 protected:
  void resizeEvent(QResizeEvent* event) override;
  bool event(QEvent* event) override;

 private:
  void layOut();
  void moveBand(Band* band, const QPoint& to);

  QList<Band*> added_;
  QList<Band*> bands_;
};

}  // namespace tandeko
