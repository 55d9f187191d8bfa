#pragma once

#include <filesystem>
#include <random>
#include <string>

// A name in UTF-8, which std::filesystem does not take for such on every system.
inline std::filesystem::path asPath(const std::string& utf8) {
  return std::filesystem::path(reinterpret_cast<const char8_t*>(utf8.c_str()));
}

// A folder for one test, removed with its content at the end. Its name has Polish letters and a blank, so
// that every road for paths is tried.
class TempFolder {
 public:
  TempFolder() {
    do
      path_ = std::filesystem::temp_directory_path() /
              asPath("zażółć gęślą " + std::to_string(std::random_device()()));
    while (!std::filesystem::create_directory(path_));
  }
  ~TempFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::filesystem::path operator/(const std::string& name) const { return path_ / asPath(name); }

 private:
  std::filesystem::path path_;
};
