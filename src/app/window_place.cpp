#include "app/window_place.h"

#include <QScreen>

namespace tandeko {

namespace {

const QString kPlace = QStringLiteral("Polozenie MDI");  // "x y width height", then " max" when maximised
const QString kMaximised = QStringLiteral("max");

void centre(QMainWindow& window, QSize size) {
  const QRect area = window.screen()->availableGeometry();
  size = size.boundedTo(area.size());
  window.resize(size);
  window.move(area.center() - QPoint(size.width() / 2, size.height() / 2));
}

void restore(QMainWindow& window, const QString& place) {
  const QStringList parts = place.split(u' ', Qt::SkipEmptyParts);
  const QRect area = window.screen()->availableGeometry();
  const QRect stored(parts.value(0).toInt(), parts.value(1).toInt(), parts.value(2).toInt(),
                     parts.value(3).toInt());
  if (stored.width() < 200 || stored.height() < 150 ||
      !window.screen()->virtualGeometry().intersects(stored)) {
    centre(window, area.size() * 0.85);
  } else {
    window.setGeometry(stored);
  }
  if (parts.contains(kMaximised)) window.setWindowState(window.windowState() | Qt::WindowMaximized);
}

}  // namespace

QList<WindowSizeChoice> windowSizeChoices() {
  QList<WindowSizeChoice> choices = {{QString(), QStringLiteral("Ostatnio używany")},
                                     {kMaximised, QStringLiteral("Cały ekran")}};
  for (const char* size : {"800x600", "1024x768", "1280x800", "1600x900"}) {
    const QString value = QLatin1String(size);
    choices << WindowSizeChoice{value, QString(value).replace(u'x', QStringLiteral(" x "))};
  }
  return choices;
}

void placeMainWindow(QMainWindow& window, const Settings& settings) {
  const QString size = settings.program().windowSize;
  if (size == kMaximised) {
    centre(window, window.screen()->availableGeometry().size() * 0.85);
    window.setWindowState(window.windowState() | Qt::WindowMaximized);
  } else if (const QStringList sides = size.split(u'x'); sides.size() == 2 && sides[0].toInt() > 0) {
    centre(window, QSize(sides[0].toInt(), sides[1].toInt()));
  } else {
    restore(window, settings.stored(kPlace));
  }
}

void rememberMainWindow(const QMainWindow& window, Settings& settings) {
  const QRect place = window.isMaximized() ? window.normalGeometry() : window.geometry();
  QString text =
      QStringLiteral("%1 %2 %3 %4").arg(place.x()).arg(place.y()).arg(place.width()).arg(place.height());
  if (window.isMaximized()) text += u' ' + kMaximised;
  settings.store(kPlace, text);
}

}  // namespace tandeko
