#include "jet/catalog/header.h"
#include "jet/catalog/objects.h"
#include "jet/dao/connect_text.h"
#include "jet/dao/database_copy.h"
#include "jet/dao/database_impl.h"

// Compacting copies a sound database: the source is described by its catalogue and usage maps, whatever is
// damaged stops the copy, and the new file gets its name only when it is complete.

namespace jet {

namespace {

constexpr size_t kSourceCachePages = 16384;

std::vector<PageNumber> dataPages(Pager& pager, const TableDef& def) {
  return UsageMap(pager, def.ownedMap).pages();
}

// The four system tables by name: they are not always where the header says.
CopySource::Table* systemTable(CopySource& source, std::u16string_view name) {
  if (sameName(name, u"MSysObjects")) return &source.objects;
  if (sameName(name, u"MSysACEs")) return &source.aces;
  if (sameName(name, u"MSysQueries")) return &source.queries;
  if (sameName(name, u"MSysRelationships")) return &source.relationships;
  return nullptr;
}

// What the masked identifiers of users and groups are masked with, as far as the owner of MSysObjects tells.
SidMask sidMask(Catalog& catalog) {
  const TableDefPtr objects = catalog.table(u"MSysObjects");
  SidMask mask(2);
  if (!objects || catalog.header().version == Version::Jet3) return mask;
  const int id = systemColumn(*objects, u"Id", Type::Long),
            owner = systemColumn(*objects, u"Owner", Type::Binary);
  const RowStore rows(catalog.pager(), objects);
  for (Heap::Scan scan = rows.scan(); scan.next();) {
    const RowReader row = rows.reader(scan.bytes(), scan.where());
    if (row.value(id) != Value(static_cast<int32_t>(kObjectsPage))) continue;
    const Value engine = row.value(owner);
    const Binary* bytes = engine.getIf<Binary>();
    for (size_t i = 0; bytes && i < std::min(mask.size(), bytes->size()); ++i)
      mask[i] = (*bytes)[i] ^ kSidEngine[i];
  }
  return mask;
}

CopySource describe(Catalog& catalog) {
  CopySource source{catalog.pager(), catalog.header(), sidMask(catalog), {}, {}, {}, {}, {}};
  for (const CatalogObject& object : catalog.objects()) {
    if (object.type != kObjectTable) continue;
    const TableDefPtr def = catalog.tableAt(static_cast<PageNumber>(object.id));
    CopySource::Table table{*def, dataPages(catalog.pager(), *def)};
    if (CopySource::Table* system = systemTable(source, object.name))
      *system = std::move(table);
    else
      source.tables.push_back(std::move(table));
  }
  for (const CopySource::Table* table :
       {&source.objects, &source.aces, &source.queries, &source.relationships})
    if (table->def.page == 0) throwDamaged(u"a system table is missing", kObjectsPage);
  return source;
}

// Refuses what would not come out right.
void requireCarriable(const FileHeader& header, std::optional<uint16_t> lcid) {
  if (lcid && !Collation::get(*lcid).isExact()) throw Error(3001, {}, "DAO.Workspace");
  if (!Collation::get(lcid.value_or(header.lcid)).isExact()) {
    throw Error::withText(3049,
                          u"The sort order of this database is not known. Choose another one for the copy.",
                          "DAO.Workspace");
  }
  if (header.version == Version::Jet3 && header.codePage != 1250 && header.codePage != 1252) {
    throw Error::withText(3049, u"The texts of this database are in a code page that cannot be converted.",
                          "DAO.Workspace");
  }
}

}  // namespace

void Workspace::compactDatabase(const std::filesystem::path& source, const std::filesystem::path& destination,
                                const CompactOptions& options) {
  Environment& env = impl_->environment;
  const std::optional<uint16_t> lcid = localeLcid(options.locale);
  if (options.password && options.password->size() > kMaxPasswordLength)
    throw Error(3001, {}, "DAO.Workspace");
  if (env.exists(destination)) throw Error(3204, {pathText(destination)}, "DAO.Workspace");
  const auto from =
      Pager::open(env, source, {.exclusive = true, .readOnly = true, .cachePages = kSourceCachePages});
  const ReadScope scope(*from);
  const auto catalog = Catalog::open(*from);
  const FileHeader header = catalog->header();
  if (header.password != connectPart(options.connect, u"pwd")) throw Error(3031, {}, "DAO.Workspace");
  requireCarriable(header, lcid);

  CopySource described = describe(*catalog);
  CopySettings settings;
  settings.lcid = lcid;
  settings.password = options.password.value_or(header.password);
  settings.progress = options.progress;
  DatabaseCopy copy(described, settings);
  const auto to = copy.run(destination);
  if (options.progress && !options.progress(1)) throw Error(3059, {}, "DAO.Workspace");
  to->commit();
}

}  // namespace jet
