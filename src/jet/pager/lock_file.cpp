#include "jet/pager/lock_file.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/pager/lock_users.h"

namespace jet {

namespace {

constexpr uint64_t kFirstSlot = 0x10000001;
constexpr int kSlots = 255;
constexpr uint64_t kPresence = 0x7F000000;
constexpr uint64_t kPending = 0x7F000001;
constexpr uint64_t kReaders = 0x7F000002;
constexpr uint64_t kNext = 0x7F000003;
constexpr uint64_t kReserved = 0x7F000100;
constexpr size_t kEntrySize = 64, kNameSize = 32;
constexpr unsigned kOpenWaitMs = 200;  // for somebody who is just leaving
constexpr unsigned kLongestPauseMs = 8;
constexpr unsigned kPauseOfOneMs = 1;  // where only one of all copies can be waiting
constexpr char kUser[] = "Admin";

using Lock = File::Lock;

std::u16string nameFrom(Bytes field) {
  const auto end = std::find(field.begin(), field.end(), uint8_t{0});
  std::string name(field.begin(), end);
  while (!name.empty() && name.back() == ' ') name.pop_back();
  return fromUtf8(name);
}

}  // namespace

std::filesystem::path LockFile::pathOf(const std::filesystem::path& database) {
  std::filesystem::path path = database;
  return path.replace_extension(".ldb");
}

LockFile::LockFile(Environment& env, const std::filesystem::path& database, const Options& options)
    : env_(env), database_(database), path_(pathOf(database)), options_(options) {
  const bool joined = waitFor(std::min(options.waitMs, kOpenWaitMs), kLongestPauseMs, [this] {
    if (!tryOpenFile()) return true;
    if (!tryJoin()) return false;
    // The last one to leave may have removed the file between our opening and locking it.
    if (file_->isNamed(path_)) return true;
    file_.reset();
    return false;
  });
  if (!joined) throwOpenedByOthers();
  if (file_ && writable_) takeSlot();
}

// False when this copy has to do without a lock file.
bool LockFile::tryOpenFile() {
  if (file_ && file_->isNamed(path_)) return true;
  file_.reset();
  writable_ = true;
  try {
    file_ = env_.open(path_, Environment::Open::CreateOrOpen);
    return true;
  } catch (const Error& error) {
    if (error.number() != 3051 || !options_.readOnly) throw;
  }
  writable_ = false;
  options_.exclusive = false;
  if (!env_.exists(path_)) return false;
  file_ = env_.open(path_, Environment::Open::ReadOnly);
  return true;
}

bool LockFile::tryJoin() {
  if (!options_.exclusive) return file_->tryLock(kPresence, 1, Lock::Shared);
  if (!file_->tryLock(kPresence, 1, Lock::Exclusive)) return false;
  // Programs that know only the slots count as well.
  if (file_->tryLock(kFirstSlot, kSlots, Lock::Exclusive)) return true;
  file_->unlock(kPresence, 1);
  return false;
}

void LockFile::takeSlot() {
  if (options_.exclusive) {
    slot_ = 1;
  } else {
    for (int slot = 1; slot <= kSlots && slot_ == 0; ++slot)
      if (file_->tryLock(kFirstSlot + slot - 1, 1, Lock::Exclusive)) slot_ = slot;
    if (slot_ == 0) throw Error(3045, {pathText(database_)}, "DAO.Workspace");
  }
  writeEntry();
}

void LockFile::writeEntry() {
  std::array<uint8_t, kEntrySize> entry{};
  const std::string machine = env_.computerName();
  std::memcpy(entry.data(), machine.data(), std::min(machine.size(), kNameSize - 1));
  std::memcpy(entry.data() + kNameSize, kUser, sizeof kUser);
  file_->write((slot_ - 1) * kEntrySize, entry);
}

LockFile::~LockFile() {
  if (!file_) return;
  try {
    const bool alone = writable_ && (options_.exclusive || file_->tryLock(kPresence, 1, Lock::Exclusive));
    if (!alone) return;
    if (whenAlone_) whenAlone_();
    env_.removeOpened(path_, std::move(file_));
  } catch (const std::exception&) {
    // A left-over lock file is harmless; closing it gives up the locks.
  }
}

void LockFile::lockRead() {
  if (sole()) return;
  const bool entered = waitFor(options_.waitMs, kLongestPauseMs, [this] {
    if (!file_->tryLock(kPending, 1, Lock::Shared)) return false;
    try {
      const bool locked = file_->tryLock(kReaders, 1, Lock::Shared);
      file_->unlock(kPending, 1);
      return locked;
    } catch (const std::exception&) {
      unlockQuietly(kPending, 1);
      unlockQuietly(kReaders, 1);
      throw;
    }
  });
  if (!entered) throwLocked(3187, writer());
}

void LockFile::unlockRead() noexcept {
  if (!sole()) unlockQuietly(kReaders, 1);
}

void LockFile::unlockQuietly(uint64_t offset, uint64_t length) noexcept {
  try {
    file_->unlock(offset, length);
  } catch (const std::exception&) {
    // Closing the file ends the lock at the latest.
  }
}

void LockFile::lockWrite(bool reading) {
  if (sole()) return;
  if (!writable_) throw Error(3051, {pathText(database_)}, "DAO.Workspace");
  const auto wait = [&](uint64_t offset, uint64_t length, unsigned longestPauseMs) {
    const bool locked = waitFor(options_.waitMs, longestPauseMs, [&] {
      if (file_->tryLock(offset, length, Lock::Exclusive)) return true;
      // A writer who waits for us to stop reading, while we wait for him: one has to give way at once.
      if (reading && !isFree(kPending)) throwLocked(3260, writer());
      return false;
    });
    if (!locked) throwLocked(3260, writer());
  };
  wait(kNext, 1, kLongestPauseMs);
  try {
    wait(kReserved, slot_ + 1, kPauseOfOneMs);
  } catch (...) {
    unlockQuietly(kNext, 1);
    throw;
  }
  unlockQuietly(kNext, 1);
}

void LockFile::lockExclusive() {
  if (sole() || exclusiveHeld_) return;
  exclusiveHeld_ = waitFor(options_.waitMs, kPauseOfOneMs, [this] {
    // Pending first, so that no further readers enter.
    pendingHeld_ = pendingHeld_ || file_->tryLock(kPending, 1, Lock::Exclusive);
    return pendingHeld_ && file_->tryLock(kReaders, 1, Lock::Exclusive);
  });
  if (exclusiveHeld_) return;
  unlockQuietly(kPending, 1);
  pendingHeld_ = false;
  throwLocked(3260, anyUser());
}

void LockFile::unlockWrite(bool reading) noexcept {
  if (sole()) return;
  if (exclusiveHeld_) {
    // Nobody can hold a lock that conflicts, so that reading on cannot be refused.
    try {
      if (reading) file_->tryLock(kReaders, 1, Lock::Shared);
    } catch (const std::exception&) {
      // Then others wait a little longer for the end of the reading.
    }
    if (!reading) unlockQuietly(kReaders, 1);
  }
  if (pendingHeld_) unlockQuietly(kPending, 1);
  unlockQuietly(kReserved, slot_ + 1);
  exclusiveHeld_ = pendingHeld_ = false;
}

bool LockFile::isFree(uint64_t offset) {
  if (!file_->tryLock(offset, 1, writable_ ? Lock::Exclusive : Lock::Shared)) return false;
  file_->unlock(offset, 1);
  return true;
}

LockFile::Holder LockFile::entry(int slot) {
  std::array<uint8_t, kEntrySize> bytes{};
  file_->read((slot - 1) * kEntrySize, bytes);
  Holder holder{nameFrom(Bytes(bytes).first(kNameSize)), nameFrom(Bytes(bytes).last(kNameSize))};
  if (holder.machine.empty()) holder = {u"?", u"?"};
  return holder;
}

LockFile::Holder LockFile::anyUser() {
  const int entries = static_cast<int>(std::min<uint64_t>(file_->size() / kEntrySize, kSlots));
  for (int slot = 1; slot <= entries; ++slot)
    if (slot != slot_ && !isFree(kFirstSlot + slot - 1)) return entry(slot);
  return {u"?", u"?"};
}

// The writer's slot is the length of its lock less one.
LockFile::Holder LockFile::writer() {
  for (int slot = kSlots; slot > 0; --slot)
    if (!isFree(kReserved + slot)) return entry(slot);
  return anyUser();
}

void LockFile::throwOpenedByOthers() {
  const Holder holder = file_ ? anyUser() : Holder{u"?", u"?"};
  if (holder.machine == u"?") throw Error(3045, {pathText(database_)}, "DAO.Workspace");
  throw Error(3356, {holder.machine, holder.user}, "DAO.Workspace");
}

void LockFile::throwLocked(int number, const Holder& holder) {
  throw Error(number, {holder.machine, holder.user}, "DAO.Workspace");
}

bool LockFile::waitFor(unsigned limitMs, unsigned longestPauseMs, const std::function<bool()>& attempt) {
  if (attempt()) return true;
  const uint64_t start = env_.monotonicMilliseconds();
  for (unsigned pause = 1;; pause = std::min(pause * 2, longestPauseMs)) {
    if (env_.monotonicMilliseconds() - start >= limitMs) return false;
    env_.sleepMilliseconds(pause);
    if (attempt()) return true;
  }
}

// A slot that cannot be locked even to share is somebody's. Whoever joins at this very moment takes the next.
std::vector<std::u16string> lockUsers(Environment& env, const std::filesystem::path& database) {
  std::vector<std::u16string> users;
  try {
    const auto file = env.open(LockFile::pathOf(database), Environment::Open::ReadOnly);
    const int entries = static_cast<int>(std::min<uint64_t>(file->size() / kEntrySize, kSlots));
    for (int slot = 1; slot <= entries; ++slot) {
      if (file->tryLock(kFirstSlot + slot - 1, 1, Lock::Shared)) {
        file->unlock(kFirstSlot + slot - 1, 1);
        continue;
      }
      std::array<uint8_t, kEntrySize> entry{};
      file->read((slot - 1) * kEntrySize, entry);
      const std::u16string machine = nameFrom(Bytes(entry).first(kNameSize));
      users.push_back(machine.empty() ? u"?" : machine);
    }
  } catch (const Error&) {
    // Nobody has it open, or there is no telling.
  }
  return users;
}

}  // namespace jet
