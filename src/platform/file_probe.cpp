#include "platform/file_probe.h"

#include <chrono>
#include <future>
#include <thread>

#include "platform/text.h"

namespace tandeko {

// A call to a dead network drive can hang inside the system for minutes and cannot be called off, so it is
// made on a thread that is left behind when it takes too long.
FileAnswer probeFile(const QString& path, int milliseconds) {
  std::promise<bool> promise;
  std::future<bool> answer = promise.get_future();
  std::thread([file = toPath(path), result = std::move(promise)]() mutable {
    std::error_code error;
    result.set_value(std::filesystem::is_regular_file(file, error));
  }).detach();
  if (answer.wait_for(std::chrono::milliseconds(milliseconds)) != std::future_status::ready)
    return FileAnswer::NoAnswer;
  return answer.get() ? FileAnswer::Present : FileAnswer::Missing;
}

}  // namespace tandeko
