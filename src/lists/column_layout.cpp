#include "lists/column_layout.h"

#include "session/names.h"

namespace tandeko {

namespace {

constexpr int kWidest = 10000;  // pixels

QString group(const QString& form, const QString& qualifier) {
  return kProgramKey + u'\\' + form + QStringLiteral("\\Kol ") + qualifier;
}
QString switchName(const QString& form) { return form + QStringLiteral("Kol "); }
QString widthName(qsizetype column) { return QStringLiteral("Kol %1 Width").arg(column); }
QString placeName(qsizetype column) { return QStringLiteral("Kol %1 Place").arg(column); }
const QString kRowHeight = QStringLiteral("Row Height");

int number(const QString& text, int highest, int fallback) {
  bool ok = false;
  const int value = text.toInt(&ok);
  return ok && value >= 0 && value <= highest ? value : fallback;
}

}  // namespace

ColumnLayout ColumnLayout::load(const Registry& registry, const QString& form, const QString& qualifier,
                                int columnCount) {
  ColumnLayout layout;
  if (registry.read(kProgramKey, switchName(form), QStringLiteral("0")) != u"1") return layout;
  const QString key = group(form, qualifier);
  bool anyShown = false;
  for (int column = 0; column < columnCount; ++column) {
    const auto read = [&](const QString& name) { return registry.read(key, name, QStringLiteral("-1")); };
    layout.columns << Column{number(read(widthName(column)), kWidest, -1),
                             number(read(placeName(column)), columnCount - 1, -1)};
    anyShown |= layout.columns.last().width != 0;
  }
  if (!anyShown) layout.columns.clear();
  layout.rowHeight = number(registry.read(key, kRowHeight, QStringLiteral("0")), 500, 0);
  return layout;
}

bool ColumnLayout::store(Registry& registry, const QString& form, const QString& qualifier) const {
  const QString key = group(form, qualifier);
  bool stored = registry.createKey(key);
  for (qsizetype column = 0; column < columns.size(); ++column) {
    stored &= registry.write(key, widthName(column), QString::number(columns[column].width));
    stored &= registry.write(key, placeName(column), QString::number(columns[column].place));
  }
  stored &= registry.write(key, kRowHeight, QString::number(rowHeight));
  return stored && registry.write(kProgramKey, switchName(form), QStringLiteral("1"));
}

void ColumnLayout::forget(Registry& registry, const QString& form) {
  registry.write(kProgramKey, switchName(form), QStringLiteral("0"));
}

}  // namespace tandeko
