#pragma once

#include <functional>

#include "jet/pager/env.h"

namespace tandeko {

// Passes every call on, and tells `onRead` how many bytes each reading of a file brought; what that throws
// is thrown to the reader.
class WatchedFiles : public jet::Environment {
 public:
  using OnRead = std::function<void(size_t)>;

  WatchedFiles(jet::Environment& base, OnRead onRead) : base_(base), onRead_(std::move(onRead)) {}

  std::unique_ptr<jet::File> open(const std::filesystem::path& path, Open mode) override;
  bool exists(const std::filesystem::path& path) override { return base_.exists(path); }
  bool remove(const std::filesystem::path& path) override { return base_.remove(path); }
  bool removeOpened(const std::filesystem::path& path, std::unique_ptr<jet::File> file) override;
  void rename(const std::filesystem::path& from, const std::filesystem::path& to) override {
    base_.rename(from, to);
  }
  void syncFolder(const std::filesystem::path& path) override { base_.syncFolder(path); }
  void sleepMilliseconds(unsigned milliseconds) override { base_.sleepMilliseconds(milliseconds); }
  uint64_t monotonicMilliseconds() override { return base_.monotonicMilliseconds(); }
  double localTime() override { return base_.localTime(); }
  std::string computerName() override { return base_.computerName(); }

 private:
  jet::Environment& base_;
  OnRead onRead_;
};

}  // namespace tandeko
