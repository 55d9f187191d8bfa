#pragma once

#include <QString>
#include <memory>
#include <optional>

#include "jet/dao/dao.h"
#include "jet/pager/env.h"

namespace jet {
class LockFile;
}

// The steps that work on database files is made of. Each leaves its target as it was, or complete; all
// throw jet::Error.
namespace tandeko {

// The error number of work that the user called off.
constexpr int kCancelled = 3059;

// A database that nobody else may open while the object lives. What a crash left half done in it is undone
// first.
class HeldDatabase {
 public:
  // Throws 3045 or 3356 when somebody has it open. With `evenDamaged` a file that cannot be read is held too.
  HeldDatabase(jet::Environment& files, const QString& path, const QString& password,
               bool evenDamaged = false);
  ~HeldDatabase();
  HeldDatabase(const HeldDatabase&) = delete;
  HeldDatabase& operator=(const HeldDatabase&) = delete;

 private:
  std::unique_ptr<jet::LockFile> lock_;
};

class FileSteps {
 public:
  explicit FileSteps(jet::Environment& files) : files_(files) {}

  bool exists(const QString& path) { return files_.exists(pathOf(path)); }
  bool remove(const QString& path) { return files_.remove(pathOf(path)); }
  // As above, but for errors, which do not matter.
  void tryRemove(const QString& path) noexcept;
  void tryRename(const QString& from, const QString& to) noexcept;

  // A complete, durable copy of `from` beside `to`, under a name of its own that is returned; nothing on an
  // error. A false answer of `progress` (the part that is done, 0 to 1) calls it off.
  QString stage(const QString& from, const QString& to, const jet::Progress& progress = {});
  // The staged file takes the place of `to`, at once and whole.
  void place(const QString& staged, const QString& to);
  // Makes the changes of names in the folder of `path` durable.
  void settle(const QString& path);
  // As above, but for errors: for names whose loss in a power cut would do no harm.
  void trySettle(const QString& path) noexcept;
  // All three in one.
  void copy(const QString& from, const QString& to, const jet::Progress& progress = {});

  // Opens the database to prove that it opens.
  void prove(const QString& path, const QString& password);
  // Opens it and checks all of it; throws 3049 with the first fault.
  void check(const QString& path, const QString& password, const jet::Progress& progress);

 private:
  static std::filesystem::path pathOf(const QString& path);
  void copyBytes(const QString& from, const QString& to, const jet::Progress& progress);

  jet::Environment& files_;
};

// ";pwd=...;"
std::u16string connectText(const QString& password);

// What went wrong with a file, for the end of a message.
QString fileErrorText(const jet::Error& error);

}  // namespace tandeko
