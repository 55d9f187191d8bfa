// How a FilePager sees one state of a file that other copies change: opening, reads, the start of a
// transaction.

#include <algorithm>
#include <cstring>

#include "jet/format/error.h"
#include "jet/pager/file_pager.h"

namespace jet {

namespace {

constexpr uint32_t kHeadSize = 24;
constexpr uint8_t kSignature[] = "\x00\x01\x00\x00Standard Jet DB";  // with its NUL 20 bytes

}  // namespace

void FilePager::openShared() {
  const auto mode = options_.readOnly ? Environment::Open::ReadOnly : Environment::Open::ReadWrite;
  file_ = env_.open(path_, mode);
  checkHead();
  locks_ = std::make_unique<LockFile>(
      env_, path_, LockFile::Options{options_.exclusive, options_.readOnly, options_.lockWaitMs});
  if (!file_->isNamed(path_)) {
    // An exclusive copy put another file in its place before we were in.
    file_ = env_.open(path_, mode);
    checkHead();
  }
  cache_ = std::make_unique<PageCache>(layout_->pageSize, options_.cachePages);
  journal_ = std::make_unique<Journal>(env_, path_, options_.readOnly);
  scratch_ = std::make_unique<uint8_t[]>(layout_->pageSize);
  recoveryPending_ = locks_->sole();
  beginRead();
  endRead();
}

void FilePager::checkHead() {
  uint8_t head[kHeadSize];
  const bool known =
      file_->read(0, head) == kHeadSize && std::memcmp(head, kSignature, sizeof kSignature) == 0;
  const uint32_t version = known ? get32(head + sizeof kSignature) : ~0u;
  if (version > 1) throw Error(3343, {pathText(path_)}, "DAO.Workspace");
  layout_ = &FileLayout::of(version == 0 ? Version::Jet3 : Version::Jet4);
  if (file_->size() < layout_->pageSize) throw Error(3343, {pathText(path_)}, "DAO.Workspace");
}

void FilePager::beginRead() {
  if (readDepth_ == 0 && levels_.empty()) startReading();
  ++readDepth_;
}

void FilePager::endRead() noexcept {
  if (--readDepth_ == 0 && levels_.empty()) locks_->unlockRead();
}

void FilePager::startReading() {
  requireFile();
  for (;;) {
    locks_->lockRead();
    try {
      if (!recoveryPending_ && (locks_->sole() || !journal_->isHot(*file_))) {
        if (stale_ || !locks_->exclusive()) noticeChanges();
        return;
      }
    } catch (...) {
      locks_->unlockRead();
      throw;
    }
    locks_->unlockRead();
    recover(false);
  }
}

// In a file that cannot be written a transaction is only a read.
void FilePager::startWriting() {
  const bool reading = readDepth_ > 0;
  if (options_.readOnly || cutShort_) {
    if (!reading) startReading();
    return;
  }
  requireFile();
  for (;;) {
    locks_->lockWrite(reading);
    try {
      // One who reads already found no hot journal, and nobody else has written since.
      if (!recoveryPending_ && (reading || locks_->sole() || !journal_->isHot(*file_))) {
        if (!reading) locks_->lockRead();
        if (stale_ || !(reading || locks_->exclusive())) noticeChanges();
        const uint16_t word = get16(commitTable_.data());
        journal_->start(layout_->pageSize, {pageCount_, word, nextCommitWord(word)});
        writing_ = !cutShort_;
        if (cutShort_) locks_->unlockWrite(reading);
        return;
      }
    } catch (...) {
      locks_->unlockWrite(reading);
      if (!reading) locks_->unlockRead();
      throw;
    }
    locks_->unlockWrite(reading);
    recover(reading);
  }
}

uint16_t FilePager::nextCommitWord(uint16_t word) {
  return word < 0x0100 || word == 0xFFFF ? 0x0101 : static_cast<uint16_t>(word + 1);
}

void FilePager::requireFile() const {
  if (!file_) throw Error(3024, {pathText(path_)}, "DAO.Workspace");
}

// Rolls back what a crash or a failed commit left in the file.
void FilePager::recover(bool reading) {
  if (options_.readOnly && locks_->sole() && !locks_->exclusive()) {
    if (journal_->isHot(*file_)) throw Error(3051, {pathText(path_)}, "DAO.Workspace");
    recoveryPending_ = false;
    return;
  }
  locks_->lockWrite(reading);
  try {
    locks_->lockExclusive();
    if (options_.readOnly) {
      // One who only reads may still have the right to repair what he reads; 3051 if not.
      if (journal_->isHot(*file_)) {
        Journal journal(env_, path_, false);
        const auto file = env_.open(path_, Environment::Open::ReadWrite);
        journal.rollBackHot(*file);
      }
    } else {
      journal_->rollBackHot(*file_);
    }
  } catch (...) {
    locks_->unlockWrite(reading);
    throw;
  }
  locks_->unlockWrite(reading);
  recoveryPending_ = false;
  stale_ = true;
}

// Every commit changes the table of commit words, so that an unchanged one means an unchanged file.
void FilePager::noticeChanges() {
  std::array<uint8_t, kCommitTableSize> table{};
  file_->read(layout_->commitTable, table);
  if (!stale_ && table == commitTable_) return;
  cache_->discardAll();
  ++changeCounter_;
  stale_ = true;
  const uint64_t size = file_->size();
  const uint64_t used = std::min(size, layout_->maxFileSize);
  pageCount_ = static_cast<PageNumber>(used / layout_->pageSize);
  cutShort_ = offsetOf(pageCount_) != size;
  commitTable_ = table;
  stale_ = false;
}

}  // namespace jet
