// Processes that share one real file while some of them are killed.

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <iostream>
#include <random>
#include <thread>

#include "jet/pager/page_model.h"
#include "support/process.h"
#include "support/temp_folder.h"

namespace jet::test {
namespace {

namespace fs = std::filesystem;

constexpr char kFile[] = "data.mdb", kBoard[] = "board";
constexpr int kWorkers = 4;
constexpr PageNumber kAccounts = 12;  // pages 1..12, each with 1000 at the beginning
constexpr PageNumber kFirstCounter = 13;

// What the workers tell the parent; it survives them.
struct Board {
  std::array<std::atomic<uint32_t>, kWorkers> acknowledged, refused, wrong;
};

// Moves amounts between two accounts and counts its own commits on its own page, all in one transaction.
[[noreturn]] void work(int worker, uint64_t seed) {
  const SharedMemory shared(kBoard, sizeof(Board));
  Board& board = *static_cast<Board*>(shared.data());
  std::mt19937_64 random(seed);
  std::unique_ptr<Pager> pager;
  for (;;) {
    try {
      if (!pager || random() % 50 == 0) pager = Pager::open(Environment::system(), kFile, {.dirtyPages = 4});
      const PageValues seen = valuesOf(*pager);
      uint32_t sum = 0;
      for (PageNumber page = 1; page <= kAccounts; ++page) sum += seen[page];
      if (sum != kAccounts * 1000) ++board.wrong[worker];
      Transaction transaction(*pager);
      for (auto moves = 1 + random() % 4; moves > 0; --moves) {
        const auto from = static_cast<PageNumber>(1 + random() % kAccounts);
        const auto to = static_cast<PageNumber>(1 + random() % kAccounts);
        if (from == to) continue;
        const uint32_t available = valueOf(pager->read(from), pager->layout());
        const uint32_t amount = available ? static_cast<uint32_t>(random() % available) : 0;
        setValue(*pager, from, available - amount);
        setValue(*pager, to, valueOf(pager->read(to), pager->layout()) + amount);
      }
      const PageNumber own = kFirstCounter + static_cast<PageNumber>(worker);
      setValue(*pager, own, valueOf(pager->read(own), pager->layout()) + 1);
      transaction.commit();
      ++board.acknowledged[worker];
    } catch (const Error& error) {
      ++(error.number() == 3260 || error.number() == 3187 ? board.refused : board.wrong)[worker];
    }
  }
}

TEST(Processes, KilledOnesLeaveNothingHalfDone) {
  const TempFolder folder;
  const fs::path path = folder / kFile;
  createDatabase(Environment::system(), path, kFirstCounter + kWorkers);
  {
    const auto pager = Pager::open(Environment::system(), path, {});
    Transaction transaction(*pager);
    for (PageNumber page = 1; page < pager->pageCount(); ++page)
      setValue(*pager, page, page < kFirstCounter ? 1000 : 0);
    transaction.commit();
  }
  const SharedMemory shared(folder / kBoard, sizeof(Board));
  const Board& board = *static_cast<Board*>(shared.data());

  Workers workers(folder.path(), board.acknowledged);
  std::array<uint32_t, kWorkers> kills{};
  for (int round = 0; round < (longRun() ? 200 : 40); ++round) {
    const size_t victim = workers.killOne(20, 60);
    ASSERT_LT(victim, kills.size());
    ++kills[victim];
  }
  EXPECT_TRUE(workers.finish());

  const auto pager = Pager::open(Environment::system(), path, {.exclusive = true});
  const PageValues found = valuesOf(*pager);
  uint32_t sum = 0, commits = 0, refusals = 0;
  for (PageNumber page = 1; page <= kAccounts; ++page) sum += found[page];
  EXPECT_EQ(sum, kAccounts * 1000);
  for (int worker = 0; worker < kWorkers; ++worker) {
    const uint32_t acknowledged = board.acknowledged[worker], stored = found[kFirstCounter + worker];
    EXPECT_EQ(board.wrong[worker], 0u);
    EXPECT_GE(stored, acknowledged);
    // At every death one commit may have been complete but not acknowledged.
    EXPECT_LE(stored, acknowledged + kills[worker] + 1);
    EXPECT_GT(acknowledged, 0u);
    commits += acknowledged;
    refusals += board.refused[worker];
  }
  std::cout << commits << " commits of " << kWorkers << " processes, " << refusals << " refusals\n";
}

// Writes pages before the commit, says so on the board and never gets further.
[[noreturn]] void stopHalfway() {
  const auto pager = Pager::open(Environment::system(), kFile, {.dirtyPages = 4});
  pager->begin();
  for (PageNumber page = 1; page < pager->pageCount(); ++page) setValue(*pager, page, 7777);
  const SharedMemory shared(kBoard, sizeof(std::atomic<uint32_t>));
  *static_cast<std::atomic<uint32_t>*>(shared.data()) = 1;
  for (;;) std::this_thread::sleep_for(std::chrono::seconds(1));
}

TEST(Processes, TheNextCopyUndoesWhatAKilledOneLeft) {
  const TempFolder folder;
  const fs::path path = folder / kFile;
  createDatabase(Environment::system(), path, 20);
  const auto before = valuesOf(*Pager::open(Environment::system(), path, {}));
  const auto other = Pager::open(Environment::system(), path, {.lockWaitMs = 0});
  valuesOf(*other);

  const SharedMemory shared(folder / kBoard, sizeof(std::atomic<uint32_t>));
  const auto& written = *static_cast<const std::atomic<uint32_t>*>(shared.data());
  ChildProcess child({partnerProgram(), "--stop-halfway"}, folder.path());
  ASSERT_TRUE(eventually([&] { return written == 1; }));
  uint8_t page[4] = {};
  Environment::system().open(path, Environment::Open::ReadOnly)->read(4096, page);
  EXPECT_EQ(get32(page), 7777u);
  EXPECT_EQ(errorOf([&] { valuesOf(*other); }), 3187);
  child.kill();
  EXPECT_EQ(valuesOf(*Pager::open(Environment::system(), path, {})), before);
  EXPECT_EQ(valuesOf(*other), before);
}

}  // namespace
}  // namespace jet::test

// The program is its own workers' too.
int main(int argc, char** argv) {
  if (argc == 4 && std::string_view(argv[1]) == "--worker")
    jet::test::work(std::stoi(argv[2]), std::stoull(argv[3]));
  if (argc == 2 && std::string_view(argv[1]) == "--stop-halfway") jet::test::stopHalfway();
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
