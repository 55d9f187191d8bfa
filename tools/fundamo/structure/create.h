#pragma once

#include <filesystem>
#include <string_view>

namespace structure {

// Makes a new database with the current structure, Polish sort order, the "EW" row of dbprg and the one
// row of dbfir. Throws jet::Error 3204 when the file exists (it is not touched); after any other failure
// no file is left.
void createDatabase(const std::filesystem::path& path, std::u16string_view password = {});

}  // namespace structure
