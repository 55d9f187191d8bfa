#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <unordered_map>

#include "jet/format/layout.h"
#include "jet/pager/env.h"

namespace jet {

struct JournalHeader;

// The rollback journal of one database: the earlier state of every page that a commit overwrites, made
// durable beforehand, in the file DATABASE-journal. docs/journal.md describes its layout. The file stays
// between commits with its header cleared; a header that is valid while nobody writes means that a crash
// interrupted a commit (the journal is hot).
class Journal {
 public:
  struct Before {
    PageNumber pageCount = 0;                     // of the database before the transaction
    uint16_t commitWord = 0, nextCommitWord = 0;  // word 0 of the commit table before and after
  };

  Journal(Environment& env, const std::filesystem::path& database, bool readOnly);
  ~Journal();
  Journal(const Journal&) = delete;
  Journal& operator=(const Journal&) = delete;

  static std::filesystem::path pathOf(const std::filesystem::path& database);

  // Writing, in this order; add, syncRecords and declare may repeat for further segments.
  void start(uint32_t pageSize, const Before& before);
  bool contains(PageNumber page) const { return offsets_.contains(page); }
  void add(PageNumber page, Bytes image);
  // Makes the records durable; they do not count yet.
  void syncRecords();
  // Makes them count. From here on the database may be written.
  void declare();
  // Records are waiting to be declared.
  bool undeclared() const { return segmentRecords_ > 0; }
  bool declared() const { return declaredSegments_ > 0; }
  // The record's image, before or after it was declared.
  void readImage(PageNumber page, MutableBytes image);
  // Clears the header: what the database holds is the truth now.
  void invalidate();
  // Forgets the transaction without touching the file.
  void forget();

  // Whether a crash left a commit half done in `database`, whose locks the caller holds at least shared.
  bool isHot(File& database);
  // Rolls it back if so; the caller holds the exclusive lock. May be interrupted anywhere and repeated.
  void rollBackHot(File& database);
  // Rolls back the transaction that this object declared.
  void rollBackOwn(File& database);
  // Removes the file unless it is hot; nobody else has the database open. Never throws.
  void removeFile();

 private:
  void rollBack(File& database);
  bool openExisting();
  void flush();
  bool readHeader(uint64_t offset, JournalHeader& header);
  uint64_t recordSize() const { return pageSize_ + 16; }
  // Reads and checks the record at `offset`; the image is in record_ then.
  PageNumber readRecord(uint64_t offset, const JournalHeader& header);

  Environment& env_;
  std::filesystem::path path_;
  bool readOnly_;
  std::unique_ptr<File> file_;
  bool entrySynced_ = false;  // the folder entry is known to be durable

  uint32_t pageSize_ = 0;
  Before before_;
  uint64_t salt_ = 0;
  std::unordered_map<PageNumber, uint64_t> offsets_;  // of the images
  uint64_t segmentStart_ = 0, end_ = 0;               // offsets in the file; end_ includes pending_
  uint32_t segmentRecords_ = 0, declaredSegments_ = 0, firstRecords_ = 0;
  std::string pending_;  // records not yet written
  std::string record_;
};

}  // namespace jet
