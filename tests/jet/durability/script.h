#pragma once

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "jet/dao/dao.h"
#include "support/fault_env.h"

// A day's work in a small register, as statements, and what a database contains, for comparing.
namespace jet::test {

inline const std::filesystem::path kPath = "firma.mdb";

inline bool longRun() { return std::getenv("TANDEKO_LONG") != nullptr; }

// Definitions and rows of all tables, relationships. Equal strings mean equal databases.
std::string contentOf(Database& database);
// Fails the test for every fault that a check of the whole file finds.
void expectSound(Database& database);

// SQL statements, and "begin", "commit", "rollback", "edit", "add" and "remove" (a record of `osoby` through
// a recordset). At least 200 of them change something.
std::vector<std::string> longScript();
// Each kind of change once.
std::vector<std::string> shortScript();

void perform(Workspace& workspace, Database& database, const std::string& step);

// A new database with the tables of the script and a few rows.
std::unique_ptr<MemoryEnvironment> startingFiles();

// What the file contains, as another copy would see it, before the first step ([0]) and after each.
std::vector<std::string> committedContents(const MemoryEnvironment& files,
                                           const std::vector<std::string>& script);

}  // namespace jet::test
