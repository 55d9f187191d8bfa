// How a damaged file is repaired:
//
//  1. The file is opened for this copy alone; from here on it is only read. When its first bytes are damaged
//  a
//     copy of it gets new ones and is read instead.
//  2. Every page is looked at once: data pages by the owner that they name, definitions by their looks, and
//  the
//     file's map of free pages.
//  3. The catalogue is read as far as it goes. Tables whose entries are lost are found by their definitions
//  and
//     get a name.
//  4. A table's rows are looked for on the pages of its map, and when the map is damaged or lacks rows on all
//     pages that name the table and are not free.
//  5. A new file beside the old one takes everything: each row that can be read, each long value that belongs
//  to
//     one row only. Of rows with the same key in a unique index the first one stays. Maps, counts and indexes
//     are made anew, entries that every file must have are added.
//  6. Relationships are made again, as the catalogue or else the definitions tell. One that the rows break is
//     kept without being enforced.
//  7. The new file takes the place and the name of the old one. Before this step nothing has changed.

#include <algorithm>

#include "jet/catalog/catalog_impl.h"
#include "jet/catalog/objects.h"
#include "jet/dao/database_copy.h"
#include "jet/dao/database_impl.h"
#include "jet/dao/salvage.h"
#include "jet/pager/journal.h"
#include "jet/pager/lock_file.h"

namespace jet {

namespace {

namespace fs = std::filesystem;
using Report = std::function<void(const std::u16string&)>;

constexpr size_t kSourceCachePages = 16384;
constexpr size_t kCopyBlock = size_t{1} << 20;
constexpr size_t kHeadSize = 24;  // signature and version
constexpr PageNumber kPagesTried = 64;
constexpr double kSalvagePart = 0.2;  // of the whole work

// A file that exists while the object does.
class ScratchFile {
 public:
  ScratchFile(Environment& env, const fs::path& database, const std::string& suffix) : env_(env) {
    for (int i = 1;; ++i) {
      path_ = database;
      path_.replace_filename(database.stem() += suffix + (i == 1 ? "" : std::to_string(i)));
      path_ += database.extension();
      if (!env.exists(path_)) return;
    }
  }
  ~ScratchFile() {
    try {
      env_.remove(path_);
    } catch (const std::exception&) {
      // It stays; nothing refers to it.
    }
  }
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;
  const fs::path& path() const { return path_; }

 private:
  Environment& env_;
  fs::path path_;
};

// How many of the first pages look like pages when they are of this size.
int likelyPages(File& file, const FileLayout& layout) {
  int likely = 0;
  for (PageNumber page = 1; page < kPagesTried; ++page) {
    uint8_t head[2];
    if (file.read(uint64_t{page} * layout.pageSize, head) < 2) break;
    if (head[1] == 1 && head[0] >= 1 && head[0] <= static_cast<uint8_t>(PageKind::UsageBitmap)) ++likely;
  }
  return likely;
}

// Copies the file and gives the copy the first bytes that its pages call for. Throws 3056 when they do not
// look like those of a database.
void copyWithNewHead(Environment& env, const fs::path& from, const fs::path& to) {
  const auto source = env.open(from, Environment::Open::ReadOnly);
  const int jet3 = likelyPages(*source, FileLayout::of(Version::Jet3)),
            jet4 = likelyPages(*source, FileLayout::of(Version::Jet4));
  if (std::max(jet3, jet4) < 4) throw Error(3056, {}, "DAO.Workspace");
  const auto copy = env.open(to, Environment::Open::CreateNew);
  std::string block(kCopyBlock, '\0');
  for (uint64_t at = 0, size = source->size(); at < size; at += kCopyBlock) {
    const MutableBytes room{reinterpret_cast<uint8_t*>(block.data()), block.size()};
    copy->write(at, room.first(source->read(at, room)));
  }
  // In Jet 4 every other page of Jet 3's size is the inside of a page.
  const uint8_t version = jet4 >= jet3 ? 1 : 0;
  uint8_t head[kHeadSize] = {0,   1,   0,   0,   'S', 't', 'a', 'n', 'd', 'a',
                             'r', 'd', ' ', 'J', 'e', 't', ' ', 'D', 'B', 0};
  head[kHeadSize - 4] = version;
  copy->write(0, head);
}

// An error of the disk or the user, after which going on makes no sense.
bool isFatal(const Error& error) {
  const int number = error.number();
  return number == 3026 || number == 3036 || number == 3043 || number == 3059;
}

class Relations {
 public:
  Relations(Catalog& catalog, const Report& lose) : catalog_(catalog), lose_(lose) {}

  void restore(const std::vector<Relation>& ofDefinitions) {
    std::vector<Relation> all = catalog_.relations();
    for (const Relation& relation : all) {
      if (!relation.enforced && hasObject(relation.name)) continue;
      catalog_.dropRelation(relation.name);
      create(relation);
    }
    for (const Relation& relation : ofDefinitions) {
      const auto same = [&](const Relation& r) { return sameName(r.name, relation.name); };
      if (std::none_of(all.begin(), all.end(), same)) create(relation);
    }
  }

 private:
  bool hasObject(const std::u16string& name) {
    for (const CatalogObject& object : catalog_.objects())
      if (object.type == kObjectRelation && sameName(object.name, name)) return true;
    return false;
  }

  void create(Relation relation) {
    std::u16string reason;
    if (tryCreate(relation, reason)) return;
    const bool wasEnforced = relation.enforced;
    relation.enforced = false;
    std::u16string ignored;
    if (wasEnforced && tryCreate(relation, ignored))
      lose_(u"relationship " + relation.name + u": kept, but not enforced: " + reason);
    else
      lose_(u"relationship " + relation.name + u": lost: " + reason);
  }

  bool tryCreate(const Relation& relation, std::u16string& reason) {
    try {
      catalog_.createRelation(relation);
      return true;
    } catch (const Error& error) {
      if (isFatal(error)) throw;
      reason = error.description();
      return false;
    }
  }

  Catalog& catalog_;
  const Report& lose_;
};

// Makes the repaired file at `to`. False when something was lost.
bool rebuild(Pager& from, const fs::path& to, const Report& report, const Progress& progress) {
  bool lossless = true;
  const Report lose = [&](const std::u16string& line) {
    lossless = false;
    if (report) report(line);
  };
  double part = 0;
  const auto advance = [&](double done) {
    part = std::max(part, done);
    if (progress && !progress(part)) throw Error(3059, {}, "DAO.Workspace");
  };
  const ReadScope scope(from);
  Salvage salvage(from, lose, [&] { advance(part); });
  CopySource source = salvage.find();
  CopySettings settings;
  settings.password = source.header.password;
  settings.tolerant = true;
  const uint16_t lcid = source.header.lcid;
  settings.lcid = Collation::get(lcid).isExact() ? lcid : Collation::kGeneralLcid;
  if (settings.lcid != lcid && report)
    report(u"the sort order of the file is not known, it is the General one now");
  settings.report = lose;
  settings.progress = [&](double done) { return advance(kSalvagePart + (1 - kSalvagePart) * done), true; };
  DatabaseCopy copy(source, settings);
  const auto pager = copy.run(to);
  {
    FileCatalog catalog(*pager);
    catalog.includeSystemTables();
    Relations(catalog, lose).restore(salvage.relationsOfDefinitions());
  }
  advance(1);
  if (source.header.version == Version::Jet3 && report)
    report(u"the file was one of an older format (Jet 3), and is one of Jet 4 now");
  pager->commit();
  return lossless;
}

}  // namespace

bool Workspace::repairDatabase(const fs::path& path, const Report& report, const Progress& progress) {
  Environment& env = impl_->environment;
  const ScratchFile repaired(env, path, "-repaired"), patched(env, path, "-damaged");
  bool lossless = true;
  const Pager::Options options{.exclusive = true, .readOnly = true, .cachePages = kSourceCachePages};
  std::unique_ptr<Pager> from;
  try {
    from = Pager::open(env, path, options);
  } catch (const Error& error) {
    if (error.number() != 3343) throw;
  }
  if (from) {
    lossless = rebuild(*from, repaired.path(), report, progress);
    from.reset();
  } else {
    const LockFile alone(env, path, {.exclusive = true});
    copyWithNewHead(env, path, patched.path());
    const auto copy = Pager::open(env, patched.path(), options);
    lossless = rebuild(*copy, repaired.path(), report, progress);
  }
  const LockFile alone(env, path, {.exclusive = true});
  env.remove(Journal::pathOf(path));  // it belongs to the old file
  env.rename(repaired.path(), path);
  env.syncFolder(path);
  return lossless;
}

}  // namespace jet
