#pragma once

#include <QString>
#include <optional>

namespace tandeko {

// One value of a file in the initialisation-file layout: "[section]" lines, "key=value" lines, comments
// after ";". Section and key names ignore case; the first section and key of a name count; blanks around
// names and values and one pair of quotation marks around a value are dropped. The file's text may be
// UTF-8, UTF-16 with its mark, or Windows-1250. Nothing when the file, section or key is missing.
std::optional<QString> iniRead(const QString& path, const QString& section, const QString& key);

// Replaces or adds a value, the section at the end when missing; the rest of the file stays. The file is
// written as UTF-8 with its mark and CR LF, which every plain editor shows right. False when it cannot
// be written.
bool iniWrite(const QString& path, const QString& section, const QString& key, const QString& value);

// The text of a file in one of these encodings.
QString decodeText(const QByteArray& bytes);

}  // namespace tandeko
