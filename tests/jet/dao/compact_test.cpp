// Compacting: a new file with everything that the old one held, or none at all.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <random>

#include "database_text.h"
#include "jet/catalog/row_store.h"
#include "jet/storage/key_sorter.h"
#include "support/error_of.h"
#include "support/fault_env.h"
#include "support/other_reader.h"
#include "support/process.h"
#include "support/samples.h"
#include "support/temp_folder.h"

namespace jet {
namespace {

namespace fs = std::filesystem;

std::vector<std::string> faults(const fs::path& path, const std::u16string& connect = {}) {
  Workspace workspace;
  std::vector<std::string> lines;
  workspace.openDatabase(path, {.readOnly = true, .connect = connect})
      ->check([&](const std::u16string& line) { lines.push_back(toUtf8(line)); }, true);
  return lines;
}

std::vector<std::string> filesIn(const fs::path& folder) {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(folder)) names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

// Tables with every kind of trouble: deleted columns and rows, columns that came later, moved rows, long
// values of all sizes, shared indexes, cascades, an unenforced relationship, queries.
void fill(Database& db) {
  db.execute(
      u"CREATE TABLE osoby (nr COUNTER PRIMARY KEY, zbedne TEXT(20), nazwisko TEXT(60) NOT NULL, kwota "
      u"CURRENCY, "
      u"uwagi MEMO, zdjecie LONGBINARY, wiek BYTE, jest BIT)");
  db.execute(
      u"CREATE TABLE rzeczy (kod TEXT(12) CONSTRAINT pk PRIMARY KEY, osoba LONG, opis MEMO, waga DOUBLE)");
  db.execute(u"CREATE INDEX wgNazwiska ON osoby (nazwisko DESC, nr) WITH IGNORE NULL");
  db.execute(u"CREATE UNIQUE INDEX wgKwoty ON osoby (kwota)");
  db.execute(u"CREATE INDEX wgOsoby ON rzeczy (osoba)");
  db.execute(u"CREATE INDEX wgOpisu ON rzeczy (opis)");
  db.define([](Catalog& catalog) {
    catalog.createRelation({.name = u"posiada",
                            .table = u"osoby",
                            .foreignTable = u"rzeczy",
                            .columns = {{u"nr", u"osoba"}},
                            .cascadeUpdates = true,
                            .cascadeDeletes = true});
    catalog.createRelation({.name = u"luzny",
                            .table = u"osoby",
                            .foreignTable = u"rzeczy",
                            .columns = {{u"wiek", u"waga"}},
                            .enforced = false,
                            .join = Relation::Join::Left});
    Property unknown{.name = u"MojaWlasnosc", .type = Type::Binary, .stored = "\x01\x02\x03"};
    catalog.setColumnProperty(u"osoby", u"kwota", unknown);
    catalog.setTableProperty(
        u"rzeczy",
        {.name = u"Description", .type = Type::Text, .design = true, .stored = std::string("o\0p\0", 4)});
  });
  std::mt19937 random(7);
  const auto people = db.openRecordset(u"osoby");
  for (int i = 0; i < 300; ++i) {
    people->addNew();
    people->field(u"nazwisko")
        .setValue(Text(u"Żółć ") + static_cast<char16_t>(u'a' + random() % 26) + (i % 3 ? u"ski" : u"SKI"));
    people->field(u"zbedne").setValue(Text(random() % 20, u'z'));
    if (i % 5) people->field(u"kwota").setValue(Currency{static_cast<int64_t>(i) * 12345});
    const size_t sizes[] = {0, 10, 33, 500, 4072, 4073, 4076, 9000, 30000};
    if (i % 4) people->field(u"uwagi").setValue(Text(sizes[i % 9], i % 2 ? u'x' : u'ł'));
    if (i % 7 == 0)
      people->field(u"zdjecie").setValue(Binary(sizes[(i / 7) % 9] * 3, static_cast<uint8_t>(i)));
    people->field(u"jest").setValue(i % 2 == 0);
    people->update();
  }
  db.execute(u"ALTER TABLE osoby DROP COLUMN zbedne");
  db.execute(u"ALTER TABLE osoby ADD COLUMN pozniej TEXT(200)");
  db.execute(u"ALTER TABLE osoby ADD COLUMN data DATETIME");
  db.execute(
      u"UPDATE osoby SET pozniej = '0123456789012345678901234567890123456789012345678901234567890123456789' "
      u"WHERE nr Mod 3 = 0");
  for (int i = 0; i < 200; ++i)
    db.execute(u"INSERT INTO rzeczy (kod, osoba, opis) VALUES ('" +
               fromUtf8(std::to_string(random() % 90000 + i)) + u"-" + fromUtf8(std::to_string(i)) + u"', " +
               fromUtf8(std::to_string(i % 250 + 1)) + u", 'opis rzeczy')");
  db.execute(u"DELETE FROM osoby WHERE nr Mod 11 = 0");
  saveQuery(db, u"dorosli", u"nazwisko", u"osoby", u"wiek >= 18");
}

TEST(Compact, SamplesSurviveWithEverythingThatTheyHold) {
  if (sampleFiles().empty()) GTEST_SKIP() << "TANDEKO_SAMPLES names no folder of samples";
  for (const fs::path& file : sampleFiles()) {
    SCOPED_TRACE(file.filename().string());
    const TempFolder folder;
    const fs::path compacted = folder / "compacted.mdb", again = folder / "again.mdb";
    Workspace workspace;
    workspace.compactDatabase(file, compacted);
    EXPECT_EQ(faults(compacted), std::vector<std::string>());
    const auto before = databaseText(file), after = databaseText(compacted);
    EXPECT_EQ(difference(before, after), "");
    expectOtherReaderAgrees(compacted);
    workspace.compactDatabase(compacted, again);
    EXPECT_EQ(difference(after, databaseText(again)), "");
    EXPECT_EQ(fs::file_size(again), fs::file_size(compacted));
    EXPECT_EQ(filesIn(folder.path()), (std::vector<std::string>{"again.mdb", "compacted.mdb"}));
    const auto db = workspace.openDatabase(compacted);
    EXPECT_EQ(db->version(), Version::Jet4);
    db->execute(u"CREATE TABLE nowa (a LONG)");
  }
}

class CompactTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto db = workspace_.createDatabase(source_, kGeneralLocale);
    workspace_.beginTrans();
    fill(*db);
    workspace_.commitTrans();
  }

  TempFolder folder_;
  fs::path source_ = folder_ / "firma.mdb", target_ = folder_ / "nowa.mdb";
  Workspace workspace_;
};

TEST_F(CompactTest, CarriesEverythingInKeyOrderAndLeavesNoGaps) {
  workspace_.compactDatabase(source_, target_);
  EXPECT_EQ(faults(target_), std::vector<std::string>());
  expectOtherReaderAgrees(target_);
  EXPECT_EQ(difference(databaseText(source_), databaseText(target_)), "");
  EXPECT_LT(fs::file_size(target_), fs::file_size(source_));

  const auto db = workspace_.openDatabase(target_);
  const TableDefPtr people = db->tableDef(u"osoby");
  EXPECT_EQ(people->rowLayout.nextColumn, people->columns.size());
  std::vector<bool> numbers(people->columns.size());
  for (const ColumnDef& column : people->columns) numbers.at(column.layout.number) = true;
  EXPECT_EQ(std::count(numbers.begin(), numbers.end(), false), 0);
  const ReadScope scope(db->catalog().pager());
  const TableDefPtr things = db->tableDef(u"rzeczy");
  const RowStore rows(db->catalog().pager(), things);
  std::vector<std::string> keys;
  for (Heap::Scan scan = rows.scan(); scan.next();)
    keys.push_back(
        toUtf8(rows.reader(scan.bytes(), scan.where()).value(things->columnOrdinal(u"kod")).get<Text>()));
  EXPECT_EQ(keys.size(), things->rowCount);
  std::vector<std::string> sorted = keys;
  std::sort(sorted.begin(), sorted.end(), [](const std::string& a, const std::string& b) {
    return Collation::get(0x0409).compare(fromUtf8(a), fromUtf8(b)) < 0;
  });
  EXPECT_EQ(keys, sorted);
}

TEST_F(CompactTest, TheNewFileGoesOnLikeTheOldOne) {
  workspace_.compactDatabase(source_, target_);
  const auto db = workspace_.openDatabase(target_);
  db->execute(u"INSERT INTO osoby (nazwisko) VALUES ('Nowak')");
  EXPECT_EQ(db->lastAutoNumber(), 301);
  EXPECT_EQ(errorOf([&] { db->execute(u"INSERT INTO rzeczy (kod, osoba) VALUES ('x', 11)"); }), 3201);
  db->execute(u"DELETE FROM osoby WHERE nr = 1");
  EXPECT_EQ(db->openRecordset(u"SELECT kod FROM rzeczy WHERE osoba = 1")->recordCount(), 0);
  db->define([](Catalog& catalog) { catalog.dropRelation(u"posiada"); });
  db->execute(u"DROP TABLE rzeczy");
  db->close();
  EXPECT_EQ(faults(target_), std::vector<std::string>());
}

TEST_F(CompactTest, SortOrderAndPasswordChangeOnRequest) {
  workspace_.compactDatabase(source_, target_,
                             {.locale = std::u16string(kPolishLocale), .password = u"tajne"});
  EXPECT_EQ(errorOf([&] { workspace_.openDatabase(target_); }), 3031);
  EXPECT_EQ(faults(target_, u";pwd=tajne;"), std::vector<std::string>());
  EXPECT_EQ(difference(databaseText(source_), databaseText(target_, u";pwd=tajne;")), "");
  {
    const auto db = workspace_.openDatabase(target_, {.connect = u";pwd=tajne;"});
    EXPECT_EQ(db->catalog().header().lcid, 0x0415);
    EXPECT_EQ(db->catalog().header().codePage, 1250);
    for (const ColumnDef& column : db->tableDef(u"osoby")->columns) EXPECT_EQ(column.lcid, 0x0415);
    db->execute(u"INSERT INTO osoby (nazwisko) VALUES ('Ćma')");
  }
  const fs::path third = folder_ / "trzecia.mdb";
  EXPECT_EQ(errorOf([&] { workspace_.compactDatabase(target_, third, {.connect = u";pwd=zle;"}); }), 3031);
  EXPECT_FALSE(fs::exists(third));
  workspace_.compactDatabase(target_, third, {.connect = u";pwd=tajne;"});
  EXPECT_EQ(faults(third, u";pwd=tajne;"), std::vector<std::string>());
  EXPECT_EQ(errorOf([&] {
              workspace_.compactDatabase(source_, folder_ / "x.mdb",
                                         {.locale = u";LANGID=0x0411;CP=932;COUNTRY=0"});
            }),
            3001);
}

TEST_F(CompactTest, RefusesAndLeavesNothing) {
  std::ofstream(target_) << "mine";
  EXPECT_EQ(errorOf([&] { workspace_.compactDatabase(source_, target_); }), 3204);
  EXPECT_EQ(errorOf([&] { workspace_.compactDatabase(source_, source_); }), 3204);
  fs::remove(target_);
  EXPECT_EQ(errorOf([&] { workspace_.compactDatabase(folder_ / "brak.mdb", target_); }), 3024);
  {
    const auto open = workspace_.openDatabase(source_);
    EXPECT_EQ(errorOf([&] { workspace_.compactDatabase(source_, target_); }), 3356);
  }
  EXPECT_EQ(filesIn(folder_.path()), std::vector<std::string>{"firma.mdb"});

  double last = 0;
  int calls = 0;
  workspace_.compactDatabase(source_, target_, {.progress = [&](double part) {
                               EXPECT_GE(part, last);
                               last = part;
                               return ++calls, true;
                             }});
  EXPECT_EQ(last, 1);
  EXPECT_GT(calls, 10);
  fs::remove(target_);
  for (int stop = 1; stop <= calls; stop += 3) {
    int left = stop;
    EXPECT_EQ(errorOf([&] {
                workspace_.compactDatabase(source_, target_,
                                           {.progress = [&](double) { return --left > 0; }});
              }),
              3059);
    EXPECT_EQ(filesIn(folder_.path()), std::vector<std::string>{"firma.mdb"}) << stop;
  }
}

TEST_F(CompactTest, DamageStopsIt) {
  const auto bytes = [&] {
    std::ifstream in(source_, std::ios::binary);
    return std::string{std::istreambuf_iterator<char>(in), {}};
  }();
  const PageNumber definition = workspace_.openDatabase(source_)->tableDef(u"osoby")->page;
  std::string damaged = bytes;
  damaged.replace(definition * 4096, 4096, 4096, '\0');
  std::ofstream(source_, std::ios::binary) << damaged;
  EXPECT_EQ(errorOf([&] { workspace_.compactDatabase(source_, target_); }), 3049);
  EXPECT_EQ(filesIn(folder_.path()), std::vector<std::string>{"firma.mdb"});
}

// Whatever call to the system fails: there is no new file, or a whole one, and the source is as it was.
TEST(CompactFaults, LeaveAWholeFileOrNone) {
  test::MemoryEnvironment memory;
  {
    Workspace workspace(memory);
    const auto db = workspace.createDatabase("a.mdb", kPolishLocale);
    db->execute(u"CREATE TABLE t (k COUNTER PRIMARY KEY, s TEXT(50), m MEMO)");
    for (int i = 0; i < 40; ++i) db->execute(u"INSERT INTO t (s, m) VALUES ('wiersz', String(3000, 'm'))");
  }
  const std::string source = memory.content("a.mdb");
  test::FaultEnvironment env(memory);
  for (uint64_t call = 1;; ++call) {
    env.failAt(call, false);
    int error = 0;
    {
      Workspace workspace(env);
      error = errorOf([&] { workspace.compactDatabase("a.mdb", "b.mdb"); });
    }
    if (!env.failed()) {
      EXPECT_EQ(error, 0);
      break;
    }
    env.heal();
    EXPECT_EQ(memory.content("a.mdb"), source) << call;
    if (memory.exists("b.mdb")) {
      Workspace workspace(memory);
      const auto db = workspace.openDatabase("b.mdb");
      EXPECT_EQ(db->openRecordset(u"SELECT * FROM t")->recordCount(), 40) << call;
      db->close();
      memory.remove("b.mdb");
    } else {
      EXPECT_NE(error, 0) << call;
    }
  }
}

TEST(KeySorter, OrdersKeysThatDoNotFitIntoMemory) {
  const TempFolder folder;
  std::mt19937 random(11);
  for (const size_t memory : {size_t{1} << 20, size_t{5000}, size_t{300}}) {
    std::vector<std::pair<std::string, RowId>> expected;
    KeySorter sorter(Environment::system(), folder / "sort", memory);
    for (PageNumber i = 1; i <= 2000; ++i) {
      std::string key(random() % 30, '\0');
      for (char& c : key) c = static_cast<char>(random() % 3 * 127);
      const RowId row{i, static_cast<uint8_t>(random())};
      expected.emplace_back(key, row);
      sorter.add(asBytes(key), row, key.size() % 2 == 0);
    }
    const auto unsignedLess = [](const auto& a, const auto& b) {
      const int order = a.first.compare(b.first);  // of std::string: as unsigned bytes
      return order != 0 ? order < 0 : a.second < b.second;
    };
    std::sort(expected.begin(), expected.end(), unsignedLess);
    for (int pass = 0; pass < 2; ++pass) {
      sorter.startReading();
      KeySorter::Entry entry;
      for (const auto& [key, row] : expected) {
        ASSERT_TRUE(sorter.next(entry));
        ASSERT_EQ(entry.key, key);
        ASSERT_EQ(entry.row, row);
        ASSERT_EQ(entry.someNull, key.size() % 2 == 0);
      }
      EXPECT_FALSE(sorter.next(entry));
    }
  }
  EXPECT_EQ(filesIn(folder.path()), std::vector<std::string>());
}

}  // namespace
}  // namespace jet
