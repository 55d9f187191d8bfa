#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <random>
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

// Copies of this test program, every other one its partner, that are started with "--worker NUMBER SEED" in
// `folder` and count in `acknowledged`, which they share, what they have finished.
template <typename Count, size_t kSize>
class Workers {
 public:
  Workers(const std::filesystem::path& folder, const std::array<std::atomic<Count>, kSize>& acknowledged)
      : folder_(folder), acknowledged_(acknowledged) {
    for (size_t worker = 0; worker < kSize; ++worker) start(worker);
  }

  // Kills one by chance, sometimes while it starts, otherwise at work, after `shortest` milliseconds and up
  // to `spread` more, and starts it again. Which one; kSize when one that should work did not.
  size_t killOne(unsigned shortest, unsigned spread) {
    const size_t victim = random_() % kSize;
    if (random_() % 4 != 0 && !works(victim)) return kSize;
    std::this_thread::sleep_for(std::chrono::milliseconds(shortest + random_() % spread));
    workers_[victim].kill();
    start(victim);
    return victim;
  }

  // Kills all of them; whether each had finished something since it was started.
  bool finish() {
    bool all = true;
    for (size_t worker = 0; worker < kSize; ++worker) all = works(worker) && all;
    for (ChildProcess& worker : workers_) worker.kill();
    return all;
  }

 private:
  void start(size_t worker) {
    atStart_[worker] = acknowledged_[worker];
    const std::string program = worker % 2 == 1 ? partnerProgram() : ownProgram();
    workers_[worker] =
        ChildProcess({program, "--worker", std::to_string(worker), std::to_string(random_())}, folder_);
  }
  bool works(size_t worker) {
    return eventually([&] { return acknowledged_[worker] > atStart_[worker]; });
  }

  std::filesystem::path folder_;
  const std::array<std::atomic<Count>, kSize>& acknowledged_;
  std::mt19937_64 random_{5};
  std::array<ChildProcess, kSize> workers_;
  std::array<Count, kSize> atStart_{};
};
