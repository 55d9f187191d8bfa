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
#include "support/error_of.h"
#include "support/samples.h"

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

}  // namespace jet
