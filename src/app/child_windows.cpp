#include "app/child_windows.h"

#include <QCoreApplication>
#include <QMdiSubWindow>
#include <QPointer>
#include <algorithm>

namespace tandeko {

ChildWindows::ChildWindows(QWidget* parent) : QMdiArea(parent) {
  setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
  setBackground(palette().brush(QPalette::Dark));
  setActivationOrder(ActivationHistoryOrder);
  setOption(DontMaximizeSubWindowOnActivation);
}

void ChildWindows::showForm(ChildForm* form) {
  form->setAttribute(Qt::WA_DeleteOnClose);
  QMdiSubWindow* window = addSubWindow(form);
  window->setAttribute(Qt::WA_DeleteOnClose);
  window->setWindowIcon(form->windowIcon());
  // A form that closes itself takes its window along.
  connect(form, &QObject::destroyed, window, &QObject::deleteLater);
  // Lists fill the area, as the users work with one big window most of the time.
  const QMdiSubWindow* before = currentSubWindow();
  const bool alone = subWindowList().size() == 1 || (before && before->isMaximized());
  const bool list = form->formName().startsWith(u"kar");
  if (alone && list) return window->showMaximized();
  window->show();
  if (list) window->resize(viewport()->size() * 4 / 5);
  place(*window);
}

// In the middle, a title bar further than a window that is there already.
void ChildWindows::place(QMdiSubWindow& window) {
  // Sizes that a form gave its fields while it was made are only now known to the window.
  QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
  const QRect area = viewport()->rect();
  window.resize(window.size().expandedTo(window.minimumSizeHint()).boundedTo(area.size()));
  QPoint at = area.center() - window.rect().center();
  const int step = window.fontMetrics().height() * 2;
  const auto taken = [this, &window, &at](const QMdiSubWindow* other) {
    return other != &window && other->isVisible() && !other->isMaximized() &&
           (other->pos() - at).manhattanLength() < 8;
  };
  const QList<QMdiSubWindow*> windows = subWindowList();
  while (std::any_of(windows.begin(), windows.end(), taken)) at += QPoint(step, step);
  const QSize room = area.size() - window.size();
  window.move(std::clamp(at.x(), 0, room.width()), std::clamp(at.y(), 0, room.height()));
}

bool ChildWindows::activateForm(const QString& formName) {
  ChildForm* form = findForm(formName);
  if (!form) return false;
  auto* window = qobject_cast<QMdiSubWindow*>(form->parentWidget());
  if (window->isMinimized()) window->showNormal();
  setActiveSubWindow(window);
  form->setFocus();
  return true;
}

ChildForm* ChildWindows::findForm(const QString& formName) const {
  for (ChildForm* form : forms())
    if (form->formName() == formName) return form;
  return nullptr;
}

ChildForm* ChildWindows::activeForm() const {
  // While a dialog is open no window of the area counts as active for Qt, but it still is for the user.
  const QMdiSubWindow* window = currentSubWindow();
  return window ? qobject_cast<ChildForm*>(window->widget()) : nullptr;
}

QList<ChildForm*> ChildWindows::forms() const {
  QList<ChildForm*> list;
  for (const QMdiSubWindow* window : subWindowList(CreationOrder))
    if (auto* form = qobject_cast<ChildForm*>(window->widget())) list << form;
  return list;
}

ChildForm* ChildWindows::closeInTurn(const QList<ChildForm*>& list) {
  const QList<QPointer<ChildForm>> pending(list.begin(), list.end());
  for (const QPointer<ChildForm>& form : pending)
    if (form && !form->parentWidget()->close()) return form;
  return nullptr;
}

QList<QMdiSubWindow*> ChildWindows::openWindows() const {
  QList<QMdiSubWindow*> list;
  for (QMdiSubWindow* window : subWindowList(CreationOrder))
    if (!window->isMinimized() && window->isVisible()) list << window;
  return list;
}

void ChildWindows::arrangeCascaded() { cascadeSubWindows(); }

void ChildWindows::arrangeRows() { arrange(1, static_cast<int>(openWindows().size())); }

void ChildWindows::arrangeColumns() { arrange(static_cast<int>(openWindows().size()), 1); }

void ChildWindows::arrange(int columns, int rows) {
  const QList<QMdiSubWindow*> windows = openWindows();
  if (windows.isEmpty()) return;
  const QSize area = viewport()->size();
  const QSize cell(area.width() / columns, area.height() / rows);
  for (int i = 0; i < windows.size(); ++i) {
    windows[i]->showNormal();
    windows[i]->setGeometry(QRect(QPoint(i % columns * cell.width(), i / columns * cell.height()), cell));
  }
}

void ChildWindows::arrangeIcons() {
  const QSize area = viewport()->size();
  QPoint place(0, area.height());
  for (QMdiSubWindow* window : subWindowList(CreationOrder)) {
    if (!window->isMinimized()) continue;
    if (place.x() > 0 && place.x() + window->width() > area.width())
      place = QPoint(0, place.y() - window->height());
    window->move(place.x(), place.y() - window->height());
    place.rx() += window->width();
  }
}

bool belongsToDatabase(const ChildForm& form) {
  static const QStringList prefixes = {QStringLiteral("kar"), QStringLiteral("slo"), QStringLiteral("dok"),
                                       QStringLiteral("daj")};
  const QString name = form.formName();
  return prefixes.contains(name.left(3)) || name == u"dlgParRejSp" || name == u"dlgParRejEwi";
}

}  // namespace tandeko
