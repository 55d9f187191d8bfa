#include <gtest/gtest.h>

#include <fstream>

#include "catalog_fixture.h"
#include "jet/catalog/tdef_io.h"

// Damaged files: whatever the bytes are, the catalogue answers or throws jet::Error.

namespace jet {
namespace {

std::string readFile(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

void writeFile(const std::filesystem::path& path, const std::string& bytes) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}

template <typename Action>
void attempt(Action&& action) {
  try {
    action();
  } catch (const Error&) {
    // damage that was noticed
  }
}

void useEverything(OpenDatabase& db) {
  std::vector<CatalogObject> objects;
  attempt([&] { objects = db->objects(); });
  for (const CatalogObject& object : objects) {
    attempt([&] { db->table(object.name); });
    attempt([&] { db->querySql(object.name); });
  }
  attempt([&] { db->relations(); });
}

// Every change, taken back: what a damaged file does to them must not outlive the level.
void changeEverything(OpenDatabase& db) {
  const Transaction outer(*db.pager);
  std::vector<std::u16string> tables;
  attempt([&] { tables = db->userTables(); });
  NewColumn column;
  column.name = u"nowa";
  column.type = Type::Memo;
  attempt([&] {
    db->createTable({.name = u"Nowa",
                     .columns = {column},
                     .indexes = {{.name = u"i", .columns = {{u"nowa", false}}}},
                     .validationRule = {},
                     .validationText = {}});
  });
  for (const std::u16string& name : tables) {
    TableDefPtr table;
    attempt([&] { table = db->table(name); });
    if (!table) continue;
    attempt([&] { db->addColumn(name, column); });
    attempt([&] { db->createIndex(name, {.name = u"nowy", .columns = {{table->columns[0].name, true}}}); });
    attempt([&] { db->renameColumn(name, table->columns[0].name, u"inna"); });
    for (const IndexDef& index : table->indexes) attempt([&] { db->dropIndex(name, index.name); });
  }
  std::vector<Relation> relations;
  attempt([&] { relations = db->relations(); });
  for (const Relation& r : relations) attempt([&] { db->dropRelation(r.name); });
  for (const std::u16string& name : tables) attempt([&] { db->dropTable(name); });
}

void damageAndUse(const std::filesystem::path& path, const std::string& sound, size_t pageSize, int rounds) {
  std::mt19937 random(static_cast<unsigned>(sound.size()));
  const size_t pages = sound.size() / pageSize;
  for (int round = 0; round < rounds; ++round) {
    SCOPED_TRACE(round);
    std::string bytes = sound;
    const int flips = 1 + static_cast<int>(random() % 8);
    for (int i = 0; i < flips; ++i) {
      // Half of the hits go to the pages at the front, which hold the definitions of the system tables.
      const size_t page = random() % 2 ? random() % std::min<size_t>(pages, 8) : random() % pages;
      const size_t offset = random() % 2 ? random() % 128 : random() % pageSize;
      bytes[page * pageSize + offset] = static_cast<char>(random() % 3 ? random() : 0xFF);
    }
    writeFile(path, bytes);
    attempt([&] {
      OpenDatabase db = openDatabase(path);
      useEverything(db);
      changeEverything(db);
    });
  }
}

TEST(CatalogDamage, CreatedFile) {
  const ScratchFolder scratch;
  const auto path = scratch / "damaged.mdb";
  {
    const OpenDatabase db = createDatabase(path, 0x0415);
    NewTable table{
        .name = u"T", .columns = {}, .indexes = {}, .validationRule = u"[a]>0", .validationText = {}};
    for (const auto& [name, type] :
         {std::pair{u"a", Type::Long}, {u"b", Type::Text}, {u"c", Type::Memo}, {u"d", Type::Boolean}}) {
      NewColumn c;
      c.name = name;
      c.type = type;
      c.description = u"opis";
      table.columns.push_back(c);
    }
    table.indexes.push_back({.name = u"PrimaryKey", .columns = {{u"a", false}}, .primary = true});
    db->createTable(table);
    table.name = u"U";
    db->createTable(table);
    Relation r;
    r.name = u"TU";
    r.table = u"T";
    r.foreignTable = u"U";
    r.columns = {{u"a", u"a"}};
    db->createRelation(r);
  }
  damageAndUse(path, readFile(path), 4096, 400);
}

TEST(CatalogDamage, Samples) {
  if (sampleFiles().empty()) GTEST_SKIP() << "TANDEKO_SAMPLES names no folder with samples";
  const ScratchFolder scratch;
  for (const auto& file : sampleFiles()) {
    SCOPED_TRACE(file.filename());
    const std::string sound = readFile(file);
    if (sound.size() > 1024 * 1024) continue;
    const bool jet3 = file.filename().string().starts_with("jet3");
    damageAndUse(scratch / "damaged.mdb", sound, jet3 ? 2048 : 4096, 60);
  }
}

TEST(CatalogDamage, EveryByteOfADefinition) {
  const ScratchFolder scratch;
  const auto path = scratch / "tdef.mdb";
  const OpenDatabase db = createDatabase(path);
  const ReadScope scope(*db.pager);
  const TdefBytes stored = readTdefBytes(*db.pager, 2);
  int refused = 0;
  for (size_t i = 8; i < stored.bytes.size(); ++i) {
    for (const char value :
         {'\0', '\xFF', static_cast<char>(stored.bytes[i] ^ 1), static_cast<char>(stored.bytes[i] ^ 0x80)}) {
      TdefBytes damaged = stored;
      damaged.bytes[i] = value;
      refused += errorOf([&] { parseTdef(damaged, db->header()); }) != 0;
    }
  }
  EXPECT_GT(refused, 500);
  for (size_t length = 0; length < stored.bytes.size(); ++length) {
    TdefBytes cut = stored;
    cut.bytes.resize(length);
    EXPECT_EQ(errorOf([&] { parseTdef(cut, db->header()); }), 3049) << length;
  }
}

}  // namespace
}  // namespace jet
