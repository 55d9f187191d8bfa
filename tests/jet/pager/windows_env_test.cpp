// What only Windows does to files: sharing modes, removals that wait, long names, names that are devices.

#ifdef _WIN32

#include <gtest/gtest.h>

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

#include <thread>

#include "jet/pager/page_model.h"
#include "jet/pager/windows_system.h"
#include "support/temp_folder.h"

namespace jet::test {
namespace {

namespace fs = std::filesystem;
using Open = Environment::Open;

Environment& system() { return Environment::system(); }

// Another program that has a file open, letting others do `shared` with it, and closes it after a while.
class Holder {
 public:
  Holder(const fs::path& path, DWORD shared, DWORD milliseconds = INFINITE)
      : handle_(::CreateFileW(path.c_str(), GENERIC_READ, shared, nullptr, OPEN_EXISTING, 0, nullptr)),
        left_(::CreateEventW(nullptr, TRUE, FALSE, nullptr)),
        thread_([this, milliseconds] {
          ::WaitForSingleObject(left_, milliseconds);
          ::CloseHandle(handle_);
        }) {
    EXPECT_NE(handle_, INVALID_HANDLE_VALUE);
  }
  ~Holder() {
    ::SetEvent(left_);
    thread_.join();
    ::CloseHandle(left_);
  }

 private:
  HANDLE handle_, left_;
  std::thread thread_;
};

void put(const fs::path& path, const std::string& text) {
  system().open(path, Open::CreateNew)->write(0, asBytes(text));
}

std::string textOf(const fs::path& path) {
  std::string text(100, '\0');
  const auto file = system().open(path, Open::ReadOnly);
  text.resize(file->read(0, {reinterpret_cast<uint8_t*>(text.data()), text.size()}));
  return text;
}

TEST(WindowsFiles, HeldForAMomentByAnotherProgram) {
  const TempFolder folder;
  const fs::path file = folder / "a.mdb", other = folder / "b.mdb";
  put(file, "a");
  put(other, "b");
  {
    const Holder scanner(file, 0, 150);
    EXPECT_EQ(textOf(file), "a");
  }
  {
    const Holder scanner(file, FILE_SHARE_READ, 150);
    system().rename(file, other);
  }
  EXPECT_EQ(textOf(other), "a");
  EXPECT_FALSE(system().exists(file));
  put(file, "c");
  {
    const Holder scanner(other, FILE_SHARE_READ | FILE_SHARE_WRITE, 150);
    system().rename(file, other);
  }
  EXPECT_EQ(textOf(other), "c");
  {
    const Holder scanner(other, FILE_SHARE_READ, 150);
    EXPECT_TRUE(system().remove(other));
  }
  EXPECT_FALSE(system().exists(other));
  EXPECT_FALSE(system().remove(other));
}

TEST(WindowsFiles, HeldForLongByAnotherProgram) {
  const TempFolder folder;
  const fs::path file = folder / "a.mdb", other = folder / "b.mdb";
  put(file, "a");
  put(other, "b");
  const Holder program(file, 0);
  EXPECT_EQ(errorOf([&] { system().open(file, Open::ReadWrite); }), 3045);
  EXPECT_EQ(errorOf([&] { system().rename(other, file); }), 3051);
  EXPECT_TRUE(system().exists(file));
}

// A removed file that somebody still has open: its name is free at once or soon after.
TEST(WindowsFiles, RemovedWhileOpenElsewhere) {
  if (::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version"))
    GTEST_SKIP() << "Wine opens files that are about to go";
  const TempFolder folder;
  const fs::path file = folder / "a.ldb";
  const DWORD all = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  {
    put(file, "a");
    const Holder indexer(file, all, 200);
    EXPECT_TRUE(system().remove(file));
    const auto next = system().open(file, Open::CreateOrOpen);
    EXPECT_EQ(next->size(), 0u);
    EXPECT_TRUE(next->isNamed(file));
  }
  // As programs do that know nothing better than to have it removed when it is closed.
  const HANDLE old =
      ::CreateFileW(file.c_str(), GENERIC_READ | DELETE, all, nullptr, OPEN_EXISTING, 0, nullptr);
  FILE_DISPOSITION_INFO whenClosed = {TRUE};
  ASSERT_TRUE(::SetFileInformationByHandle(old, FileDispositionInfo, &whenClosed, sizeof whenClosed));
  std::thread closing([old] {
    ::Sleep(200);
    ::CloseHandle(old);
  });
  const auto found = system().open(file, Open::CreateOrOpen);
  EXPECT_EQ(found->size(), 0u);
  EXPECT_TRUE(found->isNamed(file));
  closing.join();
}

TEST(WindowsFiles, LockFileGoesOnlyWhenNobodyElseHasIt) {
  const TempFolder folder;
  const fs::path path = folder / "a.ldb";
  const auto locked = [&] {
    auto file = system().open(path, Open::CreateOrOpen);
    EXPECT_TRUE(file->tryLock(0x7F000000, 1, File::Lock::Exclusive));
    return file;
  };
  auto leaving = locked();
  auto waiting = system().open(path, Open::CreateOrOpen);
  EXPECT_FALSE(system().removeOpened(path, std::move(leaving)));
  EXPECT_TRUE(waiting->isNamed(path));
  EXPECT_TRUE(waiting->tryLock(0x7F000000, 1, File::Lock::Shared)) << "the locks went with the file";
  waiting.reset();
  EXPECT_TRUE(system().removeOpened(path, locked()));
  EXPECT_FALSE(system().exists(path));
}

// The system keeps locks of one handle side by side; the engine's replace each other.
TEST(WindowsFiles, LocksReplaceEachOther) {
  const TempFolder folder;
  const fs::path path = folder / "a.ldb";
  const auto one = system().open(path, Open::CreateOrOpen), two = system().open(path, Open::CreateOrOpen);
  using Lock = File::Lock;
  constexpr uint64_t at = 0x7F000002;
  EXPECT_TRUE(one->tryLock(at, 1, Lock::Shared));
  EXPECT_TRUE(two->tryLock(at, 1, Lock::Shared));
  EXPECT_FALSE(one->tryLock(at, 1, Lock::Exclusive));
  two->unlock(at, 1);
  EXPECT_TRUE(one->tryLock(at, 1, Lock::Exclusive));
  EXPECT_FALSE(two->tryLock(at, 1, Lock::Shared));
  EXPECT_TRUE(one->tryLock(at, 1, Lock::Shared));
  EXPECT_TRUE(two->tryLock(at, 1, Lock::Shared)) << "a part of the earlier lock was left";
  one->unlock(at, 1);
  EXPECT_TRUE(two->tryLock(at, 1, Lock::Exclusive));
  // A lock lies where no bytes are, and keeps nobody from reading and writing those that are.
  one->write(0, asBytes(std::string("entry")));
  EXPECT_EQ(textOf(path), "entry");
}

TEST(WindowsFiles, LongPaths) {
  const TempFolder scratch;
  fs::path folder = scratch.path();
  for (int i = 0; i < 8; ++i) {
    folder /= L"katalog o długiej nazwie, którą ktoś wymyślił " + std::to_wstring(i);
    ASSERT_TRUE(::CreateDirectoryW(windows::extendedPath(folder).c_str(), nullptr)) << i;
  }
  const fs::path path = folder / L"żółw.mdb", renamed = folder / L"jaźń.mdb";
  ASSERT_GT(path.native().size(), size_t{MAX_PATH});
  createDatabase(system(), path, 6);
  {
    const auto pager = Pager::open(system(), path, {}), other = Pager::open(system(), path, {});
    commitValue(*pager, 2, 22);
    EXPECT_EQ(valuesOf(*other)[2], 22u);
  }
  system().rename(path, renamed);
  EXPECT_EQ(valuesOf(*Pager::open(system(), renamed, {}))[2], 22u);
  EXPECT_FALSE(system().exists(folder / L"jaźń.ldb"));
  EXPECT_TRUE(system().remove(renamed));
  EXPECT_EQ(errorOf([&] { system().open(renamed, Open::ReadOnly); }), 3024);
  for (; folder != scratch.path(); folder = folder.parent_path())
    EXPECT_TRUE(::RemoveDirectoryW(windows::extendedPath(folder).c_str()));
}

TEST(WindowsFiles, LongPathsArePrefixed) {
  const std::wstring part(50, L'x'), tail = part + L"\\" + part + L"\\" + part + L"\\" + part + L"\\" + part;
  const struct {
    std::wstring path, expected;
  } cases[] = {
      {L"firma.mdb", L"firma.mdb"},
      {L"C:\\firmy\\firma.mdb", L"C:\\firmy\\firma.mdb"},
      {L"\\\\serwer\\firmy\\firma.mdb", L"\\\\serwer\\firmy\\firma.mdb"},
      {L"C:/firmy/" + tail + L"/b/.././a.mdb", L"\\\\?\\C:\\firmy\\" + tail + L"\\a.mdb"},
      {L"C:\\firmy\\" + tail, L"\\\\?\\C:\\firmy\\" + tail},
      {L"\\\\serwer\\firmy\\" + tail, L"\\\\?\\UNC\\serwer\\firmy\\" + tail},
      {L"//serwer/firmy/.//" + tail, L"\\\\?\\UNC\\serwer\\firmy\\" + tail},
      {L"\\\\?\\C:\\" + tail, L"\\\\?\\C:\\" + tail},
      {L"\\\\.\\pipe\\" + tail, L"\\\\.\\pipe\\" + tail},
  };
  for (const auto& [path, expected] : cases) EXPECT_EQ(windows::extendedPath(path), expected);
  const std::wstring relative = windows::extendedPath(tail);
  EXPECT_TRUE(relative.starts_with(L"\\\\?\\") && relative.ends_with(tail) &&
              relative.size() > tail.size() + 6);
}

TEST(WindowsFiles, NamesThatAreNoFiles) {
  const TempFolder folder;
  fs::create_directory(folder / "katalog.mdb");
  const struct {
    fs::path path;
    int error;
  } cases[] = {{folder / "brak.mdb", 3024},
               {folder / "brak" / "a.mdb", 3044},
               {folder / "katalog.mdb", 3051},
               {folder / "a*?.mdb", 3044},
               {"NUL", 3051}};
  for (const auto& [path, error] : cases)
    EXPECT_EQ(errorOf([&] { system().open(path, Open::ReadOnly); }), error) << path;
}

TEST(WindowsFiles, NumbersOfTheSystemsErrors) {
  const struct {
    unsigned long code;
    int name, work, lock;
  } cases[] = {
      {ERROR_FILE_NOT_FOUND, 3024, 3043, 3050},
      {ERROR_PATH_NOT_FOUND, 3044, 3043, 3050},
      {ERROR_NOT_READY, 3044, 3043, 3043},
      {ERROR_BAD_NETPATH, 3044, 3043, 3043},
      {ERROR_DEV_NOT_EXIST, 3044, 3043, 3043},
      {ERROR_NO_MEDIA_IN_DRIVE, 3044, 3043, 3043},
      {ERROR_DEVICE_NOT_CONNECTED, 3044, 3043, 3043},
      {ERROR_NETNAME_DELETED, 3043, 3043, 3043},
      {ERROR_UNEXP_NET_ERR, 3043, 3043, 3043},
      {ERROR_CRC, 3043, 3043, 3050},
      {ERROR_DISK_FULL, 3026, 3026, 3050},
      {ERROR_HANDLE_DISK_FULL, 3026, 3026, 3050},
      {ERROR_SHARING_VIOLATION, 3045, 3043, 3050},
      {ERROR_ACCESS_DENIED, 3051, 3043, 3050},
      {ERROR_WRITE_PROTECT, 3051, 3043, 3050},
      {ERROR_ALREADY_EXISTS, 3204, 3043, 3050},
      {ERROR_NOT_SUPPORTED, 3043, 3043, 3050},
      {ERROR_LOCK_FAILED, 3043, 3043, 3050},
  };
  for (const auto& [code, name, work, lock] : cases) {
    EXPECT_EQ(windows::nameErrorNumber(code), name) << code;
    EXPECT_EQ(windows::workErrorNumber(code), work) << code;
    EXPECT_EQ(windows::lockErrorNumber(code), lock) << code;
  }
}

}  // namespace
}  // namespace jet::test

#endif
