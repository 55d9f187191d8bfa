// Repairing: what a damaged file still holds comes back, and nothing else happens.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <random>

#include "database_text.h"
#include "jet/catalog/objects.h"
#include "jet/catalog/row_store.h"
#include "jet/storage/data_page.h"
#include "jet/storage/long_value.h"
#include "support/error_of.h"
#include "support/other_reader.h"
#include "support/samples.h"
#include "support/temp_folder.h"

namespace jet {
namespace {

namespace fs = std::filesystem;
using Lines = std::vector<std::string>;
constexpr size_t kPage = 4096;

std::string contentOf(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

void setContent(const fs::path& path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

class Repair : public ::testing::Test {
 protected:
  static constexpr int kPeople = 60, kThings = 400;

  void SetUp() override {
    const auto db = workspace_.createDatabase(file_, kPolishLocale);
    workspace_.beginTrans();
    db->execute(u"CREATE TABLE osoby (nr COUNTER PRIMARY KEY, nazwisko TEXT(40), pesel LONG, uwagi MEMO)");
    db->execute(u"CREATE TABLE rzeczy (nr COUNTER PRIMARY KEY, osoba LONG, nazwa TEXT(100))");
    db->execute(u"CREATE UNIQUE INDEX wgNumeru ON osoby (pesel)");
    db->execute(u"CREATE INDEX wgNazwy ON rzeczy (nazwa)");
    for (int i = 1; i <= kPeople; ++i)
      db->execute(u"INSERT INTO osoby (nazwisko, pesel, uwagi) VALUES ('Osoba " + text(i) + u"', " +
                  text(1000 + i) + u", String(" + text(i % 4 * 3000) + u", 'ż'))");
    for (int i = 1; i <= kThings; ++i)
      db->execute(u"INSERT INTO rzeczy (osoba, nazwa) VALUES (" + text(i % kPeople + 1) + u", 'Rzecz numer " +
                  text(i) + u"')");
    db->define([](Catalog& catalog) {
      catalog.createRelation({.name = u"posiada",
                              .table = u"osoby",
                              .foreignTable = u"rzeczy",
                              .columns = {{u"nr", u"osoba"}},
                              .cascadeDeletes = true});
    });
    saveQuery(*db, u"widok", u"nr", u"osoby", u"pesel > 1010");
    workspace_.commitTrans();
    people_ = db->tableDef(u"osoby");
    things_ = db->tableDef(u"rzeczy");
    objects_ = db->catalog().table(u"MSysObjects");
    relationships_ = db->catalog().table(u"MSysRelationships");
    findPages(db->catalog().pager());
    before_ = databaseText(*db);
    db->close();
    sound_ = contentOf(file_);
  }

  void findPages(Pager& pager) {
    const ReadScope scope(pager);
    peoplePages_ = UsageMap(pager, people_->ownedMap).pages();
    thingPages_ = UsageMap(pager, things_->ownedMap).pages();
    memoPages_ = UsageMap(pager, people_->columns[3].ownedMap).pages();
    objectPages_ = UsageMap(pager, objects_->ownedMap).pages();
    relationPages_ = UsageMap(pager, relationships_->ownedMap).pages();
  }

  static std::u16string text(int n) { return fromUtf8(std::to_string(n)); }

  void damage(const std::function<void(std::string&)>& change) {
    std::string bytes = sound_;
    change(bytes);
    setContent(file_, bytes);
  }
  void zero(const std::vector<PageNumber>& pages) {
    damage([&](std::string& bytes) {
      for (const PageNumber page : pages) bytes.replace(page * kPage, kPage, kPage, '\0');
    });
  }

  // Repairs; the result must be sound. Returns the report.
  Lines repair() {
    Lines report;
    const bool lossless =
        workspace_.repairDatabase(file_, [&](const std::u16string& line) { report.push_back(toUtf8(line)); });
    EXPECT_EQ(lossless, report.empty());
    workspace_.openDatabase(file_, {.readOnly = true})
        ->check([](const std::u16string& fault) { ADD_FAILURE() << toUtf8(fault); }, true);
    expectOtherReaderAgrees(file_);
    for (const auto& entry : fs::directory_iterator(folder_.path()))
      EXPECT_EQ(entry.path().filename(), "firma.mdb");
    return report;
  }
  std::string changes() { return difference(before_, databaseText(file_)); }
  int64_t count(const std::u16string& sql) {
    return workspace_.openDatabase(file_)->openRecordset(sql, RecordsetType::Snapshot)->recordCount();
  }

  TempFolder folder_;
  fs::path file_ = folder_ / "firma.mdb";
  Workspace workspace_;
  TableDefPtr people_, things_, objects_, relationships_;
  std::vector<PageNumber> peoplePages_, thingPages_, memoPages_, objectPages_, relationPages_;
  Lines before_;
  std::string sound_;
};

TEST_F(Repair, ASoundFileStaysWhatItIs) {
  EXPECT_EQ(repair(), Lines());
  EXPECT_EQ(changes(), "");
}

TEST_F(Repair, SamplesStayWhatTheyAre) {
  if (sampleFiles().empty()) GTEST_SKIP() << "TANDEKO_SAMPLES names no folder of samples";
  for (const fs::path& sample : sampleFiles()) {
    SCOPED_TRACE(sample.filename().string());
    setContent(file_, contentOf(sample));
    Lines report;
    EXPECT_TRUE(workspace_.repairDatabase(
        file_, [&](const std::u16string& line) { report.push_back(toUtf8(line)); }));
    EXPECT_EQ(report.size(), sample.filename().string().starts_with("jet3") ? 1u : 0u);
    workspace_.openDatabase(file_, {.readOnly = true})
        ->check([](const std::u16string& fault) { ADD_FAILURE() << toUtf8(fault); }, true);
    Lines before = databaseText(sample), after = databaseText(file_);
    // Relationships are made anew, their entries and dates with them.
    for (Lines* lines : {&before, &after})
      std::erase_if(*lines, [](const std::string& line) {
        return line.starts_with("object 8 ") || line.find(" index \".r") != std::string::npos ||
               line.find(" = \".r") != std::string::npos || line.find(" foreign ") != std::string::npos;
      });
    EXPECT_EQ(difference(before, after), "");
  }
}

// Maps and indexes can be made anew from the rows; nothing is lost with them.
TEST_F(Repair, MapsAndIndexesCostNothing) {
  std::vector<PageNumber> indexPages;
  for (PageNumber page = 6; page < sound_.size() / kPage; ++page)
    if (sound_[page * kPage] == 3 || sound_[page * kPage] == 4) indexPages.push_back(page);
  const struct {
    std::string what;
    std::vector<PageNumber> pages;
  } cases[] = {{"usage maps of a table", {things_->ownedMap.page}},
               {"map of free pages", {1}},
               {"all maps of rows", {1, people_->ownedMap.page, things_->ownedMap.page}},
               {"usage maps of the system tables", {objects_->ownedMap.page}},
               {"root of the primary key", {things_->realIndexes[0].root}},
               {"every index page", indexPages}};
  for (const auto& [what, pages] : cases) {
    SCOPED_TRACE(what);
    zero(pages);
    EXPECT_EQ(repair(), Lines());
    EXPECT_EQ(changes(), "");
  }
}

TEST_F(Repair, RowsOfOtherPagesSurviveALostPage) {
  const PageNumber lost = thingPages_[1];
  int gone = 0;
  {
    const auto db = workspace_.openDatabase(file_);
    Pager& pager = db->catalog().pager();
    const ReadScope scope(pager);
    gone = data_page::slotCount(pager.read(lost).bytes(), pager.layout(), lost);
  }
  ASSERT_GT(gone, 10);
  const auto randomBytes = [&](std::string& bytes) {
    std::mt19937 random(3);
    for (size_t i = 0; i < kPage; ++i) bytes[lost * kPage + i] = static_cast<char>(random());
  };
  for (const bool zeroed : {true, false}) {
    zeroed ? zero({lost}) : damage(randomBytes);
    EXPECT_EQ(repair(), Lines{"table rzeczy: " + std::to_string(gone) + " rows lost"});
    EXPECT_EQ(count(u"SELECT * FROM rzeczy"), kThings - gone);
    EXPECT_EQ(count(u"SELECT * FROM osoby"), kPeople);
  }
}

TEST_F(Repair, ALostMemoLeavesItsRow) {
  // The page of one part of one value.
  zero({memoPages_.back()});
  const Lines report = repair();
  ASSERT_EQ(report.size(), 1u);
  EXPECT_EQ(report[0].substr(report[0].find(' ')), " osoby: 1 memo or OLE values lost");
  EXPECT_EQ(count(u"SELECT * FROM osoby"), kPeople);
  EXPECT_EQ(count(u"SELECT * FROM osoby WHERE uwagi Is Null"), 1);
}

// A chain that runs in a circle, and one that leads into the value of another row.
TEST_F(Repair, BrokenChainsAreCutOut) {
  std::vector<RowId> firsts;  // of values that are chains
  {
    const auto db = workspace_.openDatabase(file_);
    const ReadScope scope(db->catalog().pager());
    const RowStore rows(db->catalog().pager(), people_);
    for (Heap::Scan scan = rows.scan(); scan.next();) {
      const auto ref = rows.reader(scan.bytes(), scan.where()).longValue(3);
      if (ref && ref->kind == LongValueRef::Kind::Chain) firsts.push_back(ref->row);
    }
  }
  ASSERT_GT(firsts.size(), 4u);
  const auto setNext = [&](std::string& bytes, RowId row, RowId next) {
    auto* page = reinterpret_cast<uint8_t*>(bytes.data()) + row.page * kPage;
    put32(page + (get16(page + 14 + 2 * row.slot) & kSlotOffsetMask), next.stored());
  };
  damage([&](std::string& bytes) { setNext(bytes, firsts[0], firsts[0]); });
  EXPECT_EQ(repair(), Lines{"table osoby: 1 memo or OLE values lost"});
  EXPECT_EQ(count(u"SELECT * FROM osoby WHERE uwagi Is Null"), 1);
  damage([&](std::string& bytes) { setNext(bytes, firsts[3], firsts[1]); });
  EXPECT_EQ(repair(), Lines{"table osoby: 1 memo or OLE values lost"});
  EXPECT_EQ(count(u"SELECT * FROM osoby WHERE uwagi Is Null"), 1);
}

TEST_F(Repair, WithoutCatalogueTablesComeBackUnderOtherNames) {
  zero(objectPages_);
  const std::string people = "Recovered " + std::to_string(people_->page),
                    things = "Recovered " + std::to_string(things_->page);
  const Lines report = repair();
  for (const std::string& name : {people, things}) {
    EXPECT_EQ(std::count_if(report.begin(), report.end(),
                            [&](const std::string& line) { return line.find(name) != std::string::npos; }),
              1);
  }
  EXPECT_EQ(count(u"SELECT * FROM [" + fromUtf8(people) + u"]"), kPeople);
  EXPECT_EQ(count(u"SELECT * FROM [" + fromUtf8(things) + u"] AS r INNER JOIN [" + fromUtf8(people) +
                  u"] AS o ON r.osoba = o.nr"),
            kThings);
  // The definitions still tell of the relationship.
  const auto db = workspace_.openDatabase(file_);
  EXPECT_EQ(errorOf([&] { db->execute(u"INSERT INTO [" + fromUtf8(things) + u"] (osoba) VALUES (5000)"); }),
            3201);
  db->execute(u"DELETE FROM [" + fromUtf8(people) + u"] WHERE nr = 1");
  EXPECT_EQ(db->openRecordset(u"SELECT * FROM [" + fromUtf8(things) + u"]")->recordCount(),
            kThings - kThings / kPeople);
}

TEST_F(Repair, ALostDefinitionCostsItsTableOnly) {
  zero({people_->page});
  const Lines report = repair();
  EXPECT_NE(std::find(report.begin(), report.end(), "table osoby: lost, its definition cannot be read"),
            report.end());
  EXPECT_EQ(count(u"SELECT * FROM rzeczy"), kThings);
  EXPECT_EQ(workspace_.openDatabase(file_)->tableNames(), std::vector<std::u16string>{u"rzeczy"});
}

TEST_F(Repair, RelationshipsComeFromTheDefinitionsWhenTheCatalogueLostThem) {
  zero(relationPages_);
  EXPECT_EQ(repair().size(), 1u);
  const auto relations = workspace_.openDatabase(file_)->relations();
  ASSERT_EQ(relations.size(), 1u);
  EXPECT_EQ(relations[0].name, u"posiada");
  EXPECT_TRUE(relations[0].enforced && relations[0].cascadeDeletes);
}

// Changes a Long of one row of a table behind the engine's back.
void setLong(std::string& bytes, const fs::path& file, const TableDefPtr& def, int ordinal, int32_t from,
             int32_t to) {
  Workspace workspace;
  const auto db = workspace.openDatabase(file);
  const ReadScope scope(db->catalog().pager());
  const RowStore rows(db->catalog().pager(), def);
  for (Heap::Scan scan = rows.scan(); scan.next();) {
    if (rows.reader(scan.bytes(), scan.where()).value(ordinal) != Value(from)) continue;
    const PageView page = db->catalog().pager().read(scan.where());
    const size_t at = scan.where() * kPage + static_cast<size_t>(scan.bytes().data() - page.data());
    put32(reinterpret_cast<uint8_t*>(bytes.data()) + at + 2 +
              def->columns[static_cast<size_t>(ordinal)].layout.fixedOffset,
          static_cast<uint32_t>(to));
    return;
  }
  ADD_FAILURE() << "no such row";
}

TEST_F(Repair, TheFirstOfTwoRowsWithOneKeyStays) {
  std::string bytes = sound_;
  setLong(bytes, file_, people_, people_->columnOrdinal(u"pesel"), 1030, 1020);
  setContent(file_, bytes);
  const Lines report = repair();
  ASSERT_GE(report.size(), 1u);
  EXPECT_EQ(report[0], "table osoby: 1 rows left out, whose keys other rows have already");
  EXPECT_EQ(count(u"SELECT * FROM osoby WHERE pesel = 1020 AND nr = 20"), 1);
  EXPECT_EQ(count(u"SELECT * FROM osoby"), kPeople - 1);
}

TEST_F(Repair, ARelationshipThatRowsBreakIsNotEnforcedAnyMore) {
  std::string bytes = sound_;
  setLong(bytes, file_, things_, things_->columnOrdinal(u"osoba"), 7, 7000);
  setContent(file_, bytes);
  const Lines report = repair();
  ASSERT_EQ(report.size(), 1u);
  EXPECT_EQ(report[0].substr(0, 49), "relationship posiada: kept, but not enforced: Can") << report[0];
  EXPECT_EQ(count(u"SELECT * FROM rzeczy"), kThings);
  EXPECT_FALSE(workspace_.openDatabase(file_)->relations().at(0).enforced);
}

TEST_F(Repair, AFileWithoutItsHeadIsKnownByItsPages) {
  damage([](std::string& bytes) { bytes.replace(0, 0x18, 0x18, '\xEE'); });
  EXPECT_EQ(repair(), Lines());
  EXPECT_EQ(changes(), "");
  zero({0});
  EXPECT_EQ(repair(), Lines{"file header: creation date, sort order and password lost"});
  EXPECT_EQ(changes(), "");
  EXPECT_EQ(workspace_.openDatabase(file_)->catalog().header().lcid, 0x0415);
}

TEST_F(Repair, ThePasswordStays) {
  workspace_.openDatabase(file_)->newPassword(u"", u"tajne");
  workspace_.repairDatabase(file_);
  EXPECT_EQ(errorOf([&] { workspace_.openDatabase(file_); }), 3031);
  workspace_.openDatabase(file_, {.connect = u";pwd=tajne;"});
}

TEST_F(Repair, RefusesAndChangesNothing) {
  {
    const auto open = workspace_.openDatabase(file_);
    EXPECT_EQ(errorOf([&] { workspace_.repairDatabase(file_); }), 3356);
  }
  int calls = 0;
  EXPECT_EQ(errorOf([&] { workspace_.repairDatabase(file_, {}, [&](double) { return ++calls < 4; }); }),
            3059);
  EXPECT_EQ(contentOf(file_), sound_);
  for (const std::string& nothing :
       {std::string(), std::string(50000, 'x'), std::string(50000, '\0'), sound_.substr(0, 5000)}) {
    setContent(file_, nothing);
    EXPECT_EQ(errorOf([&] { workspace_.repairDatabase(file_); }), 3056) << nothing.size();
    EXPECT_EQ(contentOf(file_), nothing);
  }
  fs::remove(file_);
  EXPECT_EQ(errorOf([&] { workspace_.repairDatabase(file_); }), 3024);
  EXPECT_TRUE(fs::is_empty(folder_.path()));
}

// Files damaged at random: an error and the file as it was, or a sound file, and never a long time.
TEST_F(Repair, RandomDamageEndsWell) {
  std::mt19937 random(2026);
  const auto pick = [&](size_t limit) { return static_cast<size_t>(random() % limit); };
  const size_t pages = sound_.size() / kPage;
  const int rounds = std::getenv("TANDEKO_LONG") ? 5000 : 300;
  int repaired = 0;
  for (int round = 0; round < rounds; ++round) {
    std::string bytes = sound_;
    for (size_t n = 1 + pick(6); n > 0; --n) {
      const size_t at = pick(bytes.size());
      switch (pick(6)) {
        case 0:
          bytes[at] = static_cast<char>(bytes[at] ^ 1 << pick(8));
          break;
        case 1:
          bytes.replace(pick(pages) * kPage, kPage, kPage, '\0');
          break;
        case 2:
          bytes.replace(pick(pages) * kPage, kPage, sound_, pick(pages) * kPage, kPage);
          break;
        case 3:
          bytes.replace(at, std::min<size_t>(64, bytes.size() - at), std::min<size_t>(64, bytes.size() - at),
                        static_cast<char>(random()));
          break;
        case 4:
          put32(reinterpret_cast<uint8_t*>(bytes.data()) + std::min(at, bytes.size() - 4),
                static_cast<uint32_t>(random()));
          break;
        case 5:
          bytes.resize(std::max(kPage * 8, at)), bytes.resize(sound_.size(), '\0');
          break;
      }
    }
    setContent(file_, bytes);
    const auto start = std::chrono::steady_clock::now();
    try {
      workspace_.repairDatabase(file_);
      ++repaired;
      std::string fault;
      const auto connect = [&] {
        try {
          return workspace_.openDatabase(file_, {.readOnly = true});
        } catch (const Error& error) {
          if (error.number() != 3031) throw;
          return std::unique_ptr<Database>();  // a password made of damage
        }
      }();
      if (connect) connect->check([&](const std::u16string& line) { fault += toUtf8(line) + "\n"; }, true);
      EXPECT_EQ(fault, "") << "round " << round;
    } catch (const Error& error) {
      EXPECT_EQ(error.number(), 3056) << "round " << round << ": " << error.what();
      EXPECT_EQ(contentOf(file_), bytes);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10)) << "round " << round;
  }
  EXPECT_GT(repaired, rounds * 9 / 10);
}

}  // namespace
}  // namespace jet
