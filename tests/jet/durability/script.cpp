#include "jet/durability/script.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "support/other_reader.h"

namespace jet::test {

namespace {

// Strings with their length, numbers as their bytes.
struct Packer {
  std::string& out;
  void operator()(std::monostate) const {}
  void operator()(const Text& v) const { out += std::to_string(v.size()) + ':' + toUtf8(v); }
  void operator()(const Binary& v) const {
    out += std::to_string(v.size()) + ':' + std::string(v.begin(), v.end());
  }
  void operator()(const auto& v) const { out.append(reinterpret_cast<const char*>(&v), sizeof v); }
};

void addTable(Database& database, const std::u16string& name, std::string& out) {
  const TableDefPtr def = database.tableDef(name);
  out += "\ntable " + toUtf8(name);
  for (const ColumnDef& column : def->columns)
    out += "\n column " + toUtf8(column.name) + ' ' + std::to_string(static_cast<int>(column.type()));
  for (const IndexDef& index : def->indexes) out += "\n index " + toUtf8(index.name);
  const auto rows = database.openRecordset(u"SELECT * FROM [" + name + u"]", RecordsetType::Snapshot);
  for (; !rows->eof(); rows->moveNext()) {
    out += "\n ";
    for (size_t i = 0; i < rows->fieldCount(); ++i) {
      const Value value = rows->field(i).value();
      out += std::to_string(value.storage().index()) + ' ';
      std::visit(Packer{out}, value.storage());
      out += ';';
    }
  }
}

std::string text(const std::string& word, int count) {
  std::string all;
  for (int i = 0; i < count; ++i) all += word + ' ' + std::to_string(i) + ' ';
  return '\'' + all + '\'';
}

const char* const kTables[] = {
    "CREATE TABLE dzialy (id COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, nazwa TEXT(50) CONSTRAINT nazwa "
    "UNIQUE)",
    "CREATE TABLE osoby (id COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, dzial LONG, nazwisko TEXT(60), kwota "
    "CURRENCY, "
    "od DATETIME, uwagi MEMO)",
    "CREATE TABLE rzeczy (id COUNTER CONSTRAINT PrimaryKey PRIMARY KEY, osoba LONG, nazwa TEXT(100), opis "
    "MEMO)",
    "CREATE INDEX nazwisko ON osoby (nazwisko, od DESC)",
    "ALTER TABLE osoby ADD CONSTRAINT wDziale FOREIGN KEY (dzial) REFERENCES dzialy (id) ON DELETE CASCADE",
    "ALTER TABLE rzeczy ADD CONSTRAINT czyje FOREIGN KEY (osoba) REFERENCES osoby (id) ON DELETE CASCADE",
    "INSERT INTO dzialy (nazwa) VALUES ('Kadry')",
    "INSERT INTO dzialy (nazwa) VALUES ('Płace')",
};

std::string addPerson(int i, int memoWords) {
  return "INSERT INTO osoby (dzial, nazwisko, kwota, od, uwagi) VALUES (" + std::to_string(1 + i % 2) +
         ", 'Żak " + std::to_string(i * 7919 % 1000) + "', " + std::to_string(i) + ".25, #1/" +
         std::to_string(1 + i % 28) + "/2020#, " + text("uwaga", memoWords) + ")";
}

std::string addThing(int i, int memoWords) {
  return "INSERT INTO rzeczy (osoba, nazwa, opis) SELECT Max(id), 'rzecz " + std::to_string(i) + "', " +
         text("żółw", memoWords) + " FROM osoby";
}

// Twelve changes with a transaction among them.
void addRound(int round, std::vector<std::string>& script) {
  const int i = round * 10;
  const std::string n = std::to_string(round);
  const std::vector<std::string> steps = {
      addPerson(i, round % 4 * 3),
      addPerson(i + 1, 300 + round * 20),
      addThing(i, round),
      addThing(i + 1, 900),
      "UPDATE osoby SET kwota = kwota + 1, uwagi = uwagi & " + text("dopisane", round * 5) +
          " WHERE id = " + n,
      "begin",
      "UPDATE osoby SET nazwisko = 'Łoś ' & id WHERE id Mod 5 = " + std::to_string(round % 5),
      "INSERT INTO rzeczy (osoba, nazwa) SELECT id, 'kopia ' & nazwisko FROM osoby WHERE id < 6",
      "begin",
      "DELETE FROM osoby WHERE id Mod 3 = 0",
      round % 3 ? "rollback" : "commit",
      "add",
      round % 5 == 4 ? "rollback" : "commit",
      "edit",
      "DELETE FROM rzeczy WHERE nazwa Like 'kopia*' AND id Mod 2 = " + std::to_string(round % 2),
      round % 2 ? "remove" : "UPDATE rzeczy SET opis = Null WHERE id Mod 7 = 3",
  };
  script.insert(script.end(), steps.begin(), steps.end());
  const std::string definitions[] = {
      "CREATE TABLE t" + n + " (id LONG CONSTRAINT PrimaryKey PRIMARY KEY, tekst TEXT(255), uwagi MEMO)",
      "INSERT INTO t" + n + " SELECT id, nazwisko AS tekst, uwagi FROM osoby",
      "CREATE INDEX tekst ON t" + n + " (tekst)",
      "ALTER TABLE t" + n + " ADD COLUMN k" + n + " DOUBLE",
      round % 2 ? "DROP TABLE t" + n : "ALTER TABLE t" + n + " DROP COLUMN uwagi",
      "SELECT * INTO kopia" + n + " FROM rzeczy",
      round % 2 ? "DROP INDEX nazwisko ON osoby" : "DROP TABLE kopia" + n,
      round % 2 ? "CREATE INDEX nazwisko ON osoby (nazwisko, od DESC)"
                : "ALTER TABLE rzeczy DROP CONSTRAINT czyje",
  };
  const auto count = round % 2 ? 8 : 7;  // the relationship is dropped once, below
  script.insert(script.end(), definitions, definitions + count);
}

}  // namespace

std::string contentOf(Database& database) {
  std::string out;
  std::vector<std::u16string> names = database.tableNames();
  std::sort(names.begin(), names.end());
  for (const auto& name : names) addTable(database, name, out);
  for (const Relation& relation : database.relations())
    out += "\nrelation " + toUtf8(relation.name) + ' ' + toUtf8(relation.table) + ' ' +
           toUtf8(relation.foreignTable);
  return out;
}

void expectSound(Database& database) {
  database.check([](const std::u16string& fault) { ADD_FAILURE() << toUtf8(fault); });
}

std::vector<std::string> longScript() {
  std::vector<std::string> script(std::begin(kTables), std::end(kTables));
  for (int round = 1; round <= 10; ++round) addRound(round, script);
  const std::string last[] = {"ALTER TABLE rzeczy DROP CONSTRAINT czyje", "DELETE FROM dzialy WHERE id = 1",
                              "DELETE FROM rzeczy", "DROP TABLE rzeczy", addPerson(1, 2000)};
  script.insert(script.end(), std::begin(last), std::end(last));
  return script;
}

std::vector<std::string> shortScript() {
  std::vector<std::string> script;
  addRound(1, script);
  return script;
}

void perform(Workspace& workspace, Database& database, const std::string& step) {
  if (step == "begin") {
    workspace.beginTrans();
  } else if (step == "commit") {
    workspace.commitTrans();
  } else if (step == "rollback") {
    workspace.rollback();
  } else if (step == "edit" || step == "add" || step == "remove") {
    const auto rows = database.openRecordset(u"SELECT * FROM osoby ORDER BY id");
    rows->moveLast();
    if (step == "remove") return rows->remove();
    step == "edit" ? rows->edit() : rows->addNew();
    rows->field(u"nazwisko").setValue(Value(u"Źrebiec"));
    rows->field(u"uwagi").setValue(Value(std::u16string(5000, u'ą')));
    rows->update();
  } else {
    database.execute(fromUtf8(step));
  }
}

std::unique_ptr<MemoryEnvironment> startingFiles() {
  auto files = std::make_unique<MemoryEnvironment>();
  Workspace workspace(*files);
  const auto database = workspace.createDatabase(kPath, kPolishLocale);
  for (const char* statement : kTables) database->execute(fromUtf8(statement));
  for (int i = 0; i < 8; ++i) {
    database->execute(fromUtf8(addPerson(i, i * 50)));
    database->execute(fromUtf8(addThing(i, i * 30)));
  }
  return files;
}

std::vector<std::string> committedContents(const MemoryEnvironment& files,
                                           const std::vector<std::string>& script) {
  std::mt19937_64 random(1);
  const auto copy = files.afterPowerCut(Loss::Nothing, random);
  Workspace workspace(*copy);
  const auto database = workspace.openDatabase(kPath);
  std::vector<std::string> contents = {contentOf(*database)};
  int depth = 0;
  for (const std::string& step : script) {
    SCOPED_TRACE(step.substr(0, 200));
    EXPECT_NO_THROW(perform(workspace, *database, step));
    depth += step == "begin" ? 1 : step == "commit" || step == "rollback" ? -1 : 0;
    contents.push_back(depth == 0 ? contentOf(*database) : contents.back());
  }
  expectOtherReaderAgreesOn(copy->content(kPath));
  return contents;
}

}  // namespace jet::test
