#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "jet/catalog/catalog.h"
#include "jet/format/error.h"
#include "jet/pager/pager.h"

namespace jet {

// A folder that goes away with the object.
class ScratchFolder {
 public:
  ScratchFolder()
      : path_(std::filesystem::temp_directory_path() /
              ("catalog-test-" + std::to_string(std::random_device()()))) {
    std::filesystem::create_directories(path_);
  }
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  std::filesystem::path operator/(const std::string& name) const { return path_ / name; }

 private:
  std::filesystem::path path_;
};

struct OpenDatabase {
  std::unique_ptr<Pager> pager;
  std::unique_ptr<Catalog> catalog;
  Catalog* operator->() const { return catalog.get(); }
};

inline OpenDatabase openDatabase(const std::filesystem::path& path) {
  OpenDatabase db;
  db.pager = Pager::open(Environment::system(), path, {.exclusive = true});
  db.catalog = Catalog::open(*db.pager);
  return db;
}

inline OpenDatabase createDatabase(const std::filesystem::path& path, uint16_t lcid = 0x0409,
                                   std::u16string_view password = {}) {
  OpenDatabase db;
  db.pager = Pager::create(Environment::system(), path, Version::Jet4, Catalog::kEmptyDatabasePages);
  db.catalog = Catalog::createDatabase(*db.pager, lcid, password);
  db.pager->commit();
  return db;
}

// Real files of the folder that TANDEKO_SAMPLES names; none without it.
inline std::vector<std::filesystem::path> samples() {
  std::vector<std::filesystem::path> files;
  const char* folder = std::getenv("TANDEKO_SAMPLES");
  if (!folder) return files;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    if (entry.path().extension() == ".mdb") files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

// The number of the jet::Error that `action` throws; 0 when it throws none.
template <typename Action>
int errorOf(Action&& action) {
  try {
    action();
  } catch (const Error& error) {
    return error.number();
  }
  return 0;
}

}  // namespace jet
