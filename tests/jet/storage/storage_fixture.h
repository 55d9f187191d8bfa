#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <random>

#include "jet/format/header_mask.h"
#include "jet/hex.h"
#include "jet/storage/data_page.h"
#include "jet/storage/usage_map.h"
#include "support/error_of.h"

namespace jet {

// A file with a page 0, the two maps of page 1 and nothing else, inside an open transaction that only
// reopen() commits. Pages 2-5 stay zero: nothing in this layer looks at them.
class StorageFile {
 public:
  explicit StorageFile(Version version)
      : path_(newPath()), pager_(Pager::create(Environment::system(), path_, version, 6)) {
    PageEdit header = pager().write(0);
    put32(header.data(), 0x100);
    std::copy_n("Standard Jet DB", 16, header.data() + 4);
    header.data()[0x14] = static_cast<uint8_t>(version);
    put32(header.data() + kHeaderGlobalMap, 0x100);
    toggleHeaderMask(header.bytes(), version);
    PageEdit maps = pager().write(1);
    data_page::initialise(maps.bytes(), layout(), 1);
    std::string map(layout().mapRowSize, '\xFF');
    map.replace(0, 6, std::string(6, '\0'));
    map[5] = '\xC0';
    data_page::insert(maps.bytes(), layout(), asBytes(map));
    data_page::insert(maps.bytes(), layout(), asBytes(std::string(layout().mapRowSize, '\0')));
  }
  ~StorageFile() {
    pager_.reset();
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  void reopen() {
    pager_->commit();
    pager_.reset();
    pager_ = Pager::open(Environment::system(), path_, {.exclusive = true});
    pager_->begin();
  }

  Pager& pager() { return *pager_; }
  const FileLayout& layout() { return pager().layout(); }
  RowId newMap() { return createUsageMap(pager(), mapPage_); }

  // Pages in use outside the fixed ones and the map pages that newMap() made.
  std::vector<PageNumber> usedPages() {
    PageAllocator allocator(pager());
    std::vector<PageNumber> used;
    for (PageNumber page = 6; page < pager().pageCount(); ++page)
      if (!allocator.isFree(page)) used.push_back(page);
    return used;
  }

 private:
  static std::filesystem::path newPath() {
    static int made = 0;
    const std::string name =
        "storage_test_" + std::to_string(std::random_device()()) + "_" + std::to_string(made++);
    return std::filesystem::temp_directory_path() / (name + ".mdb");
  }

  std::filesystem::path path_;
  std::unique_ptr<Pager> pager_;
  PageNumber mapPage_ = 0;
};

// Every deviation of a data page from its layout.
inline ::testing::AssertionResult isSoundDataPage(Bytes page, const FileLayout& layout, uint32_t owner) {
  if (!data_page::isOwnedBy(page, layout, owner)) return ::testing::AssertionFailure() << "owner";
  const int count = data_page::slotCount(page, layout, 1);
  uint32_t end = layout.pageSize;
  for (int slot = 0; slot < count; ++slot) {
    const uint32_t start = data_page::slotWord(page, layout, 1, slot) & kSlotOffsetMask;
    if (start > end) return ::testing::AssertionFailure() << "slot " << slot << " ascends";
    end = start;
  }
  const uint32_t slotsEnd = layout.dataSlots + 2 * static_cast<uint32_t>(count);
  if (end < slotsEnd) return ::testing::AssertionFailure() << "rows over slots";
  if (data_page::freeBytes(page, layout) != static_cast<int>(end - slotsEnd))
    return ::testing::AssertionFailure()
           << "free " << data_page::freeBytes(page, layout) << " not " << end - slotsEnd;
  return ::testing::AssertionSuccess();
}

inline std::string randomBytes(std::mt19937& random, size_t length) {
  std::string bytes(length, '\0');
  for (char& c : bytes) c = static_cast<char>(random());
  return bytes;
}

}  // namespace jet
