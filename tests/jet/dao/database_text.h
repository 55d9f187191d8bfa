#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "jet/dao/dao.h"

// Everything that a user can see in a database, a line each, sorted: columns with their properties, indexes,
// rows, relationships, queries, objects, permissions by object. Two files with the same lines hold the same.
// Page numbers do not show; neither do the file's version, sort order, the order of rows and the dates of
// relationships.
std::vector<std::string> databaseText(jet::Database& database);
std::vector<std::string> databaseText(const std::filesystem::path& path, const std::u16string& connect = {});

// The rows of one table, a sorted line each.
std::vector<std::string> tableRows(jet::Database& database, std::u16string_view table);

// The lines that only one of the two has, with - and + before them; for messages of failed comparisons.
std::string difference(const std::vector<std::string>& before, const std::vector<std::string>& after);

// Saves a query "SELECT column FROM table WHERE condition", as the query designer does.
void saveQuery(jet::Database& database, std::u16string_view name, std::u16string_view column,
               std::u16string_view table, std::u16string_view condition);
