#include "structure/create.h"

#include "structure/description.h"
#include "structure/first_rows.h"

namespace structure {

namespace {

void makeTables(jet::Catalog& catalog) {
  for (const TableDescription& description : tables()) catalog.createTable(description.table);
  for (const TableDescription& description : tables())
    for (const jet::Relation& relation : description.relations) catalog.createRelation(relation);
}

}  // namespace

void createDatabase(const std::filesystem::path& path, std::u16string_view password) {
  jet::Workspace workspace;
  auto database = workspace.createDatabase(path, jet::kPolishLocale, password);
  try {
    workspace.beginTrans();
    database->define(makeTables);
    addProgramRow(*database);
    addFirmRow(*database);
    workspace.commitTrans();
  } catch (...) {
    database->close();
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
    throw;
  }
}

}  // namespace structure
