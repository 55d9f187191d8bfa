#pragma once

#include <random>
#include <string>
#include <vector>

#include "jet/differential/dialects.h"

namespace jet::differential {

// The kinds of values that may be compared and unified with one another.
enum class Kind { Number, Text, Date, Boolean };

struct SchemaColumn {
  std::string name;
  Kind kind;
  bool integral;  // of a Number: a whole one
  std::string jetType, liteType;
};

struct SchemaTable {
  std::string name;
  std::vector<SchemaColumn> columns;
};

// Tables whose columns have every kind, Null in most, equal values across tables, and indexes of several
// kinds.
const std::vector<SchemaTable>& schema();
// Statements that create and fill them, always with the same rows. SQLite gets no indexes.
std::vector<Sql> schemaStatements();

// Literals that occur in the data and near it.
Sql numberLiteral(std::mt19937& random);
Sql textLiteral(std::mt19937& random);
Sql dateLiteral(std::mt19937& random);

}  // namespace jet::differential
