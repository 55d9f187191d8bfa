#include "jet/dao/salvage.h"

#include <algorithm>
#include <cmath>

#include "jet/catalog/header.h"
#include "jet/catalog/tdef_io.h"
#include "jet/dao/table_source.h"
#include "jet/format/error.h"
#include "jet/format/header_mask.h"
#include "jet/format/text.h"
#include "jet/storage/data_page.h"

namespace jet {

namespace {

constexpr PageNumber kPagesPerTick = 1024;
constexpr double kEarliestDate = 32000, kLatestDate = 80000;  // of a file's creation: 1987 to 2119
constexpr PageNumber kAces = 3, kQueries = 4, kRelationships = 5;

std::u16string number(uint64_t n) { return fromUtf8(std::to_string(n)); }

bool isKind(Bytes page, PageKind kind) { return page[0] == static_cast<uint8_t>(kind) && page[1] == 1; }

}  // namespace

Salvage::Salvage(Pager& pager, const Report& lose, const std::function<void()>& tick)
    : pager_(pager), layout_(pager.layout()), lose_(lose), tick_(tick), free_(pager.pageCount()) {}

// A head that cannot be right is replaced by that of a new file.
FileHeader Salvage::readHeader() {
  FileHeader header;
  header.version = layout_.version;
  try {
    const FileHeader stored = parseHeader(pager_.read(0).bytes());
    const bool jet3 = stored.version == Version::Jet3;
    const bool dated = jet3 || (std::isfinite(stored.created) && stored.created > kEarliestDate &&
                                stored.created < kLatestDate);
    if (stored.encryptionKey != 0 && !isKind(pager_.read(kObjectsPage).bytes(), PageKind::TableDef))
      throw Error::withText(3049, u"The pages of this database are encrypted, which is not supported.",
                            "DAO.Workspace");
    if (dated && stored.codePage != 0) {
      header = stored;
      header.encryptionKey = 0;
      return header;
    }
  } catch (const Error& error) {
    if (!isDamage(error) || pager_.pageCount() <= kObjectsPage) throw;
  }
  lose_(u"file header: creation date, sort order and password lost");
  TableDef objects;
  if (parse(kObjectsPage, objects) && !objects.columns.empty()) header.lcid = objects.columns[0].lcid;
  header.codePage = codePageOf(header.lcid);
  return header;
}

void Salvage::scanPages() {
  try {
    const PageView head = pager_.read(0);
    const RowId row{1, 0};
    if (RowId::fromStored(headerField32(head.bytes(), kHeaderGlobalMap)) == row) {
      for (const PageNumber page : UsageMap(pager_, row, true).pages()) free_[page] = true;
      hasFreeMap_ = true;
    }
  } catch (const Error& error) {
    if (!isDamage(error)) throw;
  }
  for (PageNumber page = 1; page < pager_.pageCount(); ++page) {
    if (page % kPagesPerTick == 0) tick_();
    const PageView view = pager_.read(page);
    const Bytes bytes = view.bytes();
    if (isKind(bytes, PageKind::Data))
      dataPages_[data_page::owner(bytes, layout_)].push_back(page);
    else if (isKind(bytes, PageKind::TableDef))
      definitionPages_.push_back(page);
  }
}

bool Salvage::parse(PageNumber page, TableDef& def) {
  try {
    def = parseTdef(readTdefBytes(pager_, page), header_);
    return !def.columns.empty();
  } catch (const Error& error) {
    if (!isDamage(error)) throw;
    return false;
  }
}

uint64_t Salvage::countRows(const std::vector<PageNumber>& pages, const TableDef& def) {
  uint64_t rows = 0;
  for (const PageNumber page : pages) {
    try {
      const PageView view = pager_.read(page);
      const Bytes bytes = view.bytes();
      if (!data_page::isOwnedBy(bytes, layout_, def.page)) continue;
      const int slots = data_page::slotCount(bytes, layout_, page);
      for (int slot = 0; slot < slots; ++slot)
        if (!(data_page::slotWord(bytes, layout_, page, slot) & kSlotTarget)) ++rows;
    } catch (const Error& error) {
      if (!isDamage(error)) throw;
    }
  }
  return rows;
}

// The pages of the table's map; when it cannot be read, or rows are missing, also those that name the table
// as their owner and are not free - pages that were given back keep their old content.
std::vector<PageNumber> Salvage::dataPages(const TableDef& def) {
  std::vector<PageNumber> named;
  if (const auto found = dataPages_.find(def.page); found != dataPages_.end()) {
    for (const PageNumber page : found->second)
      if (!free_[page]) named.push_back(page);
  }
  std::vector<PageNumber> mapped;
  try {
    mapped = UsageMap(pager_, def.ownedMap).pages();
  } catch (const Error& error) {
    if (!isDamage(error)) throw;
    return named;
  }
  if (mapped == named || countRows(mapped, def) >= def.rowCount) return mapped;
  std::vector<PageNumber> all;
  std::set_union(mapped.begin(), mapped.end(), named.begin(), named.end(), std::back_inserter(all));
  return all;
}

CopySource Salvage::find() {
  scanPages();
  header_ = {};
  header_.version = layout_.version;
  header_ = readHeader();
  CopySource source{pager_, header_, SidMask(2), {}, {}, {}, {}, {}};
  TableDef& objects = source.objects.def;
  if (!parse(kObjectsPage, objects) || objects.columnOrdinal(u"LvProp") < 0 ||
      objects.columnOrdinal(u"ParentId") < 0) {
    objects = systemDefinitions(header_).objects;
    catalogueDamaged_ = true;
  }
  objects.name = u"MSysObjects";
  source.objects.pages = dataPages(objects);
  const std::vector<CatalogObject> entries = readObjects(source.objects);
  findListedTables(source, entries);
  const SystemTables usual = systemDefinitions(header_);
  findSystemTable(source.aces, usual.aces);
  findSystemTable(source.queries, usual.queries);
  findSystemTable(source.relationships, usual.relationships);
  if (catalogueDamaged_) findUnlistedTables(source);
  if (source.tables.empty() && entries.empty()) throw Error(3056, {}, "DAO.Workspace");
  readSidMask(source);
  separateRelations(source);
  return source;
}

std::vector<CatalogObject> Salvage::readObjects(CopySource::Table& objects) {
  std::vector<CatalogObject> entries;
  const TableDef& def = objects.def;
  const int id = def.columnOrdinal(u"Id"), type = def.columnOrdinal(u"Type"),
            name = def.columnOrdinal(u"Name"), flags = def.columnOrdinal(u"Flags");
  RowMarks marks(pager_.pageCount());
  TableSource rows(pager_, def, objects.pages, marks, true);
  rows.forEach([&](Bytes bytes, PageNumber where) {
    try {
      const RowReader row(def.rowLayout, bytes, where);
      const auto number = [&](int ordinal) {
        const Value value = ordinal < 0 ? Value() : row.value(ordinal);
        const int32_t* held = value.getIf<int32_t>();
        return held ? *held : 0;
      };
      const Value kind = type < 0 ? Value() : row.value(type), text = name < 0 ? Value() : row.value(name);
      CatalogObject object{.id = number(id), .flags = number(flags), .name = {}};
      if (const int16_t* held = kind.getIf<int16_t>()) object.type = *held;
      if (const Text* held = text.getIf<Text>()) object.name = *held;
      if (object.type != 0 && !object.name.empty())
        entries.push_back(std::move(object));
      else
        catalogueDamaged_ = true;
    } catch (const Error& error) {
      if (!isDamage(error)) throw;
      catalogueDamaged_ = true;
    }
  });
  if (rows.badPages() > 0 || rows.slots() > entries.size() || def.rowCount > entries.size())
    catalogueDamaged_ = true;
  return entries;
}

void Salvage::findListedTables(CopySource& source, const std::vector<CatalogObject>& objects) {
  listed_[kObjectsPage] = true;
  for (const CatalogObject& object : objects) {
    if (object.type != kObjectTable || object.id == static_cast<int32_t>(kObjectsPage)) continue;
    tick_();
    const auto page = static_cast<PageNumber>(object.id);
    CopySource::Table table;
    if (object.id <= 0 || page >= pager_.pageCount() || !parse(page, table.def)) {
      lose_(u"table " + object.name + u": lost, its definition cannot be read");
      catalogueDamaged_ = true;
      continue;
    }
    if (!listed_.emplace(page, true).second) continue;
    table.def.name = object.name;
    table.def.system = (static_cast<uint32_t>(object.flags) & kSystemFlags) != 0;
    table.pages = dataPages(table.def);
    CopySource::Table* system = sameName(object.name, u"MSysACEs")            ? &source.aces
                                : sameName(object.name, u"MSysQueries")       ? &source.queries
                                : sameName(object.name, u"MSysRelationships") ? &source.relationships
                                                                              : nullptr;
    if (system)
      *system = std::move(table);
    else
      source.tables.push_back(std::move(table));
  }
}

// A system table that the catalogue does not name, at its usual place.
void Salvage::findSystemTable(CopySource::Table& table, TableDef usual) {
  if (table.def.page != 0) return;
  catalogueDamaged_ = true;
  const bool known = parse(usual.page, table.def) &&
                     std::all_of(usual.columns.begin(), usual.columns.end(),
                                 [&](const ColumnDef& c) { return table.def.columnOrdinal(c.name) >= 0; });
  if (!known) table.def = std::move(usual);
  table.def.name = table.def.page == kAces      ? u"MSysACEs"
                   : table.def.page == kQueries ? u"MSysQueries"
                                                : u"MSysRelationships";
  static_assert(kRelationships == kQueries + 1);
  listed_[table.def.page] = true;
  table.pages = dataPages(table.def);
}

// Definitions that a damaged catalogue does not name any more. Without the map of free pages only those that
// have rows count: a dropped table leaves its definition behind.
void Salvage::findUnlistedTables(CopySource& source) {
  std::map<PageNumber, bool> continued;  // further pages of some definition
  for (const PageNumber page : definitionPages_) {
    const PageNumber next = get32(pager_.read(page).data() + 4);
    if (next != 0) continued[next] = true;
  }
  for (const PageNumber page : definitionPages_) {
    if (page <= kRelationships || free_[page] || continued.contains(page) || listed_.contains(page)) continue;
    tick_();
    CopySource::Table table;
    if (!parse(page, table.def)) continue;
    table.pages = dataPages(table.def);
    if (!hasFreeMap_ && countRows(table.pages, table.def) == 0) continue;
    table.def.name = u"Recovered " + number(page);
    table.isListed = false;
    lose_(u"table on page " + number(page) + u": its name is lost, it is called " + table.def.name + u" now");
    source.tables.push_back(std::move(table));
  }
}

// The owner of MSysObjects is the engine, that of most tables the administrator.
void Salvage::readSidMask(CopySource& source) {
  if (header_.version == Version::Jet3) return;
  const TableDef& def = source.objects.def;
  const int owner = def.columnOrdinal(u"Owner"), id = def.columnOrdinal(u"Id");
  if (owner < 0 || id < 0) return;
  RowMarks marks(pager_.pageCount());
  std::map<Binary, int> owners;
  Binary engine;
  TableSource(pager_, def, source.objects.pages, marks, true).forEach([&](Bytes bytes, PageNumber where) {
    try {
      const RowReader row(def.rowLayout, bytes, where);
      const Value who = row.value(owner);
      const Binary* sid = who.getIf<Binary>();
      if (!sid || sid->size() != 2) return;
      if (row.value(id) == Value(static_cast<int32_t>(kObjectsPage)))
        engine = *sid;
      else
        ++owners[*sid];
    } catch (const Error& error) {
      if (!isDamage(error)) throw;
    }
  });
  const auto most = std::max_element(owners.begin(), owners.end(),
                                     [](const auto& a, const auto& b) { return a.second < b.second; });
  for (size_t i = 0; i < 2; ++i) {
    if (!engine.empty())
      source.sidMask[i] = engine[i] ^ kSidEngine[i];
    else if (most != owners.end())
      source.sidMask[i] = most->first[i] ^ kSidAdmin[i];
  }
}

// Takes the entries of relationships out of the definitions and keeps those that make sense.
void Salvage::separateRelations(CopySource& source) {
  std::map<PageNumber, const TableDef*> tables;
  for (const CopySource::Table& table : source.tables) tables[table.def.page] = &table.def;
  for (const CopySource::Table& table : source.tables) {
    const TableDef& foreign = table.def;
    for (const IndexDef& entry : foreign.indexes) {
      const auto other = tables.find(entry.partnerTable);
      if (entry.side != RelationSide::Foreign || other == tables.end()) continue;
      const TableDef& primary = *other->second;
      const auto partner =
          std::find_if(primary.indexes.begin(), primary.indexes.end(), [&](const IndexDef& i) {
            return i.side == RelationSide::Primary && static_cast<int32_t>(i.number) == entry.partnerNumber;
          });
      if (partner == primary.indexes.end()) continue;
      const RealIndex& key = foreign.realIndexes[static_cast<size_t>(entry.real)];
      const RealIndex& referenced = primary.realIndexes[static_cast<size_t>(partner->real)];
      if (key.columns.size() != referenced.columns.size()) continue;
      Relation relation{
          .name = entry.name, .table = primary.name, .foreignTable = foreign.name, .columns = {}};
      for (size_t i = 0; i < key.columns.size(); ++i)
        relation.columns.emplace_back(
            primary.columns[static_cast<size_t>(referenced.columns[i].ordinal)].name,
            foreign.columns[static_cast<size_t>(key.columns[i].ordinal)].name);
      relation.unique = key.unique;
      relation.cascadeUpdates = entry.cascadeUpdates == 1;
      relation.cascadeDeletes = entry.cascadeDeletes == 1;
      relation.cascadeNull = entry.cascadeDeletes == 2;
      relations_.push_back(std::move(relation));
    }
  }
  for (CopySource::Table& table : source.tables)
    std::erase_if(table.def.indexes,
                  [](const IndexDef& index) { return index.side != RelationSide::None || index.foreign; });
}

}  // namespace jet
