// A day's work on a disk that fails, fills up, and with memory that runs out: every failure is an error with
// a number, the file is old or new, and the next try works.

#include <gtest/gtest.h>

#include <iostream>
#include <set>

#include "jet/durability/script.h"
#include "support/allocation_fault.h"

namespace jet::test {
namespace {

std::unique_ptr<MemoryEnvironment> copyOf(const MemoryEnvironment& files) {
  std::mt19937_64 random(1);
  return files.afterPowerCut(Loss::Nothing, random);
}

// The script on a copy of the files, through errors: `heal` removes their cause after each.
class Persistent {
 public:
  Persistent(Environment& env, const std::vector<std::string>& script,
             const std::vector<std::string>& contents)
      : workspace_(env), script_(script), contents_(contents) {}

  // Runs `attempt` with the number of each step and the step, which may throw. With `again` a failed
  // statement inside a transaction is tried again there; otherwise the transaction is. Returns the errors'
  // numbers, 0 for those of memory.
  template <typename Attempt, typename Heal>
  std::vector<int> run(bool again, Attempt attempt, Heal heal) {
    for (int tries = 0; next_ < script_.size() && tries < 200; ++tries) {
      try {
        attempt(next_, [&] {
          if (!database_) database_ = workspace_.openDatabase(kPath);
          if (next_ < script_.size()) perform(workspace_, *database_, script_[next_]);
        });
        advance();
        continue;
      } catch (const Error& error) {
        errors_.push_back(error.number());
      } catch (const std::bad_alloc&) {
        errors_.push_back(0);
      }
      heal();
      goOn(again);
      if (testing::Test::HasFailure()) return errors_;
    }
    heal();
    EXPECT_EQ(next_, script_.size());
    EXPECT_TRUE(database_ && contentOf(*database_) == contents_.back());
    return errors_;
  }

 private:
  void advance() {
    const std::string& step = script_[next_];
    if (step == "begin" && depth_++ == 0) begun_ = next_;
    if (step == "commit" || step == "rollback") --depth_;
    ++next_;
  }

  void goOn(bool again) {
    if (!database_) return;
    const std::string& step = script_[next_];
    if (step == "commit" || step == "rollback") {
      // It has ended its level in any case.
      --depth_;
      again = false;
    }
    if (depth_ > 0 && again) {
      try {
        perform(workspace_, *database_, step);
        advance();
        return;
      } catch (const Error&) {
        // The failure had spoilt more than the statement; then the whole transaction has to go.
      }
    }
    SCOPED_TRACE(std::to_string(depth_) + " levels, after " + step.substr(0, 100));
    const bool inside = depth_ > 0 || step == "commit";
    for (; depth_ > 0; --depth_) workspace_.rollback();
    const std::string found = contentOf(*database_);
    if (found == contents_[next_ + 1] && (step == "commit" || found != contents_[next_])) {
      ++next_;
    } else if (found == contents_[next_]) {
      if (inside) next_ = begun_;
    } else {
      ADD_FAILURE() << "neither old nor new after " << step.substr(0, 100);
    }
  }

  Workspace workspace_;
  const std::vector<std::string>& script_;
  const std::vector<std::string>& contents_;
  std::unique_ptr<Database> database_;
  size_t next_ = 0, begun_ = 0;
  int depth_ = 0;
  std::vector<int> errors_;
};

void expectFinal(MemoryEnvironment& files, const std::string& content) {
  Workspace workspace(files);
  const auto database = workspace.openDatabase(kPath, {.exclusive = true, .readOnly = false, .connect = {}});
  EXPECT_TRUE(contentOf(*database) == content);
  expectSound(*database);
}

// Files of a process that died in the middle of a commit.
std::unique_ptr<MemoryEnvironment> interrupted(const MemoryEnvironment& files) {
  const auto copy = copyOf(files);
  FaultEnvironment env(*copy);
  std::unique_ptr<MemoryEnvironment> hot;
  Workspace workspace(env);
  const auto database = workspace.openDatabase(kPath);
  const uint64_t before = env.changes();
  // In the middle of the pages that the commit writes.
  env.onChange = [&] {
    if (env.changes() == before + 12) hot = copyOf(*copy);
  };
  database->execute(u"UPDATE osoby SET kwota = kwota + 100, uwagi = Null, nazwisko = 'Nikt'");
  EXPECT_TRUE(hot);
  return hot;
}

TEST(EngineFault, EveryCallFailsOnceAndForEver) {
  const struct {
    bool forever;
    int error;
  } faults[] = {{false, 3043}, {true, 3043}, {false, 3026}, {true, 3026}};
  const std::vector<std::string> script = shortScript();
  const auto files = startingFiles(), hot = interrupted(*files);
  const std::vector<std::string> contents = committedContents(*files, script);
  ASSERT_TRUE(committedContents(*hot, {})[0] == contents[0]) << "is rolled back";
  uint64_t points = 0;
  for (const auto& [forever, error] : faults) {
    std::mt19937_64 random(7);
    for (uint64_t n = 1;; n += longRun() || n < 100 ? 1 : 1 + random() % 12) {
      SCOPED_TRACE("call " + std::to_string(n) + (forever ? " and all later ones" : ""));
      const auto copy = copyOf(n % 2 ? *files : *hot);
      FaultEnvironment env(*copy);
      env.failAt(n, forever, error);
      const std::vector<int> errors =
          Persistent(env, script, contents)
              .run(
                  n % 3 != 0, [](size_t, const auto& step) { step(); }, [&] { env.heal(); });
      if (!env.failed()) break;
      ++points;
      for (const int found : errors) EXPECT_EQ(found, error);
      EXPECT_LE(errors.size(), 1u);
      expectFinal(*copy, contents.back());
      if (HasFailure()) return;
    }
  }
  EXPECT_GT(points, 500u);
  std::cout << "failing calls " << points << "\n";
}

TEST(EngineFault, FullDiskRefusesAndNothingIsLost) {
  const std::vector<std::string> script = shortScript();
  const auto files = startingFiles();
  const std::vector<std::string> contents = committedContents(*files, script);
  const uint64_t used = files->content(kPath).size();
  int full = 0;
  for (uint64_t room = 0;; room += longRun() ? 512 : 4096 - 512) {
    SCOPED_TRACE("room " + std::to_string(room));
    const auto copy = copyOf(*files);
    copy->setCapacity(used + room);
    const std::vector<int> errors = Persistent(*copy, script, contents)
                                        .run(
                                            room % 1024 == 0, [](size_t, const auto& step) { step(); },
                                            [&] { copy->setCapacity(~uint64_t{0}); });
    for (const int found : errors) EXPECT_EQ(found, 3026);
    EXPECT_LE(errors.size(), 1u);
    if (errors.empty() || HasFailure()) break;
    ++full;
    expectFinal(*copy, contents.back());
  }
  EXPECT_GT(full, 20);
  std::cout << "full disks " << full << "\n";
}

// Runs `action` with the n-th allocation failing; true when it threw for that.
template <typename Action>
bool throwsAt(uint64_t n, Action action) {
  try {
    const AllocationFault fault(n);
    action();
  } catch (const std::bad_alloc&) {
    return true;
  } catch (const Error& error) {
    EXPECT_TRUE(AllocationFault::failed()) << error.what();
    return true;
  }
  return false;
}

// Steps grow with what was tried.
uint64_t following(uint64_t n, std::mt19937_64& random) {
  return n + 1 + random() % (n / (longRun() ? 150 : 12) + 1);
}

TEST(EngineMemoryFault, EveryAllocationOfAReadFailsOnce) {
  const auto files = startingFiles();
  const struct {
    const char* name;
    void (*read)(Database& database);
  } reads[] = {
      {"tables", [](Database& d) { contentOf(d); }},
      {"join",
       [](Database& d) {
         d.openRecordset(
             u"SELECT dzialy.nazwa, Count(*), Max(uwagi) FROM (dzialy LEFT JOIN osoby ON dzialy.id = "
             u"osoby.dzial) LEFT JOIN rzeczy ON osoby.id = rzeczy.osoba GROUP BY dzialy.nazwa ORDER BY 2");
       }},
      {"find",
       [](Database& d) {
         d.openRecordset(u"SELECT * FROM osoby ORDER BY nazwisko")->findFirst(u"kwota > 5");
       }},
      {"check", [](Database& d) { d.check([](const std::u16string&) {}); }},
  };
  uint64_t points = 0;
  std::mt19937_64 random(3);
  for (const auto& [name, read] : reads) {
    Workspace workspace(*files);
    for (uint64_t n = 1;; n = following(n, random), ++points) {
      SCOPED_TRACE(std::string(name) + ", allocation " + std::to_string(n));
      std::unique_ptr<Database> database;
      throwsAt(n, [&] {
        database = workspace.openDatabase(kPath);
        read(*database);
      });
      const bool failed = AllocationFault::failed();
      if (!database) database = workspace.openDatabase(kPath);
      read(*database);
      if (!failed || HasFailure()) break;
    }
    const auto database =
        workspace.openDatabase(kPath, {.exclusive = true, .readOnly = false, .connect = {}});
    expectSound(*database);
  }
  std::cout << "failing allocations of reads " << points << "\n";
}

TEST(EngineMemoryFault, EveryAllocationOfAChangeFailsOnce) {
  const std::vector<std::string> script = shortScript();
  const auto files = startingFiles();
  const std::vector<std::string> contents = committedContents(*files, script);
  uint64_t points = 0;
  std::mt19937_64 random(3);
  for (uint64_t n = 1;; n = following(n, random)) {
    SCOPED_TRACE("allocation " + std::to_string(n));
    const auto copy = copyOf(*files);
    // The n-th allocation of every step fails when the step is first tried.
    std::set<size_t> met;
    size_t current = 0;
    const auto attempt = [&](size_t step, const auto& action) {
      current = step;
      if (met.contains(step)) return action();
      const AllocationFault fault(n);
      action();
    };
    const size_t errors =
        Persistent(*copy, script, contents).run(n % 3 != 0, attempt, [&] { met.insert(current); }).size();
    points += errors;
    expectFinal(*copy, contents.back());
    if (errors == 0 || HasFailure()) break;
  }
  EXPECT_GT(points, 500u);
  std::cout << "failing allocations of changes " << points << "\n";
}

}  // namespace
}  // namespace jet::test
