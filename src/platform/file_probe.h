#pragma once

#include <QString>

namespace tandeko {

enum class FileAnswer { Present, Missing, NoAnswer };

// Whether a file is there, asked so that a drive that does not answer holds the program up for no longer
// than `milliseconds`.
FileAnswer probeFile(const QString& path, int milliseconds = 3000);

}  // namespace tandeko
