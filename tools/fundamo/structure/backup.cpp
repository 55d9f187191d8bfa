#include "structure/backup.h"

#include <chrono>
#include <ctime>

#include "jet/format/error.h"

namespace structure {

namespace fs = std::filesystem;

namespace {

std::string today() {
  const std::time_t now = std::chrono::system_clock::to_time_t(std::chrono::system_clock::now());
  char text[16] = {};
  std::strftime(text, sizeof text, "%Y%m%d", std::localtime(&now));
  return text;
}

}  // namespace

fs::path copyBeside(const fs::path& path) {
  const std::string day = today();
  std::error_code failure;
  for (int i = 1;; ++i) {
    fs::path copy = path;
    copy.replace_filename(path.stem());
    copy += "-kopia-" + day + (i > 1 ? "-" + std::to_string(i) : "");
    copy += path.extension();
    if (fs::exists(copy, failure)) continue;
    if (fs::copy_file(path, copy, failure)) return copy;
    if (failure == std::errc::file_exists) continue;
    std::error_code ignored;
    fs::remove(copy, ignored);
    throw jet::Error(3026);
  }
}

}  // namespace structure
