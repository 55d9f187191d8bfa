// Reads the #include lines of the sources: a folder may use only itself and what stands above it.

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <regex>
#include <string>
#include <vector>

namespace fs = std::filesystem;

namespace {

const std::vector<std::string> kFolders = {"jet",      "platform", "session", "errors",   "users",
                                           "database", "lists",    "people",  "register", "app"};
const std::vector<std::string> kJetLayers = {"format", "pager", "storage", "catalog", "sql", "dao"};

int rank(const std::vector<std::string>& order, const std::string& name) {
  const auto it = std::find(order.begin(), order.end(), name);
  return it == order.end() ? -1 : static_cast<int>(it - order.begin());
}

// Every #include "..." below `root` that names a layer below its own, as "file: include".
std::vector<std::string> wrongArrows(const fs::path& root, const std::vector<std::string>& order,
                                     const std::string& prefix) {
  static const std::regex include("^\\s*#\\s*include\\s+\"([^\"]+)\"");
  std::vector<std::string> wrong;
  for (const auto& entry : fs::recursive_directory_iterator(root)) {
    const auto extension = entry.path().extension();
    if (extension != ".h" && extension != ".cpp") continue;
    const std::string own = fs::relative(entry.path(), root).begin()->string();
    std::ifstream in(entry.path());
    for (std::string line; std::getline(in, line);) {
      std::smatch match;
      if (!std::regex_search(line, match, include)) continue;
      std::string target = match[1];
      if (target.compare(0, prefix.size(), prefix) != 0) continue;
      target = target.substr(prefix.size());
      target = target.substr(0, target.find('/'));
      const int from = rank(order, own), to = rank(order, target);
      if (from >= 0 && to > from) wrong.push_back(entry.path().string() + ": " + line);
    }
  }
  return wrong;
}

}  // namespace

TEST(Layers, FoldersUseOnlyWhatStandsAboveThem) {
  EXPECT_EQ(wrongArrows(TANDEKO_SOURCE_DIR "/src", kFolders, ""), std::vector<std::string>{});
}

TEST(Layers, EngineLayersUseOnlyWhatStandsAboveThem) {
  EXPECT_EQ(wrongArrows(TANDEKO_SOURCE_DIR "/src/jet", kJetLayers, "jet/"), std::vector<std::string>{});
}

TEST(Layers, EngineUsesNoQt) {
  static const std::regex qt("^\\s*#\\s*include\\s+<Q");
  for (const auto& entry : fs::recursive_directory_iterator(TANDEKO_SOURCE_DIR "/src/jet")) {
    if (!entry.is_regular_file()) continue;
    std::ifstream in(entry.path());
    for (std::string line; std::getline(in, line);)
      EXPECT_FALSE(std::regex_search(line, qt)) << entry.path() << ": " << line;
  }
}
