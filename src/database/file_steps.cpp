#include "database/file_steps.h"

#include <QFileInfo>
#include <cmath>

#include "database/upkeep_names.h"
#include "database/watched_files.h"
#include "jet/pager/journal.h"
#include "jet/pager/lock_file.h"
#include "platform/text.h"

namespace tandeko {

namespace {

constexpr size_t kBlock = size_t{1} << 20;
constexpr double kTimesRead = 6;  // each page, by a check
constexpr char kSource[] = "DAO.Workspace";

bool isInUse(const jet::Error& error) { return error.number() == 3045 || error.number() == 3356; }

}  // namespace

std::u16string connectText(const QString& password) { return u";pwd=" + toU16(password) + u";"; }

HeldDatabase::HeldDatabase(jet::Environment& files, const QString& path, const QString& password,
                           bool evenDamaged) {
  try {
    jet::Workspace workspace(files);
    workspace.openDatabase(toPath(path),
                           {.exclusive = true, .readOnly = true, .connect = connectText(password)});
  } catch (const jet::Error& error) {
    if (!evenDamaged || isInUse(error)) throw;
  }
  lock_ = std::make_unique<jet::LockFile>(files, toPath(path),
                                          jet::LockFile::Options{.exclusive = true, .readOnly = true});
}

HeldDatabase::~HeldDatabase() = default;

std::filesystem::path FileSteps::pathOf(const QString& path) { return toPath(path); }

void FileSteps::tryRemove(const QString& path) noexcept {
  try {
    remove(path);
  } catch (const std::exception&) {
    // It stays where it is.
  }
}

void FileSteps::tryRename(const QString& from, const QString& to) noexcept {
  try {
    if (exists(from)) files_.rename(pathOf(from), pathOf(to));
  } catch (const std::exception&) {
    // Both stay as they are.
  }
}

void FileSteps::copyBytes(const QString& from, const QString& to, const jet::Progress& progress) {
  const auto source = files_.open(pathOf(from), jet::Environment::Open::ReadOnly);
  const auto target = files_.open(pathOf(to), jet::Environment::Open::CreateOrOpen);
  target->truncate(0);
  const uint64_t size = source->size();
  std::string block(kBlock, '\0');
  const jet::MutableBytes room{reinterpret_cast<uint8_t*>(block.data()), block.size()};
  for (uint64_t done = 0; done < size;) {
    if (progress && !progress(static_cast<double>(done) / static_cast<double>(size)))
      throw jet::Error(kCancelled, {}, kSource);
    const size_t count = source->read(done, room);
    if (count == 0) throw jet::Error(3043, {}, kSource);
    target->write(done, room.first(count));
    done += count;
  }
  target->sync();
}

QString FileSteps::stage(const QString& from, const QString& to, const jet::Progress& progress) {
  // Its lock file must not be the one of `to`, nor its name that of a database.
  const QFileInfo target(to);
  const QString staged = joinedPath(target.path(), target.completeBaseName() + QStringLiteral("-part.tmp"));
  try {
    copyBytes(from, staged, progress);
  } catch (...) {
    tryRemove(staged);
    throw;
  }
  return staged;
}

void FileSteps::place(const QString& staged, const QString& to) {
  try {
    // A journal there belongs to the file that goes.
    files_.remove(jet::Journal::pathOf(pathOf(to)));
    files_.rename(pathOf(staged), pathOf(to));
  } catch (...) {
    tryRemove(staged);
    throw;
  }
}

void FileSteps::settle(const QString& path) { files_.syncFolder(pathOf(path)); }

void FileSteps::trySettle(const QString& path) noexcept {
  try {
    settle(path);
  } catch (const std::exception&) {
    // The system will do it in its own time.
  }
}

void FileSteps::copy(const QString& from, const QString& to, const jet::Progress& progress) {
  place(stage(from, to, progress), to);
  settle(to);
}

void FileSteps::prove(const QString& path, const QString& password) {
  jet::Workspace(files_).openDatabase(toPath(path), {.readOnly = true, .connect = connectText(password)});
}

// How far the check has come is guessed from what it has read. The more indexes a table has, the more often
// its pages are read again, so that the display slows down instead of standing at its end.
void FileSteps::check(const QString& path, const QString& password, const jet::Progress& progress) {
  const auto size = static_cast<double>(files_.open(pathOf(path), jet::Environment::Open::ReadOnly)->size());
  double done = 0;
  WatchedFiles watched(files_, [&](size_t bytes) {
    done += static_cast<double>(bytes);
    if (progress && !progress(1 - std::exp(-done / (kTimesRead * size))))
      throw jet::Error(kCancelled, {}, kSource);
  });
  jet::Workspace workspace(watched);
  const auto database =
      workspace.openDatabase(toPath(path), {.readOnly = true, .connect = connectText(password)});
  std::u16string first;
  const bool sound = database->check([&first](const std::u16string& fault) {
    if (first.empty()) first = fault;
  });
  if (!sound) throw jet::Error::withText(3049, first, kSource);
}

QString fileErrorText(const jet::Error& error) {
  switch (error.number()) {
    case 3024:
      return QStringLiteral("nie znaleziono pliku");
    case 3026:
      return QStringLiteral("brak miejsca na dysku");
    case 3031:
      return QStringLiteral("hasło bazy jest inne");
    case 3043:
      return QStringLiteral("błąd dysku lub połączenia sieciowego");
    case 3044:
      return QStringLiteral("nie znaleziono folderu");
    case 3045:
    case 3356:
      return QStringLiteral("plik jest używany przez innego użytkownika lub program");
    case 3049:
    case 3343:
      return QStringLiteral("plik jest uszkodzony lub nie jest bazą danych");
    case 3051:
      return QStringLiteral("brak prawa dostępu do pliku");
    default:
      return toQString(error.description());
  }
}

}  // namespace tandeko
