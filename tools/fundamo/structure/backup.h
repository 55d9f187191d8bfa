#pragma once

#include <filesystem>

namespace structure {

// Copies NAME.mdb to NAME-kopia-YYYYMMDD.mdb in the same folder, or with -2, -3, ... after the day when
// there are copies already. Throws jet::Error 3026, leaving no half copy.
std::filesystem::path copyBeside(const std::filesystem::path& path);

}  // namespace structure
