#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace structure {

struct MendResult {
  bool mended = false;                 // faults were found and the file was repaired
  bool lossless = true;                // and nothing was lost by it
  std::filesystem::path copy;          // of the damaged file; empty when it was sound
  std::vector<std::u16string> report;  // lines in Polish
};

// Verifies the whole file and, when something in it is wrong, copies it to NAME-kopia-YYYYMMDD.mdb beside it
// and saves into it all that can still be read. `progress` gets the part of the repair that is done, 0 to 1.
// Throws jet::Error: those of opening a file exclusively (3024, 3031, 3045, 3356, ...), 3056 for one that
// holds nothing to save, 3026 when the copy cannot be made.
MendResult mendDatabase(const std::filesystem::path& path, std::u16string_view password = {},
                        const std::function<void(double)>& progress = {});

// A line of the engine's report on a repair, in Polish.
std::u16string lossInPolish(std::u16string line);

}  // namespace structure
