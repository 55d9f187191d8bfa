#ifdef _WIN32

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

#include <algorithm>
#include <vector>

#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/pager/env.h"

namespace jet {

namespace {

namespace fs = std::filesystem;

constexpr char kSource[] = "DAO.Workspace";
constexpr size_t kLargestTransfer = size_t{1} << 30;

[[noreturn]] void throwIo(DWORD error) {
  const bool full =
      error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL || error == ERROR_FILE_TOO_LARGE;
  throw Error(full ? 3026 : 3043, {}, kSource);
}

[[noreturn]] void throwName(DWORD error, const fs::path& path) {
  const std::u16string name = pathText(path);
  switch (error) {
    case ERROR_FILE_NOT_FOUND:
      throw Error(3024, {name}, kSource);
    case ERROR_PATH_NOT_FOUND:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
    case ERROR_INVALID_NAME:
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_PATHNAME:
    case ERROR_FILENAME_EXCED_RANGE:
      throw Error(3044, {name}, kSource);
    case ERROR_SHARING_VIOLATION:
      throw Error(3045, {name}, kSource);
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
      throw Error(3204, {name}, kSource);
    case ERROR_ACCESS_DENIED:
    case ERROR_WRITE_PROTECT:
      throw Error(3051, {name}, kSource);
    default:
      throwIo(error);
  }
}

OVERLAPPED at(uint64_t offset) {
  OVERLAPPED position = {};
  position.Offset = static_cast<DWORD>(offset);
  position.OffsetHigh = static_cast<DWORD>(offset >> 32);
  return position;
}

class WindowsFile : public File {
 public:
  explicit WindowsFile(HANDLE handle) : handle_(handle) {}
  ~WindowsFile() override { ::CloseHandle(handle_); }
  WindowsFile(const WindowsFile&) = delete;
  WindowsFile& operator=(const WindowsFile&) = delete;

  size_t read(uint64_t offset, MutableBytes buffer) override {
    size_t done = 0;
    while (done < buffer.size()) {
      OVERLAPPED position = at(offset + done);
      const DWORD wanted = static_cast<DWORD>(std::min(buffer.size() - done, kLargestTransfer));
      DWORD got = 0;
      if (!::ReadFile(handle_, buffer.data() + done, wanted, &got, &position)) {
        if (::GetLastError() == ERROR_HANDLE_EOF) break;
        throwIo(::GetLastError());
      }
      if (got == 0) break;
      done += got;
    }
    return done;
  }

  void write(uint64_t offset, Bytes data) override {
    size_t done = 0;
    while (done < data.size()) {
      OVERLAPPED position = at(offset + done);
      const DWORD wanted = static_cast<DWORD>(std::min(data.size() - done, kLargestTransfer));
      DWORD put = 0;
      if (!::WriteFile(handle_, data.data() + done, wanted, &put, &position)) throwIo(::GetLastError());
      if (put == 0) throwIo(ERROR_WRITE_FAULT);
      done += put;
    }
  }

  uint64_t size() override {
    LARGE_INTEGER size = {};
    if (!::GetFileSizeEx(handle_, &size)) throwIo(::GetLastError());
    return static_cast<uint64_t>(size.QuadPart);
  }

  void truncate(uint64_t size) override {
    FILE_END_OF_FILE_INFO end = {};
    end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
    if (!::SetFileInformationByHandle(handle_, FileEndOfFileInfo, &end, sizeof end))
      throwIo(::GetLastError());
  }

  void sync() override {
    if (!::FlushFileBuffers(handle_)) throwIo(::GetLastError());
  }

  // The system keeps several locks of one handle side by side, so that replacing one means giving it up
  // first. Where that matters the caller holds another lock that keeps everybody else out meanwhile.
  bool tryLock(uint64_t offset, uint64_t length, Lock kind) override {
    const auto held = find(offset, length);
    if (held != locks_.end()) {
      if (held->kind == kind) return true;
      const Lock before = held->kind;
      unlock(offset, length);
      if (lock(offset, length, kind)) return true;
      lock(offset, length, before);
      return false;
    }
    return lock(offset, length, kind);
  }

  void unlock(uint64_t offset, uint64_t length) override {
    const auto held = find(offset, length);
    if (held == locks_.end()) return;
    locks_.erase(held);
    OVERLAPPED position = at(offset);
    if (!::UnlockFileEx(handle_, 0, static_cast<DWORD>(length), static_cast<DWORD>(length >> 32), &position))
      throw Error(3050, {}, kSource);
  }

  bool isNamed(const fs::path& path) override {
    const HANDLE other =
        ::CreateFileW(path.c_str(), 0, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                      OPEN_EXISTING, 0, nullptr);
    if (other == INVALID_HANDLE_VALUE) return false;
    BY_HANDLE_FILE_INFORMATION own = {}, named = {};
    const bool known =
        ::GetFileInformationByHandle(handle_, &own) && ::GetFileInformationByHandle(other, &named);
    ::CloseHandle(other);
    return known && own.dwVolumeSerialNumber == named.dwVolumeSerialNumber &&
           own.nFileIndexHigh == named.nFileIndexHigh && own.nFileIndexLow == named.nFileIndexLow;
  }

 private:
  struct Held {
    uint64_t offset, length;
    Lock kind;
  };

  std::vector<Held>::iterator find(uint64_t offset, uint64_t length) {
    return std::find_if(locks_.begin(), locks_.end(),
                        [&](const Held& held) { return held.offset == offset && held.length == length; });
  }

  bool lock(uint64_t offset, uint64_t length, Lock kind) {
    locks_.reserve(locks_.size() + 1);
    OVERLAPPED position = at(offset);
    const DWORD flags = LOCKFILE_FAIL_IMMEDIATELY | (kind == Lock::Exclusive ? LOCKFILE_EXCLUSIVE_LOCK : 0);
    if (!::LockFileEx(handle_, flags, 0, static_cast<DWORD>(length), static_cast<DWORD>(length >> 32),
                      &position)) {
      const DWORD error = ::GetLastError();
      if (error == ERROR_LOCK_VIOLATION || error == ERROR_IO_PENDING) return false;
      throw Error(3050, {}, kSource);
    }
    locks_.push_back({offset, length, kind});
    return true;
  }

  HANDLE handle_;
  std::vector<Held> locks_;
};

class WindowsEnvironment : public Environment {
 public:
  std::unique_ptr<File> open(const fs::path& path, Open mode) override {
    const DWORD access = mode == Open::ReadOnly ? GENERIC_READ : GENERIC_READ | GENERIC_WRITE;
    const DWORD disposition = mode == Open::CreateNew      ? CREATE_NEW
                              : mode == Open::CreateOrOpen ? OPEN_ALWAYS
                                                           : OPEN_EXISTING;
    // Without FILE_SHARE_DELETE nobody removes or renames a database that is in use.
    const HANDLE handle =
        ::CreateFileW(path.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                      FILE_ATTRIBUTE_NORMAL | FILE_FLAG_RANDOM_ACCESS, nullptr);
    if (handle == INVALID_HANDLE_VALUE) throwName(::GetLastError(), path);
    return std::make_unique<WindowsFile>(handle);
  }

  bool exists(const fs::path& path) override {
    if (::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES) return true;
    const DWORD error = ::GetLastError();
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return false;
    throwName(error, path);
  }

  bool remove(const fs::path& path) override {
    if (::DeleteFileW(path.c_str())) return true;
    const DWORD error = ::GetLastError();
    if (error == ERROR_FILE_NOT_FOUND) return false;
    throwName(error, path);
  }

  // An open file cannot be removed here; once closed it can, unless another copy has opened it meanwhile.
  bool removeOpened(const fs::path& path, std::unique_ptr<File> file) override {
    file.reset();
    return ::DeleteFileW(path.c_str()) != 0;
  }

  void rename(const fs::path& from, const fs::path& to) override {
    if (!::MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
      throwName(::GetLastError(), from);
  }

  // The file system logs its folder entries itself, and renames are written through.
  void syncFolder(const fs::path&) override {}

  void sleepMilliseconds(unsigned milliseconds) override { ::Sleep(milliseconds); }

  uint64_t monotonicMilliseconds() override { return ::GetTickCount64(); }

  double localTime() override {
    SYSTEMTIME now = {};
    ::GetLocalTime(&now);
    now.wMilliseconds = 0;
    FILETIME ticks = {};
    ::SystemTimeToFileTime(&now, &ticks);
    // 100 ns since 1601-01-01, which is day -109205.
    const uint64_t count = uint64_t{ticks.dwHighDateTime} << 32 | ticks.dwLowDateTime;
    return static_cast<double>(count / 10000000) / 86400.0 - 109205.0;
  }

  std::string computerName() override {
    wchar_t name[MAX_COMPUTERNAME_LENGTH + 1] = {};
    DWORD length = MAX_COMPUTERNAME_LENGTH + 1;
    if (!::GetComputerNameW(name, &length)) return "localhost";
    return toUtf8(std::u16string(name, name + length));
  }
};

}  // namespace

Environment& Environment::system() {
  static WindowsEnvironment environment;
  return environment;
}

std::u16string pathText(const fs::path& path) { return path.u16string(); }

}  // namespace jet

#endif
