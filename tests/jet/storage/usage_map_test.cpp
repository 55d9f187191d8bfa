#include "jet/storage/usage_map.h"

#include <gtest/gtest.h>

#include <random>
#include <set>

#include "storage_fixture.h"

using namespace jet;

namespace {

// Grows the file so that `page` exists.
void growTo(Pager& pager, PageNumber page) {
  while (pager.pageCount() <= page) pager.append();
}

int kindOf(Pager& pager, RowId row) {
  const PageView page = pager.read(row.page);
  return data_page::slotBytes(page.bytes(), pager.layout(), row.page, row.slot)[0];
}

size_t lengthOf(Pager& pager, RowId row) {
  const PageView page = pager.read(row.page);
  return data_page::slotBytes(page.bytes(), pager.layout(), row.page, row.slot).size();
}

RowId putRow(StorageFile& file, const std::string& row) {
  PageEdit page = PageAllocator(file.pager()).allocate();
  data_page::initialise(page.bytes(), file.layout(), 0);
  data_page::insert(page.bytes(), file.layout(), asBytes(row));
  return {page.number(), 0};
}

}  // namespace

// Rows of real files.
TEST(UsageMap, ReadsRealRows) {
  StorageFile file(Version::Jet4);
  growTo(file.pager(), 800);
  std::string owned(69, '\0');
  owned.replace(42, 5, fromHex("80 FF FF FF 1F"));
  const UsageMap orders(file.pager(), putRow(file, owned));
  std::vector<PageNumber> expected;
  for (PageNumber page = 303; page <= 332; ++page) expected.push_back(page);
  EXPECT_EQ(orders.pages(), expected);
  EXPECT_EQ(orders.next(304), 304u);
  EXPECT_EQ(orders.next(333), 0u);
  EXPECT_EQ(orders.last(), 332u);

  // a global map lengthened to 93 bytes
  const std::string global = fromHex(
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
      "00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 01 00 00 00 "
      "80 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 18 7C 87 FE FF FF");
  const UsageMap free(file.pager(), putRow(file, global), true);
  EXPECT_EQ(free.next(1), 472u);
  EXPECT_FALSE(free.contains(471));
  EXPECT_TRUE(free.contains(760)) << "behind the map everything is free";
  EXPECT_EQ(free.last(), file.pager().pageCount() - 1);

  // references: one bitmap page with page 760 in it, and one entry that leads out of the file
  PageEdit bitmap = file.pager().write(0x2FD);
  bitmap.data()[0] = 5, bitmap.data()[1] = 1, bitmap.data()[4 + 95] = 1;
  std::string references(69, '\0');
  references.replace(0, 3, fromHex("01 FD 02"));
  references[5] = '\x7F', references[6] = '\x7F';
  const UsageMap referring(file.pager(), putRow(file, references));
  EXPECT_EQ(referring.pages(), std::vector<PageNumber>{760});
  EXPECT_FALSE(referring.contains(32736));
  EXPECT_EQ(referring.bitmapPages(), std::vector<PageNumber>{0x2FD});
}

TEST(UsageMap, ShiftsLengthensAndConverts) {
  for (const Version version : {Version::Jet3, Version::Jet4}) {
    StorageFile file(version);
    const size_t row = file.layout().mapRowSize;
    const auto window = static_cast<PageNumber>((row - 5) * 8);
    growTo(file.pager(), 40000);
    UsageMap map(file.pager(), file.newMap());
    std::set<PageNumber> model;
    const auto add = [&](PageNumber page) {
      map.insert(page);
      model.insert(page);
      EXPECT_EQ(map.pages(), std::vector<PageNumber>(model.begin(), model.end())) << page;
    };
    add(5003);  // shifted: there was nothing to keep
    EXPECT_EQ(lengthOf(file.pager(), map.row()), row);
    add(5000 + window - 1);
    EXPECT_EQ(lengthOf(file.pager(), map.row()), row);
    add(5000 + window);  // one more than a row of this length covers
    EXPECT_EQ(lengthOf(file.pager(), map.row()), row + 4);
    add(4990);  // below the start
    EXPECT_EQ(kindOf(file.pager(), map.row()), 0);
    map.erase(5003), model.erase(5003);
    map.erase(17);
    add(39999);  // further than a row can be long
    EXPECT_EQ(kindOf(file.pager(), map.row()), 1);
    EXPECT_EQ(lengthOf(file.pager(), map.row()), row);
    add(1000);
    EXPECT_EQ(map.last(), 39999u);
    EXPECT_EQ(map.next(5001), 5000u + window - 1);
    EXPECT_FALSE(map.contains(5003));
    const std::vector<PageNumber> bitmaps = map.bitmapPages();
    EXPECT_EQ(bitmaps.size(), version == Version::Jet3 ? 2u : 2u);
    dropUsageMap(file.pager(), map.row());
    for (const PageNumber page : bitmaps) EXPECT_TRUE(PageAllocator(file.pager()).isFree(page));
  }
}

// Random growth with several maps on one page, so that room runs out at different moments.
TEST(UsageMap, MatchesASet) {
  for (const Version version : {Version::Jet3, Version::Jet4}) {
    StorageFile file(version);
    growTo(file.pager(), 70000);
    std::mt19937 random(7);
    std::vector<UsageMap> maps;
    std::vector<std::set<PageNumber>> models(12);
    for (size_t i = 0; i < models.size(); ++i) maps.emplace_back(file.pager(), file.newMap());
    for (int step = 0; step < 3000; ++step) {
      const size_t i = random() % models.size();
      const PageNumber reach = 600u << (random() % (i / 2 + 2));
      const PageNumber page = 100 + random() % std::min<PageNumber>(reach, 69000);
      if (random() % 3) {
        maps[i].insert(page), models[i].insert(page);
      } else {
        maps[i].erase(page), models[i].erase(page);
      }
      EXPECT_EQ(maps[i].contains(page), models[i].count(page) == 1);
    }
    for (size_t i = 0; i < models.size(); ++i)
      EXPECT_EQ(maps[i].pages(), std::vector<PageNumber>(models[i].begin(), models[i].end())) << i;
  }
}

TEST(PageAllocator, GlobalMapGrowsWithTheFileAndConverts) {
  for (const Version version : {Version::Jet3, Version::Jet4}) {
    StorageFile file(version);
    const RowId row{1, 0};
    std::set<PageNumber> mine;
    PageAllocator allocator(file.pager());
    while (file.pager().pageCount() < 36000) {
      const PageEdit page = allocator.allocate();
      ASSERT_TRUE(mine.insert(page.number()).second) << page.number();
      if (file.pager().pageCount() == 2000) {
        EXPECT_EQ(kindOf(file.pager(), row), 0);
        EXPECT_EQ(lengthOf(file.pager(), row), 5 + 2016u / 8);
      }
    }
    EXPECT_EQ(kindOf(file.pager(), row), 1);
    const UsageMap map(file.pager(), row, true);
    EXPECT_EQ(map.next(1), 0u) << "no page is free";
    for (const PageNumber bitmap : map.bitmapPages()) {
      EXPECT_FALSE(mine.count(bitmap));
      EXPECT_FALSE(allocator.isFree(bitmap));
    }
    EXPECT_EQ(mine.size() + map.bitmapPages().size() + 6, file.pager().pageCount());

    file.pager().write(20).data()[7] = 1;
    allocator.free(33000), allocator.free(20);
    EXPECT_EQ(map.pages(), (std::vector<PageNumber>{20, 33000}));
    const PageView reused = allocator.allocate();
    EXPECT_EQ(reused.number(), 20u);
    EXPECT_EQ(reused.data()[7], 0);
    EXPECT_EQ(errorOf([&] { allocator.free(5); }), 3049);
    EXPECT_EQ(errorOf([&] { allocator.free(file.pager().pageCount()); }), 3049);
  }
}

TEST(UsageMap, DropGivesTheMapPageBack) {
  StorageFile file(Version::Jet4);
  PageNumber near = 0;
  const RowId first = createUsageMap(file.pager(), near, 4000);
  const RowId second = createUsageMap(file.pager(), near);
  EXPECT_EQ(first.page, second.page);
  growTo(file.pager(), 4001);
  EXPECT_EQ(UsageMap(file.pager(), first).pages(), std::vector<PageNumber>{4000});
  dropUsageMap(file.pager(), first);
  EXPECT_FALSE(PageAllocator(file.pager()).isFree(near));
  EXPECT_EQ(errorOf([&] { UsageMap(file.pager(), first).contains(1); }), 3049);
  dropUsageMap(file.pager(), second);
  EXPECT_TRUE(PageAllocator(file.pager()).isFree(near));
}

TEST(UsageMap, RefusesDamage) {
  StorageFile file(Version::Jet4);
  growTo(file.pager(), 100);
  const auto read = [&](RowId row) { return errorOf([&] { UsageMap(file.pager(), row).pages(); }); };
  EXPECT_EQ(read({50, 0}), 3049);                                     // not a data page
  EXPECT_EQ(read({1, 2}), 3049);                                      // no such slot
  EXPECT_EQ(read({9999, 0}), 3049);                                   // outside the file
  EXPECT_EQ(read(putRow(file, fromHex("02 00 00 00 00 00"))), 3049);  // unknown kind
  EXPECT_EQ(read(putRow(file, fromHex("00 00 00"))), 3049);           // too short
  EXPECT_EQ(read(putRow(file, fromHex("01 32 00 00 00"))), 3049);     // its bitmap page is none
  EXPECT_EQ(read(putRow(file, fromHex("00 F8 FF FF FF FF FF FF FF"))), 0);
}
