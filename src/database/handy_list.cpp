#include "database/handy_list.h"

#include <QDir>
#include <QFileInfo>

#include "database/same_file.h"
#include "platform/file_probe.h"
#include "platform/secret.h"
#include "session/names.h"

namespace tandeko {

namespace {

const QString kFolder = QStringLiteral("Folder");
const QString kActive = QStringLiteral("Aktywna");
const QString kPassword = QStringLiteral("Haslo");
const QString kOne = QStringLiteral("1");
const QString kZero = QStringLiteral("0");

QString joined(const QString& folder, const QString& file) {
  const QString plain = QDir::fromNativeSeparators(folder);
  return QDir::toNativeSeparators(plain.endsWith(u'/') ? plain + file : plain + u'/' + file);
}

}  // namespace

QString HandyEntry::fileName() const {
  return subkey.endsWith(u".mdb", Qt::CaseInsensitive) ? subkey : subkey + QStringLiteral(".mdb");
}

QString HandyEntry::path() const { return joined(folder, fileName()); }

QString HandyEntry::replicaPath() const {
  return joined(replicaFolder, QStringLiteral("Replika ") + fileName());
}

QString handyKey(const QString& subkey) { return kDatabasesKey + u'\\' + subkey; }

QList<HandyEntry> handyList(Session& session) {
  QList<HandyEntry> list;
  for (const QString& subkey : session.registry().subkeys(kDatabasesKey)) {
    const QString key = handyKey(subkey);
    const auto flag = [&](const QString& name) { return session.registry().read(key, name) == kOne; };
    HandyEntry entry;
    entry.subkey = subkey;
    entry.folder = session.registry().read(key, kFolder);
    entry.active = flag(kActive);
    entry.replica = flag(QStringLiteral("Replika"));
    entry.replicaOpen = flag(QStringLiteral("Replika otworz"));
    entry.replicaFolder = session.registry().read(key, QStringLiteral("Replika folder"));
    list << entry;
  }
  return list;
}

std::optional<HandyEntry> handyEntryOf(Session& session, const QString& path) {
  const QString name = QFileInfo(path).fileName();
  for (const HandyEntry& entry : handyList(session)) {
    if (samePath(entry.path(), path)) return entry;
    // The same file by another path. Only one of that name is looked for: other drives need not answer.
    const bool named = entry.fileName().compare(name, Qt::CaseInsensitive) == 0;
    if (named && FileProbe(entry.path()).answer() == FileAnswer::Present && sameFile(entry.path(), path))
      return entry;
  }
  return std::nullopt;
}

bool handyAdd(Session& session, const QString& path) {
  const QFileInfo file(path);
  // An entry without the extension is the same database: it is used again, with its schedules.
  QString subkey = file.fileName();
  for (const HandyEntry& entry : handyList(session))
    if (entry.fileName().compare(subkey, Qt::CaseInsensitive) == 0) subkey = entry.subkey;
  const QString key = handyKey(subkey);
  Registry& registry = session.registry();
  const auto keepOr = [&](const QString& name, const QString& value) {
    registry.write(key, name, registry.read(key, name, value));
  };
  const bool stored = registry.write(key, kFolder, QDir::toNativeSeparators(file.absolutePath())) &&
                      registry.write(key, kActive, kOne);
  keepOr(QStringLiteral("Defragmentacja"), kZero);
  keepOr(QStringLiteral("Defragmentacja potwierdz"), kZero);
  keepOr(QStringLiteral("Defragmentacja co dni"), QStringLiteral("30"));
  keepOr(QStringLiteral("Defragmentacja data"), {});
  keepOr(QStringLiteral("Kopia"), kZero);
  keepOr(QStringLiteral("Kopia potwierdz"), kZero);
  keepOr(QStringLiteral("Kopia co dni"), QStringLiteral("3"));
  keepOr(QStringLiteral("Kopia data"), {});
  keepOr(QStringLiteral("Kopia folder"), session.settings().program().folderCopies);
  return stored;
}

bool handyRemove(Session& session, const QString& subkey) {
  return session.registry().removeKey(handyKey(subkey));
}

bool handySetActive(Session& session, const QString& subkey, bool active) {
  return session.registry().write(handyKey(subkey), kActive, active ? kOne : kZero);
}

QString handyPassword(Session& session, const QString& subkey) {
  const QString sealed = session.registry().read(handyKey(subkey), kPassword);
  return sealed.isEmpty() ? QString() : openSecret(sealed);
}

bool handyKeepPassword(Session& session, const QString& subkey, const QString& password) {
  const QString sealed = sealSecret(password);
  return !sealed.isEmpty() && session.registry().write(handyKey(subkey), kPassword, sealed);
}

}  // namespace tandeko
