#pragma once

#include "jet/dao/dao.h"

namespace structure {

// The "EW" row of dbprg with the current version.
void addProgramRow(jet::Database& database);
void updateProgramVersion(jet::Database& database);

// The one row of dbfir: lists take their warehouse and bin rows from it.
void addFirmRow(jet::Database& database);

}  // namespace structure
