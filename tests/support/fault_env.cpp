#include "support/fault_env.h"

#include "jet/format/error.h"

namespace jet::test {

namespace fs = std::filesystem;

class FaultFile : public File {
 public:
  FaultFile(FaultEnvironment& env, std::unique_ptr<File> file) : env_(env), file_(std::move(file)) {}

  std::unique_ptr<File> release() { return std::move(file_); }

  size_t read(uint64_t offset, MutableBytes buffer) override {
    env_.step(false);
    return file_->read(offset, buffer);
  }
  void write(uint64_t offset, Bytes data) override {
    if (env_.fails(true)) {
      file_->write(offset, data.first(data.size() / 2));
      env_.fail();
    }
    file_->write(offset, data);
  }
  uint64_t size() override {
    env_.step(false);
    return file_->size();
  }
  void truncate(uint64_t size) override {
    env_.step(true);
    file_->truncate(size);
  }
  void sync() override {
    env_.step(true);
    file_->sync();
  }
  bool tryLock(uint64_t offset, uint64_t length, Lock kind) override {
    env_.step(false);
    if (env_.onLock) env_.onLock();
    return file_->tryLock(offset, length, kind);
  }
  // A lock can always be given up: at the latest the closing of the file does it.
  void unlock(uint64_t offset, uint64_t length) override { file_->unlock(offset, length); }
  bool isNamed(const fs::path& path) override {
    env_.step(false);
    return file_->isNamed(path);
  }

 private:
  FaultEnvironment& env_;
  std::unique_ptr<File> file_;
};

void FaultEnvironment::failAt(uint64_t call, bool forever, int error) {
  failFrom_ = calls_ + call;
  forever_ = forever;
  error_ = error;
  failed_ = false;
}

bool FaultEnvironment::fails(bool changes) {
  ++calls_;
  if (changes) {
    ++changes_;
    if (onChange) onChange();
  }
  if (failFrom_ == 0 || (forever_ ? calls_ < failFrom_ : calls_ != failFrom_)) return false;
  failed_ = true;
  return true;
}

void FaultEnvironment::step(bool changes) {
  if (fails(changes)) fail();
}

void FaultEnvironment::fail() const { throw Error(error_, {}, "DAO.Workspace"); }

std::unique_ptr<File> FaultEnvironment::open(const fs::path& path, Open mode) {
  step(mode == Open::CreateNew || mode == Open::CreateOrOpen);
  return std::make_unique<FaultFile>(*this, base_.open(path, mode));
}

bool FaultEnvironment::exists(const fs::path& path) {
  step(false);
  return base_.exists(path);
}

bool FaultEnvironment::remove(const fs::path& path) {
  step(true);
  return base_.remove(path);
}

bool FaultEnvironment::removeOpened(const fs::path& path, std::unique_ptr<File> file) {
  if (fails(true)) return false;
  return base_.removeOpened(path, static_cast<FaultFile&>(*file).release());
}

void FaultEnvironment::rename(const fs::path& from, const fs::path& to) {
  step(true);
  base_.rename(from, to);
}

void FaultEnvironment::sleepMilliseconds(unsigned milliseconds) {
  if (onSleep) onSleep();
  base_.sleepMilliseconds(milliseconds);
}

void FaultEnvironment::syncFolder(const fs::path& path) {
  step(true);
  base_.syncFolder(path);
}

}  // namespace jet::test
