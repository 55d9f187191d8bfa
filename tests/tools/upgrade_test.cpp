// Older databases brought to the current structure.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>

#include "jet/dao/dao.h"
#include "jet/format/text.h"
#include "structure/create.h"
#include "structure/description.h"
#include "structure/upgrade.h"
#include "support/error_of.h"
#include "support/process.h"
#include "support/temp_folder.h"

namespace {

namespace fs = std::filesystem;
using jet::toUtf8;
using structure::upgradeDatabase;
using structure::UpgradeResult;
using testing::HasSubstr;

std::string bytesOf(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

std::string joined(const UpgradeResult& result) {
  std::string all;
  for (const auto& line : result.report) all += toUtf8(line) + "\n";
  return all;
}

// A database of the current structure, taken back to an older state.
class Upgrade : public testing::Test {
 protected:
  Upgrade() { structure::createDatabase(file_); }

  void change(
      const std::vector<std::u16string>& statements,
      const std::function<void(jet::Catalog&)>& define = [](jet::Catalog&) {}) {
    jet::Workspace workspace;
    const auto database = workspace.openDatabase(file_);
    for (const auto& statement : statements) database->execute(statement);
    database->define(define);
  }
  void makeOld() {
    change({u"INSERT INTO swrew (Nazwa, Rodzaj) VALUES ('Sprzęt', 'L')",
            u"INSERT INTO swgew (Nazwa) VALUES ('Stół')", u"INSERT INTO swsew (Nazwa) VALUES ('Nowy')",
            u"INSERT INTO swgpc (Nazwa) VALUES ('Etat')", u"INSERT INTO swkom (Nazwa) VALUES ('Biuro')",
            u"INSERT INTO swpra (Nazwisko, Indgpc, Indkom) VALUES ('Żak', 1, 1)",
            u"INSERT INTO ewkar (indrew, Nazwa, Indgew, Indsew) VALUES (1, 'Biurko', 1, 1)",
            u"INSERT INTO ewkar (indrew, Nazwa, Indgew, Indsew) VALUES (1, 'Krzesło', 1, 1)",
            u"UPDATE dbprg SET VerMajor = 0, VerMinor = 9, Nazwa = 'Dawna'", u"DELETE FROM dbfir"},
           [](jet::Catalog& catalog) {
             catalog.dropTable(u"dblnk");
             catalog.dropIndex(u"ewkar", u"parent");
             catalog.dropColumn(u"ewkar", u"parent");
             catalog.dropColumn(u"swpra", u"Aktywny");
             catalog.dropRelation(u"swgewewkar");
             catalog.dropRelation(u"swkomswpra");
             catalog.dropColumn(u"swkom", u"Email");
           });
    change({u"ALTER TABLE ewkar ALTER COLUMN Nazwa TEXT(40) NOT NULL"});
  }
  // Rows with their fields, as "1,Biurko;2,Krzesło;".
  std::string values(const std::string& sql) {
    std::string all = runProcess({JETSQL, "--format", "tsv", file_.string(), sql}).out;
    std::replace(all.begin(), all.end(), '\n', ';');
    std::replace(all.begin(), all.end(), '\t', ',');
    return all.substr(std::min(all.size(), all.find(';') + 1));
  }
  // What the description asks for and the file lacks.
  std::string missing() {
    jet::Workspace workspace;
    const auto database = workspace.openDatabase(file_);
    std::string all;
    database->check([&](const std::u16string& fault) { all += toUtf8(fault) + "\n"; });
    size_t relations = 0;
    for (const auto& [table, itsRelations] : structure::tables()) {
      relations += itsRelations.size();
      const jet::TableDefPtr def = database->catalog().table(table.name);
      if (!def) {
        all += toUtf8(table.name) + "\n";
        continue;
      }
      for (const auto& column : table.columns) {
        const int at = def->columnOrdinal(column.name);
        if (at < 0 || def->columns[at].required != column.required ||
            (column.type == jet::Type::Text && def->columns[at].size(jet::Version::Jet4) != column.size))
          all += toUtf8(table.name + u"." + column.name) + "\n";
      }
      for (const auto& index : table.indexes)
        if (!def->index(index.name)) all += toUtf8(table.name + u"/" + index.name) + "\n";
    }
    if (database->relations().size() != relations) all += "relations\n";
    return all;
  }
  int copies() const {
    return static_cast<int>(std::count_if(fs::directory_iterator(folder_.path()), {}, [](const auto& entry) {
      return entry.path().filename().string().starts_with("firma-kopia-20");
    }));
  }

  const TempFolder folder_;
  const fs::path file_ = folder_ / "firma.mdb";
};

}  // namespace

TEST_F(Upgrade, CompletesAnOlderDatabaseAndKeepsItsRows) {
  makeOld();
  ASSERT_THAT(missing(), HasSubstr("ewkar.parent"));
  ASSERT_THAT(missing(), HasSubstr("ewkar.Nazwa"));
  const std::string before = bytesOf(file_);
  int steps = 0, total = 0;
  const UpgradeResult result = upgradeDatabase(file_, {}, [&](int done, int all, const std::u16string&) {
    EXPECT_EQ(done, steps++);
    total = all;
  });
  EXPECT_EQ(steps, total);
  EXPECT_EQ(result.outcome, UpgradeResult::Outcome::Upgraded);
  EXPECT_EQ(missing(), "") << joined(result);
  for (const char* line :
       {"Dodano tablicę dblnk", "Dodano pole ewkar.parent", "Wydłużono pole ewkar.Nazwa do 255 znaków",
        "Dodano indeks ewkar.parent", "Dodano powiązanie ewkar – swgew", "wersję struktury 1.0"})
    EXPECT_THAT(joined(result), HasSubstr(line));
  EXPECT_EQ(bytesOf(result.copy), before);
  EXPECT_EQ(result.copy.parent_path(), file_.parent_path());

  EXPECT_EQ(values("SELECT indewi, Nazwa, Indgew FROM ewkar ORDER BY indewi"), "1,Biurko,1;2,Krzesło,1;");
  EXPECT_EQ(values("SELECT Nazwa, VerMajor, VerMinor FROM dbprg"), "Dawna,1,0;");
  EXPECT_EQ(values("SELECT Count(*) FROM dbfir"), "1;");
  // New columns begin with their defaults, counters go on where they were.
  EXPECT_EQ(values("SELECT Nazwisko FROM swpra WHERE Aktywny = True"), "Żak;");
  change({u"INSERT INTO ewkar (indrew, Nazwa, Indgew, Indsew) VALUES (1, 'Szafa', 1, 1)"});
  EXPECT_EQ(values("SELECT indewi FROM ewkar WHERE Nazwa = 'Szafa'"), "3;");
}

TEST_F(Upgrade, LeavesACurrentOrNewerDatabaseAlone) {
  makeOld();
  upgradeDatabase(file_);
  struct Case {
    std::u16string change;
    UpgradeResult::Outcome outcome;
  };
  for (const Case& c :
       {Case{u"UPDATE dbprg SET VerMajor = 1", UpgradeResult::Outcome::Current},
        Case{u"UPDATE dbprg SET VerMinor = 1", UpgradeResult::Outcome::Newer},
        Case{u"UPDATE dbprg SET VerMajor = 2, VerMinor = 0", UpgradeResult::Outcome::Newer}}) {
    change({c.change});
    const std::string before = bytesOf(file_);
    const UpgradeResult result = upgradeDatabase(file_);
    EXPECT_EQ(result.outcome, c.outcome) << toUtf8(c.change);
    EXPECT_EQ(result.report.empty(), c.outcome == UpgradeResult::Outcome::Current) << joined(result);
    EXPECT_EQ(result.copy, fs::path());
    EXPECT_TRUE(bytesOf(file_) == before) << "the file was written";
  }
  EXPECT_EQ(copies(), 1);
  // A second copy of a day does not take the first one's place.
  change({u"UPDATE dbprg SET VerMajor = 0"});
  upgradeDatabase(file_);
  EXPECT_EQ(copies(), 2);
}

TEST_F(Upgrade, ReportsWhatTheRowsForbid) {
  makeOld();
  change({u"UPDATE ewkar SET Indgew = 77 WHERE indewi = 2", u"DELETE FROM dbprg"},
         [](jet::Catalog& catalog) { catalog.dropIndex(u"swrew", u"Nazwa"); });
  change({u"INSERT INTO swrew (Nazwa, Rodzaj) VALUES ('Sprzęt', 'S')"},
         [](jet::Catalog& catalog) { catalog.dropRelation(u"swsewewkar"); });
  change({}, [](jet::Catalog& catalog) { catalog.dropColumn(u"ewkar", u"Indsew"); });
  const UpgradeResult result = upgradeDatabase(file_);
  EXPECT_EQ(missing(), "swrew/Nazwa\nrelations\n");
  for (const char* line :
       {"Nie dodano powiązania ewkar – swgew: rekordów tablicy ewkar bez odpowiednika w tablicy swgew: 1",
        "Nie dodano indeksu swrew.Nazwa: wartości się powtarzają",
        "Pole ewkar.Indsew jest wymagane; rekordów do uzupełnienia: 2"})
    EXPECT_THAT(joined(result), HasSubstr(line));
  EXPECT_EQ(values("SELECT Indprg, Nazwa, VerMajor, VerMinor FROM dbprg"), "EW,Tandeko,1,0;");
  // Once the row is put right the rule comes in.
  change({u"UPDATE ewkar SET Indgew = 1", u"UPDATE swrew SET Nazwa = 'Inny' WHERE Rodzaj = 'S'"});
  upgradeDatabase(file_);
  EXPECT_EQ(missing(), "");
}

TEST_F(Upgrade, RefusesWhatItMayNotOrCannotUpgrade) {
  makeOld();
  const fs::path other = folder_ / "inna.mdb", secret = folder_ / "tajna.mdb", noise = folder_ / "szum.mdb";
  structure::createDatabase(secret, u"zażółć");
  jet::Workspace workspace;
  workspace.createDatabase(other, jet::kPolishLocale)->execute(u"CREATE TABLE faktury (nr LONG)");
  std::ofstream(noise) << std::string(20000, 'x');
  EXPECT_EQ(errorOf([&] { upgradeDatabase(other); }), 3078);
  EXPECT_EQ(errorOf([&] { upgradeDatabase(secret); }), 3031);
  EXPECT_EQ(errorOf([&] { upgradeDatabase(noise); }), 3343);
  EXPECT_EQ(errorOf([&] { upgradeDatabase(folder_ / "brak.mdb"); }), 3024);
  EXPECT_EQ(upgradeDatabase(secret, u"zażółć").outcome, UpgradeResult::Outcome::Current);
  const auto user = workspace.openDatabase(file_);
  EXPECT_THAT(errorOf([&] { upgradeDatabase(file_); }), testing::AnyOf(3045, 3356));
  EXPECT_EQ(copies(), 0);
}

TEST_F(Upgrade, AnErrorHalfwayLeavesTheFileAsItWas) {
  makeOld();
  const std::string before = bytesOf(file_);
  const auto failLate = [](int done, int total, const std::u16string&) {
    if (done == total - 1) throw jet::Error(3026);
  };
  EXPECT_EQ(errorOf([&] { upgradeDatabase(file_, {}, failLate); }), 3026);
  EXPECT_TRUE(bytesOf(file_) == before);
}

#ifdef FUNDAMO_HANDOVER
// The desktop program starts the tool so and reads the answer from the registry.
TEST_F(Upgrade, CommandLineAnswersThroughTheRegistry) {
  makeOld();
  const fs::path settings = folder_ / "ustawienia";
  fs::create_directory(settings);
  const auto run = [&](const fs::path& file) {
    return runProcess({"env", "-u", "DISPLAY", "-u", "QT_QPA_PLATFORM", "HOME=" + settings.string(),
                       "XDG_CONFIG_HOME=" + settings.string(), FUNDAMO, "A|" + file.string()});
  };
  const ProcessResult done = run(file_);
  EXPECT_EQ(done.status, 0) << done.err;
  EXPECT_THAT(done.out, HasSubstr("Dodano tablicę dblnk"));
  EXPECT_EQ(missing(), "");
  const fs::path registry = settings / "kwarcel" / "registry";
  EXPECT_THAT(bytesOf(registry), HasSubstr("Lorvel\\Fundamo bazy]\nAktualizacja status=Ok\n"));
  const ProcessResult failed = run(folder_ / "brak.mdb");
  EXPECT_EQ(failed.status, 1);
  EXPECT_THAT(failed.err, HasSubstr("3024"));
  EXPECT_THAT(bytesOf(registry), HasSubstr("Aktualizacja status=Error\n"));
}
#endif
