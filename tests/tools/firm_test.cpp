// The road of a firm's file through the tools, and its reading by an independent program.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <sstream>

#include "structure/description.h"
#include "support/csv.h"
#include "support/other_reader.h"
#include "support/process.h"
#include "support/temp_folder.h"

namespace {

std::vector<std::string> lines(const std::string& text) {
  std::vector<std::string> all;
  std::istringstream in(text);
  for (std::string line; std::getline(in, line);) all.push_back(line);
  return all;
}

std::string makeFirm(const TempFolder& folder, const std::string& name, const std::vector<std::string>& options = {}) {
  const std::string file = (folder / name).string();
  EXPECT_EQ(runProcess({FUNDAMO, "--create", file}).status, 0);
  std::vector<std::string> command{DEMOFIRMA, file};
  command.insert(command.end(), options.begin(), options.end());
  const ProcessResult filled = runProcess(command);
  EXPECT_EQ(filled.status, 0) << filled.err;
  return file;
}

std::vector<CsvRow> query(const std::string& file, const std::string& sql) {
  const ProcessResult result = runProcess({JETSQL, "--format", "csv", file, sql});
  EXPECT_EQ(result.status, 0) << sql << "\n" << result.err;
  auto rows = parseCsv(result.out);
  if (!rows.empty()) rows.erase(rows.begin());
  return rows;
}

}  // namespace

TEST(Firm, IsReadTheSameByAnIndependentReader) {
  const TempFolder folder;
  const std::string file = makeFirm(folder, "Spółka Łódź.mdb", {"--items", "3000", "--employees", "80", "--registers", "7"});
  expectOtherReaderAgrees(file);
  // ... also after changes of every kind.
  const ProcessResult changed = runProcess({JETSQL, file},
                                           "UPDATE ewkar SET nazwa = nazwa & ' – zmieniony: ąćęłńóśźż' WHERE indewi Mod 3 = 0;"
                                           "UPDATE ewkar SET uwagi = uwagi & uwagi & uwagi WHERE indewi Mod 7 = 0;"
                                           "DELETE FROM ewkar WHERE indewi Mod 5 = 0 And indewi NOT IN (SELECT parent FROM ewkar WHERE parent > 0);"
                                           "INSERT INTO swgew (nazwa) VALUES ('Zażółć gęślą jaźń');");
  ASSERT_EQ(changed.status, 0) << changed.err;
  expectOtherReaderAgrees(file);
  const ProcessResult check = runProcess({JETSQL, file, "--check"});
  EXPECT_EQ(check.status, 0) << check.out.substr(0, 2000);
}

TEST(Firm, HasTheStructureThatIsDescribed) {
  const TempFolder folder;
  const std::string file = (folder / "nowa.mdb").string();
  ASSERT_EQ(runProcess({FUNDAMO, "--create", file, "--password", "zażółć"}).status, 0);
  EXPECT_EQ(runProcess({JETSQL, file, "--tables"}).status, 1) << "opened without its password";
  const std::vector<std::string> open{JETSQL, "--password", "zażółć", file};
  const auto with = [&](const std::vector<std::string>& more) {
    auto command = open;
    command.insert(command.end(), more.begin(), more.end());
    return runProcess(command);
  };
  EXPECT_EQ(lines(with({"--tables"}).out).size(), structure::tables().size());
  EXPECT_EQ(with({"--check"}).out, "");
  const auto version = with({"--format", "tsv", "SELECT indprg, VerMajor, VerMinor FROM dbprg"});
  EXPECT_EQ(version.out, "indprg\tVerMajor\tVerMinor\nEW\t1\t0\n");
  EXPECT_EQ(with({"--format", "tsv", "SELECT Count(*) AS n FROM dbfir"}).out, "n\n1\n");
  const std::string schema = with({"--schema", "ewkar"}).out;
  for (const char* part : {"[indewi] COUNTER", "[Nazwa] TEXT(255) NOT NULL", "CREATE INDEX [parent] ON [ewkar] ([parent])",
                           "REFERENCES [swgew] ([Indgew])", "PRIMARY KEY ([indewi])"})
    EXPECT_NE(schema.find(part), std::string::npos) << part << "\n" << schema;
  // Refuses to write over a file, and leaves it alone.
  const auto before = std::filesystem::last_write_time(asPath(file));
  const ProcessResult again = runProcess({FUNDAMO, "--create", file});
  EXPECT_EQ(again.status, 1);
  EXPECT_NE(again.err.find("error 3204:"), std::string::npos) << again.err;
  EXPECT_EQ(std::filesystem::last_write_time(asPath(file)), before);
}

TEST(Firm, DependsOnItsSeedAlone) {
  const TempFolder folder;
  const std::vector<std::string> size{"--items", "400", "--employees", "20", "--registers", "3", "--seed", "7"};
  const std::string a = makeFirm(folder, "a.mdb", size), b = makeFirm(folder, "b.mdb", size);
  const std::string other = makeFirm(folder, "c.mdb", {"--items", "400", "--employees", "20", "--registers", "3", "--seed", "8"});
  for (const char* table : {"ewkar", "swpra", "swrew"}) {
    const std::string rows = runProcess({JETSQL, a, "--export", table}).out;
    EXPECT_EQ(rows, runProcess({JETSQL, b, "--export", table}).out) << table;
    if (table != std::string("swrew")) {
      EXPECT_NE(rows, runProcess({JETSQL, other, "--export", table}).out) << table;
    }
  }
  EXPECT_EQ(runProcess({DEMOFIRMA, a}).status, 1) << "filled a firm twice";
}

TEST(Firm, KeepsTheRulesOfTheRegister) {
  const TempFolder folder;
  const std::string file = makeFirm(folder, "f.mdb", {"--items", "2500", "--employees", "40", "--registers", "6"});
  const std::map<std::string, std::string> none{
      {"a component of another holder or register than its set",
       "SELECT a.indewi FROM ewkar a INNER JOIN ewkar b ON a.parent = b.indewi WHERE a.indpra <> b.indpra OR a.indrew <> b.indrew"},
      {"a component in a plain register",
       "SELECT indewi FROM ewkar, swrew WHERE ewkar.indrew = swrew.indrew And swrew.rodzaj = 'L' And parent > 0"},
      {"an item that the item list would drop",
       "SELECT indewi FROM ewkar WHERE indgew NOT IN (SELECT indgew FROM swgew) OR indsew NOT IN (SELECT indsew FROM swsew)"},
      {"a holder that does not exist",
       "SELECT indewi FROM ewkar WHERE indpra > 0 And indpra NOT IN (SELECT indpra FROM swpra)"},
      {"a backslash in a name", "SELECT indewi FROM ewkar WHERE InStr(nazwa, '\\') > 0"}};
  for (const auto& [what, sql] : none) EXPECT_EQ(query(file, sql).size(), 0u) << what;
  const std::map<std::string, std::string> some{
      {"items in the warehouse", "SELECT indewi FROM ewkar WHERE indpra = 0"},
      {"items in the bin", "SELECT indewi FROM ewkar WHERE indpra = -1"},
      {"components of components",
       "SELECT a.indewi FROM ewkar a INNER JOIN ewkar b ON a.parent = b.indewi WHERE b.parent > 0"},
      {"long notes", "SELECT indewi FROM ewkar WHERE Len(uwagi) > 2000"},
      {"notes with Polish letters", "SELECT indewi FROM ewkar WHERE uwagi LIKE '*ż*'"}};
  for (const auto& [what, sql] : some) EXPECT_GT(query(file, sql).size(), 0u) << what;
  EXPECT_EQ(query(file, "SELECT Count(*) FROM ewkar"), (std::vector<CsvRow>{{"2500"}}));
}
