// Calls of the operating system and allocations that fail: the error is reported, the state is the old or the
// new one, and the next try works.

#include <gtest/gtest.h>

#include <functional>
#include <iostream>

#include "jet/pager/page_model.h"
#include "support/allocation_fault.h"
#include "support/fault_env.h"

namespace jet::test {
namespace {

const std::filesystem::path kPath = "data.mdb";
const PageValues kBefore = {0, 1, 2, 3, 4, 5, 6, 7};
const PageValues kAfter = {0, 21, 11, 3, 14, 15, 16, 7, 88};

// One transaction with savepoints, growth and, with few dirty pages allowed, early writing.
void change(Pager& pager) {
  Transaction outer(pager);
  setValue(pager, 1, 11);
  {
    Transaction undone(pager);
    for (PageNumber page = 1; page < 8; ++page) setValue(pager, page, 99);
    pager.append();
  }
  setValue(pager, 2, 11);
  {
    Transaction inner(pager);
    setValue(pager, 1, 21);
    for (PageNumber page = 4; page < 7; ++page) setValue(pager, page, 10 + page);
    PageEdit added = pager.append();
    fillPage(added, pager.layout(), 88);
    inner.commit();
  }
  outer.commit();
}

const Pager::Options kOptions[] = {
    {.lockWaitMs = 20},
    {.exclusive = true},
    {.cachePages = 2, .dirtyPages = 2, .lockWaitMs = 20},
};

// A database that a crash left half written, so that opening it recovers.
std::unique_ptr<MemoryEnvironment> interruptedFiles() {
  MemoryEnvironment files;
  createDatabase(files, kPath, 8);
  FaultEnvironment env(files);
  std::unique_ptr<MemoryEnvironment> hot;
  std::mt19937_64 random(1);
  env.onChange = [&] {
    auto now = files.afterPowerCut(Loss::Nothing, random);
    if (now->content(kPath).size() > 8 * 4096 && !hot) hot = std::move(now);
  };
  change(*Pager::open(env, kPath, {}));
  return hot;
}

struct Fault {
  bool forever;
  int error;
};

// Runs the script with the n-th call failing, for every n until nothing fails any more.
uint64_t failEverywhere(const Pager::Options& options, const Fault& fault, bool interrupted) {
  const auto hot = interruptedFiles();
  std::mt19937_64 random(1);
  for (uint64_t n = 1;; ++n) {
    SCOPED_TRACE("call " + std::to_string(n));
    MemoryEnvironment fresh;
    createDatabase(fresh, kPath, 8);
    const auto files = (interrupted ? *hot : fresh).afterPowerCut(Loss::Nothing, random);
    FaultEnvironment env(*files);
    env.failAt(n, fault.forever, fault.error);
    std::unique_ptr<Pager> pager;
    const int error = errorOf([&] {
      pager = Pager::open(env, kPath, options);
      change(*pager);
    });
    const bool failed = env.failed();
    env.heal();
    EXPECT_TRUE(error == 0 || error == fault.error) << error;
    if (pager) {
      // The same object goes on, with a read or with a change.
      if (n % 2) commitValue(*pager, 7, 7);
      const PageValues found = valuesOf(*pager);
      EXPECT_TRUE(found == kBefore || found == kAfter) << testing::PrintToString(found);
      EXPECT_TRUE(error == 0 ? found == kAfter : true);
      commitValue(*pager, 7, 777);
      EXPECT_EQ(valuesOf(*pager)[7], 777u);
      pager.reset();
    }
    EXPECT_EQ(errorOf([&] {
                const auto again = Pager::open(env, kPath, {.exclusive = true});
                commitValue(*again, 7, 7);
                const PageValues found = valuesOf(*again);
                EXPECT_TRUE(found == kBefore || found == kAfter) << testing::PrintToString(found);
              }),
              0);
    if (!failed || testing::Test::HasFailure()) return n;
  }
}

TEST(Fault, EveryCallFailsOnceAndForEver) {
  uint64_t points = 0;
  for (const Pager::Options& options : kOptions)
    for (const Fault& fault : {Fault{false, 3043}, Fault{true, 3043}, Fault{false, 3026}, Fault{true, 3026}})
      for (const bool interrupted : {false, true}) points += failEverywhere(options, fault, interrupted);
  EXPECT_GT(points, 500u);
  std::cout << "failing calls " << points << "\n";
}

TEST(Fault, FullDiskRefusesTheCommitAndNoMore) {
  MemoryEnvironment files;
  createDatabase(files, kPath, 8);
  const auto pager = Pager::open(files, kPath, {});
  commitValue(*pager, 1, 5);
  for (uint64_t room = 8 * 4096; room < 100 * 4096; room += 2048) {
    files.setCapacity(room);
    const PageValues before = valuesOf(*pager);
    const int error = errorOf([&] {
      Transaction transaction(*pager);
      setValue(*pager, 2, static_cast<uint32_t>(room));
      for (int i = 0; i < 10; ++i) pager->append();
      transaction.commit();
    });
    if (error == 0) break;
    EXPECT_EQ(error, 3026);
    EXPECT_EQ(valuesOf(*pager), before);
  }
  EXPECT_EQ(pager->pageCount(), 18u);
}

TEST(Fault, EveryAllocationFailsOnce) {
  uint64_t points = 0;
  for (const Pager::Options& options : kOptions) {
    for (uint64_t n = 1;; ++n) {
      SCOPED_TRACE("allocation " + std::to_string(n));
      MemoryEnvironment files;
      createDatabase(files, kPath, 8);
      std::unique_ptr<Pager> pager;
      bool thrown = false;
      try {
        AllocationFault fault(n);
        pager = Pager::open(files, kPath, options);
        change(*pager);
      } catch (const std::bad_alloc&) {
        thrown = true;
      }
      ++points;
      if (pager) {
        const PageValues found = valuesOf(*pager);
        EXPECT_TRUE(found == kAfter || (thrown && found == kBefore)) << testing::PrintToString(found);
        commitValue(*pager, 7, 777);
      }
      pager.reset();
      commitValue(*Pager::open(files, kPath, {.exclusive = true}), 7, 7);
      if (!AllocationFault::failed() || HasFailure()) break;
    }
  }
  std::cout << "failing allocations " << points << "\n";
}

}  // namespace
}  // namespace jet::test
