#include <algorithm>

#include "jet/catalog/catalog_impl.h"
#include "jet/catalog/header.h"
#include "jet/catalog/new_database.h"
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

// In Jet 3 the texts are half as long and MSysQueries has no LvExtra column.
TableDef definitionOf(const SystemTable& from, const FileHeader& header) {
  const bool jet3 = header.version == Version::Jet3;
  TableDef def;
  def.page = from.page;
  def.system = true;
  def.storedType = 0x53;
  def.ownedMap = {kMapPage, from.firstMap};
  def.freeMap = {kMapPage, static_cast<uint8_t>(from.firstMap + 1)};
  def.rowLayout.file = &FileLayout::of(header.version);
  def.rowLayout.codePage = header.codePage;
  def.rowLayout.variableColumns = from.variableColumns;
  for (const SystemColumn& c : from.columns) {
    if (jet3 && from.page == queriesTable().page && c.name == u"LvExtra") continue;
    ++def.rowLayout.nextColumn;
    ColumnDef column;
    column.name = c.name;
    column.lcid = header.lcid;
    column.flags = c.flags;
    column.layout = {.type = c.type,
                     .fixed = (c.flags & 1) != 0,
                     .number = c.number,
                     .variableIndex = c.variableIndex,
                     .fixedOffset = c.fixedOffset,
                     .length = jet3 && c.length == 510 ? uint16_t{255} : c.length};
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

Binary maskedSid(const uint8_t (&plain)[2], const SidMask& mask) {
  return {static_cast<uint8_t>(plain[0] ^ mask[0]), static_cast<uint8_t>(plain[1] ^ mask[1])};
}

constexpr uint8_t kKnownDate[8] = {0xBC, 0x72, 0x1F, 0x7D, 0xF1, 0x9F, 0xE2, 0x40};

}  // namespace

double knownCreationDate() { return getDouble(kKnownDate); }

const SidMask& knownSidMask() {
  static const SidMask mask{
      0xA5, 0x32, 0x12, 0x55, 0xA2, 0x13, 0x65, 0x6A, 0xCC, 0x6E, 0x59, 0x95, 0xE9, 0xCC, 0x1C, 0xB4, 0xBB,
      0x1C, 0x48, 0x4C, 0xB6, 0x1D, 0x8A, 0x9B, 0x7D, 0x2D, 0xAD, 0xE9, 0x14, 0xA1, 0xB3, 0xEA, 0xDD, 0xD3,
      0x0D, 0xC8, 0xCF, 0x5E, 0xB7, 0xF8, 0x0F, 0xBA, 0xC6, 0x03, 0x17, 0xB7, 0xE3, 0x89, 0x2D, 0xFA, 0x3C,
      0xD5, 0xCC, 0x17, 0xF0, 0x1C, 0xBE, 0xFD, 0x06, 0xA6, 0x26, 0x53, 0x4C, 0x01, 0xFA, 0xDF, 0x66, 0x9C,
      0xAB, 0xC0, 0x2A, 0x4D, 0x7A, 0x6A, 0x26, 0xA8, 0xE7, 0x8A, 0xF1, 0x57, 0xCA, 0x11, 0x36, 0x6E, 0x6C,
      0x58, 0x79, 0x84, 0x0C, 0x70, 0x95, 0xCC, 0x0F, 0x7C, 0xF6, 0x10, 0xF5, 0x37, 0x28, 0x2D, 0xFA, 0x90};
  return mask;
}

std::vector<std::vector<Value>> newObjectRows(const TableDef& objects, const SidMask& mask, double now) {
  struct Row {
    int32_t id, parent;
    std::u16string_view name;
    int16_t type;
    const uint8_t (&owner)[2];
  };
  const Row list[] = {
      {kTablesContainer, kContainerRoot, u"Tables", kObjectContainer, kSidEngine},
      {kDatabasesContainer, kContainerRoot, u"Databases", kObjectContainer, kSidEngine},
      {kRelationsContainer, kContainerRoot, u"Relationships", kObjectContainer, kSidEngine},
      {kDatabaseObject, kDatabasesContainer, u"MSysDb", kObjectDatabase, kSidAdmin},
      {2, kTablesContainer, u"MSysObjects", kObjectTable, kSidEngine},
      {3, kTablesContainer, u"MSysACEs", kObjectTable, kSidEngine},
      {4, kTablesContainer, u"MSysQueries", kObjectTable, kSidEngine},
      {5, kTablesContainer, u"MSysRelationships", kObjectTable, kSidEngine},
  };
  std::vector<std::vector<Value>> rows;
  for (const Row& r : list) {
    SystemRow row(objects);
    row.set(u"Id", r.id).set(u"ParentId", r.parent).set(u"Name", r.name).set(u"Type", r.type);
    row.set(u"DateCreate", Date{now}).set(u"DateUpdate", Date{now});
    row.set(u"Owner", maskedSid(r.owner, mask)).set(u"Flags", INT32_MIN);
    rows.emplace_back(row.values().begin(), row.values().end());
  }
  return rows;
}

std::vector<std::vector<Value>> newPermissionRows(const TableDef& aces, const SidMask& mask) {
  struct Row {
    int32_t object;
    const uint8_t (&sid)[2];
    int32_t mask;
    bool inheritable;
  };
  const Row list[] = {
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
  std::vector<std::vector<Value>> rows;
  for (const Row& r : list) {
    SystemRow row(aces);
    row.set(u"ObjectId", r.object).set(u"SID", maskedSid(r.sid, mask)).set(u"ACM", r.mask);
    row.set(u"FInheritable", r.inheritable);
    rows.emplace_back(row.values().begin(), row.values().end());
  }
  return rows;
}

SystemTables writeEmptyDatabase(Pager& pager, FileHeader& header) {
  writeHeader(pager.write(0).bytes(), header);
  writeFreeMap(pager);
  const SystemTable* const tables[] = {&objectsTable(), &acesTable(), &queriesTable(), &relationshipsTable()};
  writeUsageMaps(pager, tables);
  SystemTables definitions = systemDefinitions(header);
  TableDef* const defs[] = {&definitions.objects, &definitions.aces, &definitions.queries,
                            &definitions.relationships};
  for (const TableDef* def : defs) {
    for (const RealIndex& index : def->realIndexes) writeEmptyRoot(pager, index.root, def->page);
    writeTdef(pager, *def, {def->page});
  }
  data_page::initialise(pager.write(kObjectRows).bytes(), pager.layout(), objectsTable().page);
  data_page::initialise(pager.write(kAceRows).bytes(), pager.layout(), acesTable().page);
  return definitions;
}

SystemTables systemDefinitions(const FileHeader& header) {
  return {definitionOf(objectsTable(), header), definitionOf(acesTable(), header),
          definitionOf(queriesTable(), header), definitionOf(relationshipsTable(), header)};
}

uint16_t codePageOf(uint16_t lcid) { return lcid == 0x0415 ? 1250 : 1252; }

std::unique_ptr<Catalog> Catalog::createDatabase(Pager& pager, uint16_t lcid, std::u16string_view password) {
  if (lcid != 0x0409 && lcid != 0x0415) throw Error(3001);
  Transaction change(pager);
  FileHeader header;
  header.lcid = lcid;
  header.codePage = codePageOf(lcid);
  header.password = password;
  const SystemTables tables = writeEmptyDatabase(pager, header);
  const SidMask mask(std::begin(kNewFileSidMask), std::end(kNewFileSidMask));
  RowStore objects(pager, std::make_shared<TableDef>(tables.objects));
  RowStore aces(pager, std::make_shared<TableDef>(tables.aces));
  for (const auto& row : newObjectRows(tables.objects, mask, pager.environment().localTime()))
    objects.insert(row);
  for (const auto& row : newPermissionRows(tables.aces, mask)) aces.insert(row);
  change.commit();
  return open(pager);
}

}  // namespace jet
