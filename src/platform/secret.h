#pragma once

#include <QString>

namespace tandeko {

// A text as it may be kept in the registry so that no other user of the machine can read it: sealed by the
// system's data protection on Windows; elsewhere under a random key in a file that only the user may read.
// Empty when the protection is not available.
QString sealSecret(const QString& secret);
// Empty for a text that this user did not seal.
QString openSecret(const QString& sealed);

}  // namespace tandeko
