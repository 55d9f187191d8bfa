#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>

#include "jet/format/error.h"
#include "jet/pager/env.h"
#include "platform/registry.h"
#include "platform/text.h"

namespace tandeko {

namespace {

constexpr uint64_t kLockPatience = 5000;  // milliseconds
constexpr int kNoLocksHere = 3050;

// Locks the file at `path`; the system lets go of the lock however this process ends. Empty when another copy
// holds it for too long or the file cannot be opened. Where a drive has no locks, a change is still whole.
std::unique_ptr<jet::File> lockedFile(const QString& path) {
  jet::Environment& system = jet::Environment::system();
  std::unique_ptr<jet::File> file;
  try {
    file = system.open(toPath(path), jet::Environment::Open::CreateOrOpen);
    const uint64_t end = system.monotonicMilliseconds() + kLockPatience;
    while (!file->tryLock(0, 1, jet::File::Lock::Exclusive)) {
      if (system.monotonicMilliseconds() > end) return nullptr;
      system.sleepMilliseconds(5);
    }
    return file;
  } catch (const jet::Error& error) {
    return error.number() == kNoLocksHere ? std::move(file) : nullptr;
  }
}

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
  const auto lock = lockedFile(path_ + QStringLiteral(".lock"));
  if (!lock) return false;
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
