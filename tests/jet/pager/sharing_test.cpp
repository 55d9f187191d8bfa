// Several copies with one file open.

#include <gtest/gtest.h>

#include "jet/format/text.h"
#include "jet/pager/page_model.h"
#include "support/fault_env.h"

namespace jet::test {
namespace {

const std::filesystem::path kPath = "data.mdb";

class Sharing : public testing::Test {
 protected:
  Sharing() { createDatabase(files_, kPath, 6); }

  // A copy on a machine of its own.
  std::unique_ptr<Pager> copy(const std::string& machine, Pager::Options options = {.lockWaitMs = 50}) {
    files_.setComputerName(machine);
    return Pager::open(files_, kPath, options);
  }

  // The sentence with which opening is refused; empty when it is not.
  std::string refusal(Pager::Options options) {
    try {
      copy("OTHER", options);
    } catch (const Error& error) {
      return error.what();
    }
    return {};
  }

  MemoryEnvironment files_;
};

TEST_F(Sharing, ExclusiveAndSharedOpeningsRefuseEachOther) {
  {
    const auto desk = copy("DESK7"), store = copy("STORE");
    EXPECT_NE(refusal({.exclusive = true}).find("DESK7"), std::string::npos);
    EXPECT_EQ(refusal({}), "");
    EXPECT_EQ(refusal({.readOnly = true}), "");
  }
  EXPECT_FALSE(files_.exists("data.ldb"));
  {
    const auto alone = copy("BOSS", {.exclusive = true});
    for (const Pager::Options& options : {Pager::Options{}, {.exclusive = true}, {.readOnly = true}}) {
      const std::string text = refusal(options);
      EXPECT_EQ(text.substr(0, 5), "3356:") << text;
      EXPECT_NE(text.find("BOSS"), std::string::npos) << text;
      EXPECT_NE(text.find("Admin"), std::string::npos) << text;
    }
  }
  EXPECT_EQ(refusal({}), "");
}

TEST_F(Sharing, SlotsAreThoseOfTheLockFile) {
  std::vector<std::unique_ptr<Pager>> copies;
  for (int i = 0; i < 255; ++i) copies.push_back(copy("M" + std::to_string(i)));
  EXPECT_EQ(errorOf([&] { copy("TOOMANY"); }), 3045);
  const std::string entry = files_.content("data.ldb").substr(254 * 64);
  EXPECT_EQ(entry, std::string("M254") + std::string(28, '\0') + "Admin" + std::string(27, '\0'));
  copies[3].reset();
  const auto next = copy("NEXT");
  EXPECT_EQ(files_.content("data.ldb").substr(3 * 64, 4), "NEXT");
}

// A program that knows only the slots counts as well.
TEST_F(Sharing, HeldSlotKeepsExclusiveOpeningOut) {
  const auto other = files_.open("data.ldb", Environment::Open::CreateOrOpen);
  ASSERT_TRUE(other->tryLock(0x10000002, 1, File::Lock::Exclusive));
  EXPECT_EQ(errorOf([&] { copy("A", {.exclusive = true}); }), 3045);
  const auto a = copy("A"), b = copy("B");
  EXPECT_EQ(files_.content("data.ldb").substr(2 * 64, 1), "B");
}

TEST_F(Sharing, WriterIsNamedToTheOneWhoWaits) {
  const auto a = copy("ANNA"), b = copy("BORYS"), c = copy("CELINA");
  b->begin();
  setValue(*b, 1, 10);
  try {
    c->begin();
    FAIL();
  } catch (const Error& error) {
    EXPECT_EQ(error.number(), 3260);
    EXPECT_NE(toUtf8(error.description()).find("BORYS"), std::string::npos) << error.what();
  }
  EXPECT_EQ(valuesOf(*a)[1], 1u);  // readers are not disturbed
  b->commit();
  c->begin();
  setValue(*c, 1, 20);
  c->commit();
  EXPECT_EQ(valuesOf(*a)[1], 20u);
}

TEST_F(Sharing, ReaderKeepsHisStateAndTheWriterRollsBack) {
  const auto reader = copy("A"), writer = copy("B");
  {
    ReadScope scope(*reader);
    EXPECT_EQ(valueOf(reader->read(2), reader->layout()), 2u);
    EXPECT_EQ(errorOf([&] { commitValue(*writer, 2, 22); }), 3260);
    EXPECT_EQ(writer->level(), 0);
    EXPECT_EQ(valuesOf(*writer)[2], 2u);
  }
  commitValue(*writer, 2, 22);
  EXPECT_EQ(valuesOf(*reader)[2], 22u);
}

TEST_F(Sharing, NewReadersWaitForTheWriterWhoWaitsForOldOnes) {
  FaultEnvironment env(files_);
  const auto writer = Pager::open(env, kPath, {});
  const auto oldReader = copy("A"), newReader = copy("B", {.lockWaitMs = 0});
  auto reading = std::make_unique<ReadScope>(*oldReader);
  int entered = 0;
  env.onSleep = [&] {
    entered += errorOf([&] { valuesOf(*newReader); }) == 0;
    reading.reset();
  };
  commitValue(*writer, 1, 11);
  EXPECT_EQ(reading, nullptr);
  EXPECT_EQ(entered, 0);
  EXPECT_EQ(valuesOf(*newReader)[1], 11u);
}

// The reader would wait for the writer, who waits for him: he gives way at once.
TEST_F(Sharing, ReaderWhoWantsToWriteGivesWayToTheWriterWhoWaitsForHim) {
  FaultEnvironment env(files_);
  const auto writer = Pager::open(env, kPath, {});
  const auto reader = copy("A", {.lockWaitMs = 5000});
  auto reading = std::make_unique<ReadScope>(*reader);
  env.onSleep = [&] {
    if (!reading) return;
    const uint64_t start = files_.monotonicMilliseconds();
    EXPECT_EQ(errorOf([&] { reader->begin(); }), 3260);
    EXPECT_EQ(files_.monotonicMilliseconds(), start);
    reading.reset();
  };
  commitValue(*writer, 1, 11);
  EXPECT_EQ(reading, nullptr);
}

TEST_F(Sharing, FileReplacedWhileOpening) {
  createDatabase(files_, "new.mdb", 9);
  FaultEnvironment env(files_);
  env.onLock = [&] {
    if (files_.exists("new.mdb")) files_.rename("new.mdb", kPath);
  };
  EXPECT_EQ(valuesOf(*Pager::open(env, kPath, {})).size(), 9u);
}

// The last copy to leave removes the lock file that the next one has just opened.
TEST_F(Sharing, LockFileRemovedWhileOpening) {
  auto leaving = copy("A");
  FaultEnvironment env(files_);
  env.onLock = [&] { leaving.reset(); };
  const auto b = Pager::open(env, kPath, {.lockWaitMs = 10});
  env.onLock = nullptr;
  const auto c = copy("C", {.lockWaitMs = 10});
  Transaction writing(*b);
  EXPECT_EQ(errorOf([&] { c->begin(); }), 3260);
}

TEST_F(Sharing, CountersMoveWithCommitsOnly) {
  const auto a = copy("A"), b = copy("B");
  valuesOf(*b);
  const uint64_t before = b->changeCounter();
  valuesOf(*b);
  {
    Transaction empty(*a);
    empty.commit();
  }
  valuesOf(*b);
  EXPECT_EQ(b->changeCounter(), before);
  const uint64_t own = a->changeCounter();
  commitValue(*a, 5, 55);
  EXPECT_NE(a->changeCounter(), own);
  valuesOf(*b);
  EXPECT_NE(b->changeCounter(), before);
}

// The word that counts all commits comes back after 65279 of them; the copy's own word moves then, so that
// the table of words does not.
TEST_F(Sharing, TableOfCommitWordsDoesNotComeBack) {
  const uint32_t table = FileLayout::of(Version::Jet4).commitTable;
  std::string bytes = files_.content(kPath);
  put16(reinterpret_cast<uint8_t*>(&bytes[table]), 0xFFFE);
  files_.setContent(kPath, bytes);
  const auto a = copy("A"), b = copy("B");
  const auto word = [&](int n) {
    return get16(reinterpret_cast<const uint8_t*>(&files_.content(kPath)[table + 2 * n]));
  };
  commitValue(*b, 1, 1);
  EXPECT_EQ(word(0), 0xFFFF);
  EXPECT_EQ(word(2), 0x0100);
  commitValue(*b, 1, 2);
  EXPECT_EQ(word(0), 0x0101);
  EXPECT_EQ(word(2), 0x0101);
  EXPECT_EQ(valuesOf(*a)[1], 2u);
}

TEST_F(Sharing, ReadOnlyMediumNeedsNoLockFile) {
  files_.setReadOnlyMedium(true);
  EXPECT_EQ(errorOf([&] { copy("A"); }), 3051);
  const auto a = copy("A", {.readOnly = true}), b = copy("B", {.exclusive = true, .readOnly = true});
  EXPECT_EQ(valuesOf(*a), (PageValues{0, 1, 2, 3, 4, 5}));
  EXPECT_EQ(valuesOf(*b), valuesOf(*a));
  EXPECT_FALSE(files_.exists("data.ldb"));
  Transaction reading(*a);
  EXPECT_EQ(errorOf([&] { a->write(1); }), 3027);
  EXPECT_EQ(errorOf([&] { a->append(); }), 3027);
}

// Copies take turns at random; each sees what the last commit of any left.
TEST_F(Sharing, RandomTurns) {
  std::mt19937_64 random(3);
  PageValues committed = {0, 1, 2, 3, 4, 5};
  std::vector<std::unique_ptr<Pager>> copies(4);
  int commits = 0, refusals = 0, lateRefusals = 0;
  for (int step = 0; step < (longRun() ? 100000 : 5000); ++step) {
    auto& pager = copies[random() % copies.size()];
    if (!pager)
      pager = copy("C", {.cachePages = random() % 8, .dirtyPages = 1 + random() % 8, .lockWaitMs = 2});
    const auto what = random() % 12;
    if (what == 0 && pager->level() == 0) {
      pager.reset();
    } else if (what < 4 && pager->level() == 0) {
      ASSERT_EQ(valuesOf(*pager), committed);
    } else if (pager->level() == 0) {
      PageValues values = committed;
      const int error = errorOf([&] {
        Transaction transaction(*pager);
        // Another reads meanwhile, so that the pages cannot be written.
        const auto other = copy("D");
        std::unique_ptr<ReadScope> reading;
        if (random() % 4 == 0) reading = std::make_unique<ReadScope>(*other);
        for (auto i = random() % 5; i > 0; --i) {
          const auto page = static_cast<PageNumber>(random() % values.size());
          values[page] = static_cast<uint32_t>(random());
          setValue(*pager, page, values[page]);
        }
        if (random() % 8 == 0 && values.size() < 30) {
          values.push_back(0);
          pager->append();
        }
        if (reading) {
          ASSERT_EQ(valuesOf(*other), committed);
        }
        if (random() % 4 == 0) {
          const auto waiting = copy("W", {.lockWaitMs = 2});
          refusals += errorOf([&] { waiting->begin(); }) == 3260;
        }
        transaction.commit();
        committed = values;
        ++commits;
      });
      // 3187: the writer had begun to write early, so that the other could not read.
      ASSERT_TRUE(error == 0 || error == 3260 || error == 3187) << error;
      lateRefusals += error == 3260;
    }
  }
  EXPECT_GT(commits, 500);
  EXPECT_GT(refusals, 100);
  EXPECT_GT(lateRefusals, 100);
}

}  // namespace
}  // namespace jet::test
