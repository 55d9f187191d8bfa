#include <algorithm>

#include "jet/catalog/catalog_impl.h"
#include "jet/catalog/header.h"
#include "jet/format/error.h"
#include "jet/storage/data_page.h"

// An empty database is 16 pages that look the same in every file but for the sort order:
//
//   0 header, 1 map of free pages, 2-5 definitions of the system tables, 6 usage maps of them all,
//   7-13 roots of their indexes, 14 rows of MSysObjects, 15 rows of MSysACEs

namespace jet {

namespace {

constexpr PageNumber kMapPage = 6, kObjectRows = 14, kAceRows = 15;
constexpr int kMapRows = 31;

struct SystemColumn {
  std::u16string_view name;
  uint16_t number;
  Type type;
  uint16_t length;
  uint8_t flags;
  uint16_t variableIndex, fixedOffset;
};

struct SystemIndex {
  std::vector<uint16_t> columns;  // numbers
  uint8_t map;                    // row of the map page
  PageNumber root;
  uint8_t flags;
};

struct SystemName {
  std::u16string_view name;
  uint32_t number;  // of the real index too
  bool primary;
};

struct LongValueMaps {
  uint16_t column;
  uint8_t firstMap;
};

struct SystemTable {
  PageNumber page;
  uint16_t variableColumns;
  uint8_t firstMap;
  std::vector<SystemColumn> columns;
  std::vector<SystemIndex> realIndexes;
  std::vector<SystemName> indexes;
  std::vector<LongValueMaps> longValues;
};

constexpr uint8_t kFixed = 0x13, kVariable = 0x12, kSid = 0x32;

const SystemTable& objectsTable() {
  static const SystemTable table{
      .page = 2,
      .variableColumns = 11,
      .firstMap = 0,
      .columns = {{u"Connect", 9, Type::Memo, 0, kVariable, 3, 0},
                  {u"Database", 8, Type::Memo, 0, kVariable, 2, 0},
                  {u"DateCreate", 4, Type::Date, 8, kFixed, 1, 10},
                  {u"DateUpdate", 5, Type::Date, 8, kFixed, 1, 18},
                  {u"Flags", 7, Type::Long, 4, kFixed, 2, 26},
                  {u"ForeignName", 10, Type::Text, 510, kVariable, 4, 0},
                  {u"Id", 0, Type::Long, 4, kFixed, 0, 0},
                  {u"Lv", 13, Type::Ole, 0, kVariable, 7, 0},
                  {u"LvExtra", 16, Type::Ole, 0, kVariable, 10, 0},
                  {u"LvModule", 15, Type::Ole, 0, kVariable, 9, 0},
                  {u"LvProp", 14, Type::Ole, 0, kVariable, 8, 0},
                  {u"Name", 2, Type::Text, 510, kVariable, 0, 0},
                  {u"Owner", 6, Type::Binary, 510, kSid, 1, 0},
                  {u"ParentId", 1, Type::Long, 4, kFixed, 0, 4},
                  {u"RmtInfoLong", 12, Type::Ole, 0, kVariable, 6, 0},
                  {u"RmtInfoShort", 11, Type::Binary, 510, kVariable, 5, 0},
                  {u"Type", 3, Type::Integer, 2, kFixed, 1, 8}},
      .realIndexes = {{{1, 2}, 16, 7, 0x81}, {{0}, 17, 8, 0x81}},
      .indexes = {{u"Id", 1, true}, {u"ParentIdName", 0, false}},
      .longValues = {{8, 2}, {9, 4}, {12, 6}, {13, 8}, {14, 10}, {15, 12}, {16, 14}}};
  return table;
}

const SystemTable& acesTable() {
  static const SystemTable table{.page = 3,
                                 .variableColumns = 1,
                                 .firstMap = 18,
                                 .columns = {{u"ACM", 2, Type::Long, 4, kFixed, 1, 4},
                                             {u"FInheritable", 3, Type::Boolean, 1, kFixed, 1, 0},
                                             {u"ObjectId", 0, Type::Long, 4, kFixed, 0, 0},
                                             {u"SID", 1, Type::Binary, 510, kSid, 0, 0}},
                                 .realIndexes = {{{0}, 20, 9, 0x88}},
                                 .indexes = {{u"ObjectId", 0, false}},
                                 .longValues = {}};
  return table;
}

const SystemTable& queriesTable() {
  static const SystemTable table{.page = 4,
                                 .variableColumns = 4,
                                 .firstMap = 21,
                                 .columns = {{u"Attribute", 1, Type::Byte, 1, kFixed, 0, 4},
                                             {u"Expression", 5, Type::Memo, 0, kVariable, 3, 0},
                                             {u"Flag", 6, Type::Integer, 2, kFixed, 4, 5},
                                             {u"LvExtra", 7, Type::Long, 4, kFixed, 4, 7},
                                             {u"Name1", 3, Type::Text, 510, kVariable, 1, 0},
                                             {u"Name2", 4, Type::Text, 510, kVariable, 2, 0},
                                             {u"ObjectId", 0, Type::Long, 4, kFixed, 0, 0},
                                             {u"Order", 2, Type::Binary, 510, kVariable, 0, 0}},
                                 .realIndexes = {{{0, 1, 2}, 25, 10, 0x81}},
                                 .indexes = {{u"ObjectIdAttribute", 0, true}},
                                 .longValues = {{5, 23}}};
  return table;
}

const SystemTable& relationshipsTable() {
  static const SystemTable table{
      .page = 5,
      .variableColumns = 5,
      .firstMap = 26,
      .columns = {{u"ccolumn", 2, Type::Long, 4, kFixed, 1, 4},
                  {u"grbit", 1, Type::Long, 4, kFixed, 1, 0},
                  {u"icolumn", 3, Type::Long, 4, kFixed, 1, 8},
                  {u"szColumn", 5, Type::Text, 510, kVariable, 2, 0},
                  {u"szObject", 4, Type::Text, 510, kVariable, 1, 0},
                  {u"szReferencedColumn", 7, Type::Text, 510, kVariable, 4, 0},
                  {u"szReferencedObject", 6, Type::Text, 510, kVariable, 3, 0},
                  {u"szRelationship", 0, Type::Text, 510, kVariable, 0, 0}},
      .realIndexes = {{{0}, 28, 11, 0x82}, {{4}, 29, 12, 0x82}, {{6}, 30, 13, 0x82}},
      .indexes = {{u"szObject", 1, false}, {u"szReferencedObject", 2, false}, {u"szRelationship", 0, false}},
      .longValues = {}};
  return table;
}

TableDef definitionOf(const SystemTable& from, const FileHeader& header) {
  TableDef def;
  def.page = from.page;
  def.system = true;
  def.storedType = 0x53;
  def.ownedMap = {kMapPage, from.firstMap};
  def.freeMap = {kMapPage, static_cast<uint8_t>(from.firstMap + 1)};
  def.rowLayout.file = &FileLayout::of(Version::Jet4);
  def.rowLayout.codePage = header.codePage;
  def.rowLayout.nextColumn = static_cast<uint16_t>(from.columns.size());
  def.rowLayout.variableColumns = from.variableColumns;
  for (const SystemColumn& c : from.columns) {
    ColumnDef column;
    column.name = c.name;
    column.lcid = header.lcid;
    column.flags = c.flags;
    column.layout = {.type = c.type,
                     .fixed = (c.flags & 1) != 0,
                     .number = c.number,
                     .variableIndex = c.variableIndex,
                     .fixedOffset = c.fixedOffset,
                     .length = c.length};
    for (const LongValueMaps& maps : from.longValues) {
      if (maps.column != c.number) continue;
      column.ownedMap = {kMapPage, maps.firstMap};
      column.freeMap = {kMapPage, static_cast<uint8_t>(maps.firstMap + 1)};
    }
    def.rowLayout.columns.push_back(column.layout);
    def.columns.push_back(std::move(column));
  }
  for (const SystemIndex& i : from.realIndexes) {
    RealIndex index;
    for (const uint16_t number : i.columns) {
      const auto column = std::find_if(def.columns.begin(), def.columns.end(),
                                       [&](const ColumnDef& c) { return c.layout.number == number; });
      index.columns.push_back({.ordinal = static_cast<int>(column - def.columns.begin())});
    }
    index.flags = i.flags;
    index.unique = (i.flags & 1) != 0;
    index.ignoreNulls = (i.flags & 2) != 0;
    index.required = (i.flags & 8) != 0;
    index.root = i.root;
    index.map = {kMapPage, i.map};
    def.realIndexes.push_back(std::move(index));
  }
  for (const SystemName& n : from.indexes) {
    IndexDef index;
    index.name = n.name;
    index.number = n.number;
    index.real = static_cast<int>(n.number);
    index.primary = n.primary;
    def.indexes.push_back(std::move(index));
  }
  return def;
}

// A map row of the standard length whose set contains `page` (none when 0).
std::string mapRow(PageNumber page) {
  std::string row(FileLayout::of(Version::Jet4).mapRowSize, '\0');
  if (page != 0) row[5 + page / 8] = static_cast<char>(1u << page % 8);
  return row;
}

void writeFreeMap(Pager& pager) {
  const FileLayout& layout = pager.layout();
  PageEdit page = pager.write(1);
  data_page::initialise(page.bytes(), layout, 1);
  std::string freePages(layout.mapRowSize, '\xFF');
  std::fill_n(freePages.begin(), 5 + Catalog::kEmptyDatabasePages / 8, '\0');
  data_page::insert(page.bytes(), layout, asBytes(freePages));
  data_page::insert(page.bytes(), layout, asBytes(mapRow(0)));
}

void writeEmptyRoot(Pager& pager, PageNumber root, PageNumber definition) {
  const FileLayout& layout = pager.layout();
  PageEdit page = pager.write(root);
  page.data()[0] = static_cast<uint8_t>(PageKind::IndexLeaf);
  page.data()[1] = 1;
  put16(page.data() + 2, layout.pageSize - layout.indexEntries);
  put32(page.data() + 4, definition);
}

void writeUsageMaps(Pager& pager, std::span<const SystemTable* const> tables) {
  const FileLayout& layout = pager.layout();
  std::vector<PageNumber> content(kMapRows);
  content[0] = content[1] = kObjectRows;
  content[acesTable().firstMap] = content[acesTable().firstMap + 1] = kAceRows;
  for (const SystemTable* table : tables) {
    for (const SystemIndex& index : table->realIndexes) content[index.map] = index.root;
  }
  PageEdit page = pager.write(kMapPage);
  data_page::initialise(page.bytes(), layout, 0);
  for (const PageNumber mapped : content) data_page::insert(page.bytes(), layout, asBytes(mapRow(mapped)));
}

Binary maskedSid(const uint8_t (&plain)[2]) {
  return {static_cast<uint8_t>(plain[0] ^ kNewFileSidMask[0]),
          static_cast<uint8_t>(plain[1] ^ kNewFileSidMask[1])};
}

void insertObjects(RowStore& store, double now) {
  struct Row {
    int32_t id, parent;
    std::u16string_view name;
    int16_t type;
    const uint8_t (&owner)[2];
  };
  const Row rows[] = {
      {kTablesContainer, kContainerRoot, u"Tables", kObjectContainer, kSidEngine},
      {kDatabasesContainer, kContainerRoot, u"Databases", kObjectContainer, kSidEngine},
      {kRelationsContainer, kContainerRoot, u"Relationships", kObjectContainer, kSidEngine},
      {kDatabaseObject, kDatabasesContainer, u"MSysDb", kObjectDatabase, kSidAdmin},
      {2, kTablesContainer, u"MSysObjects", kObjectTable, kSidEngine},
      {3, kTablesContainer, u"MSysACEs", kObjectTable, kSidEngine},
      {4, kTablesContainer, u"MSysQueries", kObjectTable, kSidEngine},
      {5, kTablesContainer, u"MSysRelationships", kObjectTable, kSidEngine},
  };
  for (const Row& r : rows) {
    SystemRow row(store.def());
    row.set(u"Id", r.id).set(u"ParentId", r.parent).set(u"Name", r.name).set(u"Type", r.type);
    row.set(u"DateCreate", Date{now}).set(u"DateUpdate", Date{now});
    row.set(u"Owner", maskedSid(r.owner)).set(u"Flags", INT32_MIN);
    store.insert(row.values());
  }
}

// Who may do what in a new file: everything a database without a workgroup needs, and what new tables and
// relationships inherit.
void insertPermissions(RowStore& store) {
  struct Row {
    int32_t object;
    const uint8_t (&sid)[2];
    int32_t mask;
    bool inheritable;
  };
  const Row rows[] = {
      {2, kSidAdmin, 0x60000, false},
      {3, kSidAdmin, 0x60000, false},
      {4, kSidAdmin, 0x60000, false},
      {5, kSidAdmin, 0xE0000, false},
      {kTablesContainer, kSidCreator, 0xF00FE, true},
      {kTablesContainer, kSidAdmin, 0x60001, false},
      {kRelationsContainer, kSidCreator, 0xF00FE, true},
      {kRelationsContainer, kSidAdmin, 0x60001, false},
      {kDatabasesContainer, kSidAdmin, 0x60000, false},
      {kDatabaseObject, kSidAdmin, 0x6000E, false},
      {kDatabaseObject, kSidUsers, 0x0000E, false},
      {4, kSidUsers, 0x00014, false},
      {5, kSidUsers, 0x00014, false},
      {2, kSidUsers, 0x00014, false},
      {kTablesContainer, kSidUsers, 0xFFEFF, true},
      {kRelationsContainer, kSidUsers, 0xFFFFF, true},
  };
  for (const Row& r : rows) {
    SystemRow row(store.def());
    row.set(u"ObjectId", r.object).set(u"SID", maskedSid(r.sid)).set(u"ACM", r.mask);
    row.set(u"FInheritable", r.inheritable);
    store.insert(row.values());
  }
}

}  // namespace

std::unique_ptr<Catalog> Catalog::createDatabase(Pager& pager, uint16_t lcid, std::u16string_view password) {
  if (lcid != 0x0409 && lcid != 0x0415) throw Error(3001);
  Transaction change(pager);
  FileHeader header;
  header.lcid = lcid;
  header.codePage = lcid == 0x0415 ? 1250 : 1252;
  header.password = password;
  writeHeader(pager.write(0).bytes(), header);
  writeFreeMap(pager);

  const SystemTable* const tables[] = {&objectsTable(), &acesTable(), &queriesTable(), &relationshipsTable()};
  writeUsageMaps(pager, tables);
  std::vector<TableDefPtr> definitions;
  for (const SystemTable* table : tables) {
    for (const SystemIndex& index : table->realIndexes) writeEmptyRoot(pager, index.root, table->page);
    definitions.push_back(std::make_shared<TableDef>(definitionOf(*table, header)));
    writeTdef(pager, *definitions.back(), {table->page});
  }
  data_page::initialise(pager.write(kObjectRows).bytes(), pager.layout(), objectsTable().page);
  data_page::initialise(pager.write(kAceRows).bytes(), pager.layout(), acesTable().page);
  RowStore objects(pager, definitions[0]), aces(pager, definitions[1]);
  insertObjects(objects, pager.environment().localTime());
  insertPermissions(aces);
  change.commit();
  return open(pager);
}

}  // namespace jet
