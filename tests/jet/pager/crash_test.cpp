// Power cuts at every point of a script of transactions, of recovery and of creation: what is found
// afterwards is the state before or after the interrupted commit.

#include <gtest/gtest.h>

#include <iostream>

#include "jet/pager/page_model.h"
#include "support/fault_env.h"

namespace jet::test {
namespace {

const std::filesystem::path kPath = "data.mdb";

// Random transactions, and the states that a crash at this moment may leave.
class Script {
 public:
  Script(FaultEnvironment& env, uint64_t seed, const Pager::Options& options)
      : random_(seed), pager_(Pager::open(env, kPath, options)) {
    accepted_ = {valuesOf(*pager_)};
  }

  const std::vector<PageValues>& accepted() const { return accepted_; }

  void runTransaction() {
    PageValues values = accepted_.front();
    pager_->begin();
    changePages(values, 0);
    if (random_() % 8 == 0) {
      pager_->rollback();
    } else {
      accepted_.push_back(values);
      pager_->commit();
      accepted_ = {values};
    }
    ASSERT_EQ(valuesOf(*pager_), accepted_.front());
  }

 private:
  void changePages(PageValues& values, int depth) {
    for (auto steps = 1 + random_() % 6; steps > 0; --steps) {
      const auto choice = random_() % 10;
      if (choice == 0 && values.size() < 40) {
        PageEdit page = pager_->append();
        EXPECT_EQ(page.number(), values.size());
        values.push_back(static_cast<uint32_t>(random_()));
        fillPage(page, pager_->layout(), values.back());
      } else if (choice < 3 && depth < 3) {
        PageValues inner = values;
        pager_->begin();
        changePages(inner, depth + 1);
        if (random_() % 2) {
          pager_->commit();
          values = inner;
        } else {
          pager_->rollback();
        }
      } else {
        const auto page = static_cast<PageNumber>(random_() % values.size());
        values[page] = static_cast<uint32_t>(random_());
        setValue(*pager_, page, values[page]);
      }
    }
  }

  std::mt19937_64 random_;
  std::vector<PageValues> accepted_;
  std::unique_ptr<Pager> pager_;  // last, since its end is part of the script
};

struct Tally {
  uint64_t points = 0, recoveryPoints = 0, rolledBack = 0, oldStates = 0, newStates = 0;
};

// Opens what a crash left, crashing again at every point of the recovery when `again`, and compares.
void verify(MemoryEnvironment& files, const std::vector<PageValues>& accepted, bool again,
            std::mt19937_64& random, Tally& tally) {
  FaultEnvironment env(files);
  if (again) {
    env.onChange = [&] {
      for (const Loss loss : {Loss::Everything, Loss::Nothing, Loss::Random}) {
        ++tally.recoveryPoints;
        verify(*files.afterPowerCut(loss, random), accepted, false, random, tally);
      }
    };
  }
  const auto pager = Pager::open(env, kPath, {.exclusive = random() % 2 == 0, .readOnly = random() % 4 == 0});
  const uint64_t changesOfOpening = env.changes();
  env.onChange = nullptr;
  if (changesOfOpening > 3) ++tally.rolledBack;
  const PageValues found = valuesOf(*pager);
  if (found == accepted.front()) {
    ++tally.oldStates;
  } else if (accepted.size() > 1 && found == accepted.back()) {
    ++tally.newStates;
  } else {
    ADD_FAILURE() << "neither the old nor the new state: " << testing::PrintToString(found) << " of "
                  << testing::PrintToString(accepted);
  }
  if (!pager->readOnly()) commitValue(*pager, 1, 4711);
}

Tally crashEverywhere(uint64_t seed, int transactions, Version version, const Pager::Options& options) {
  MemoryEnvironment files;
  createDatabase(files, kPath, 12, version);
  FaultEnvironment env(files);
  Tally tally;
  std::mt19937_64 random(seed);
  Script script(env, seed, options);
  env.onChange = [&] {
    for (const Loss loss : {Loss::Everything, Loss::Nothing, Loss::Random, Loss::Random, Loss::Random}) {
      ++tally.points;
      verify(*files.afterPowerCut(loss, random), script.accepted(), random() % 8 == 0, random, tally);
    }
  };
  for (int i = 0; i < transactions && !testing::Test::HasFailure(); ++i) script.runTransaction();
  return tally;
}

TEST(Crash, LeavesTheOldOrTheNewState) {
  const int transactions = longRun() ? 300 : 20;
  Tally sum;
  const struct {
    Version version;
    Pager::Options options;
  } cases[] = {
      {Version::Jet4, {}},
      {Version::Jet4, {.exclusive = true}},
      {Version::Jet4, {.cachePages = 4, .dirtyPages = 3}},  // writes early
      {Version::Jet3, {.exclusive = true, .cachePages = 2, .dirtyPages = 1}},
  };
  uint64_t seed = 1;
  for (const auto& [version, options] : cases) {
    SCOPED_TRACE("case " + std::to_string(seed));
    const Tally tally = crashEverywhere(seed++, transactions, version, options);
    sum.points += tally.points;
    sum.recoveryPoints += tally.recoveryPoints;
    sum.rolledBack += tally.rolledBack;
    sum.oldStates += tally.oldStates;
    sum.newStates += tally.newStates;
  }
  EXPECT_GE(sum.points, longRun() ? 10000u : 2000u);
  EXPECT_GE(sum.recoveryPoints, longRun() ? 1000u : 500u);
  EXPECT_GT(sum.rolledBack, 100u);
  std::cout << "crash points " << sum.points << ", during recovery " << sum.recoveryPoints << ", recoveries "
            << sum.rolledBack << ", old states " << sum.oldStates << ", new states " << sum.newStates << "\n";
}

TEST(Crash, CreationIsWholeOrNothing) {
  MemoryEnvironment files;
  FaultEnvironment env(files);
  std::mt19937_64 random(7);
  bool acknowledged = false;
  int points = 0, whole = 0;
  env.onChange = [&] {
    for (const Loss loss : {Loss::Everything, Loss::Nothing, Loss::Random, Loss::Random}) {
      ++points;
      const auto after = files.afterPowerCut(loss, random);
      if (!after->exists(kPath)) {
        EXPECT_FALSE(acknowledged);
        continue;
      }
      ++whole;
      EXPECT_EQ(valuesOf(*Pager::open(*after, kPath, {})), (PageValues{0, 1, 2, 3, 4}));
    }
  };
  createDatabase(env, kPath, 5);
  acknowledged = true;
  env.onChange();
  EXPECT_GT(points, whole);
  EXPECT_GT(whole, 0);
  EXPECT_FALSE(files.exists("data.mdb-new"));

  Pager::create(env, "other.mdb", Version::Jet4, 3)->append();  // never committed
  EXPECT_FALSE(files.exists("other.mdb"));
  EXPECT_FALSE(files.exists("other.mdb-new"));
  EXPECT_FALSE(files.exists("other.ldb"));
}

// Files in which a crash interrupted a commit after its pages were written.
std::unique_ptr<MemoryEnvironment> hotFiles() {
  MemoryEnvironment files;
  createDatabase(files, kPath, 6);
  FaultEnvironment env(files);
  std::unique_ptr<MemoryEnvironment> hot;
  std::mt19937_64 random(1);
  const auto pager = Pager::open(env, kPath, {});
  env.onChange = [&] {
    // The first moment at which all pages are written.
    auto now = files.afterPowerCut(Loss::Nothing, random);
    const std::string& bytes = now->content(kPath);
    if (!hot && bytes.size() == 7 * 4096 && static_cast<uint8_t>(bytes[3 * 4096]) == 99) hot = std::move(now);
  };
  Transaction transaction(*pager);
  setValue(*pager, 3, 99);
  PageEdit added = pager->append();
  transaction.commit();
  env.onChange = nullptr;
  return hot;
}

TEST(Crash, OneWhoOnlyReadsRollsBackOrSaysSo) {
  const PageValues before = {0, 1, 2, 3, 4, 5};
  auto files = hotFiles();
  EXPECT_EQ(valuesOf(*Pager::open(*files, kPath, {.readOnly = true})), before);
  EXPECT_EQ(files->content(kPath).size(), 6u * 4096);

  files = hotFiles();
  files->setReadOnlyMedium(true);
  EXPECT_EQ(errorOf([&] { Pager::open(*files, kPath, {.readOnly = true}); }), 3051);
  files->setReadOnlyMedium(false);
  EXPECT_EQ(valuesOf(*Pager::open(*files, kPath, {})), before);
  EXPECT_FALSE(files->exists("data.mdb-journal"));
}

TEST(Crash, JournalOfAnotherFileIsLeftAlone) {
  auto files = hotFiles();
  MemoryEnvironment backup;
  createDatabase(backup, kPath, 6);
  for (uint32_t i = 0; i < 5; ++i) commitValue(*Pager::open(backup, kPath, {}), 3, 100 + i);
  files->setContent(kPath, backup.content(kPath));
  const auto pager = Pager::open(*files, kPath, {});
  EXPECT_EQ(valuesOf(*pager), (PageValues{0, 1, 2, 104, 4, 5}));
  commitValue(*pager, 4, 44);
  EXPECT_EQ(valuesOf(*Pager::open(*files, kPath, {})), (PageValues{0, 1, 2, 104, 44, 5}));
}

TEST(Crash, DamagedDeclaredJournalIsRefused) {
  auto files = hotFiles();
  std::string journal = files->content("data.mdb-journal");
  journal[4096 + 20] ^= 1;
  files->setContent("data.mdb-journal", journal);
  EXPECT_EQ(errorOf([&] { Pager::open(*files, kPath, {}); }), 3049);
}

}  // namespace
}  // namespace jet::test
