#ifndef _WIN32

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>

#include "jet/format/error.h"
#include "jet/format/text.h"
#include "jet/pager/env.h"

namespace jet {

namespace {

namespace fs = std::filesystem;

constexpr char kSource[] = "DAO.Workspace";

[[noreturn]] void throwIo(int error) {
  const bool full = error == ENOSPC || error == EDQUOT || error == EFBIG;
  throw Error(full ? 3026 : 3043, {}, kSource);
}

[[noreturn]] void throwName(int error, const fs::path& path) {
  const std::u16string name = pathText(path);
  switch (error) {
    case ENOENT: {
      std::error_code ignored;
      const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
      throw Error(fs::is_directory(folder, ignored) ? 3024 : 3044, {name}, kSource);
    }
    case ENOTDIR:
    case ENAMETOOLONG:
    case ELOOP:
      throw Error(3044, {name}, kSource);
    case EEXIST:
      throw Error(3204, {name}, kSource);
    case EACCES:
    case EPERM:
    case EROFS:
    case EISDIR:
    case ETXTBSY:
      throw Error(3051, {name}, kSource);
    default:
      throwIo(error);
  }
}

// Repeats a call that a signal interrupted.
template <typename Call>
auto retrying(Call call) {
  for (;;) {
    const auto result = call();
    if (result != -1 || errno != EINTR) return result;
  }
}

// Locks belong to the open file, not to the process, so that two openings in one process exclude each other.
#ifdef F_OFD_SETLK
constexpr int kSetLock = F_OFD_SETLK;
#else
constexpr int kSetLock = F_SETLK;
#endif

class PosixFile : public File {
 public:
  explicit PosixFile(int fd) : fd_(fd) {}
  ~PosixFile() override { ::close(fd_); }
  PosixFile(const PosixFile&) = delete;
  PosixFile& operator=(const PosixFile&) = delete;

  size_t read(uint64_t offset, MutableBytes buffer) override {
    size_t done = 0;
    while (done < buffer.size()) {
      const ssize_t n = retrying([&] {
        return ::pread(fd_, buffer.data() + done, buffer.size() - done, static_cast<off_t>(offset + done));
      });
      if (n < 0) throwIo(errno);
      if (n == 0) break;
      done += static_cast<size_t>(n);
    }
    return done;
  }

  void write(uint64_t offset, Bytes data) override {
    size_t done = 0;
    while (done < data.size()) {
      const ssize_t n = retrying([&] {
        return ::pwrite(fd_, data.data() + done, data.size() - done, static_cast<off_t>(offset + done));
      });
      if (n < 0) throwIo(errno);
      done += static_cast<size_t>(n);
    }
  }

  uint64_t size() override {
    struct stat status;
    if (::fstat(fd_, &status) != 0) throwIo(errno);
    return static_cast<uint64_t>(status.st_size);
  }

  void truncate(uint64_t size) override {
    if (retrying([&] { return ::ftruncate(fd_, static_cast<off_t>(size)); }) != 0) throwIo(errno);
  }

  void sync() override {
    if (retrying([&] { return ::fdatasync(fd_); }) != 0) throwIo(errno);
  }

  bool tryLock(uint64_t offset, uint64_t length, Lock kind) override {
    if (setLock(offset, length, kind == Lock::Shared ? F_RDLCK : F_WRLCK) == 0) return true;
    if (errno == EAGAIN || errno == EACCES) return false;
    throw Error(3050, {}, kSource);
  }

  void unlock(uint64_t offset, uint64_t length) override {
    if (setLock(offset, length, F_UNLCK) != 0) throw Error(3050, {}, kSource);
  }

  bool isNamed(const fs::path& path) override {
    struct stat own, named;
    if (::fstat(fd_, &own) != 0) throwIo(errno);
    return ::stat(path.c_str(), &named) == 0 && own.st_dev == named.st_dev && own.st_ino == named.st_ino;
  }

 private:
  int setLock(uint64_t offset, uint64_t length, int type) {
    struct flock lock = {};
    lock.l_type = static_cast<short>(type);
    lock.l_whence = SEEK_SET;
    lock.l_start = static_cast<off_t>(offset);
    lock.l_len = static_cast<off_t>(length);
    return retrying([&] { return ::fcntl(fd_, kSetLock, &lock); });
  }

  int fd_;
};

class PosixEnvironment : public Environment {
 public:
  std::unique_ptr<File> open(const fs::path& path, Open mode) override {
    // O_NONBLOCK: opening a pipe by mistake must not wait for its other end.
    int flags = O_CLOEXEC | O_NONBLOCK | (mode == Open::ReadOnly ? O_RDONLY : O_RDWR);
    if (mode == Open::CreateNew) flags |= O_CREAT | O_EXCL;
    if (mode == Open::CreateOrOpen) flags |= O_CREAT;
    const int fd = retrying([&] { return ::open(path.c_str(), flags, 0666); });
    if (fd < 0) throwName(errno, path);
    std::unique_ptr<File> file = std::make_unique<PosixFile>(fd);
    struct stat status;
    if (::fstat(fd, &status) != 0) throwIo(errno);
    if (!S_ISREG(status.st_mode)) throw Error(3051, {pathText(path)}, kSource);
    return file;
  }

  bool exists(const fs::path& path) override {
    struct stat status;
    if (::stat(path.c_str(), &status) == 0) return true;
    if (errno == ENOENT || errno == ENOTDIR) return false;
    throwName(errno, path);
  }

  bool remove(const fs::path& path) override {
    if (::unlink(path.c_str()) == 0) return true;
    if (errno == ENOENT) return false;
    throwName(errno, path);
  }

  bool removeOpened(const fs::path& path, std::unique_ptr<File> file) override {
    const bool removed = ::unlink(path.c_str()) == 0;
    file.reset();
    return removed;
  }

  void rename(const fs::path& from, const fs::path& to) override {
    if (::rename(from.c_str(), to.c_str()) != 0) throwName(errno, from);
  }

  void syncFolder(const fs::path& path) override {
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    const int fd = retrying([&] { return ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); });
    if (fd < 0) throwName(errno, folder);
    const int result = retrying([&] { return ::fsync(fd); });
    const int error = errno;
    ::close(fd);
    // Some network file systems do not know the call for folders; they keep entries on the server.
    if (result != 0 && error != EINVAL && error != ENOTSUP) throwIo(error);
  }

  void sleepMilliseconds(unsigned milliseconds) override {
    struct timespec left = {static_cast<time_t>(milliseconds / 1000),
                            static_cast<long>(milliseconds % 1000) * 1000000};
    while (::nanosleep(&left, &left) != 0 && errno == EINTR) {
    }
  }

  uint64_t monotonicMilliseconds() override {
    struct timespec now = {};
    ::clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<uint64_t>(now.tv_sec) * 1000 + static_cast<uint64_t>(now.tv_nsec) / 1000000;
  }

  double localTime() override {
    const time_t now = ::time(nullptr);
    struct tm parts = {};
    ::localtime_r(&now, &parts);
    // The same wall clock read as UTC gives whole days since 1970-01-01, which is day 25569.
    const double seconds = static_cast<double>(::timegm(&parts));
    return 25569.0 + seconds / 86400.0;
  }

  std::string computerName() override {
    char name[256] = {};
    if (::gethostname(name, sizeof name - 1) != 0) return "localhost";
    return name;
  }
};

}  // namespace

Environment& Environment::system() {
  static PosixEnvironment environment;
  return environment;
}

std::u16string pathText(const fs::path& path) { return fromUtf8(path.native()); }

}  // namespace jet

#endif
