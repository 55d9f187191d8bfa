#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

// A path from the environment, which Wine hands on as it is: its host's files are drive Z: there.
inline std::filesystem::path hostPath(const std::string& path) {
#ifdef _WIN32
  if (path.starts_with('/')) return "Z:" + path;
#endif
  return path;
}

// The databases in the folder that TANDEKO_SAMPLES names, in the order of their names; none without it.
inline std::vector<std::filesystem::path> sampleFiles() {
  std::vector<std::filesystem::path> files;
  if (const char* folder = std::getenv("TANDEKO_SAMPLES"))
    for (const auto& entry : std::filesystem::directory_iterator(hostPath(folder)))
      if (entry.path().extension() == ".mdb") files.push_back(entry.path());
  std::sort(files.begin(), files.end());
  return files;
}
