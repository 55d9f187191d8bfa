#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLockFile>
#include <QSaveFile>
#include <QStandardPaths>

#include "platform/registry.h"

namespace tandeko {

namespace {

constexpr int kLockPatience = 5000;  // milliseconds

}  // namespace

FileRegistry::FileRegistry(const QString& path) : path_(path) {}

// The file is small: reading it each time is what makes another copy's change visible at once, and it
// is parsed only when it differs.
const MemoryRegistry& FileRegistry::current() const {
  QFile file(path_);
  const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  if (bytes != bytes_) {
    content_.fromBytes(bytes);
    bytes_ = bytes;
  }
  return content_;
}

template <typename Change>
bool FileRegistry::change(Change&& apply) {
  QDir().mkpath(QFileInfo(path_).absolutePath());
  QLockFile lock(path_ + QStringLiteral(".lock"));
  if (!lock.tryLock(kLockPatience)) return false;
  current();
  if (!apply(content_)) return false;
  const QByteArray bytes = content_.toBytes();
  if (bytes == bytes_) return true;
  QSaveFile file(path_);
  const bool stored = file.open(QIODevice::WriteOnly) &&
                      file.setPermissions(QFile::ReadOwner | QFile::WriteOwner) &&
                      file.write(bytes) == bytes.size() && file.commit();
  // After a failure the content in memory is no longer the file's: it is read anew.
  if (stored)
    bytes_ = bytes;
  else
    content_.fromBytes(bytes_);
  return stored;
}

bool FileRegistry::createKey(const QString& key) {
  return change([&](MemoryRegistry& content) { return content.createKey(key); });
}

bool FileRegistry::write(const QString& key, const QString& name, const QString& value) {
  return change([&](MemoryRegistry& content) { return content.write(key, name, value); });
}

bool FileRegistry::removeValue(const QString& key, const QString& name) {
  return change([&](MemoryRegistry& content) { return content.removeValue(key, name); });
}

bool FileRegistry::removeKey(const QString& key) {
  return change([&](MemoryRegistry& content) { return content.removeKey(key); });
}

bool FileRegistry::hasKey(const QString& key) const { return current().hasKey(key); }

QString FileRegistry::read(const QString& key, const QString& name, const QString& fallback) const {
  return current().read(key, name, fallback);
}

QStringList FileRegistry::subkeys(const QString& key) const { return current().subkeys(key); }

QStringList FileRegistry::valueNames(const QString& key) const { return current().valueNames(key); }

#ifndef Q_OS_WIN
std::unique_ptr<Registry> systemRegistry() {
  const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
  return std::make_unique<FileRegistry>(folder + QStringLiteral("/kwarcel/registry"));
}
#endif

}  // namespace tandeko
