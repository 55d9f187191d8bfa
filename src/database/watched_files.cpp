#include "database/watched_files.h"

namespace tandeko {

namespace {

class WatchedFile : public jet::File {
 public:
  WatchedFile(std::unique_ptr<jet::File> file, const WatchedFiles::OnRead& onRead)
      : file_(std::move(file)), onRead_(onRead) {}

  std::unique_ptr<jet::File> release() { return std::move(file_); }

  size_t read(uint64_t offset, jet::MutableBytes buffer) override {
    const size_t count = file_->read(offset, buffer);
    onRead_(count);
    return count;
  }
  void write(uint64_t offset, jet::Bytes data) override { file_->write(offset, data); }
  uint64_t size() override { return file_->size(); }
  void truncate(uint64_t size) override { file_->truncate(size); }
  void sync() override { file_->sync(); }
  bool tryLock(uint64_t offset, uint64_t length, Lock kind) override {
    return file_->tryLock(offset, length, kind);
  }
  void unlock(uint64_t offset, uint64_t length) override { file_->unlock(offset, length); }
  bool isNamed(const std::filesystem::path& path) override { return file_->isNamed(path); }

 private:
  std::unique_ptr<jet::File> file_;
  const WatchedFiles::OnRead& onRead_;
};

}  // namespace

std::unique_ptr<jet::File> WatchedFiles::open(const std::filesystem::path& path, Open mode) {
  return std::make_unique<WatchedFile>(base_.open(path, mode), onRead_);
}

bool WatchedFiles::removeOpened(const std::filesystem::path& path, std::unique_ptr<jet::File> file) {
  return base_.removeOpened(path, static_cast<WatchedFile&>(*file).release());
}

}  // namespace tandeko
