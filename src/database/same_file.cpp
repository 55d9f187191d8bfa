#include "database/same_file.h"

#include <QFileInfo>

namespace tandeko {

bool sameFile(const QString& a, const QString& b) {
#ifdef Q_OS_WIN
  constexpr Qt::CaseSensitivity kCase = Qt::CaseInsensitive;
#else
  constexpr Qt::CaseSensitivity kCase = Qt::CaseSensitive;
#endif
  const QFileInfo first(a), second(b);
  if (first.absoluteFilePath().compare(second.absoluteFilePath(), kCase) == 0) return true;
  const QString canonical = first.canonicalFilePath();
  return !canonical.isEmpty() && canonical.compare(second.canonicalFilePath(), kCase) == 0;
}

}  // namespace tandeko
