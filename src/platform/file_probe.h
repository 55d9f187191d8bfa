#pragma once

#include <QString>
#include <chrono>
#include <functional>
#include <future>

namespace tandeko {

enum class FileAnswer { Present, Missing, NoAnswer };

// Whether a file is there, asked so that a drive that does not answer holds nobody up: the question is put at
// once and is answered aside; several can be under way together.
class FileProbe {
 public:
  using Test = std::function<bool(const QString&)>;

  // `test` runs on a thread of its own; by default it is whether the path is that of a file.
  explicit FileProbe(const QString& path, Test test = {});

  // Waits for the answer until `milliseconds` have passed since the question, at most.
  FileAnswer answer(int milliseconds = kPatience);

  static constexpr int kPatience = 3000;

 private:
  std::chrono::steady_clock::time_point asked_;
  std::shared_future<bool> answer_;
};

}  // namespace tandeko
