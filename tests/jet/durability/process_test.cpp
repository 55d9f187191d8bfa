// Copies in processes of their own that work in one real file while some of them are killed.

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <iostream>
#include <random>
#include <thread>

#include "jet/durability/script.h"
#include "support/process.h"
#include "support/temp_folder.h"

namespace jet::test {
namespace {

constexpr char kFile[] = "firma.mdb", kBoard[] = "board";
constexpr int kWorkers = 4;
constexpr int kHolders = 8;
constexpr int kItems = 5;  // of each worker at any time, once it has made so many
constexpr int kTotal = 8000;

// What the workers tell the parent; it survives them.
struct Board {
  std::array<std::atomic<int32_t>, kWorkers> acknowledged, refused, wrong;
};

std::u16string number(int64_t n) { return fromUtf8(std::to_string(n)); }

// The note of a worker's n-th item: long enough for pages of its own, for some.
std::u16string noteOf(int worker, int32_t n) {
  std::u16string note;
  for (int i = n * 37 % 900; i >= 0; --i) note += u"nota " + number(worker) + u"." + number(n) + u" ż ";
  return note;
}

int32_t integer(Database& database, const std::u16string& sql) {
  const auto rows = database.openRecordset(sql, RecordsetType::Snapshot);
  const Value value = rows->field(size_t{0}).value();
  if (const auto* n = value.getIf<int32_t>()) return *n;
  return static_cast<int32_t>(value.get<double>());
}

// The n-th change of a worker: a new item, its oldest one removed, an amount moved between two holders, and
// its own counter, all or none of them.
void change(Workspace& workspace, Database& database, int worker, int32_t n, std::mt19937_64& random) {
  const std::u16string own = number(worker), from = number(random() % kHolders),
                       to = number(random() % kHolders), amount = number(random() % 50);
  workspace.beginTrans();
  try {
    database.execute(u"INSERT INTO rzeczy (kopia, numer, nota) VALUES (" + own + u", " + number(n) + u", '" +
                     noteOf(worker, n) + u"')");
    database.execute(u"UPDATE posiadacze SET ilosc = ilosc - " + amount + u" WHERE id = " + from);
    database.execute(u"DELETE FROM rzeczy WHERE kopia = " + own + u" AND numer <= " + number(n - kItems));
    database.execute(u"UPDATE posiadacze SET ilosc = ilosc + " + amount + u" WHERE id = " + to);
    database.execute(u"UPDATE liczniki SET numer = " + number(n) + u" WHERE kopia = " + own);
    workspace.commitTrans();
  } catch (const Error&) {
    try {
      workspace.rollback();
    } catch (const Error&) {
      // A commit that failed has ended the transaction.
    }
    throw;
  }
}

[[noreturn]] void work(int worker, uint64_t seed) {
  const SharedMemory shared(kBoard, sizeof(Board));
  Board& board = *static_cast<Board*>(shared.data());
  std::mt19937_64 random(seed);
  Workspace workspace;
  std::unique_ptr<Database> database;
  for (;;) {
    try {
      if (!database || random() % 40 == 0) database = workspace.openDatabase(kFile);
      if (integer(*database, u"SELECT Sum(ilosc) FROM posiadacze") != kTotal) ++board.wrong[worker];
      const int32_t done = integer(*database, u"SELECT numer FROM liczniki WHERE kopia = " + number(worker));
      // A commit is complete or absent, and acknowledged or cut off just before that.
      const int32_t acknowledged = board.acknowledged[worker];
      if (done != acknowledged && done != acknowledged + 1) ++board.wrong[worker];
      board.acknowledged[worker] = done;
      change(workspace, *database, worker, done + 1, random);
      board.acknowledged[worker] = done + 1;
    } catch (const Error& error) {
      ++(error.number() == 3260 || error.number() == 3187 ? board.refused : board.wrong)[worker];
      if (board.wrong[worker] == 1) std::cerr << error.what() << std::endl;
    } catch (const std::exception& error) {
      ++board.wrong[worker];
      std::cerr << error.what() << std::endl;
    }
  }
}

void create(const std::filesystem::path& path) {
  Workspace workspace;
  const auto database = workspace.createDatabase(path, kPolishLocale);
  for (const char16_t* sql :
       {u"CREATE TABLE posiadacze (id LONG CONSTRAINT PrimaryKey PRIMARY KEY, ilosc LONG)",
        u"CREATE TABLE liczniki (kopia LONG CONSTRAINT PrimaryKey PRIMARY KEY, numer LONG)",
        u"CREATE TABLE rzeczy (id COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, kopia LONG, numer "
        u"LONG, nota MEMO, CONSTRAINT czyja FOREIGN KEY (kopia) REFERENCES liczniki (kopia))",
        u"CREATE UNIQUE INDEX numer ON rzeczy (kopia, numer)"})
    database->execute(sql);
  for (int i = 0; i < kHolders; ++i)
    database->execute(u"INSERT INTO posiadacze VALUES (" + number(i) + u", " + number(kTotal / kHolders) +
                      u")");
  for (int i = 0; i < kWorkers; ++i)
    database->execute(u"INSERT INTO liczniki VALUES (" + number(i) + u", 0)");
}

void expectItems(Database& database, int worker, int32_t done) {
  const auto rows = database.openRecordset(u"SELECT numer, nota FROM rzeczy WHERE kopia = " + number(worker) +
                                           u" ORDER BY numer");
  int32_t n = std::max(1, done - kItems + 1);
  for (; !rows->eof(); rows->moveNext(), ++n) {
    EXPECT_EQ(rows->value(u"numer"), Value(n));
    EXPECT_TRUE(rows->value(u"nota") == Value(noteOf(worker, n))) << n;
  }
  EXPECT_EQ(n, done + 1);
}

TEST(EngineProcesses, KilledOnesLoseNothingAndLeaveNothingHalfDone) {
  const TempFolder folder;
  const std::filesystem::path path = folder / kFile;
  create(path);
  const SharedMemory shared(folder / kBoard, sizeof(Board));
  const Board& board = *static_cast<Board*>(shared.data());

  Workers workers(folder.path(), board.acknowledged);
  const int kills = longRun() ? 100 : 20;
  for (int i = 0; i < kills; ++i) ASSERT_LT(workers.killOne(50, 100), size_t{kWorkers});
  EXPECT_TRUE(workers.finish());

  Workspace workspace;
  const auto database = workspace.openDatabase(path, {.exclusive = true, .readOnly = false, .connect = {}});
  EXPECT_EQ(integer(*database, u"SELECT Sum(ilosc) FROM posiadacze"), kTotal);
  int commits = 0, refusals = 0;
  for (int worker = 0; worker < kWorkers; ++worker) {
    const int32_t acknowledged = board.acknowledged[worker];
    const int32_t done = integer(*database, u"SELECT numer FROM liczniki WHERE kopia = " + number(worker));
    EXPECT_EQ(board.wrong[worker], 0);
    EXPECT_TRUE(done == acknowledged || done == acknowledged + 1) << done << " of " << acknowledged;
    EXPECT_GT(acknowledged, 0);
    expectItems(*database, worker, done);
    commits += done;
    refusals += board.refused[worker];
  }
  expectSound(*database);
  std::cout << commits << " transactions of " << kWorkers << " copies, " << kills << " killed, " << refusals
            << " refusals\n";
}

}  // namespace
}  // namespace jet::test

// The program is its own workers' too.
int main(int argc, char** argv) {
  if (argc == 4 && std::string_view(argv[1]) == "--worker")
    jet::test::work(std::stoi(argv[2]), std::stoull(argv[3]));
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
