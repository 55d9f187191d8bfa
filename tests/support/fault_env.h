#pragma once

#include <functional>

#include "support/memory_env.h"

namespace jet::test {

// Passes every call on to a memory environment, counts them, and can make them fail. `onChange` sees the
// state before every call that changes something, where afterPowerCut shows what a crash at that point
// leaves.
class FaultEnvironment : public Environment {
 public:
  explicit FaultEnvironment(MemoryEnvironment& base) : base_(base) {}

  MemoryEnvironment& base() { return base_; }
  std::function<void()> onChange;
  // What others do before every attempt to lock, and during every pause.
  std::function<void()> onLock, onSleep;

  // The `call`-th call from now on (1 is the next) throws `error`; with `forever` all later ones too. A write
  // that fails has done its first half.
  void failAt(uint64_t call, bool forever, int error = 3043);
  void heal() { failFrom_ = 0; }
  bool failed() const { return failed_; }  // since the last failAt
  uint64_t calls() const { return calls_; }
  uint64_t changes() const { return changes_; }

  std::unique_ptr<File> open(const std::filesystem::path& path, Open mode) override;
  bool exists(const std::filesystem::path& path) override;
  bool remove(const std::filesystem::path& path) override;
  bool removeOpened(const std::filesystem::path& path, std::unique_ptr<File> file) override;
  void rename(const std::filesystem::path& from, const std::filesystem::path& to) override;
  void syncFolder(const std::filesystem::path& path) override;
  void sleepMilliseconds(unsigned milliseconds) override;
  uint64_t monotonicMilliseconds() override { return base_.monotonicMilliseconds(); }
  double localTime() override { return base_.localTime(); }
  std::string computerName() override { return base_.computerName(); }

 private:
  friend class FaultFile;
  // Counts a call; true when it has to fail.
  bool fails(bool changes);
  void step(bool changes);
  [[noreturn]] void fail() const;

  MemoryEnvironment& base_;
  uint64_t calls_ = 0, changes_ = 0, failFrom_ = 0;
  bool forever_ = false, failed_ = false;
  int error_ = 3043;
};

}  // namespace jet::test
