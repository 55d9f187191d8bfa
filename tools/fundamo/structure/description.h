#pragma once

#include <string>
#include <vector>

#include "jet/dao/dao.h"

// What a firm's database holds, as data: creation makes all of it, an upgrade makes what is missing.
namespace structure {

struct TableDescription {
  jet::NewTable table;
  // Relationships in which this table is the foreign side.
  std::vector<jet::Relation> relations;
};

// The tables of the program "EW" with those it shares with its family, dictionaries before the tables
// that refer to them.
const std::vector<TableDescription>& tables();

inline constexpr char16_t kProgramCode[] = u"EW";
inline constexpr char16_t kProgramName[] = u"Tandeko";
// Version of the structure described here; equal to the program's major and minor version.
inline constexpr int kVersionMajor = 1;
inline constexpr int kVersionMinor = 0;

}  // namespace structure
