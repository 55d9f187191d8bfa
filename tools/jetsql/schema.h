#pragma once

#include <string>

#include "jet/dao/dao.h"

// The table's definition as the statements that would create it: CREATE TABLE, CREATE INDEX and, for
// relationships in which it is the foreign side, ALTER TABLE ... ADD CONSTRAINT. UTF-8.
std::string tableSchema(jet::Database& database, const std::u16string& table);
