#include "database/same_file.h"

#include <QFileInfo>
#include <filesystem>

#include "platform/text.h"

namespace tandeko {

bool samePath(const QString& a, const QString& b) {
#ifdef Q_OS_WIN
  constexpr Qt::CaseSensitivity kCase = Qt::CaseInsensitive;
#else
  constexpr Qt::CaseSensitivity kCase = Qt::CaseSensitive;
#endif
  return QFileInfo(a).absoluteFilePath().compare(QFileInfo(b).absoluteFilePath(), kCase) == 0;
}

// Links, short names, a drive letter and the server behind it: the system knows which file it is.
bool sameFile(const QString& a, const QString& b) {
  std::error_code error;
  return samePath(a, b) || std::filesystem::equivalent(toPath(QFileInfo(a).absoluteFilePath()),
                                                       toPath(QFileInfo(b).absoluteFilePath()), error);
}

}  // namespace tandeko
