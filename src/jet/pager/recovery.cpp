// Rolling back what a crash interrupted:
//  1. A journal is hot when its first header is valid and the database's commit word is one of the three that
//     the interrupted transaction can have left: the one before, 0 (pages are being written), the one after.
//     Any other word means that the database was replaced since, and the journal is none of its business.
//  2. Every record of every declared segment is checked before the first page is written back.
//  3. The earlier images go back to their places, and the file gets its earlier length.
//  4. The database is synced.
//  5. The journal's header is cleared and synced.
// Until step 5 the journal stays as it was, so that a crash anywhere leads to the same work again.

#include <vector>

#include "jet/format/error.h"
#include "jet/pager/journal_format.h"

namespace jet {

bool Journal::isHot(File& database) {
  JournalHeader header;
  if (!openExisting() || !readHeader(0, header) || header.segment != 0) return false;
  const FileLayout& layout = FileLayout::of(header.pageSize == 2048 ? Version::Jet3 : Version::Jet4);
  uint8_t word[2];
  if (database.read(layout.commitTable, word) != sizeof word) return false;
  const uint16_t found = get16(word);
  return found == 0 || found == header.before.commitWord || found == header.before.nextCommitWord;
}

PageNumber Journal::readRecord(uint64_t offset, const JournalHeader& header) {
  record_.resize(recordSize());
  const MutableBytes record{reinterpret_cast<uint8_t*>(record_.data()), record_.size()};
  const bool whole = file_->read(offset, record) == record.size();
  const PageNumber page = get32(record.data());
  if (!whole || page >= header.before.pageCount ||
      get64(record.data() + 8 + pageSize_) != journalChecksum(header.salt, record.first(8 + pageSize_)))
    throw Error(3049, {pathText(path_)}, "DAO.Workspace");
  return page;
}

void Journal::rollBackOwn(File& database) {
  // A failed attempt to clear the header may have left it either way.
  const JournalHeader header{pageSize_, firstRecords_, 0, salt_, before_};
  file_->write(0, header.stored());
  file_->sync();
  rollBack(database);
}

void Journal::rollBackHot(File& database) {
  if (isHot(database)) rollBack(database);
}

void Journal::rollBack(File& database) {
  forget();
  JournalHeader first;
  if (!readHeader(0, first)) return;
  pageSize_ = first.pageSize;

  std::vector<uint64_t> records;
  uint64_t start = 0;
  for (JournalHeader header = first; header.salt == first.salt && header.pageSize == first.pageSize;) {
    uint64_t offset = start + kJournalBlock;
    for (uint32_t i = 0; i < header.records; ++i, offset += recordSize()) {
      readRecord(offset, first);
      records.push_back(offset);
    }
    start = alignedToBlock(offset);
    const uint32_t segment = header.segment;
    if (!readHeader(start, header) || header.segment != segment + 1) break;
  }

  for (const uint64_t offset : records) {
    const PageNumber page = readRecord(offset, first);
    database.write(uint64_t{page} * pageSize_, asBytes(record_).subspan(8, pageSize_));
  }
  const uint64_t size = uint64_t{first.before.pageCount} * pageSize_;
  if (database.size() > size) database.truncate(size);
  database.sync();
  invalidate();
}

}  // namespace jet
