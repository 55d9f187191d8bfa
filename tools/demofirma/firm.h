#pragma once

#include <cstdint>

#include "jet/dao/dao.h"

struct FirmSize {
  int employees = 60;
  int items = 1500;
  int registers = 4;
  uint64_t seed = 1;
};

// Fills a database of the current structure with a firm, in one transaction. The same size and seed give
// the same firm. Throws std::runtime_error (a sentence for the user) when the structure is another one
// or the database already holds items, employees or registers.
void fillFirm(jet::Workspace& workspace, jet::Database& database, const FirmSize& size);
