#include "jet/pager/journal.h"

#include <cstring>
#include <random>

#include "jet/format/error.h"
#include "jet/pager/journal_format.h"

namespace jet {

namespace {

constexpr uint64_t kKeptSize = 4u << 20;  // a larger file is cut after its commit
constexpr size_t kBuffer = 256 << 10;

// Asks the system every time: a generator of one's own would repeat itself in a process that was forked, and
// with the same salt the records of an earlier transaction would pass for those of this one.
uint64_t freshSalt() {
  std::random_device random;
  return uint64_t{random()} << 32 | random();
}

}  // namespace

Journal::Journal(Environment& env, const std::filesystem::path& database, bool readOnly)
    : env_(env), path_(pathOf(database)), readOnly_(readOnly) {}

Journal::~Journal() = default;

std::filesystem::path Journal::pathOf(const std::filesystem::path& database) {
  std::filesystem::path path = database;
  path += "-journal";
  return path;
}

void Journal::start(uint32_t pageSize, const Before& before) {
  forget();
  pageSize_ = pageSize;
  before_ = before;
  salt_ = freshSalt();
  end_ = kJournalBlock;
}

void Journal::forget() {
  offsets_.clear();
  pending_.clear();
  segmentStart_ = end_ = 0;
  segmentRecords_ = declaredSegments_ = 0;
}

// Record: u32 page, u32 0, the image, u64 checksum of all before it, seeded with the salt.
void Journal::add(PageNumber page, Bytes image) {
  if (pending_.size() + recordSize() > kBuffer) flush();
  const size_t start = pending_.size();
  const auto known = offsets_.emplace(page, end_ + 8).first;
  try {
    pending_.resize(start + recordSize());
  } catch (...) {
    offsets_.erase(known);
    throw;
  }
  uint8_t* record = reinterpret_cast<uint8_t*>(pending_.data()) + start;
  put32(record, page);
  put32(record + 4, 0);
  std::memcpy(record + 8, image.data(), pageSize_);
  put64(record + 8 + pageSize_, journalChecksum(salt_, {record, 8 + pageSize_}));
  end_ += recordSize();
  ++segmentRecords_;
}

void Journal::flush() {
  if (pending_.empty()) return;
  if (!file_) {
    entrySynced_ = false;
    file_ = env_.open(path_, Environment::Open::CreateOrOpen);
  }
  file_->write(end_ - pending_.size(), asBytes(pending_));
  pending_.clear();
}

void Journal::syncRecords() {
  flush();
  if (!file_) file_ = env_.open(path_, Environment::Open::CreateOrOpen);
  file_->sync();
  if (!entrySynced_) env_.syncFolder(path_);
  entrySynced_ = true;
}

void Journal::declare() {
  const JournalHeader header{pageSize_, segmentRecords_, declaredSegments_, salt_, before_};
  if (declaredSegments_ == 0) firstRecords_ = segmentRecords_;
  // From the attempt on the header may be in the file, whatever the call returns.
  ++declaredSegments_;
  file_->write(segmentStart_, header.stored());
  file_->sync();
  segmentRecords_ = 0;
  segmentStart_ = alignedToBlock(end_);
  end_ = segmentStart_ + kJournalBlock;
}

void Journal::readImage(PageNumber page, MutableBytes image) {
  flush();
  const uint64_t offset = offsets_.at(page);
  if (file_->read(offset, image) != image.size()) throw Error(3043, {}, "DAO.Workspace");
}

void Journal::invalidate() {
  if (!file_) return;
  const std::array<uint8_t, kJournalHeaderSize> cleared{};
  file_->write(0, cleared);
  file_->sync();
  forget();
  try {
    if (file_->size() > kKeptSize) file_->truncate(kJournalBlock);
  } catch (const std::exception&) {
    // Only space is lost.
  }
}

void Journal::removeFile() {
  try {
    JournalHeader header;
    if (readOnly_ || !openExisting() || readHeader(0, header)) return;
    file_.reset();
    env_.remove(path_);
  } catch (const std::exception&) {
    // A cleared journal harms nobody.
  }
}

bool Journal::openExisting() {
  if (file_) return true;
  if (!env_.exists(path_)) return false;
  file_ = env_.open(path_, readOnly_ ? Environment::Open::ReadOnly : Environment::Open::ReadWrite);
  entrySynced_ = false;
  return true;
}

bool Journal::readHeader(uint64_t offset, JournalHeader& header) {
  std::array<uint8_t, kJournalHeaderSize> bytes{};
  return file_->read(offset, bytes) == bytes.size() && header.parse(bytes);
}

}  // namespace jet
