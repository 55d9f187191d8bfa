#pragma once

#include <QString>

namespace tandeko {

// Whether two paths name one file, which need not exist.
bool sameFile(const QString& a, const QString& b);

}  // namespace tandeko
