#include "structure/first_rows.h"

#include "structure/description.h"

namespace structure {

namespace {

void setVersion(jet::Recordset& programs) {
  programs.field(u"VerMajor").setValue(jet::Value(kVersionMajor));
  programs.field(u"VerMinor").setValue(jet::Value(kVersionMinor));
  programs.update();
}

}  // namespace

void addProgramRow(jet::Database& database) {
  const auto programs = database.openRecordset(u"SELECT * FROM dbprg");
  programs->addNew();
  programs->field(u"Indprg").setValue(jet::Value(kProgramCode));
  programs->field(u"Nazwa").setValue(jet::Value(kProgramName));
  setVersion(*programs);
}

void updateProgramVersion(jet::Database& database) {
  const auto programs =
      database.openRecordset(u"SELECT * FROM dbprg WHERE Indprg = '" + std::u16string(kProgramCode) + u"'");
  programs->edit();
  setVersion(*programs);
}

void addFirmRow(jet::Database& database) {
  database.execute(u"INSERT INTO dbfir (Nazwa) VALUES ('Nazwa firmy...')");
}

}  // namespace structure
