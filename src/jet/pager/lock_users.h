#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "jet/pager/env.h"

namespace jet {

// The machines that have the database open, one entry for each opening, by the lock file beside it; "?" for
// one that has not written its name. Empty when there is no lock file or it cannot be read.
std::vector<std::u16string> lockUsers(Environment& env, const std::filesystem::path& database);

}  // namespace jet
