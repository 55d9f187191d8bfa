#include "platform/ini_file.h"

#include <QFile>
#include <QSaveFile>
#include <QStringConverter>
#include <QStringList>
#include <QThread>

#include "jet/format/text.h"
#include "platform/text.h"

namespace tandeko {

namespace {

QStringList readLines(const QString& path, bool& found) {
  QFile file(path);
  found = file.open(QIODevice::ReadOnly);
  if (!found) return {};
  QStringList lines = decodeText(file.readAll()).split(u'\n');
  for (QString& line : lines)
    if (line.endsWith(u'\r')) line.chop(1);
  if (!lines.isEmpty() && lines.last().isEmpty()) lines.removeLast();
  return lines;
}

bool isSection(const QString& line, const QString& section) {
  const QString trimmed = line.trimmed();
  return trimmed.startsWith(u'[') && trimmed.endsWith(u']') &&
         trimmed.mid(1, trimmed.size() - 2).trimmed().compare(section.trimmed(), Qt::CaseInsensitive) == 0;
}

bool isAnySection(const QString& line) { return line.trimmed().startsWith(u'['); }

bool isKey(const QString& line, const QString& key) {
  if (line.trimmed().startsWith(u';')) return false;
  const auto equals = line.indexOf(u'=');
  return equals >= 0 && line.first(equals).trimmed().compare(key.trimmed(), Qt::CaseInsensitive) == 0;
}

// Where the section begins and ends in `lines`: [first line after its head, end); nothing when absent.
std::optional<std::pair<qsizetype, qsizetype>> sectionRange(const QStringList& lines,
                                                            const QString& section) {
  for (qsizetype i = 0; i < lines.size(); ++i) {
    if (!isSection(lines[i], section)) continue;
    qsizetype end = i + 1;
    while (end < lines.size() && !isAnySection(lines[end])) ++end;
    return std::pair(i + 1, end);
  }
  return std::nullopt;
}

bool writeOnce(const QString& path, const QString& section, const QString& key, const QString& value) {
  bool found = false;
  QStringList lines = readLines(path, found);
  if (!found && QFile::exists(path)) return false;
  QString plain = value;
  plain.replace(u'\r', u' ').replace(u'\n', u' ');
  const QString line = key + u'=' + plain;
  if (const auto range = sectionRange(lines, section)) {
    qsizetype at = range->first;
    while (at < range->second && !isKey(lines[at], key)) ++at;
    if (at < range->second) {
      lines[at] = line;
    } else {
      while (at > range->first && lines[at - 1].trimmed().isEmpty()) --at;
      lines.insert(at, line);
    }
  } else {
    lines << u'[' + section + u']' << line;
  }
  QSaveFile file(path);
  if (!file.open(QIODevice::WriteOnly)) return false;
  file.write("\xEF\xBB\xBF" + (lines.join(u"\r\n"_qs) + u"\r\n"_qs).toUtf8());
  return file.commit();
}

}  // namespace

QString decodeText(const QByteArray& bytes) {
  if (const auto encoding = QStringConverter::encodingForData(bytes)) {
    QStringDecoder decode(*encoding);
    return decode(bytes);
  }
  QStringDecoder utf8(QStringConverter::Utf8, QStringConverter::Flag::Stateless);
  const QString text = utf8(bytes);
  if (!utf8.hasError()) return text;
  const jet::Bytes stored(reinterpret_cast<const uint8_t*>(bytes.constData()),
                          static_cast<size_t>(bytes.size()));
  return toQString(jet::decodeAnsi(stored, 1250));
}

std::optional<QString> iniRead(const QString& path, const QString& section, const QString& key) {
  bool found = false;
  const QStringList lines = readLines(path, found);
  const auto range = sectionRange(lines, section);
  if (!range) return std::nullopt;
  for (qsizetype i = range->first; i < range->second; ++i) {
    if (!isKey(lines[i], key)) continue;
    QString value = lines[i].mid(lines[i].indexOf(u'=') + 1).trimmed();
    if (value.size() >= 2 && (value[0] == u'"' || value[0] == u'\'') && value.back() == value[0])
      value = value.mid(1, value.size() - 2);
    return value;
  }
  return std::nullopt;
}

// Windows replaces no file that another program is just reading.
bool iniWrite(const QString& path, const QString& section, const QString& key, const QString& value) {
#ifdef Q_OS_WIN
  constexpr int kTries = 20, kPause = 10;  // milliseconds
#else
  constexpr int kTries = 1, kPause = 0;
#endif
  for (int tries = 0; tries < kTries; ++tries) {
    if (tries > 0) QThread::msleep(kPause);
    if (writeOnce(path, section, key, value)) return true;
  }
  return false;
}

}  // namespace tandeko
