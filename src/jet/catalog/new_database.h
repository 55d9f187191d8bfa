#pragma once

#include <vector>

#include "jet/catalog/catalog.h"

namespace jet {

// What security identifiers are masked with, as far as it is known: XOR from the first byte on. It depends on
// the file's creation date alone.
using SidMask = std::vector<uint8_t>;

// A creation date whose mask is known for identifiers of any length that files have.
double knownCreationDate();
const SidMask& knownSidMask();

struct SystemTables {
  TableDef objects, aces, queries, relationships;
};

// Writes header, usage maps and the definitions of the system tables, without any rows, into a fresh pager of
// Catalog::kEmptyDatabasePages pages. The file is of Jet 4 and takes sort order, code page, password and
// creation date from `header` (writeHeader).
SystemTables writeEmptyDatabase(Pager& pager, FileHeader& header);

// The definitions as a new file of header.version has them, maps and roots at their places in a new Jet 4
// file.
SystemTables systemDefinitions(const FileHeader& header);

// The rows of a new file: its containers and system tables, and who may do what with them - everything that a
// database without a workgroup needs, and what new tables and relationships inherit. `mask` of at least two
// bytes.
std::vector<std::vector<Value>> newObjectRows(const TableDef& objects, const SidMask& mask, double now);
std::vector<std::vector<Value>> newPermissionRows(const TableDef& aces, const SidMask& mask);

// The code page that goes with a sort order.
uint16_t codePageOf(uint16_t lcid);

}  // namespace jet
