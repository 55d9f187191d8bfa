#pragma once

#include <optional>

#include "jet/catalog/table_def.h"

namespace jet {

// The definition of a table as it starts anew in a Jet 4 file: columns numbered without gaps, indexes without
// trees, no maps, no page. Logical indexes keep their numbers; those of relationships still name the other
// table's page in the old file. `lcid`: the sort order of all columns; absent, each keeps its own.
TableDef startedAnew(const TableDef& from, std::optional<uint16_t> lcid);

}  // namespace jet
