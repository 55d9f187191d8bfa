#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "jet/format/error.h"

namespace structure {

struct UpgradeResult {
  enum class Outcome {
    Upgraded,  // parts were added
    Current,   // nothing was missing; the file is as it was
    Newer,     // made by a later version of this tool; the file is as it was
  };
  Outcome outcome = Outcome::Current;
  std::filesystem::path copy;          // of the file as it was; empty when it was not changed
  std::vector<std::u16string> report;  // lines in Polish: what was done, what could not be done and why
};

// Steps done, steps in all, and what is worked at.
using Progress = std::function<void(int done, int total, const std::u16string& what)>;

// Brings a database of this family to the structure of tables(): adds tables, columns (filled with their
// default values), indexes and relationships, widens texts, makes sure of the "EW" row of dbprg and the row
// of dbfir. Nothing is removed and no row is lost; what the present rows or the present structure forbid is
// left out and reported. Before the first change the file is copied to NAME-kopia-YYYYMMDD.mdb beside it; all
// changes are one transaction. Throws jet::Error: those of opening a file exclusively (3024, 3031, 3045,
// 3356, 3343, ...), 3251 for a file of an older format, 3078 for a file with none of the tables, 3026 when
// the copy cannot be made.
UpgradeResult upgradeDatabase(const std::filesystem::path& path, std::u16string_view password = {},
                              const Progress& progress = {});

// The error in Polish, for the user of the structure tool.
std::u16string explain(const jet::Error& error);

}  // namespace structure
