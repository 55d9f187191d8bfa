#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <vector>

// The databases in the folder that TANDEKO_SAMPLES names, in the order of their names; none without it.
inline std::vector<std::filesystem::path> sampleFiles() {
  std::vector<std::filesystem::path> files;
  if (const char* folder = std::getenv("TANDEKO_SAMPLES"))
    for (const auto& entry : std::filesystem::directory_iterator(folder))
      if (entry.path().extension() == ".mdb") files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}
