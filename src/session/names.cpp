#include "session/names.h"

#include <QStringList>

namespace tandeko {

QString ProgramVersion::text() const {
  return QStringLiteral("%1.%2.%3").arg(major).arg(minor).arg(revision);
}

ProgramVersion programVersion() {
  const QStringList parts = QStringLiteral(TANDEKO_VERSION).split(u'.');
  return {parts.value(0).toInt(), parts.value(1).toInt(), parts.value(2).toInt()};
}

}  // namespace tandeko
