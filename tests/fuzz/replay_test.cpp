// What the fuzzers found once, and some of what they begin with.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "fuzz/targets.h"

namespace {

using jet::fuzz::damageFile;

void replay(const char* target, void (*run)(std::string_view)) {
  const std::filesystem::path folder = std::filesystem::path(TANDEKO_FINDINGS) / target;
  if (!std::filesystem::exists(folder)) return;
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    SCOPED_TRACE(entry.path().filename().string());
    std::ifstream in(entry.path(), std::ios::binary);
    run(std::string{std::istreambuf_iterator<char>(in), {}});
  }
}

}  // namespace

TEST(Fuzz, FindingsStayFixed) {
  replay("file", jet::fuzz::readFile);
  replay("sql", jet::fuzz::runSql);
  replay("damaged", jet::fuzz::runOnDamaged);
}

TEST(Fuzz, SeedsAndSomeDamage) {
  for (const std::string& seed : jet::fuzz::sqlSeeds()) jet::fuzz::runSql(seed);
  for (const std::string& seed : jet::fuzz::damagedSeeds()) jet::fuzz::runOnDamaged(seed);
  for (const std::string& seed : jet::fuzz::fileSeeds()) {
    jet::fuzz::readFile(seed);
    for (unsigned round = 1; round <= 100; ++round) {
      SCOPED_TRACE(round);
      std::string bytes = seed;
      bytes.resize(damageFile(reinterpret_cast<uint8_t*>(bytes.data()), bytes.size(), bytes.size(), round));
      jet::fuzz::readFile(bytes);
    }
  }
}
