#include "database/upkeep_names.h"

#include <QDir>
#include <QFileInfo>

#include "database/handy_list.h"

namespace tandeko {

namespace {

constexpr int kExtensionLength = 4;

QString valueName(Upkeep kind, const QString& rest) {
  return (kind == Upkeep::Compact ? QStringLiteral("Defragmentacja") : QStringLiteral("Kopia")) + rest;
}

}  // namespace

QString baseName(const QString& path) {
  const QString file = QFileInfo(path).fileName();
  return file.endsWith(u".mdb", Qt::CaseInsensitive) ? file.chopped(kExtensionLength) : file;
}

QString withOneExtension(const QString& path) {
  const QFileInfo file(path);
  QString name = file.fileName();
  name.remove(QStringLiteral(".mdb")).remove(QStringLiteral(".MDB"));
  return joinedPath(file.path(), name + QStringLiteral(".mdb"));
}

QString joinedPath(const QString& folder, const QString& file) {
  return QDir::toNativeSeparators(QDir(folder).filePath(file));
}

QString workFolder(Session& session) {
  QString folder = session.settings().program().folderWork;
  if (folder.isEmpty()) folder = qEnvironmentVariable("TEMP");
  if (folder.isEmpty()) folder = session.settings().ownFolder();
  return QDir::toNativeSeparators(folder);
}

QString copyFolder(Session& session, const QString& path) {
  QString folder = session.registry().read(scheduleKey(session, path), QStringLiteral("Kopia folder"));
  if (folder.isEmpty()) folder = session.settings().program().folderCopies;
  return QDir::toNativeSeparators(folder);
}

QString copyFileName(const QString& name) { return QStringLiteral("Kopia ") + name + QStringLiteral(".mdb"); }

QString previousCopyFileName(const QString& name) { return QStringLiteral("Temp ") + copyFileName(name); }

QString datedCopyFileName(const QString& name, const QDate& date) {
  return QStringLiteral("Kopia ") + name + QStringLiteral(" z dnia ") +
         date.toString(QStringLiteral("dd-MM-yyyy")) + QStringLiteral(".mdb");
}

QString scheduleKey(Session& session, const QString& path) {
  const auto entry = handyEntryOf(session, path);
  return entry ? handyKey(entry->subkey) : QString();
}

Schedule readSchedule(Session& session, const QString& path, Upkeep kind) {
  const QString key = scheduleKey(session, path);
  if (key.isEmpty()) return {};
  const auto value = [&](const QString& rest) { return session.registry().read(key, valueName(kind, rest)); };
  return {value(QString()), value(QStringLiteral(" potwierdz")), value(QStringLiteral(" co dni")),
          value(QStringLiteral(" data"))};
}

void noteRun(Session& session, const QString& path, Upkeep kind) {
  const QString key = scheduleKey(session, path);
  if (!key.isEmpty())
    session.registry().write(key, valueName(kind, QStringLiteral(" data")),
                             shortDate(session.clock().today()));
}

}  // namespace tandeko
