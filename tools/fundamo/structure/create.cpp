#include "structure/create.h"

#include "structure/description.h"

namespace structure {

namespace {

void makeTables(jet::Catalog& catalog) {
  for (const TableDescription& description : tables()) catalog.createTable(description.table);
  for (const TableDescription& description : tables())
    for (const jet::Relation& relation : description.relations) catalog.createRelation(relation);
}

void addFirstRows(jet::Database& database) {
  const auto programs = database.openRecordset(u"SELECT * FROM dbprg");
  programs->addNew();
  programs->field(u"Indprg").setValue(jet::Value(kProgramCode));
  programs->field(u"Nazwa").setValue(jet::Value(kProgramName));
  programs->field(u"VerMajor").setValue(jet::Value(kVersionMajor));
  programs->field(u"VerMinor").setValue(jet::Value(kVersionMinor));
  programs->update();
  // Lists take their warehouse and bin rows from this table's one row.
  database.execute(u"INSERT INTO dbfir (Nazwa) VALUES ('Nazwa firmy...')");
}

}  // namespace

void createDatabase(const std::filesystem::path& path, std::u16string_view password) {
  jet::Workspace workspace;
  auto database = workspace.createDatabase(path, jet::kPolishLocale, password);
  try {
    workspace.beginTrans();
    database->define(makeTables);
    addFirstRows(*database);
    workspace.commitTrans();
  } catch (...) {
    database->close();
    std::error_code ignored;
    std::filesystem::remove(path, ignored);
    throw;
  }
}

}  // namespace structure
