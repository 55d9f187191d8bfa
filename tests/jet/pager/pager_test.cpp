// Pages, transactions and sharing on real files.

#include "jet/pager/pager.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <fstream>

#include "jet/format/error.h"

namespace jet {
namespace {

namespace fs = std::filesystem;

// A database of `pages` pages, each filled with its number, in a folder that vanishes with the object.
class TemporaryDatabase {
 public:
  explicit TemporaryDatabase(PageNumber pages = 8, Version version = Version::Jet4) {
    std::string name = (fs::temp_directory_path() / "pagerXXXXXX").string();
    folder = mkdtemp(name.data());
    path = folder / "data.mdb";
    const auto pager = Pager::create(Environment::system(), path, version, pages);
    for (PageNumber page = 0; page < pages; ++page) {
      PageEdit edit = pager->write(page);
      std::memset(edit.data(), static_cast<int>(page), pager->pageSize());
      if (page == 0) writeHead(edit.data(), pager->layout());
    }
    pager->commit();
  }
  ~TemporaryDatabase() {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
  }

  static void writeHead(uint8_t* page, const FileLayout& layout) {
    std::memset(page, 0, layout.pageSize);
    std::memcpy(page, "\0\1\0\0Standard Jet DB", 19);
    page[0x14] = static_cast<uint8_t>(layout.version);
    for (int slot = 0; slot < 256; ++slot) put16(page + layout.commitTable + 2 * slot, 0x0100);
  }

  fs::path folder, path;
};

std::unique_ptr<Pager> open(const fs::path& path, Pager::Options options = {}) {
  return Pager::open(Environment::system(), path, options);
}

uint8_t firstByte(Pager& pager, PageNumber page) {
  ReadScope scope(pager);
  return pager.read(page).data()[100];
}

void setByte(Pager& pager, PageNumber page, uint8_t value) {
  Transaction transaction(pager);
  pager.write(page).data()[100] = value;
  transaction.commit();
}

template <typename Action>
int errorOf(Action action) {
  try {
    action();
  } catch (const Error& error) {
    return error.number();
  }
  return 0;
}

TEST(Pager, CommitsAndRollsBackNestedLevels) {
  TemporaryDatabase database;
  {
    const auto pager = open(database.path);
    Transaction outer(*pager);
    pager->write(1).data()[100] = 11;
    {
      Transaction inner(*pager);
      pager->write(1).data()[100] = 12;
      pager->write(2).data()[100] = 22;
      EXPECT_EQ(pager->append().number(), 8u);
      Transaction innermost(*pager);
      pager->write(8).data()[100] = 88;
      pager->write(3).data()[100] = 33;
    }
    EXPECT_EQ(pager->pageCount(), 8u);
    EXPECT_EQ(firstByte(*pager, 1), 11);
    EXPECT_EQ(firstByte(*pager, 2), 2);
    EXPECT_EQ(errorOf([&] { pager->read(8); }), 3049);
    {
      Transaction inner(*pager);
      EXPECT_EQ(pager->append().data()[100], 0);
      pager->write(8).data()[100] = 80;
      pager->write(4).data()[100] = 44;
      inner.commit();
    }
    outer.commit();
    const uint64_t counter = pager->changeCounter();
    {
      Transaction undone(*pager);
      pager->write(4).data()[100] = 99;
    }
    EXPECT_GT(pager->changeCounter(), counter);
  }
  const auto pager = open(database.path);
  EXPECT_EQ(pager->pageCount(), 9u);
  const uint8_t expected[] = {0, 11, 2, 3, 44, 5, 6, 7, 80};
  for (PageNumber page = 1; page < 9; ++page) EXPECT_EQ(firstByte(*pager, page), expected[page]) << page;
}

TEST(Pager, RefusesWhatIsNoDatabase) {
  TemporaryDatabase database;
  const auto damaged = [&](uint64_t offset, uint8_t value, uint64_t size) {
    const fs::path copy = database.folder / "copy.mdb";
    fs::copy_file(database.path, copy, fs::copy_options::overwrite_existing);
    std::fstream(copy, std::ios::in | std::ios::out | std::ios::binary)
        .seekp(static_cast<long>(offset))
        .put(value);
    fs::resize_file(copy, size);
    return errorOf([&] { open(copy); });
  };
  EXPECT_EQ(damaged(0x14, 1, 8 * 4096), 0);
  EXPECT_EQ(damaged(0x14, 2, 8 * 4096), 3343);
  EXPECT_EQ(damaged(5, 'x', 8 * 4096), 3343);
  EXPECT_EQ(damaged(0, 0, 4095), 3343);
  EXPECT_EQ(damaged(0, 0, 0), 3343);
  EXPECT_EQ(errorOf([&] { open(database.folder / "none.mdb"); }), 3024);
  EXPECT_EQ(errorOf([&] { open(database.folder / "none" / "none.mdb"); }), 3044);
  EXPECT_EQ(errorOf([&] { open(database.folder); }), 3051);
  EXPECT_EQ(errorOf([&] { Pager::create(Environment::system(), database.path, Version::Jet4, 3); }), 3204);
}

TEST(Pager, FileCutShortIsReadOnly) {
  TemporaryDatabase database;
  fs::resize_file(database.path, 7 * 4096 + 100);
  const auto pager = open(database.path);
  EXPECT_EQ(pager->pageCount(), 7u);
  EXPECT_EQ(firstByte(*pager, 6), 6);
  EXPECT_EQ(errorOf([&] { setByte(*pager, 1, 1); }), 3049);
}

TEST(Pager, CopiesSeeEachOthersCommits) {
  TemporaryDatabase database;
  const auto a = open(database.path), b = open(database.path, {.lockWaitMs = 20});
  EXPECT_EQ(firstByte(*b, 1), 1);
  setByte(*a, 1, 42);
  EXPECT_EQ(firstByte(*b, 1), 42);
  Transaction writing(*a);
  EXPECT_EQ(errorOf([&] { b->begin(); }), 3260);
  EXPECT_EQ(errorOf([&] { open(database.path, {.exclusive = true}); }), 3356);
}

}  // namespace
}  // namespace jet
