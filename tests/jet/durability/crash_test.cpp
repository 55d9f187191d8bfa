// Power cuts in the middle of a day's work: what the next start finds is the state before or after the
// statement that was interrupted, and the file is sound.

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>

#include "jet/durability/script.h"

namespace jet::test {
namespace {

struct Tally {
  uint64_t points = 0, recoveryPoints = 0, recoveries = 0, oldStates = 0, newStates = 0, neither = 0;
};

// The two contents that may be found, and whether there may be no file yet.
struct Expected {
  const std::string& before;
  const std::string& after;
  bool absent = false;
};

class PowerCuts {
 public:
  // Tries one in `sparseness` points.
  explicit PowerCuts(uint64_t sparseness) : sparseness_(sparseness) {}

  void at(const MemoryEnvironment& files, const Expected& expected) {
    for (const Loss loss : {Loss::Everything, Loss::Nothing, Loss::Random, Loss::Random}) {
      if (random_() % sparseness_ != 0) continue;
      ++tally.points;
      reopen(*files.afterPowerCut(loss, random_), expected, random_() % (longRun() ? 12 : 4) == 0);
    }
  }

  Tally tally;

 private:
  // With `again` the power fails at every point of the recovery too.
  void reopen(MemoryEnvironment& files, const Expected& expected, bool again) {
    if (expected.absent && !files.exists(kPath)) {
      ++tally.oldStates;
      return;
    }
    FaultEnvironment env(files);
    if (again) {
      env.onChange = [&] {
        for (const Loss loss : {Loss::Everything, Loss::Nothing, Loss::Random}) {
          if (random_() % 8 != 0) continue;
          ++tally.recoveryPoints;
          reopen(*files.afterPowerCut(loss, random_), expected, false);
        }
      };
    }
    Workspace workspace(env);
    try {
      const auto database = workspace.openDatabase(
          kPath, {.exclusive = random_() % 2 == 0, .readOnly = random_() % 4 == 0, .connect = {}});
      if (env.changes() > 3) ++tally.recoveries;
      env.onChange = nullptr;
      const std::string found = contentOf(*database);
      ++(found == expected.before  ? tally.oldStates
         : found == expected.after ? tally.newStates
                                   : tally.neither);
      expectSound(*database);
      if (!database->readOnly() && random_() % 8 == 0) {
        database->execute(u"CREATE TABLE potem (id COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, uwagi MEMO)");
        database->execute(u"INSERT INTO potem (uwagi) VALUES ('" + std::u16string(3000, u'ż') + u"')");
        expectSound(*database);
      }
    } catch (const Error& error) {
      ++tally.neither;
      ADD_FAILURE() << error.what();
    }
  }

  uint64_t sparseness_;
  std::mt19937_64 random_{11};
};

TEST(EngineCrash, LeavesTheOldOrTheNewState) {
  const std::vector<std::string> script = longScript();
  EXPECT_GE(
      std::count_if(script.begin(), script.end(),
                    [](const std::string& s) { return s != "begin" && s != "commit" && s != "rollback"; }),
      200);
  MemoryEnvironment fresh;
  Workspace(fresh).createDatabase(kPath, kPolishLocale);
  const std::vector<std::string> contents = committedContents(fresh, script);
  if (HasFailure()) return;

  MemoryEnvironment files;
  FaultEnvironment env(files);
  PowerCuts cuts(longRun() ? 1 : 16);
  size_t step = 0;
  bool created = false;
  env.onChange = [&] {
    cuts.at(files, {contents[step], contents[std::min(step + 1, script.size())], !created});
  };
  {
    Workspace workspace(env);
    const auto database = workspace.createDatabase(kPath, kPolishLocale);
    created = true;
    for (; step < script.size() && !HasFailure(); ++step) {
      SCOPED_TRACE("step " + std::to_string(step) + ' ' + script[step].substr(0, 100));
      perform(workspace, *database, script[step]);
    }
  }
  const Tally& tally = cuts.tally;
  EXPECT_EQ(tally.neither, 0u);
  EXPECT_GE(tally.points, longRun() ? 10000u : 500u);
  EXPECT_GE(tally.recoveryPoints, longRun() ? 1000u : 100u);
  EXPECT_GT(tally.recoveries, 50u);
  EXPECT_GT(tally.newStates, 10u);
  std::cout << "crash points " << tally.points << ", during recovery " << tally.recoveryPoints
            << ", recoveries " << tally.recoveries << ", old " << tally.oldStates << ", new "
            << tally.newStates << ", neither " << tally.neither << "\n";
}

}  // namespace
}  // namespace jet::test
