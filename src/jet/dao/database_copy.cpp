#include "jet/dao/database_copy.h"

#include <algorithm>

#include "jet/catalog/objects.h"
#include "jet/catalog/tdef_io.h"
#include "jet/dao/definition_copy.h"
#include "jet/dao/row_transfer.h"
#include "jet/dao/table_source.h"
#include "jet/format/error.h"
#include "jet/format/text.h"

namespace jet {

namespace {

constexpr uint64_t kBytesPerTick = 256 * 1024;

std::u16string number(uint64_t n) { return fromUtf8(std::to_string(n)); }

// Whether a tolerant copy goes on without the row: it is damaged, lacks a required key or is too long.
bool leavesOut(const Error& error) {
  return isDamage(error) || error.number() == 3058 || error.number() == 3047;
}

}  // namespace

DatabaseCopy::DatabaseCopy(CopySource& source, const CopySettings& settings)
    : source_(source),
      settings_(settings),
      marks_(source.pager.pageCount()),
      total_(uint64_t{source.pager.pageCount()} * source.pager.pageSize()) {
  for (const CopySource::Table& table : source.tables)
    targets_.push_back({&table, startedAnew(table.def, settings.lcid)});
}

void DatabaseCopy::lose(const std::u16string& what) {
  lossless_ = false;
  if (settings_.report) settings_.report(what);
}

// `bytes` of the source are done.
void DatabaseCopy::tick(uint64_t bytes) {
  done_ += bytes;
  if (bytes != 0 && done_ - ticked_ < kBytesPerTick) return;
  ticked_ = done_;
  const double part = std::min(0.99, static_cast<double>(done_) / static_cast<double>(total_));
  if (settings_.progress && !settings_.progress(part)) throw Error(3059, {}, "DAO.Workspace");
}

// The creation date stays, since stored identifiers are masked by it; a file that has none gets one whose
// mask is known.
void DatabaseCopy::makeHeader(FileHeader& header) const {
  header = source_.header;
  header.encryptionKey = 0;
  header.password = settings_.password;
  if (settings_.lcid && *settings_.lcid != header.lcid) {
    header.lcid = *settings_.lcid;
    header.codePage = codePageOf(header.lcid);
  }
  if (header.created == 0) header.created = knownCreationDate();
}

std::unique_ptr<Pager> DatabaseCopy::run(const std::filesystem::path& destination) {
  tick(0);
  FileHeader header;
  makeHeader(header);
  sidMask_ = source_.header.created == 0 ? knownSidMask() : source_.sidMask;
  for (size_t i = 0; i < sidMask_.size(); ++i)
    sidToggle_.push_back(sidMask_[i] ^ (i < source_.sidMask.size() ? source_.sidMask[i] : uint8_t{0}));

  to_ = Pager::create(source_.pager.environment(), destination, Version::Jet4, Catalog::kEmptyDatabasePages);
  SystemTables systemTables = writeEmptyDatabase(*to_, header);
  placeTables();
  for (Target& table : targets_) copyTable(table);
  for (const Target& table : targets_) writeTdef(*to_, table.def, {table.def.page});
  copySystemTables(systemTables);
  tick(0);
  return std::move(to_);
}

// Gives every table its page, so that relationships can name them.
void DatabaseCopy::placeTables() {
  for (Target& table : targets_) {
    table.def.page = PageAllocator(*to_).allocate().number();
    tablePages_[table.source->def.page] = table.def.page;
  }
  for (Target& table : targets_) {
    for (IndexDef& index : table.def.indexes) {
      if (index.side == RelationSide::None) continue;
      const auto other = tablePages_.find(index.partnerTable);
      if (other == tablePages_.end())
        throwDamaged(u"the other table of the relationship " + index.name + u" is missing",
                     table.source->def.page);
      index.partnerTable = other->second;
    }
  }
}

void DatabaseCopy::copyTable(Target& table) {
  const TableDef& from = table.source->def;
  const int32_t lastAutoNumber = table.def.lastAutoNumber;
  TableBuilder::makeStorage(*to_, table.def);
  std::filesystem::path scratch = to_->path();
  scratch += "-sort";
  TableBuilder builder(*to_, table.def, scratch);
  TableSource rows(source_.pager, from, table.source->pages, marks_, settings_.tolerant);
  RowTransfer transfer(source_.pager, from, builder, table.def, marks_, settings_.tolerant);
  uint64_t bytes = 0;
  rows.forEach([&](Bytes row, PageNumber where) {
    try {
      transfer.copy(row, where);
    } catch (const Error& error) {
      if (!settings_.tolerant || !leavesOut(error)) throw;
    }
    tick(transfer.bytes() - bytes);
    bytes = transfer.bytes();
  });
  const uint64_t copied = table.def.rowCount;
  builder.finish(settings_.tolerant, [this] { tick(0); });
  table.def.lastAutoNumber = lastAutoNumber;
  if (!settings_.tolerant) return;

  table.def.lastAutoNumber = std::max(lastAutoNumber, transfer.largestAutoNumber());
  const std::u16string name = u"table " + from.name + u": ";
  // The table's own count of its rows tells what bad pages held.
  uint64_t expected = rows.slots();
  if (rows.badPages() > 0) {
    const uint64_t most = expected + uint64_t{rows.badPages()} * source_.pager.layout().maxSlots;
    expected = std::max<uint64_t>(expected, std::min<uint64_t>(from.rowCount, most));
  }
  if (expected > copied) lose(name + number(expected - copied) + u" rows lost");
  if (transfer.lostValues() > 0) lose(name + number(transfer.lostValues()) + u" memo or OLE values lost");
  if (builder.duplicates() > 0)
    lose(name + number(builder.duplicates()) + u" rows left out, whose keys other rows have already");
}

}  // namespace jet
