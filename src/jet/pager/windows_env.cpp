#ifdef _WIN32

#ifndef NOMINMAX
#define NOMINMAX
#endif
#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/pager/env.h"
#include "jet/pager/windows_system.h"

namespace jet {

namespace {

namespace fs = std::filesystem;

constexpr char kSource[] = "DAO.Workspace";
constexpr size_t kLargestTransfer = size_t{1} << 30;

// FileDispositionInfoEx, which MinGW's headers hide: a removed name goes although the file is open.
constexpr auto kDispositionEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(21);

// Virus scanners, indexers and backups hold a file for a moment, also right after it was written.
constexpr ULONGLONG kPatienceMs = 1500;
constexpr DWORD kLongestPauseMs = 50;

[[noreturn]] void throwIo(DWORD error) { throw Error(windows::workErrorNumber(error), {}, kSource); }

[[noreturn]] void throwName(DWORD error, const fs::path& path) {
  throw Error(windows::nameErrorNumber(error), {pathText(path)}, kSource);
}

// The call's error; a file that somebody has removed while others have it open counts as such, although the
// system says only that access is denied.
DWORD lastError() {
  using LastStatus = LONG(WINAPI*)();
  static const auto lastStatus = reinterpret_cast<LastStatus>(
      reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "RtlGetLastNtStatus")));
  constexpr auto kDeletePending = static_cast<LONG>(0xC0000056);
  const DWORD error = ::GetLastError();
  return error == ERROR_ACCESS_DENIED && lastStatus && lastStatus() == kDeletePending ? ERROR_DELETE_PENDING
                                                                                      : error;
}

// Repeats a call, which returns its error or ERROR_SUCCESS, while others prevent it, for a short time.
template <typename Call>
DWORD patiently(Call call, bool (*prevented)(unsigned long) = windows::isHeldByOther) {
  DWORD error = call();
  if (!prevented(error)) return error;
  const ULONGLONG start = ::GetTickCount64();
  for (DWORD pause = 1; prevented(error) && ::GetTickCount64() - start < kPatienceMs;
       pause = std::min(pause * 2, kLongestPauseMs)) {
    ::Sleep(pause);
    error = call();
  }
  return error;
}

// The name goes at once where the file system can do that, otherwise when everybody has closed the file.
DWORD removeByHandle(HANDLE handle) {
  FILE_DISPOSITION_INFO_EX atOnce = {FILE_DISPOSITION_FLAG_DELETE | FILE_DISPOSITION_FLAG_POSIX_SEMANTICS};
  if (::SetFileInformationByHandle(handle, kDispositionEx, &atOnce, sizeof atOnce)) return ERROR_SUCCESS;
  FILE_DISPOSITION_INFO whenClosed = {TRUE};
  const bool done = ::SetFileInformationByHandle(handle, FileDispositionInfo, &whenClosed, sizeof whenClosed);
  return done ? ERROR_SUCCESS : ::GetLastError();
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
  ~WindowsFile() override {
    if (handle_ != INVALID_HANDLE_VALUE) ::CloseHandle(handle_);
  }
  WindowsFile(const WindowsFile&) = delete;
  WindowsFile& operator=(const WindowsFile&) = delete;

  size_t read(uint64_t offset, MutableBytes buffer) override {
    size_t done = 0;
    while (done < buffer.size()) {
      OVERLAPPED position = at(offset + done);
      const DWORD wanted = static_cast<DWORD>(std::min(buffer.size() - done, kLargestTransfer));
      DWORD got = 0;
      const DWORD error = patiently([&] {
        const bool read = ::ReadFile(handle_, buffer.data() + done, wanted, &got, &position);
        return read ? DWORD{ERROR_SUCCESS} : ::GetLastError();
      });
      if (error != ERROR_SUCCESS && error != ERROR_HANDLE_EOF) throwIo(error);
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
      const DWORD error = patiently([&] {
        const bool written = ::WriteFile(handle_, data.data() + done, wanted, &put, &position);
        return written ? DWORD{ERROR_SUCCESS} : ::GetLastError();
      });
      if (error != ERROR_SUCCESS) throwIo(error);
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
    const DWORD error = patiently([&] {
      const bool cut = ::SetFileInformationByHandle(handle_, FileEndOfFileInfo, &end, sizeof end);
      return cut ? DWORD{ERROR_SUCCESS} : ::GetLastError();
    });
    if (error != ERROR_SUCCESS) throwIo(error);
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
      throw Error(windows::lockErrorNumber(::GetLastError()), {}, kSource);
  }

  bool isNamed(const fs::path& path) override {
    const HANDLE other = ::CreateFileW(windows::extendedPath(path).c_str(), 0,
                                       FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                       OPEN_EXISTING, 0, nullptr);
    if (other == INVALID_HANDLE_VALUE) return false;
    BY_HANDLE_FILE_INFORMATION own = {}, named = {};
    const bool known =
        ::GetFileInformationByHandle(handle_, &own) && ::GetFileInformationByHandle(other, &named);
    ::CloseHandle(other);
    return known && own.dwVolumeSerialNumber == named.dwVolumeSerialNumber &&
           own.nFileIndexHigh == named.nFileIndexHigh && own.nFileIndexLow == named.nFileIndexLow;
  }

  // Closes the file and removes `name` under the locks that this object held, so that nobody can have joined
  // in between. The handle itself cannot do it: it must not let others remove the file.
  bool removeUnderLocks(const std::wstring& name) {
    ::CloseHandle(std::exchange(handle_, INVALID_HANDLE_VALUE));
    handle_ = ::CreateFileW(name.c_str(), GENERIC_READ | GENERIC_WRITE | DELETE,
                            FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                            FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (handle_ == INVALID_HANDLE_VALUE) return false;
    for (const Held& held : std::exchange(locks_, {}))
      if (!lock(held.offset, held.length, held.kind)) return false;
    return removeByHandle(handle_) == ERROR_SUCCESS;
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
      throw Error(windows::lockErrorNumber(error), {}, kSource);
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
    const std::wstring name = windows::extendedPath(path);
    HANDLE handle = INVALID_HANDLE_VALUE;
    const DWORD error = patiently([&] {
      // Without FILE_SHARE_DELETE nobody removes or renames a database that is in use.
      handle = ::CreateFileW(name.c_str(), access, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, disposition,
                             FILE_ATTRIBUTE_NORMAL | FILE_FLAG_RANDOM_ACCESS, nullptr);
      return handle == INVALID_HANDLE_VALUE ? lastError() : ERROR_SUCCESS;
    });
    if (error != ERROR_SUCCESS) throwName(error, path);
    auto file = std::make_unique<WindowsFile>(handle);
    // NUL, COM1 and the like are no files, with whatever extension.
    if (::GetFileType(handle) != FILE_TYPE_DISK) throwName(ERROR_ACCESS_DENIED, path);
    return file;
  }

  bool exists(const fs::path& path) override {
    if (::GetFileAttributesW(windows::extendedPath(path).c_str()) != INVALID_FILE_ATTRIBUTES) return true;
    const DWORD error = lastError();
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND || error == ERROR_DELETE_PENDING)
      return false;
    // A server that is gone while somebody works is another thing than a wrong path.
    if (windows::isGone(error)) throwIo(error);
    throwName(error, path);
  }

  bool remove(const fs::path& path) override {
    const std::wstring name = windows::extendedPath(path);
    const DWORD error = patiently([&] {
      const HANDLE handle =
          ::CreateFileW(name.c_str(), DELETE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                        OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
      if (handle == INVALID_HANDLE_VALUE) return lastError();
      const DWORD result = removeByHandle(handle);
      ::CloseHandle(handle);
      return result;
    });
    if (error == ERROR_SUCCESS) return true;
    if (error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND) return false;
    throwName(error, path);
  }

  bool removeOpened(const fs::path& path, std::unique_ptr<File> file) override {
    try {
      return static_cast<WindowsFile&>(*file).removeUnderLocks(windows::extendedPath(path));
    } catch (const std::exception&) {
      return false;
    }
  }

  void rename(const fs::path& from, const fs::path& to) override {
    const std::wstring source = windows::extendedPath(from), target = windows::extendedPath(to);
    const DWORD error = patiently(
        [&] {
          const bool done = ::MoveFileExW(source.c_str(), target.c_str(),
                                          MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
          return done ? DWORD{ERROR_SUCCESS} : lastError();
        },
        // A file that somebody has open cannot be replaced; the system calls that access denied as well.
        [](unsigned long code) { return windows::isHeldByOther(code) || code == ERROR_ACCESS_DENIED; });
    if (error != ERROR_SUCCESS) throwName(error, from);
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

std::u16string pathText(const fs::path& path) { return fs::path(path).make_preferred().u16string(); }

}  // namespace jet

#endif
