#include "register/panel/panel_layout.h"

#include <QStringList>

#include "session/names.h"

namespace tandeko {

namespace {

constexpr int kColumns = 3;
constexpr int kWidestPane = 20000;  // pixels

const QString kForm = QStringLiteral("karEWPAN");

QString group() { return kProgramKey + u'\\' + kForm; }
QString flagText(bool flag) { return flag ? QStringLiteral("1") : QStringLiteral("0"); }

QString joined(const QList<int>& numbers) {
  QStringList texts;
  for (const int number : numbers) texts << QString::number(number);
  return texts.join(u',');
}

// Anything that is no list of sensible sizes counts as none.
QList<int> sizes(const QString& text) {
  QList<int> numbers;
  for (const QString& part : text.split(u',', Qt::SkipEmptyParts)) {
    bool ok = false;
    const int number = part.toInt(&ok);
    if (!ok || number < 0 || number > kWidestPane) return {};
    numbers << number;
  }
  return numbers;
}

}  // namespace

PanelLayout PanelLayout::load(const Registry& registry, const QString& qualifier) {
  const auto read = [&registry](const QString& valueName, const QString& fallback) {
    return registry.read(group(), valueName, fallback);
  };
  PanelLayout layout;
  layout.employeeView = read(QStringLiteral("Widok "), QStringLiteral("0")).toInt();
  if (layout.employeeView < 0 || layout.employeeView > 3) layout.employeeView = 0;
  layout.warehouseShown = read(QStringLiteral("Widok Magazyn"), QStringLiteral("1")) == u"1";
  layout.binShown = read(QStringLiteral("Widok Kosz"), QStringLiteral("1")) == u"1";
  layout.order = read(QStringLiteral("Order "), QStringLiteral("1"));
  layout.paneSizes = sizes(read(QStringLiteral("Panele"), {}));
  layout.stackSizes = sizes(read(QStringLiteral("Panele 2"), {}));
  layout.columns = ColumnLayout::load(registry, kForm, qualifier, kColumns);
  return layout;
}

void PanelLayout::store(Registry& registry, const QString& qualifier) const {
  const auto write = [&registry](const QString& valueName, const QString& value) {
    registry.write(group(), valueName, value);
  };
  registry.createKey(group());
  write(QStringLiteral("Widok "), QString::number(employeeView));
  write(QStringLiteral("Widok Magazyn"), flagText(warehouseShown));
  write(QStringLiteral("Widok Kosz"), flagText(binShown));
  write(QStringLiteral("Order "), order);
  write(QStringLiteral("Panele"), joined(paneSizes));
  write(QStringLiteral("Panele 2"), joined(stackSizes));
  columns.store(registry, kForm, qualifier);
}

void PanelLayout::forget(Registry& registry) {
  ColumnLayout::forget(registry, kForm);
  registry.removeKey(group());
}

}  // namespace tandeko
