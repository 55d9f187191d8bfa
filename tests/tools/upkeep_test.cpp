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
  std::string bytesOf(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
  }

  TempFolder folder_;
  std::string file_ = folder_ / "firma.mdb", compacted_ = folder_ / "po.mdb";
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
  std::ofstream(file_, std::ios::binary) << bytes;
  const ProcessResult leaked = run({file_, "--check"});
  EXPECT_EQ(leaked.status, 0);
  EXPECT_EQ(leaked.out, "");

  // The data pages of the catalogue turned to zeros.
  for (size_t at = 4096 * 6; at < bytes.size(); at += 4096)
    if (bytes[at] == 1 && bytes[at + 4] == 2 && bytes[at + 5] == 0) bytes.replace(at, 4096, 4096, '\0');
  std::ofstream(file_, std::ios::binary) << bytes;
  EXPECT_EQ(run({file_, "--check"}).status, 1);
  const ProcessResult repaired = run({file_, "--repair"});
  EXPECT_EQ(repaired.status, 0) << repaired.err;
  EXPECT_NE(repaired.out.find("system table MSysObjects: "), std::string::npos) << repaired.out;
  EXPECT_EQ(run({file_, "--check"}).out, "");

  std::ofstream(file_, std::ios::binary) << "To nie jest baza danych.";
  EXPECT_EQ(run({file_, "--repair"}).err.substr(0, 11), "error 3056:");
}
