#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <memory>

#include "jet/format/header_mask.h"
#include "jet/pager/pager.h"
#include "jet/storage/data_page.h"

namespace jet {

// A file that has just what trees and maps need: a header and the map of free pages. A transaction is
// open all the time, so that tests may change pages as they like.
class StorageFile {
 public:
  explicit StorageFile(Version version) {
    static int serial = 0;
    path_ = std::filesystem::temp_directory_path() /
            ("tandeko-storage-" + std::to_string(getpid()) + "-" + std::to_string(++serial) + ".mdb");
    constexpr PageNumber kPages = 6;
    pager_ = Pager::create(Environment::system(), path_, version, kPages);
    const FileLayout& layout = pager_->layout();
    {
      PageEdit header = pager_->write(0);
      put32(header.data(), 0x100);
      std::copy_n("Standard Jet DB", 16, header.data() + 4);
      header.data()[0x14] = static_cast<uint8_t>(version);
      put32(header.data() + kHeaderGlobalMap, RowId{1, 0}.stored());
      toggleHeaderMask(header.bytes(), version);
    }
    {
      std::string map(layout.mapRowSize, '\xFF');
      map.replace(0, 6, std::string("\0\0\0\0\0\xC0", 6));
      PageEdit maps = pager_->write(1);
      data_page::initialise(maps.bytes(), layout, 1);
      data_page::insert(maps.bytes(), layout, asBytes(map));
    }
    for (PageNumber page = 2; page < kPages; ++page) pager_->write(page).data()[0] = 2;
  }
  ~StorageFile() {
    pager_.reset();
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }

  Pager& pager() { return *pager_; }
  void reopen() {
    while (pager_->level() > 0) pager_->commit();
    pager_.reset();
    pager_ = Pager::open(Environment::system(), path_, {.exclusive = true});
    pager_->begin();
  }

 private:
  std::filesystem::path path_;
  std::unique_ptr<Pager> pager_;
};

}  // namespace jet
