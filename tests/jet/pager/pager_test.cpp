// Pages and transactions on real files.

#include <gtest/gtest.h>

#include <fstream>
#include <random>

#include "jet/pager/page_model.h"

namespace jet::test {
namespace {

namespace fs = std::filesystem;

// A database of 8 pages in a folder that vanishes with the object.
struct TemporaryDatabase {
  TemporaryDatabase() {
    folder = fs::temp_directory_path() / ("pager" + std::to_string(std::random_device{}()));
    fs::create_directory(folder);
    path = folder / "data.mdb";
    createDatabase(Environment::system(), path, 8);
  }
  ~TemporaryDatabase() {
    std::error_code ignored;
    fs::remove_all(folder, ignored);
  }
  fs::path folder, path;
};

std::unique_ptr<Pager> open(const fs::path& path, Pager::Options options = {}) {
  return Pager::open(Environment::system(), path, options);
}

void resize(const fs::path& path, uint64_t size) {
  Environment::system().open(path, Environment::Open::ReadWrite)->truncate(size);
}

TEST(Pager, CommitsAndRollsBackNestedLevels) {
  TemporaryDatabase database;
  {
    const auto pager = open(database.path);
    Transaction outer(*pager);
    setValue(*pager, 1, 11);
    const PageView pinned = pager->read(3);
    {
      Transaction inner(*pager);
      setValue(*pager, 1, 12);
      setValue(*pager, 2, 22);
      EXPECT_EQ(pager->append().number(), 8u);
      Transaction innermost(*pager);
      setValue(*pager, 8, 88);
      setValue(*pager, 3, 33);
    }
    EXPECT_EQ(valuesOf(*pager), (PageValues{0, 11, 2, 3, 4, 5, 6, 7}));
    EXPECT_EQ(valueOf(pinned, pager->layout()), 3u);
    EXPECT_EQ(errorOf([&] { pager->read(8); }), 3049);
    {
      Transaction inner(*pager);
      EXPECT_EQ(valueOf(pager->append(), pager->layout()), 0u);
      setValue(*pager, 8, 80);
      setValue(*pager, 4, 44);
      inner.commit();
    }
    outer.commit();
    const uint64_t counter = pager->changeCounter();
    {
      Transaction undone(*pager);
      setValue(*pager, 4, 99);
    }
    EXPECT_GT(pager->changeCounter(), counter);
  }
  EXPECT_EQ(valuesOf(*open(database.path)), (PageValues{0, 11, 2, 3, 44, 5, 6, 7, 80}));
  EXPECT_FALSE(fs::exists(database.folder / "data.ldb"));
  EXPECT_FALSE(fs::exists(database.folder / "data.mdb-journal"));
}

// Pages that are in use stay as they are when the others make room.
TEST(Pager, PagesInUseAreNotWrittenEarly) {
  TemporaryDatabase database;
  {
    const auto pager = open(database.path, {.cachePages = 1, .dirtyPages = 2});
    Transaction transaction(*pager);
    PageEdit held = pager->write(3);
    const PageView seen = pager->read(2);
    for (PageNumber page = 4; page < 8; ++page) setValue(*pager, page, 10 + page);
    fillPage(held, pager->layout(), 33);
    EXPECT_EQ(valueOf(seen, pager->layout()), 2u);
    transaction.commit();
  }
  EXPECT_EQ(valuesOf(*open(database.path)), (PageValues{0, 1, 2, 33, 14, 15, 16, 17}));
}

TEST(Pager, RefusesWhatIsNoDatabase) {
  TemporaryDatabase database;
  const auto damaged = [&](uint64_t offset, uint8_t value, uint64_t size) {
    const fs::path copy = database.folder / "copy.mdb";
    fs::remove(copy);
    fs::copy_file(database.path, copy);
    std::fstream(copy, std::ios::in | std::ios::out | std::ios::binary)
        .seekp(static_cast<long>(offset))
        .put(value);
    resize(copy, size);
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
  resize(database.path, 7 * 4096 + 100);
  const auto pager = open(database.path);
  EXPECT_EQ(valuesOf(*pager), (PageValues{0, 1, 2, 3, 4, 5, 6}));
  EXPECT_EQ(errorOf([&] { commitValue(*pager, 1, 1); }), 3049);
  resize(database.path, 7 * 4096);
  EXPECT_EQ(errorOf([&] { commitValue(*open(database.path), 1, 1); }), 0);
}

// A damaged head must not make the engine believe in pages beyond the format's limit.
TEST(Pager, FileBeyondTheLimitIsReadOnly) {
  TemporaryDatabase database;
  resize(database.path, uint64_t{1} << 40);
  const auto pager = open(database.path);
  EXPECT_EQ(pager->pageCount(), (uint64_t{1} << 31) / 4096);
  EXPECT_EQ(errorOf([&] { commitValue(*pager, 1, 1); }), 3049);
  resize(database.path, uint64_t{1} << 31);
  const auto full = open(database.path);
  Transaction transaction(*full);
  EXPECT_EQ(errorOf([&] { full->append(); }), 3036);
}

TEST(Pager, CopiesInOneProcessExcludeEachOther) {
  TemporaryDatabase database;
  const auto a = open(database.path), b = open(database.path, {.lockWaitMs = 20});
  EXPECT_EQ(valuesOf(*b)[1], 1u);
  commitValue(*a, 1, 42);
  EXPECT_EQ(valuesOf(*b)[1], 42u);
  Transaction writing(*a);
  EXPECT_EQ(errorOf([&] { b->begin(); }), 3260);
  EXPECT_EQ(errorOf([&] { open(database.path, {.exclusive = true}); }), 3356);
}

TEST(Pager, ReadOnlyFileIsReadBesideWriters) {
  TemporaryDatabase database;
  const auto reader = open(database.path, {.readOnly = true}),
             writer = open(database.path, {.lockWaitMs = 20});
  commitValue(*writer, 5, 55);
  EXPECT_EQ(valuesOf(*reader)[5], 55u);
  ReadScope scope(*reader);
  EXPECT_EQ(errorOf([&] {
              writer->begin();
              setValue(*writer, 1, 2);
              writer->commit();
            }),
            3260);
}

}  // namespace
}  // namespace jet::test
