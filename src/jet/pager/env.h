#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include "jet/format/bytes.h"

namespace jet {

// An open file. Every member throws Error (3026 disk full, 3050 locking is not possible here, 3043 other
// failures, source "DAO.Workspace"). Closing releases the locks; it never throws.
class File {
 public:
  virtual ~File() = default;
  // Reads up to buffer.size() bytes at `offset`; returns how many there were (fewer only at the end).
  virtual size_t read(uint64_t offset, MutableBytes buffer) = 0;
  virtual void write(uint64_t offset, Bytes data) = 0;
  virtual uint64_t size() = 0;
  virtual void truncate(uint64_t size) = 0;
  // Makes everything written so far durable.
  virtual void sync() = 0;

  enum class Lock { Shared, Exclusive };
  // Byte-range lock that belongs to this File object; does not wait. False when another holder
  // (in this or another process) prevents it. Replaces a lock of the same range held by this object.
  virtual bool tryLock(uint64_t offset, uint64_t length, Lock kind) = 0;
  virtual void unlock(uint64_t offset, uint64_t length) = 0;
  // Whether `path` still names this very file: it may have been removed or replaced since.
  virtual bool isNamed(const std::filesystem::path& path) = 0;
};

// Everything the engine asks of the operating system, so that tests can replace it.
class Environment {
 public:
  virtual ~Environment() = default;

  enum class Open {
    ReadOnly,
    ReadWrite,
    CreateNew,     // fails when the file exists
    CreateOrOpen,  // read-write
  };
  // Throws Error 3024 (no such file), 3044 (no such folder), 3045 (another program lets nobody in), 3051
  // (no permission, a folder), 3204 (CreateNew and it exists), 3026, 3043.
  virtual std::unique_ptr<File> open(const std::filesystem::path& path, Open mode) = 0;
  virtual bool exists(const std::filesystem::path& path) = 0;
  // False when there was no such file.
  virtual bool remove(const std::filesystem::path& path) = 0;
  // Removes `path`, which `file` holds open, and closes it; its locks last until the name is gone where
  // the system can do that. False when the name stays (another copy has the file open); never throws.
  virtual bool removeOpened(const std::filesystem::path& path, std::unique_ptr<File> file) = 0;
  // Replaces `to` when it exists.
  virtual void rename(const std::filesystem::path& from, const std::filesystem::path& to) = 0;
  // Makes creations, removals and renames in the folder of `path` durable.
  virtual void syncFolder(const std::filesystem::path& path) = 0;
  virtual void sleepMilliseconds(unsigned milliseconds) = 0;
  // Milliseconds of a clock that never goes back.
  virtual uint64_t monotonicMilliseconds() = 0;
  // Local time as days since 1899-12-30.
  virtual double localTime() = 0;
  virtual std::string computerName() = 0;

  // The real one of this operating system.
  static Environment& system();
};

// A path as error messages show it.
std::u16string pathText(const std::filesystem::path& path);

}  // namespace jet
