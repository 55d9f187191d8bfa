#include "jet/storage/heap.h"

#include <gtest/gtest.h>

#include <map>
#include <random>

#include "storage_fixture.h"

using namespace jet;

namespace {

constexpr PageNumber kDefinition = 2;

class HeapFile : public StorageFile {
 public:
  explicit HeapFile(Version version)
      : StorageFile(version),
        ownedMap_(newMap()),
        freeMap_(newMap()),
        heap_(pager(), kDefinition, ownedMap_, freeMap_) {}
  Heap& heap() { return heap_; }
  Heap another() { return {pager(), kDefinition, ownedMap_, freeMap_}; }
  UsageMap freeMap() { return {pager(), freeMap_}; }

  std::map<RowId, std::string> scan() {
    std::map<RowId, std::string> rows;
    RowId before;
    for (Heap::Scan scan(heap_); scan.next(); before = scan.id()) {
      EXPECT_LT(before, scan.id());
      rows[scan.id()] = asChars(scan.bytes());
    }
    return rows;
  }

  // Page layout, pointers (one hop, one pointer for each target), maps.
  void check() {
    std::map<RowId, int> targets;
    for (const PageNumber number : heap_.ownedPages().pages()) {
      const PageView view = pager().read(number);
      EXPECT_TRUE(isSoundDataPage(view.bytes(), layout(), kDefinition)) << number;
      EXPECT_FALSE(PageAllocator(pager()).isFree(number));
      EXPECT_FALSE(data_page::isEmpty(view.bytes(), layout())) << number;
      for (int slot = 0; slot < data_page::slotCount(view.bytes(), layout(), number); ++slot) {
        const uint16_t word = data_page::slotWord(view.bytes(), layout(), number, slot);
        if ((word & kSlotDeleted) == kSlotTarget) ++targets[{number, static_cast<uint8_t>(slot)}];
        if ((word & kSlotDeleted) != kSlotMoved) continue;
        const Bytes space = data_page::slotBytes(view.bytes(), layout(), number, slot);
        targets[RowId::fromStored(get32(space.data()))] += 100;
      }
    }
    for (const auto& [row, seen] : targets) EXPECT_EQ(seen, 101) << row.page << ':' << int{row.slot};
    for (const PageNumber page : freeMap().pages()) EXPECT_TRUE(heap_.ownedPages().contains(page));
  }

 private:
  RowId ownedMap_, freeMap_;
  Heap heap_;
};

}  // namespace

// Random changes against a map. Rows grow and shrink, now and then by a lot.
TEST(Heap, MatchesAMap) {
  for (const Version version : {Version::Jet3, Version::Jet4}) {
    HeapFile file(version);
    std::mt19937 random(5);
    std::map<RowId, std::string> model;
    const auto row = [&] {
      const size_t most = file.layout().maxRow - 3;
      return randomBytes(random, 3 + random() % (random() % 10 ? 120 : most));
    };
    const auto any = [&] { return std::next(model.begin(), static_cast<long>(random() % model.size())); };
    for (int step = 0; step < 12000; ++step) {
      const unsigned phase = step / 3000;  // growing, balanced, updating, shrinking
      const unsigned dice = random() % 10;
      const unsigned inserts = phase == 0 ? 8 : phase == 3 ? 1 : 3;
      if (model.empty() || dice < inserts) {
        const std::string bytes = row();
        ASSERT_TRUE(model.emplace(file.heap().insert(asBytes(bytes)), bytes).second);
      } else if (dice < inserts + (phase == 2 ? 5 : 2)) {
        const auto it = any();
        it->second = row();
        file.heap().update(it->first, asBytes(it->second));
      } else {
        const auto it = any();
        file.heap().remove(it->first);
        EXPECT_FALSE(file.heap().fetch(it->first));
        model.erase(it);
      }
      if (!model.empty()) {
        const auto it = any();
        const auto fetched = file.heap().fetch(it->first);
        ASSERT_TRUE(fetched);
        ASSERT_EQ(asChars(fetched->bytes), it->second);
      }
      if (step % 1000 == 999) {
        file.check();
        ASSERT_EQ(file.scan(), model);
      }
    }
    for (const auto& [id, bytes] : model) file.heap().remove(id);
    EXPECT_EQ(file.scan().size(), 0u);
    EXPECT_EQ(file.usedPages().size(), 1u) << "all but the map page were given back";
  }
}

// A real page whose slot 2 leads to another page.
TEST(Heap, FollowsRealPointer) {
  HeapFile file(Version::Jet4);
  const RowId row = file.heap().insert(asBytes(std::string(20, 'a')));
  while (file.pager().pageCount() < 0x1D) file.pager().append();
  PageEdit page = file.pager().write(row.page);
  data_page::initialise(page.bytes(), file.layout(), kDefinition);
  for (const char* space : {"01", "02", "00 1C 00 00 72 6F 77 33"})
    data_page::insert(page.bytes(), file.layout(), asBytes(fromHex(space)));
  data_page::setFlags(page.bytes(), file.layout(), 2, kSlotMoved);
  PageEdit other = file.pager().write(0x1C);
  data_page::initialise(other.bytes(), file.layout(), kDefinition);
  data_page::insert(other.bytes(), file.layout(), asBytes("moved row"), kSlotTarget);
  EXPECT_EQ(asChars(file.heap().fetch({row.page, 2})->bytes), "moved row");
  EXPECT_EQ(file.heap().fetch({row.page, 2})->where, 0x1Cu);
  EXPECT_FALSE(file.heap().fetch({0x1C, 0})) << "a target is not a row of its own";
  // a pointer to itself, and one to an ordinary row
  for (const uint32_t pointer : {row.page << 8 | 2, row.page << 8 | 1}) {
    uint8_t bytes[4];
    put32(bytes, pointer);
    data_page::replace(page.bytes(), file.layout(), row.page, 2, bytes);
    EXPECT_EQ(errorOf([&] { file.heap().fetch({row.page, 2}); }), 3049);
    EXPECT_EQ(errorOf([&] { file.heap().update({row.page, 2}, asBytes("x")); }), 3049);
  }
}

TEST(Heap, RefusesGoneAndOverlongRows) {
  HeapFile file(Version::Jet4);
  const RowId a = file.heap().insert(asBytes("first row"));
  file.heap().insert(asBytes("second row"));
  file.heap().remove(a);
  EXPECT_EQ(errorOf([&] { file.heap().update(a, asBytes("again")); }), 3167);
  EXPECT_EQ(errorOf([&] { file.heap().remove(a); }), 3167);
  for (const RowId gone : {RowId{a.page, 200}, RowId{1, 0}, RowId{77777, 0}, RowId{}}) {
    EXPECT_FALSE(file.heap().fetch(gone));
    EXPECT_EQ(errorOf([&] { file.heap().remove(gone); }), 3167);
  }
  const std::string longest(file.layout().maxRow, 'x'), over(file.layout().maxRow + 1, 'x');
  const RowId big = file.heap().insert(asBytes(longest));
  EXPECT_EQ(file.heap().fetch(big)->bytes.size(), longest.size());
  EXPECT_EQ(errorOf([&] { file.heap().insert(asBytes(over)); }), 3047);
  EXPECT_EQ(errorOf([&] { file.heap().update(big, asBytes(over)); }), 3047);
}

// Deleting the row under a running scan may give its page away; the scan goes on behind it.
TEST(Heap, ScanSurvivesDeletionOfItsPages) {
  HeapFile file(Version::Jet4);
  for (int i = 0; i < 1000; ++i) file.heap().insert(asBytes(std::string(100, 'r')));
  int seen = 0;
  for (Heap::Scan scan(file.heap()); scan.next(); ++seen) {
    file.heap().remove(scan.id());
    if (seen % 50 == 0) {
      PageEdit taken = PageAllocator(file.pager()).allocate();
      taken.data()[0] = 4;
    }
  }
  EXPECT_EQ(seen, 1000);
  EXPECT_TRUE(file.heap().ownedPages().pages().empty());
}

// Pages fill up, also when every row is inserted through a Heap of its own, and when rows of a length that
// leaves much of a page unused come in between.
TEST(Heap, FillsPages) {
  for (const bool fresh : {false, true}) {
    HeapFile file(Version::Jet4);
    for (int i = 0; i < 3000; ++i) {
      const std::string row(i % 30 == 0 ? 2500 : 200, 'x');
      Heap other = file.another();
      (fresh ? other : file.heap()).insert(asBytes(row));
    }
    const size_t bytes = 2900 * 202 + 100 * 2502;
    EXPECT_LT(file.heap().ownedPages().pages().size(), bytes / 4082 * 5 / 4) << fresh;
    file.check();
  }
}

// Room that deletions make is found again.
TEST(Heap, ReusesRoom) {
  HeapFile file(Version::Jet4);
  std::vector<RowId> rows;
  for (int i = 0; i < 2000; ++i) rows.push_back(file.heap().insert(asBytes(std::string(180, 'x'))));
  const size_t pages = file.heap().ownedPages().pages().size();
  for (size_t i = 0; i < rows.size(); i += 2) file.heap().remove(rows[i]);
  for (int i = 0; i < 900; ++i) file.heap().insert(asBytes(std::string(180, 'y')));
  EXPECT_LE(file.heap().ownedPages().pages().size(), pages + 1);
}

TEST(Heap, DamagedPagesThrow) {
  std::mt19937 random(13);
  int refused = 0;
  for (int round = 0; round < 3000; ++round) {
    HeapFile file(round % 2 ? Version::Jet4 : Version::Jet3);
    std::vector<RowId> rows;
    for (int i = 0; i < 30; ++i) rows.push_back(file.heap().insert(asBytes(std::string(100, 'x'))));
    for (int i = 0; i < 10; ++i)
      file.heap().update(rows[static_cast<size_t>(i)], asBytes(std::string(300, 'y')));
    for (int flips = 0; flips < 4; ++flips) {
      const PageNumber page = random() % file.pager().pageCount();
      const size_t head = random() % 3 ? 90 : file.layout().pageSize;
      file.pager().write(page).data()[random() % head] = static_cast<uint8_t>(random());
    }
    const auto attempt = [&](auto&& call) {
      const int error = errorOf(call);
      EXPECT_TRUE(error == 0 || error == 3049 || error == 3343 || error == 3167 || error == 3047 ||
                  error == 3036)
          << error;
      refused += error != 0;
    };
    attempt([&] {
      int steps = 0;
      for (Heap::Scan scan(file.heap()); scan.next();) ASSERT_LT(++steps, 100000);
    });
    for (const RowId row : rows) {
      attempt([&] { file.heap().fetch(row); });
      attempt([&] { file.heap().update(row, asBytes(std::string(random() % 900, 'z'))); });
      attempt([&] { file.heap().remove(row); });
    }
    attempt([&] { file.heap().insert(asBytes(std::string(50, 'n'))); });
    attempt([&] { file.heap().removeAll(); });
  }
  EXPECT_GT(refused, 1000);
}
