// The console's contract: output formats, exit statuses, messages for files that are no databases.

#include <gtest/gtest.h>

#include <fstream>

#include "jet/dao/dao.h"
#include "support/process.h"
#include "support/temp_folder.h"

namespace {

class Jetsql : public ::testing::Test {
 protected:
  void SetUp() override {
    jet::Workspace workspace;
    const auto database = workspace.createDatabase(folder_ / "t.mdb", jet::kPolishLocale);
    database->execute(
        u"CREATE TABLE t (k COUNTER PRIMARY KEY, n LONG, c CURRENCY, d DOUBLE, w DATETIME, b BIT, s TEXT(50), m MEMO, x BINARY(8))");
    database->execute(u"INSERT INTO t (n, c, d, w, b, s, m) VALUES (-7, 12.5, 0.1, #2026-11-22#, True, 'a,\"b\"', 'dwie' & Chr(13) & Chr(10) & 'linie')");
    database->execute(u"INSERT INTO t (n, c, d, w, b, s) VALUES (2147483647, -0.0001, 1E20, #1899-12-30 06:30:00#, False, '')");
    database->execute(u"INSERT INTO t (s) VALUES ('zażółć gęślą jaźń')");
  }

  ProcessResult run(const std::vector<std::string>& words, const std::string& input = {}) {
    std::vector<std::string> command{JETSQL};
    command.insert(command.end(), words.begin(), words.end());
    return runProcess(command, input);
  }

  TempFolder folder_;
  std::string file_ = (folder_ / "t.mdb").string();
};

}  // namespace

TEST_F(Jetsql, PrintsEveryFormat) {
  EXPECT_EQ(run({file_, "--export", "t"}).out,
            "k,n,c,d,w,b,s,m,x\r\n"
            "1,-7,12.5,0.1,2026-11-22,True,\"a,\"\"b\"\"\",\"dwie\r\nlinie\",\r\n"
            "2,2147483647,-0.0001,100000000000000000000,1899-12-30 06:30:00,False,\"\",,\r\n"
            "3,,,,,False,zażółć gęślą jaźń,,\r\n");
  EXPECT_EQ(run({"--format", "tsv", file_, "SELECT k, s, m FROM t ORDER BY k"}).out,
            "k\ts\tm\n1\ta,\"b\"\tdwie\\r\\nlinie\n2\t\t\n3\tzażółć gęślą jaźń\t\n");
  EXPECT_EQ(run({"--format", "jsonl", file_, "SELECT k, c, w, b, s, m FROM t WHERE k < 3 ORDER BY k"}).out,
            "{\"k\":1,\"c\":12.5,\"w\":\"2026-11-22\",\"b\":true,\"s\":\"a,\\\"b\\\"\",\"m\":\"dwie\\u000D\\u000Alinie\"}\n"
            "{\"k\":2,\"c\":-0.0001,\"w\":\"1899-12-30 06:30:00\",\"b\":false,\"s\":\"\",\"m\":null}\n");
  EXPECT_EQ(run({file_, "SELECT k, s FROM t WHERE k = 3"}).out,
            "k | s\n--+------------------\n3 | zażółć gęślą jaźń\n(1)\n");
}

TEST_F(Jetsql, RunsScriptsAndTellsTheOutcome) {
  const ProcessResult script = run({"--format", "tsv", file_},
                                   "UPDATE t SET n = 1;\nINSERT INTO t (s)\n VALUES (';');SELECT Count(*) AS n FROM t;\n"
                                   "SELECT s FROM t WHERE s = ';'");
  EXPECT_EQ(script.out, "3\n1\nn\n4\ns\n;\n");
  EXPECT_EQ(script.status, 0);

  const ProcessResult bad = run({file_, "UPDATE t SET n = 2", "SELECT nothing FROM nowhere"});
  EXPECT_EQ(bad.status, 1);
  EXPECT_EQ(bad.out, "4\n");
  EXPECT_EQ(bad.err.substr(0, 11), "error 3078:") << bad.err;
  EXPECT_EQ(run({"--readonly", file_, "DELETE FROM t"}).err.substr(0, 11), "error 3027:");
  EXPECT_EQ(run({file_, "--export", "brak"}).err.substr(0, 11), "error 3265:");

  for (const std::vector<std::string>& words :
       {std::vector<std::string>{}, {"--nonsense", file_}, {"--format", "xml", file_}, {file_, "--export"}, {file_, "--check", "x"}}) {
    const ProcessResult usage = run(words);
    EXPECT_EQ(usage.status, 2);
    EXPECT_NE(usage.err.find("jetsql"), std::string::npos);
  }
  EXPECT_EQ(run({"--help"}).status, 0);
  EXPECT_EQ(run({"--version"}).out.substr(0, 7), "jetsql ");
}

TEST_F(Jetsql, RefusesWhatIsNoDatabaseAndLeavesItAlone) {
  const auto write = [&](const std::string& name, const std::string& bytes) {
    std::ofstream(folder_ / name, std::ios::binary) << bytes;
    return (folder_ / name).string();
  };
  std::ifstream in(asPath(file_), std::ios::binary);
  const std::string whole{std::istreambuf_iterator<char>(in), {}};
  std::filesystem::create_directory(folder_ / "folder.mdb");
  const struct {
    std::string file, number;
  } cases[] = {{(folder_ / "brak.mdb").string(), "3024"},
               {(folder_ / "brak" / "brak.mdb").string(), "3044"},
               {(folder_ / "folder.mdb").string(), "3051"},
               {write("pusty.mdb", ""), "3343"},
               {write("tekst.mdb", std::string(20'000, 'x')), "3343"},
               {write("glowa.mdb", whole.substr(0, 100)), "3343"},
               {write("uciety.mdb", whole.substr(0, whole.size() / 2 + 100)), ""}};
  for (const auto& [file, number] : cases) {
    std::error_code none;
    const auto before = std::filesystem::file_size(asPath(file), none);
    const ProcessResult result = run({file, "SELECT * FROM t", "DELETE FROM t"});
    EXPECT_EQ(result.status, 1) << file;
    EXPECT_EQ(result.err.substr(0, 6 + number.size()), "error " + number) << file << ": " << result.err;
    EXPECT_EQ(std::filesystem::file_size(asPath(file), none), before) << file;
  }
}
