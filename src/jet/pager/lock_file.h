#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include "jet/pager/env.h"

namespace jet {

// How the copies that have one database open agree, through byte-range locks in DATABASE.ldb:
//
//   0x10000001 + 254   user slots 1..255: held exclusively while open; slot n owns the 64-byte entry n-1
//                      (computer name, user name) at the file's start
//   kPresence          shared while open; exclusive by an exclusive opener and by the last one to leave
//   kPending           exclusive by a writer who waits for readers to leave, shared for a moment by one
//   entering kReaders           shared while reading, exclusive while pages are written kReserved + slot the
//   writer holds the bytes from kReserved to its own slot's, so that two writers exclude
//                      each other and the length tells a third who it is
//
// All lie where no file has bytes, beyond the ranges that other programs use for such files. A copy that may
// not write beside a database on a read-only medium works without locks.
class LockFile {
 public:
  struct Options {
    bool exclusive = false, readOnly = false;
    unsigned waitMs = 5000;
  };

  // Throws Error 3356 naming the holder, or 3045, when others prevent it.
  LockFile(Environment& env, const std::filesystem::path& database, const Options& options);
  // Leaves; the last one removes the file.
  ~LockFile();
  LockFile(const LockFile&) = delete;
  LockFile& operator=(const LockFile&) = delete;

  static std::filesystem::path pathOf(const std::filesystem::path& database);

  // What the destructor does first if nobody else is in.
  void setWhenAlone(std::function<void()> action) { whenAlone_ = std::move(action); }
  // Nobody else is in.
  bool exclusive() const { return options_.exclusive; }
  // No locks are taken: nobody else is in, or there is no lock file.
  bool sole() const { return options_.exclusive || !file_; }
  // The user slot, 1..255; 0 when there is none.
  int slot() const { return slot_; }

  // Waits; throws Error 3187 naming a holder.
  void lockRead();
  void unlockRead() noexcept;
  // Becomes the one writer; throws Error 3260 naming the holder. With `reading` the caller is inside
  // lockRead.
  void lockWrite(bool reading);
  // The writer waits until nobody reads; throws Error 3260.
  void lockExclusive();
  // Ends lockExclusive and lockWrite; with `reading` the caller reads on.
  void unlockWrite(bool reading) noexcept;

 private:
  struct Holder {
    std::u16string machine, user;
  };

  bool tryOpenFile();
  bool tryJoin();
  void takeSlot();
  void writeEntry();
  [[noreturn]] void throwOpenedByOthers();
  [[noreturn]] void throwLocked(int number, const Holder& holder);
  Holder entry(int slot);
  void unlockQuietly(uint64_t offset, uint64_t length) noexcept;
  bool isFree(uint64_t offset);
  Holder anyUser();
  Holder writer();
  bool waitFor(unsigned limitMs, unsigned longestPauseMs, const std::function<bool()>& attempt);

  Environment& env_;
  std::filesystem::path database_, path_;
  Options options_;
  std::unique_ptr<File> file_;
  bool writable_ = false;
  bool exclusiveHeld_ = false, pendingHeld_ = false;
  int slot_ = 0;
  std::function<void()> whenAlone_;
};

}  // namespace jet
