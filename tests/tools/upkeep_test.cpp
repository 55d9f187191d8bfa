// jetsql --compact, --repair and --check, on a firm's file and on damaged ones.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "support/process.h"
#include "support/temp_folder.h"

namespace {

namespace fs = std::filesystem;

class Upkeep : public ::testing::Test {
 protected:
  static ProcessResult run(const std::vector<std::string>& words) {
    std::vector<std::string> command{JETSQL};
    command.insert(command.end(), words.begin(), words.end());
    return runProcess(command);
  }
  // The table's rows, sorted: compacting puts them in the order of their keys.
  static std::vector<std::string> rowsOf(const std::string& file, const std::string& table) {
    const std::string out = run({file, "--format", "tsv", "--export", table}).out;
    std::vector<std::string> lines;
    for (size_t at = 0, end; (end = out.find('\n', at)) != std::string::npos; at = end + 1)
      lines.push_back(out.substr(at, end - at));
    std::sort(lines.begin(), lines.end());
    return lines;
  }
  std::string bytesOf(const std::string& file) {
    std::ifstream in(asPath(file), std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

  TempFolder folder_;
  std::string file_ = (folder_ / "firma.mdb").string(), compacted_ = (folder_ / "po.mdb").string();
};

}  // namespace

TEST_F(Upkeep, AFirmIsTheSameAfterCompactingAndRepairing) {
  ASSERT_EQ(runProcess({FUNDAMO, "--create", file_}).status, 0);
  ASSERT_EQ(runProcess({DEMOFIRMA, file_, "--items", "800", "--employees", "20", "--seed", "3"}).status, 0);
  const ProcessResult compacted = run({file_, "--compact", compacted_});
  EXPECT_EQ(compacted.status, 0) << compacted.err;
  EXPECT_EQ(compacted.out, "");
  EXPECT_EQ(run({compacted_, "--check"}).out, "");
  EXPECT_EQ(run({file_, "--schema"}).out, run({compacted_, "--schema"}).out);
  const std::string tables = run({file_, "--tables"}).out;
  EXPECT_EQ(run({compacted_, "--tables"}).out, tables);
  const auto compare = [&] {
    for (size_t at = 0, end; (end = tables.find('\n', at)) != std::string::npos; at = end + 1) {
      const std::string table = tables.substr(at, end - at);
      EXPECT_EQ(rowsOf(file_, table), rowsOf(compacted_, table)) << table;
    }
  };
  compare();
  const ProcessResult repaired = run({compacted_, "--repair"});
  EXPECT_EQ(repaired.status, 0) << repaired.err;
  EXPECT_EQ(repaired.out, "");
  EXPECT_EQ(run({compacted_, "--check"}).out, "");
  compare();
}

// German texts in the descriptors of the file and its columns; its indexes stay as they are.
TEST_F(Upkeep, AFileInAnUnknownOrderIsReadAndNotChanged) {
  ASSERT_EQ(runProcess({FUNDAMO, "--create", file_}).status, 0);
  ASSERT_EQ(runProcess({DEMOFIRMA, file_, "--items", "300", "--employees", "20"}).status, 0);
  const std::string query = "SELECT Count(*) AS n FROM ewkar WHERE numewi LIKE '1*' OR numewi = '2/2023'";
  const std::string before = run({"--format", "tsv", file_, query}).out;
  std::string bytes = bytesOf(file_);
  bytes[0x6E] = static_cast<char>(bytes[0x6E] ^ 0x15 ^ 0x07);
  for (size_t page = 4096; page < bytes.size(); page += 4096) {
    if (bytes[page] != 2) continue;
    for (size_t at = page; (at = bytes.find(std::string("\x15\x04\0\0", 4), at)) < page + 4096;) bytes[at] = 0x07;
  }
  std::ofstream(asPath(file_), std::ios::binary) << bytes;

  const ProcessResult checked = run({file_, "--check"});
  EXPECT_EQ(checked.status, 0) << checked.out;
  EXPECT_NE(checked.out.find("note: table swgew: the sort order"), std::string::npos) << checked.out;
  EXPECT_EQ(run({"--format", "tsv", file_, query}).out, before);
  EXPECT_EQ(run({file_, "UPDATE swgew SET nazwa = 'x'"}).err.substr(0, 11), "error 3027:");
  EXPECT_EQ(run({file_, "--compact", compacted_}).err.substr(0, 11), "error 3049:");
  EXPECT_FALSE(fs::exists(asPath(compacted_)));
  const ProcessResult repaired = run({file_, "--repair"});
  EXPECT_EQ(repaired.out, "the sort order of the file is not known, it is the General one now\n");
  EXPECT_EQ(run({file_, "--check"}).out, "");
  EXPECT_EQ(run({"--format", "tsv", file_, query}).out, before);
  EXPECT_EQ(run({file_, "UPDATE swgew SET nazwa = nazwa & '.'"}).status, 0);
}

TEST_F(Upkeep, TellsWhatWasLostAndWhatIsWrong) {
  ASSERT_EQ(runProcess({FUNDAMO, "--create", file_}).status, 0);
  EXPECT_EQ(run({file_, "--compact", file_}).err.substr(0, 11), "error 3204:");
  EXPECT_EQ(run({file_, "--compact"}).status, 2);
  EXPECT_EQ(run({file_, "--repair", "x"}).status, 2);

  // A page that is neither used nor free harms nothing.
  std::string bytes = bytesOf(file_);
  const size_t page = bytes.size() / 4096;
  const auto* rows = reinterpret_cast<const unsigned char*>(bytes.data()) + 4096;
  bytes[4096 + (rows[14] | (rows[15] & 0x1F) << 8) + 5 + page / 8] &= static_cast<char>(~(1 << page % 8));
  bytes.resize(bytes.size() + 4096);
  std::ofstream(asPath(file_), std::ios::binary) << bytes;
  const ProcessResult leaked = run({file_, "--check"});
  EXPECT_EQ(leaked.status, 0);
  EXPECT_EQ(leaked.out, "");

  // The data pages of the catalogue turned to zeros.
  for (size_t at = 4096 * 6; at < bytes.size(); at += 4096)
    if (bytes[at] == 1 && bytes[at + 4] == 2 && bytes[at + 5] == 0) bytes.replace(at, 4096, 4096, '\0');
  std::ofstream(asPath(file_), std::ios::binary) << bytes;
  EXPECT_EQ(run({file_, "--check"}).status, 1);
  const ProcessResult repaired = run({file_, "--repair"});
  EXPECT_EQ(repaired.status, 0) << repaired.err;
  EXPECT_NE(repaired.out.find("system table MSysObjects: "), std::string::npos) << repaired.out;
  EXPECT_EQ(run({file_, "--check"}).out, "");

  std::ofstream(asPath(file_), std::ios::binary) << "To nie jest baza danych.";
  EXPECT_EQ(run({file_, "--repair"}).err.substr(0, 11), "error 3056:");
}
