// How a transaction of a FilePager reaches the disk:
//  1. The commit word on page 0 changes, by which other copies notice the commit.
//  2. The earlier images of the changed pages go to the journal, which is synced.
//  3. Readers in other copies leave; new ones wait.
//  4. The journal's header is written and synced: from here a crash is rolled back.
//  5. Commit word 0 in the file becomes 0 ("being written"), the changed pages are written, page 0 last.
//  6. The file is synced.
//  7. The journal's header is cleared and synced: the commit is durable.
// A transaction with too many changed pages for the memory goes through 1-5 early, with all pages but page 0
// and those in use, and keeps others out until it ends.

#include <cstring>

#include "jet/format/error.h"
#include "jet/pager/file_pager.h"

namespace jet {

void FilePager::commitOutermost() {
  if (creating_) {
    commitCreation();
    return;
  }
  if (cache_->dirtyCount() == 0 && !fileTouched_ && !doom_) {
    finish();
    return;
  }
  try {
    refuseWhenDoomed();
    bumpCommitWord();
    const PageView head = read(0);
    const std::vector<Frame*> changed = cache_->dirtyFrames();
    journalDirtyPages();
    if (journal_->undeclared()) journal_->syncRecords();
    locks_->lockExclusive();
    if (journal_->undeclared()) journal_->declare();
    writePages(changed);
    if (file_->size() > offsetOf(pageCount_)) file_->truncate(offsetOf(pageCount_));
    file_->sync();
    journal_->invalidate();
    for (Frame* frame : changed) cache_->markClean(frame);
    std::memcpy(commitTable_.data(), head.data() + layout_->commitTable, kCommitTableSize);
  } catch (...) {
    abandon();
    throw;
  }
  ++changeCounter_;
  finish();
}

// The file gets its name only when it is whole.
void FilePager::commitCreation() {
  bool named = false;
  try {
    refuseWhenDoomed();
    bumpCommitWord();
    file_->truncate(offsetOf(pageCount_));
    const std::vector<Frame*> changed = cache_->dirtyFrames();
    writePages(changed);
    file_->sync();
    file_.reset();
    env_.rename(temporary_, path_);
    named = true;
    env_.syncFolder(path_);
    file_ = env_.open(path_, Environment::Open::ReadWrite);
    for (Frame* frame : changed) cache_->markClean(frame);
  } catch (...) {
    file_.reset();
    try {
      if (named) env_.remove(path_);
    } catch (const std::exception&) {
      // It is whole, only not known to survive a power cut.
    }
    abandon();
    throw;
  }
  creating_ = false;
  stale_ = true;
  ++changeCounter_;
  finish();
}

// Word 0 counts the commits of all copies; when it begins anew this copy's own word counts on, so that no
// table of words comes again.
void FilePager::bumpCommitWord() {
  PageEdit head = change(0);
  uint8_t* words = head.data() + layout_->commitTable;
  if (creating_) std::memcpy(commitTable_.data(), words, kCommitTableSize);
  const uint16_t word = get16(commitTable_.data());
  const uint16_t next = nextCommitWord(word);
  put16(words, next);
  uint8_t* own = words + 2 * locks_->slot();
  if (next <= word && locks_->slot() > 0)
    put16(own, nextCommitWord(get16(commitTable_.data() + 2 * locks_->slot())));
}

void FilePager::journalDirtyPages() {
  const PageNumber before = levels_.front().pageCount;
  const MutableBytes image{scratch_.get(), layout_->pageSize};
  for (const Frame* frame : cache_->dirtyFrames()) {
    if (frame->number >= before || journal_->contains(frame->number)) continue;
    if (file_->read(offsetOf(frame->number), image) != image.size()) throw Error(3043, {}, "DAO.Workspace");
    journal_->add(frame->number, image);
  }
}

void FilePager::writePages(const std::vector<Frame*>& frames) {
  const uint8_t beingWritten[2] = {0, 0};
  if (!fileTouched_ && !creating_) {
    fileTouched_ = true;
    file_->write(layout_->commitTable, beingWritten);
  }
  const Frame* head = nullptr;
  for (const Frame* frame : frames) {
    if (frame->number == 0) {
      head = frame;
    } else {
      file_->write(offsetOf(frame->number), {frame->data.get(), layout_->pageSize});
    }
  }
  if (head) file_->write(0, {head->data.get(), layout_->pageSize});
}

// Makes room: every changed page but those in use goes to the file before the commit.
void FilePager::spill() {
  locks_->lockExclusive();
  try {
    if (!creating_) {
      bumpCommitWord();
      journalDirtyPages();
      if (journal_->undeclared()) {
        journal_->syncRecords();
        journal_->declare();
      }
    }
    std::vector<Frame*> changed = cache_->dirtyFrames();
    std::erase_if(changed, [](const Frame* frame) { return frame->number == 0 || frame->pins > 0; });
    writePages(changed);
    for (Frame* frame : changed) cache_->markClean(frame);
  } catch (...) {
    // Whether a failed sync lost something nobody knows; only undoing all of it is safe.
    doom_ = std::current_exception();
    throw;
  }
}

// The outermost rollback, also of a commit that failed.
void FilePager::abandon() noexcept {
  try {
    if (creating_) {
      file_.reset();
      env_.remove(temporary_);
    } else if (writing_) {
      undoInFile();
    }
  } catch (...) {
    // The journal is hot then, and the next read or transaction of any copy tries again.
    recoveryPending_ = stale_ = true;
  }
  dropChanges();
  ++changeCounter_;
  finish();
}

void FilePager::undoInFile() {
  if (fileTouched_) {
    journal_->rollBackOwn(*file_);
  } else if (journal_->declared()) {
    journal_->invalidate();
  }
}

void FilePager::dropChanges() noexcept {
  const PageNumber before = levels_.front().pageCount;
  if (writing_ && (fileTouched_ || creating_ || recoveryPending_)) {
    cache_->discardAll();
  } else if (writing_) {
    cache_->discardFrom(before);
    cache_->forEachDirty([this](Frame* frame) {
      try {
        forget(frame);
      } catch (const std::exception&) {
        cache_->discard(frame);
      }
    });
  }
  pageCount_ = creating_ ? 0 : before;
}

void FilePager::finish() noexcept {
  levels_.clear();
  journal_->forget();
  doom_ = nullptr;
  fileTouched_ = false;
  if (writing_) locks_->unlockWrite(readDepth_ > 0);
  writing_ = false;
  if (readDepth_ == 0) locks_->unlockRead();
  cache_->shrink();
}

}  // namespace jet
