#include "platform/file_probe.h"

#include <QFileInfo>
#include <thread>

namespace tandeko {

namespace {

bool isFile(const QString& path) { return QFileInfo(path).isFile(); }

}  // namespace

// A call to a dead network drive can hang inside the system for minutes and cannot be called off, so it is
// made on a thread that is left behind when it takes too long.
FileProbe::FileProbe(const QString& path, Test test) : asked_(std::chrono::steady_clock::now()) {
  std::promise<bool> promise;
  answer_ = promise.get_future().share();
  std::thread([path, test = test ? std::move(test) : Test(isFile), result = std::move(promise)]() mutable {
    result.set_value(test(path));
  }).detach();
}

FileAnswer FileProbe::answer(int milliseconds) {
  if (answer_.wait_until(asked_ + std::chrono::milliseconds(milliseconds)) != std::future_status::ready)
    return FileAnswer::NoAnswer;
  return answer_.get() ? FileAnswer::Present : FileAnswer::Missing;
}

}  // namespace tandeko
