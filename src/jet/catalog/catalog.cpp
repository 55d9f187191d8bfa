#include "jet/catalog/catalog.h"

#include <algorithm>

#include "jet/catalog/catalog_impl.h"
#include "jet/catalog/header.h"
#include "jet/format/error.h"
#include "jet/format/text.h"

namespace jet {

namespace {

constexpr PageNumber kLeastPages = 6;

}  // namespace

std::unique_ptr<Catalog> Catalog::open(Pager& pager) {
  const ReadScope scope(pager);
  return std::make_unique<FileCatalog>(pager);
}

bool isValidName(std::u16string_view name) {
  if (name.empty() || name.size() > kMaxNameLength || name[0] == u' ' || name[0] == u'=') return false;
  return std::none_of(name.begin(), name.end(), [](char16_t c) {
    return c < 32 || std::u16string_view(u".![]`").find(c) != std::u16string_view::npos;
  });
}

FileCatalog::FileCatalog(Pager& pager) : pager_(pager) {
  header_ = parseHeader(pager.read(0).bytes());
  if (pager.pageCount() < kLeastPages) throwDamaged(u"the file is too short", pager.pageCount());
  if (header_.encryptionKey != 0) {
    throw Error::withText(3049, u"The pages of this database are encrypted, which is not supported.");
  }
  TableDef def = parseTdef(readTdefBytes(pager, kObjectsPage), header_);
  def.name = u"MSysObjects";
  def.system = true;
  objectsTable_ = std::make_shared<TableDef>(std::move(def));
  objects_ = std::make_unique<ObjectStore>(pager, objectsTable_);
}

void FileCatalog::setPassword(std::u16string_view password) {
  Transaction change(pager_);
  replacePassword(pager_.write(0).bytes(), header_, password);
  change.commit();
  header_.password = password;
}

std::vector<CatalogObject> FileCatalog::objects() {
  const ReadScope scope(pager_);
  std::vector<CatalogObject> found;
  for (ObjectStore::Entry& entry : objects_->all()) found.push_back(std::move(entry.object));
  return found;
}

std::vector<std::u16string> FileCatalog::userTables() {
  std::vector<CatalogObject> tables = objects();
  std::erase_if(tables, [](const CatalogObject& o) {
    return o.type != kObjectTable || (static_cast<uint32_t>(o.flags) & kSystemFlags) != 0;
  });
  std::stable_sort(tables.begin(), tables.end(),
                   [](const CatalogObject& a, const CatalogObject& b) { return a.created < b.created; });
  std::vector<std::u16string> names;
  for (CatalogObject& o : tables) names.push_back(std::move(o.name));
  return names;
}

// What a definition was made from, without the counts and statistics that every new row changes.
std::string FileCatalog::stampOf(const TdefBytes& stored, const std::string& row) const {
  const FileLayout& layout = pager_.layout();
  std::string stamp = row;
  if (stored.bytes.size() < layout.tdefBlocks) return stamp;
  stamp.append(stored.bytes, layout.tdefType, layout.tdefBlocks - layout.tdefType);
  const size_t indexes = get32(asBytes(stored.bytes).data() + layout.tdefRealIndexes);
  const size_t statistics = std::min(indexes * layout.indexStatSize, stored.bytes.size() - layout.tdefBlocks);
  return stamp.append(stored.bytes, layout.tdefBlocks + statistics, std::string::npos);
}

TableDefPtr FileCatalog::load(const ObjectStore::Entry& entry) {
  const PageNumber page = static_cast<PageNumber>(entry.object.id);
  const TdefBytes stored = readTdefBytes(pager_, page);
  auto def = std::make_shared<TableDef>(parseTdef(stored, header_));
  def->name = entry.object.name;
  def->system = (static_cast<uint32_t>(entry.object.flags) & kSystemFlags) != 0;
  def->stamp = stampOf(stored, objects_->rowBytes(entry.row));
  const std::string properties = objects_->properties(entry.row);
  applyProperties(*def, parseProperties(asBytes(properties), header_.codePage, page));
  tables_[page] = {def, entry.row, state()};
  names_[foldName(def->name)] = page;
  return def;
}

// The definition kept from before when nothing that it was made from has changed since; else nullptr.
TableDefPtr FileCatalog::cached(PageNumber definition) {
  const auto found = tables_.find(definition);
  if (found == tables_.end()) return nullptr;
  Cached& entry = found->second;
  if (entry.checked == state()) return entry.def;
  try {
    const std::string row = objects_->rowBytes(entry.row);
    if (!row.empty() && entry.def->stamp.starts_with(row) &&
        stampOf(readTdefBytes(pager_, definition), row) == entry.def->stamp) {
      entry.checked = state();
      return entry.def;
    }
  } catch (const Error&) {
    // The pages serve another purpose now: the table is looked up afresh.
  }
  names_.erase(foldName(entry.def->name));
  tables_.erase(found);
  return nullptr;
}

TableDefPtr FileCatalog::table(std::u16string_view name) {
  const ReadScope scope(pager_);
  if (const auto known = names_.find(foldName(name)); known != names_.end()) {
    if (TableDefPtr def = cached(known->second)) return def;
  }
  const auto entry = objects_->find(
      [&](const CatalogObject& o) { return o.type == kObjectTable && sameName(o.name, name); });
  return entry ? load(*entry) : nullptr;
}

TableDefPtr FileCatalog::tableAt(PageNumber definition) {
  const ReadScope scope(pager_);
  if (TableDefPtr def = cached(definition)) return def;
  const auto entry = objects_->find([&](const CatalogObject& o) {
    return o.type == kObjectTable && static_cast<PageNumber>(o.id) == definition;
  });
  if (!entry) throwDamaged(u"a table definition is not in the catalogue", definition);
  return load(*entry);
}

TableDefPtr FileCatalog::systemTable(std::u16string_view name) {
  TableDefPtr def = table(name);
  if (!def) throwDamaged(u"the system table " + std::u16string(name) + u" is missing", kObjectsPage);
  return def;
}

Catalog::Counts FileCatalog::counts(PageNumber definition) {
  const ReadScope scope(pager_);
  const PageView page = pager_.read(definition);
  if (page.data()[0] != static_cast<uint8_t>(PageKind::TableDef)) {
    throwDamaged(u"not a table definition page", definition);
  }
  const FileLayout& layout = pager_.layout();
  return {.rows = get32(page.data() + layout.tdefRowCount),
          .lastAutoNumber = static_cast<int32_t>(get32(page.data() + layout.tdefAutoNumber))};
}

void FileCatalog::storeCounts(PageNumber definition, int64_t rowDelta,
                              std::optional<int32_t> lastAutoNumber) {
  addToCounts(pager_, definition, rowDelta, lastAutoNumber);
}

void FileCatalog::requireWritable() const {
  if (header_.version == Version::Jet3) throw Error(3251);
}

FileCatalog::Draft FileCatalog::draft(std::u16string_view table) {
  requireWritable();
  auto entry = objects_->find(
      [&](const CatalogObject& o) { return o.type == kObjectTable && sameName(o.name, table); });
  if (!entry) throw Error(3376, {table});
  const TableDefPtr present = load(*entry);
  if (present->system && !systemTablesToo_) throw Error(3033, {table});
  const std::string properties = objects_->properties(entry->row);
  return {.def = *present,
          .pages = readTdefBytes(pager_, present->page).pages,
          .entry = std::move(*entry),
          .properties = parseProperties(asBytes(properties), header_.codePage, present->page)};
}

void FileCatalog::store(Draft& draft, bool withProperties) {
  TableDef& def = draft.def;
  std::stable_sort(def.indexes.begin(), def.indexes.end(),
                   [](const IndexDef& a, const IndexDef& b) { return foldName(a.name) < foldName(b.name); });
  def.rowLayout.columns.clear();
  for (const ColumnDef& column : def.columns) def.rowLayout.columns.push_back(column.layout);
  writeTdef(pager_, def, draft.pages);
  const std::string properties = draft.properties.empty()
                                     ? std::string()
                                     : encodeProperties(draft.properties, header_.version, header_.codePage);
  objects_->change(draft.entry.row, std::nullopt, withProperties ? &properties : nullptr);
  changed();
}

}  // namespace jet
