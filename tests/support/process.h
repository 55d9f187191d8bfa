#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>
#include <vector>

// Runs a program and collects what it printed. Words and texts are UTF-8.
struct ProcessResult {
  int status = -1;  // exit status; 127 when there is no such program; 128 + signal when it was killed
  std::string out, err;
};

ProcessResult runProcess(const std::vector<std::string>& command, const std::string& input = {});

// A program that runs beside the test until it is killed.
class ChildProcess {
 public:
  ChildProcess() = default;
  // Its current folder is `folder`. Throws std::runtime_error.
  ChildProcess(const std::vector<std::string>& command, const std::filesystem::path& folder);
  ChildProcess(ChildProcess&& other) noexcept : process_(std::exchange(other.process_, 0)) {}
  ChildProcess& operator=(ChildProcess&& other) noexcept {
    std::swap(process_, other.process_);
    return *this;
  }
  ~ChildProcess() { kill(); }

  // Ends it wherever it is; it is gone when this returns.
  void kill();

 private:
  intptr_t process_ = 0;  // its number or handle
};

// The path of this test program: a test starts it again to have several copies of the engine.
std::string ownProgram();
// What some of the copies are instead: the program that TANDEKO_PARTNER names, the same test built for
// another system; this one without it.
std::string partnerProgram();

// Waits for what another process does; false when it takes half a minute.
template <typename Condition>
bool eventually(Condition condition) {
  for (int i = 0; i < 3000; ++i, std::this_thread::sleep_for(std::chrono::milliseconds(10)))
    if (condition()) return true;
  return false;
}

// Zeros in a file, at first, that all processes which map it see and that outlive them.
class SharedMemory {
 public:
  SharedMemory(const std::filesystem::path& file, size_t size);
  ~SharedMemory();
  SharedMemory(const SharedMemory&) = delete;
  SharedMemory& operator=(const SharedMemory&) = delete;
  void* data() const { return data_; }

 private:
  void* data_ = nullptr;
  size_t size_;
};
