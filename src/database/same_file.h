#pragma once

#include <QString>

namespace tandeko {

// Whether two paths are written alike, as the system's names go; asks no drive.
bool samePath(const QString& a, const QString& b);

// Whether two paths name one file, which need not exist.
bool sameFile(const QString& a, const QString& b);

}  // namespace tandeko
