// Writes the fuzzers' first inputs: write_seeds FOLDER makes FOLDER/file, FOLDER/sql and FOLDER/damaged.

#include <filesystem>
#include <fstream>

#include "fuzz/targets.h"

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  const auto write = [&](const char* target, const std::vector<std::string>& seeds) {
    const std::filesystem::path folder = std::filesystem::path(argv[1]) / target;
    std::filesystem::create_directories(folder);
    for (size_t i = 0; i < seeds.size(); ++i)
      std::ofstream(folder / ("seed" + std::to_string(i)), std::ios::binary) << seeds[i];
  };
  write("file", jet::fuzz::fileSeeds());
  write("sql", jet::fuzz::sqlSeeds());
  write("damaged", jet::fuzz::damagedSeeds());
  return 0;
}
