#include <gtest/gtest.h>

#include <algorithm>

#include "catalog_fixture.h"
#include "jet/catalog/row_store.h"
#include "jet/format/text.h"
#include "jet/storage/btree.h"
#include "support/other_reader.h"
#include "support/process.h"

namespace jet {
namespace {

NewColumn column(const char16_t* name, Type type, int size = 0) {
  NewColumn c;
  c.name = name;
  c.type = type;
  c.size = size;
  return c;
}

NewColumn counter(const char16_t* name) {
  NewColumn c = column(name, Type::Long);
  c.autoNumber = true;
  return c;
}

NewIndex primaryKey(const char16_t* columnName) {
  return {.name = u"PrimaryKey", .columns = {{columnName, false}}, .primary = true};
}

NewIndex plainIndex(const char16_t* name, const char16_t* columnName) {
  return {.name = name, .columns = {{columnName, false}}};
}

// Employees (id, name, hired, notes) and items (id, employee, label) with an enforced relationship when asked
// for.
void makeFirm(Catalog& catalog) {
  NewTable people{.name = u"Pracownicy",
                  .columns = {},
                  .indexes = {primaryKey(u"Id")},
                  .validationRule = {},
                  .validationText = {}};
  people.columns = {counter(u"Id"), column(u"Nazwisko", Type::Text, 40), column(u"Data", Type::Date),
                    column(u"Uwagi", Type::Memo)};
  people.columns[1].required = true;
  people.columns[1].allowZeroLength = false;
  people.columns[2].defaultValue = u"Date()";
  people.indexes.push_back(
      {.name = u"Nazwisko", .columns = {{u"Nazwisko", false}, {u"Id", true}}, .unique = true});
  catalog.createTable(people);
  NewTable items{.name = u"Pozycje",
                 .columns = {},
                 .indexes = {primaryKey(u"Id")},
                 .validationRule = {},
                 .validationText = {}};
  items.columns = {counter(u"Id"), column(u"Pracownik", Type::Long), column(u"Etykieta", Type::Text)};
  catalog.createTable(items);
}

RowId addPerson(Catalog& catalog, int32_t id, const char16_t* name) {
  RowStore rows(catalog.pager(), catalog.table(u"Pracownicy"));
  const Value values[] = {Value(id), Value(name), Value(Date{40000.5}), Value(Text(u"Łódź"))};
  return rows.insert(values, id);
}

void addItem(Catalog& catalog, int32_t id, Value person) {
  RowStore rows(catalog.pager(), catalog.table(u"Pozycje"));
  const Value values[] = {Value(id), std::move(person), Value(u"x")};
  rows.insert(values, id);
}

Relation firmRelation() {
  Relation r;
  r.name = u"PracownicyPozycje";
  r.table = u"pracownicy";
  r.foreignTable = u"Pozycje";
  r.columns = {{u"id", u"pracownik"}};
  r.cascadeUpdates = true;
  return r;
}

// Every index of every table holds exactly the keys of the table's rows (not `exactKeys`: entries of the
// rows, whatever their keys), and counts are right.
void expectSound(Catalog& catalog, bool exactKeys = true) {
  const ReadScope scope(catalog.pager());
  for (const CatalogObject& object : catalog.objects()) {
    if (object.type != 1) continue;
    SCOPED_TRACE(toUtf8(object.name));
    const TableDefPtr def = catalog.table(object.name);
    const RowStore rows(catalog.pager(), def);
    std::vector<std::vector<std::pair<std::string, RowId>>> expected(def->realIndexes.size());
    uint32_t count = 0;
    for (Heap::Scan scan = rows.scan(); scan.next(); ++count) {
      const RowReader row = rows.reader(scan.bytes(), scan.where());
      std::vector<Value> values;
      for (size_t i = 0; i < def->columns.size(); ++i) values.push_back(rows.value(row, static_cast<int>(i)));
      for (size_t i = 0; i < expected.size(); ++i) {
        if (auto key = rows.key(i, values)) expected[i].emplace_back(*key, scan.id());
      }
    }
    EXPECT_EQ(catalog.counts(def->page).rows, count);
    for (size_t i = 0; i < expected.size(); ++i) {
      std::sort(expected[i].begin(), expected[i].end());
      const RealIndex& index = def->realIndexes[i];
      const BTree tree(catalog.pager(), def->page, index.root, index.map);
      std::vector<std::pair<std::string, RowId>> actual;
      tree.check([](const std::u16string& fault) { ADD_FAILURE() << toUtf8(fault); },
                 [&](Bytes key, RowId row) { actual.emplace_back(asChars(key), row); });
      if (!exactKeys) {
        for (auto* entries : {&actual, &expected[i]}) {
          for (auto& entry : *entries) entry.first.clear();
          std::sort(entries->begin(), entries->end());
        }
      }
      EXPECT_EQ(actual, expected[i]);
    }
    for (const IndexDef& logical : def->indexes) {
      if (logical.side == RelationSide::None) continue;
      const TableDefPtr partner = catalog.tableAt(logical.partnerTable);
      const auto entry =
          std::find_if(partner->indexes.begin(), partner->indexes.end(), [&](const IndexDef& i) {
            return static_cast<int32_t>(i.number) == logical.partnerNumber && i.partnerTable == def->page;
          });
      ASSERT_NE(entry, partner->indexes.end());
      EXPECT_EQ(entry->partnerNumber, static_cast<int32_t>(logical.number));
      EXPECT_NE(entry->side, logical.side);
    }
  }
}

class CatalogDdl : public testing::Test {
 protected:
  CatalogDdl() : path_(scratch_ / "ddl.mdb"), db_(createDatabase(path_, 0x0415)) {}
  void reopen() {
    db_.catalog.reset();
    db_.pager.reset();
    db_ = openDatabase(path_);
  }
  void TearDown() override {
    db_.catalog.reset();
    db_.pager.reset();
    expectOtherReaderAgrees(path_);
  }
  Catalog& catalog() { return *db_.catalog; }

  ScratchFolder scratch_;
  std::filesystem::path path_;
  OpenDatabase db_;
};

TEST_F(CatalogDdl, WhatWasCreatedIsFoundAgain) {
  makeFirm(catalog());
  {
    Transaction level(*db_.pager);
    addPerson(catalog(), 1, u"Żak");
    addItem(catalog(), 1, Value(int32_t{1}));
    addItem(catalog(), 2, Value());
    level.commit();
  }
  catalog().createRelation(firmRelation());
  reopen();

  EXPECT_EQ(catalog().userTables(), (std::vector<std::u16string>{u"Pracownicy", u"Pozycje"}));
  const TableDefPtr people = catalog().table(u"PRACOWNICY");
  ASSERT_TRUE(people);
  EXPECT_EQ(people->name, u"Pracownicy");
  EXPECT_EQ(people->rowCount, 1u);
  EXPECT_EQ(people->lastAutoNumber, 1);
  EXPECT_TRUE(people->columns[0].autoNumber);
  EXPECT_EQ(people->columns[1].size(Version::Jet4), 40);
  EXPECT_TRUE(people->columns[1].required);
  EXPECT_FALSE(people->columns[1].allowZeroLength);
  EXPECT_TRUE(people->columns[3].allowZeroLength);
  EXPECT_EQ(people->columns[2].defaultValue, u"Date()");
  EXPECT_EQ(people->columns[1].lcid, 0x0415);
  ASSERT_TRUE(people->primaryKey());
  EXPECT_EQ(people->primaryKey()->name, u"PrimaryKey");
  EXPECT_TRUE(people->realIndexes[people->index(u"nazwisko")->real].columns[1].descending);
  EXPECT_TRUE(people->index(u".rC"));
  const auto relations = catalog().relations();
  ASSERT_EQ(relations.size(), 1u);
  EXPECT_EQ(relations[0].table, u"Pracownicy");
  EXPECT_EQ(relations[0].columns[0].second, u"Pracownik");
  EXPECT_TRUE(relations[0].enforced && relations[0].cascadeUpdates && !relations[0].cascadeDeletes);
  expectSound(catalog());

  // Administrator and users get what the container passes on.
  std::vector<std::pair<Binary, int32_t>> permissions;
  {
    const ReadScope scope(*db_.pager);
    const RowStore aces(*db_.pager, catalog().table(u"MSysACEs"));
    for (Heap::Scan scan = aces.scan(); scan.next();) {
      const RowReader row = aces.reader(scan.bytes(), scan.where());
      if (row.value(aces.def().columnOrdinal(u"ObjectId")) != Value(static_cast<int32_t>(people->page)))
        continue;
      permissions.emplace_back(row.value(aces.def().columnOrdinal(u"SID")).get<Binary>(),
                               row.value(aces.def().columnOrdinal(u"ACM")).get<int32_t>());
    }
  }
  EXPECT_EQ(permissions, (decltype(permissions){{{0x64, 0x8B}, 0xF00FE}, {{0x65, 0x8B}, 0xFFEFF}}));

  db_.catalog.reset();
  db_.pager.reset();
  const ProcessResult described = runProcess(
      {"mdb-schema", "--indexes", "--relations", "--not-null", path_.string(), "postgres"});
  if (described.status == 127) return;  // not installed
  const std::string& schema = described.out;
  for (const char* expected :
       {"\"nazwisko\"\t\t\tVARCHAR (40) NOT NULL", "PRIMARY KEY (\"id\")",
        "REFERENCES \"Pracownicy\"(\"id\") ON UPDATE CASCADE", "UNIQUE", "\"uwagi\""}) {
    EXPECT_NE(schema.find(expected), schema.npos) << expected << "\n" << schema;
  }
}

TEST_F(CatalogDdl, ChangesOfATableKeepItsRows) {
  makeFirm(catalog());
  {
    Transaction level(*db_.pager);
    for (int i = 1; i <= 300; ++i) {
      const std::u16string name = u"Osoba " + fromUtf8(std::to_string(i * 7 % 301));
      addPerson(catalog(), i, name.c_str());
    }
    level.commit();
  }
  NewColumn active = column(u"Czynny", Type::Boolean), number = counter(u"Lp"),
            note = column(u"Opis", Type::Memo);
  note.description = u"krótki";
  catalog().addColumn(u"Pracownicy", active);
  catalog().addColumn(u"Pracownicy", note);
  EXPECT_EQ(errorOf([&] { catalog().addColumn(u"Pracownicy", number); }), 3259);  // one is enough
  catalog().dropIndex(u"Pracownicy", u"PrimaryKey");
  catalog().dropIndex(u"Pracownicy", u"Nazwisko");
  catalog().dropColumn(u"Pracownicy", u"Id");
  catalog().addColumn(u"Pracownicy", number);
  catalog().createIndex(u"Pracownicy", primaryKey(u"Lp"));
  catalog().createIndex(u"Pracownicy", plainIndex(u"wgData", u"Data"));
  catalog().renameColumn(u"Pracownicy", u"Nazwisko", u"Imię i nazwisko");
  catalog().renameTable(u"Pracownicy", u"Osoby");
  catalog().dropColumn(u"Osoby", u"Uwagi");
  reopen();

  EXPECT_EQ(catalog().table(u"Pracownicy"), nullptr);
  const TableDefPtr people = catalog().table(u"Osoby");
  ASSERT_TRUE(people);
  std::vector<std::u16string> names;
  for (const int ordinal : people->displayOrder()) names.push_back(people->columns[ordinal].name);
  EXPECT_EQ(names, (std::vector<std::u16string>{u"Imię i nazwisko", u"Data", u"Czynny", u"Opis", u"Lp"}));
  EXPECT_TRUE(people->columns[people->columnOrdinal(u"imię I nazwisko")].required);
  EXPECT_EQ(people->columns[people->columnOrdinal(u"Opis")].properties.text(u"Description"), u"krótki");
  EXPECT_EQ(people->lastAutoNumber, 300);
  expectSound(catalog());

  const ReadScope scope(*db_.pager);
  const RowStore rows(*db_.pager, people);
  int32_t count = 0;
  for (Heap::Scan scan = rows.scan(); scan.next();) {
    const RowReader row = rows.reader(scan.bytes(), scan.where());
    ++count;
    EXPECT_EQ(rows.value(row, people->columnOrdinal(u"Lp")), Value(count));
    EXPECT_EQ(rows.value(row, people->columnOrdinal(u"Data")), Value(Date{40000.5}));
    EXPECT_EQ(rows.value(row, people->columnOrdinal(u"Opis")), Value());
    EXPECT_EQ(rows.value(row, people->columnOrdinal(u"Czynny")), Value(false));
  }
  EXPECT_EQ(count, 300);
}

TEST_F(CatalogDdl, RefusalsHaveTheirNumbers) {
  makeFirm(catalog());
  {
    Transaction level(*db_.pager);
    addPerson(catalog(), 1, u"Żak");
    addPerson(catalog(), 2, u"ŻAK");
    addItem(catalog(), 1, Value(int32_t{1}));
    addItem(catalog(), 2, Value(int32_t{99}));
    level.commit();
  }
  Catalog& c = catalog();
  const auto create = [&](const char16_t* name, std::vector<NewColumn> columns,
                          std::vector<NewIndex> indexes = {}) {
    return errorOf([&] {
      c.createTable(
          {.name = name, .columns = columns, .indexes = indexes, .validationRule = {}, .validationText = {}});
    });
  };
  const NewColumn a = column(u"a", Type::Long), o = column(u"o", Type::Ole);
  NewIndex wide = plainIndex(u"i", u"a");
  for (int i = 0; i < 10; ++i) wide.columns.emplace_back(u"a", false);
  NewColumn tooMuch = column(u"n", Type::Decimal);
  tooMuch.precision = 29;
  NewIndex uniqueName{.name = u"u", .columns = {{u"Data", false}}, .unique = true};

  Relation unknownColumn = firmRelation(), noIndex = firmRelation(), types = firmRelation(),
           self = firmRelation(), noColumns = firmRelation();
  unknownColumn.columns = {{u"Id", u"brak"}};
  noIndex.columns = {{u"Data", u"Pracownik"}};
  types.columns = {{u"Id", u"Etykieta"}};
  self.foreignTable = u"Pracownicy";
  self.columns = {{u"Id", u"Id"}};
  noColumns.columns.clear();
  Relation dates = noIndex;
  dates.foreignTable = u"Pracownicy";
  dates.columns = {{u"Data", u"Data"}};

  const std::vector<NewColumn> many(256, a);
  const struct {
    const char* what;
    int number, expected;
  } cases[] = {
      {"name with a point", create(u"a.b", {a}), 3125},
      {"empty name", create(u"", {a}), 3125},
      {"leading blank", create(u" a", {a}), 3125},
      {"65 characters", create(std::u16string(65, u'x').c_str(), {a}), 3125},
      {"column name", create(u"t", {column(u"a!", Type::Long)}), 3125},
      {"present, in other case", create(u"POZYCJE", {a}), 3010},
      {"system table", create(u"MSysObjects", {a}), 3010},
      {"no columns", create(u"t", {}), 3264},
      {"the same column twice", create(u"t", {a, column(u"A", Type::Text)}), 3191},
      {"text too long", create(u"t", {column(u"a", Type::Text, 256)}), 3017},
      {"binary too long", create(u"t", {column(u"a", Type::Binary, 511)}), 3017},
      {"two counters", create(u"t", {counter(u"a"), counter(u"b")}), 3259},
      {"decimal too wide", create(u"t", {tooMuch}), 3259},
      {"unknown index column", create(u"t", {a}, {plainIndex(u"i", u"b")}), 3409},
      {"OLE index", create(u"t", {a, o}, {plainIndex(u"i", u"o")}), 3287},
      {"eleven index columns", create(u"t", {a}, {wide}), 3277},
      {"two indexes of a name", create(u"t", {a}, {plainIndex(u"i", u"a"), plainIndex(u"I", u"a")}), 3375},
      {"two primary keys",
       create(u"t", {a}, {primaryKey(u"a"), {.name = u"p", .columns = {{u"a", false}}, .primary = true}}),
       3283},
      {"drop an unknown table", errorOf([&] { c.dropTable(u"brak"); }), 3376},
      {"drop a system table", errorOf([&] { c.dropTable(u"MSysACEs"); }), 3033},
      {"rename to a present name", errorOf([&] { c.renameTable(u"Pozycje", u"Pracownicy"); }), 3010},
      {"add a present column", errorOf([&] { c.addColumn(u"Pozycje", column(u"ID", Type::Long)); }), 3380},
      {"drop an unknown column", errorOf([&] { c.dropColumn(u"Pozycje", u"brak"); }), 3381},
      {"drop an indexed column", errorOf([&] { c.dropColumn(u"Pozycje", u"Id"); }), 3280},
      {"rename to a present column", errorOf([&] { c.renameColumn(u"Pozycje", u"Id", u"Etykieta"); }), 3380},
      {"present index", errorOf([&] { c.createIndex(u"Pozycje", plainIndex(u"primarykey", u"Id")); }), 3375},
      {"second primary key", errorOf([&] {
         c.createIndex(u"Pozycje", {.name = u"p", .columns = {{u"Id", false}}, .primary = true});
       }),
       3283},
      {"duplicates", errorOf([&] { c.createIndex(u"Pracownicy", uniqueName); }), 3022},
      {"drop an unknown index", errorOf([&] { c.dropIndex(u"Pozycje", u"brak"); }), 3372},
      {"relationship of unknown columns", errorOf([&] { c.createRelation(unknownColumn); }), 3409},
      {"relationship without index", errorOf([&] { c.createRelation(noIndex); }), 3368},
      {"relationship of types", errorOf([&] { c.createRelation(types); }), 3368},
      {"relationship with itself", errorOf([&] { c.createRelation(self); }), 3206},
      {"relationship without columns", errorOf([&] { c.createRelation(noColumns); }), 3366},
      {"relationship broken by rows", errorOf([&] { c.createRelation(firmRelation()); }), 3379},
      {"drop an unknown relationship", errorOf([&] { c.dropRelation(u"brak"); }), 3377},
      {"property of an unknown column", errorOf([&] { c.setColumnProperty(u"Pozycje", u"brak", {}); }), 3381},
  };
  for (const auto& test : cases) EXPECT_EQ(test.number, test.expected) << test.what;
  EXPECT_EQ(create(u"t", {column(u"a", Type::Long), column(u"b", Type::Internal)}), 3259);
  std::vector<NewColumn> numbered;
  for (int i = 0; i < 256; ++i)
    numbered.push_back(column((u"k" + fromUtf8(std::to_string(i))).c_str(), Type::Byte));
  EXPECT_EQ(create(u"t", numbered), 3190);
  numbered.pop_back();
  for (NewColumn& n : numbered) n.type = Type::Guid;
  EXPECT_EQ(create(u"t", numbered), 3047);

  // Nothing of all that is left.
  EXPECT_EQ(c.userTables().size(), 2u);
  EXPECT_TRUE(c.relations().empty());
  EXPECT_EQ(c.table(u"Pozycje")->indexes.size(), 1u);
  expectSound(c);
}

TEST_F(CatalogDdl, RelationshipsShareAndReleaseIndexes) {
  makeFirm(catalog());
  Catalog& c = catalog();
  c.createIndex(u"Pozycje", plainIndex(u"wgPracownika", u"Pracownik"));
  c.createRelation(firmRelation());
  EXPECT_EQ(c.table(u"Pozycje")->realIndexes.size(), 2u);  // the ordinary index serves the relationship
  EXPECT_EQ(errorOf([&] { c.createRelation(firmRelation()); }), 3378);
  EXPECT_EQ(errorOf([&] { c.dropTable(u"Pozycje"); }), 3281);
  EXPECT_EQ(errorOf([&] { c.dropTable(u"Pracownicy"); }), 3281);
  EXPECT_EQ(errorOf([&] { c.dropIndex(u"Pracownicy", u"PrimaryKey"); }), 3281);
  EXPECT_EQ(errorOf([&] { c.dropIndex(u"Pozycje", u"PracownicyPozycje"); }), 3281);
  EXPECT_EQ(errorOf([&] { c.dropColumn(u"Pozycje", u"Pracownik"); }), 3303);
  c.dropIndex(u"Pozycje", u"wgPracownika");
  EXPECT_EQ(c.table(u"Pozycje")->realIndexes.size(), 2u);

  c.renameTable(u"Pracownicy", u"Osoby");
  c.renameColumn(u"Pozycje", u"Pracownik", u"Osoba");
  Relation tree;  // an item within an item
  tree.name = u"Drzewo";
  tree.table = tree.foreignTable = u"Pozycje";
  tree.columns = {{u"Id", u"Nad"}};
  tree.cascadeDeletes = true;
  c.addColumn(u"Pozycje", column(u"Nad", Type::Long));
  c.createRelation(tree);
  Relation loose = firmRelation();
  loose.name.clear();
  loose.table = u"Osoby";
  loose.columns = {{u"Data", u"Etykieta"}};
  loose.enforced = false;
  loose.join = Relation::Join::Left;
  c.createRelation(loose);
  reopen();

  const auto relations = catalog().relations();
  ASSERT_EQ(relations.size(), 3u);
  EXPECT_EQ(relations[0].table, u"Osoby");
  EXPECT_EQ(relations[0].columns[0].second, u"Osoba");
  EXPECT_TRUE(relations[1].cascadeDeletes);
  EXPECT_EQ(relations[2].name, u"OsobyPozycje");
  EXPECT_TRUE(!relations[2].enforced && relations[2].join == Relation::Join::Left);
  expectSound(catalog());

  for (const Relation& r : relations) {
    if (r.enforced) catalog().dropRelation(r.name);
  }
  EXPECT_EQ(catalog().table(u"Pozycje")->indexes.size(), 1u);
  EXPECT_EQ(catalog().table(u"Pozycje")->realIndexes.size(), 1u);
  EXPECT_EQ(catalog().table(u"Osoby")->indexes.size(), 2u);
  catalog().dropTable(u"Osoby");
  catalog().dropTable(u"Pozycje");
  EXPECT_TRUE(catalog().relations().empty());  // the loose one went with its tables
  EXPECT_EQ(catalog().objects().size(), 8u);
  expectSound(catalog());

  const ReadScope scope(*db_.pager);
  const PageAllocator allocator(*db_.pager);
  for (PageNumber page = 0; page < db_.pager->pageCount(); ++page) {
    EXPECT_EQ(allocator.isFree(page), page >= Catalog::kEmptyDatabasePages) << page;
  }
}

TEST_F(CatalogDdl, LongDefinitionsGrowAndShrinkTheirChain) {
  NewTable wide{.name = u"Szeroka", .columns = {}, .indexes = {}, .validationRule = {}, .validationText = {}};
  const std::u16string stem(58, u'ą');
  for (int i = 0; i < 255; ++i)
    wide.columns.push_back(column((stem + fromUtf8(std::to_string(i))).c_str(), Type::Byte));
  catalog().createTable(wide);
  const auto pageCount = db_.pager->pageCount();
  Transaction indexing(*db_.pager);  // one commit for many small changes
  for (int i = 0; i < 32; ++i) {
    catalog().createIndex(u"Szeroka", plainIndex((stem + fromUtf8(std::to_string(i))).c_str(),
                                                 (stem + fromUtf8(std::to_string(i))).c_str()));
  }
  EXPECT_EQ(
      errorOf([&] { catalog().createIndex(u"Szeroka", plainIndex(u"x", wide.columns[0].name.c_str())); }),
      3626);
  indexing.commit();
  reopen();
  Transaction shrinking(*db_.pager);
  TableDefPtr table = catalog().table(u"szeroka");
  ASSERT_EQ(table->columns.size(), 255u);
  EXPECT_EQ(table->columns[254].name, wide.columns[254].name);
  EXPECT_EQ(table->indexes.size(), 32u);
  for (int i = 0; i < 32; ++i) catalog().dropIndex(u"Szeroka", table->indexes[i].name);
  for (int i = 1; i < 255; ++i) catalog().dropColumn(u"Szeroka", wide.columns[i].name);
  table = catalog().table(u"Szeroka");
  EXPECT_EQ(table->columns.size(), 1u);
  EXPECT_EQ(table->rowLayout.nextColumn, 255);
  EXPECT_EQ(errorOf([&] { catalog().addColumn(u"Szeroka", column(u"x", Type::Byte)); }), 3190);
  EXPECT_EQ(errorOf([&] { catalog().dropColumn(u"Szeroka", wide.columns[0].name); }), 3280);
  shrinking.commit();
  // Pages that the definition gave back serve again.
  catalog().dropTable(u"Szeroka");
  catalog().createTable(wide);
  EXPECT_LE(db_.pager->pageCount(), pageCount + 40);
  expectSound(catalog());
}

TEST_F(CatalogDdl, PropertiesAndCacheFollowEveryChange) {
  makeFirm(catalog());
  Catalog& c = catalog();
  const TableDefPtr before = c.table(u"Pozycje");
  PropertySet set;
  set.setText(u"Description", u"Rzeczy");
  c.setTableProperty(u"Pozycje", set.items[0]);
  c.setColumnProperty(u"Pozycje", u"Etykieta", set.items[0]);
  const TableDefPtr after = c.table(u"Pozycje");
  EXPECT_TRUE(before->properties.items.empty());
  EXPECT_EQ(after->properties.text(u"Description"), u"Rzeczy");
  EXPECT_TRUE(after->columns[2].allowZeroLength);  // as before, although the column now has properties
  EXPECT_EQ(after->columns[2].properties.text(u"description"), u"Rzeczy");

  {  // Rows do not make the definition be read again.
    Transaction level(*db_.pager);
    addItem(c, 1, Value());
    level.commit();
  }
  EXPECT_EQ(c.table(u"Pozycje"), after);
  EXPECT_EQ(c.counts(after->page).rows, 1u);
  EXPECT_EQ(c.counts(after->page).lastAutoNumber, 1);

  {  // A change that is rolled back was never there.
    Transaction level(*db_.pager);
    c.dropColumn(u"Pozycje", u"Etykieta");
    c.renameTable(u"Pozycje", u"Inne");
    EXPECT_EQ(c.table(u"Inne")->columns.size(), 2u);
  }
  EXPECT_EQ(c.table(u"Inne"), nullptr);
  EXPECT_EQ(c.table(u"Pozycje")->columns.size(), 3u);

  Property cleared = set.items[0];
  cleared.stored.clear();
  c.setTableProperty(u"Pozycje", cleared);
  EXPECT_FALSE(c.table(u"Pozycje")->properties.find(u"Description"));
}

TEST(CatalogOfRealFiles, TakesEveryChange) {
  if (sampleFiles().empty()) GTEST_SKIP() << "TANDEKO_SAMPLES names no folder with samples";
  const ScratchFolder scratch;
  for (const auto& file : sampleFiles()) {
    SCOPED_TRACE(file.filename());
    const auto copy = scratch / file.filename().string();
    std::filesystem::copy_file(file, copy);
    OpenDatabase db = openDatabase(copy);
    const std::vector<std::u16string> tables = db->userTables();
    if (db->header().version == Version::Jet3) {
      EXPECT_EQ(errorOf([&] { db->dropTable(tables[0]); }), 3251);
      continue;
    }
    // Keeps ligatures under keys of other weights than most files do.
    const bool exactKeys = file.filename() != "jet4-unicode-compression.mdb";
    expectSound(*db.catalog, exactKeys);
    makeFirm(*db.catalog);
    db->createRelation(firmRelation());
    for (const std::u16string& name : tables) {
      const std::u16string first = db->table(name)->columns[0].name;
      db->addColumn(name, column(u"Dodana", Type::Memo));
      db->createIndex(name, {.name = u"Nowy", .columns = {{first, true}}});
      db->renameColumn(name, first, u"Inna");
      db->renameTable(name, u"x " + name.substr(0, 60));
    }
    const size_t relations = db->relations().size();
    db = {};
    db = openDatabase(copy);
    expectSound(*db.catalog, exactKeys);
    EXPECT_EQ(db->relations().size(), relations);
    if (!exactKeys) {
      Transaction level(*db.pager);
      RowStore rows(*db.pager, db->table(u"x Table"));
      std::vector<RowId> present;
      for (Heap::Scan scan = rows.scan(); scan.next();) present.push_back(scan.id());
      for (const RowId row : present) rows.remove(row);
      expectSound(*db.catalog);
    }
    for (const Relation& r : db->relations()) {
      if (r.enforced && !db->table(r.table)->system) db->dropRelation(r.name);
    }
    for (const std::u16string& name : db->userTables()) db->dropTable(name);
    expectSound(*db.catalog);
  }
}

}  // namespace
}  // namespace jet
