#include "jet/pager/file_pager.h"

#include <cassert>
#include <cstring>

#include "jet/format/error.h"

namespace jet {

namespace {

std::filesystem::path temporaryName(const std::filesystem::path& path) {
  std::filesystem::path name = path;
  name += "-new";
  return name;
}

}  // namespace

FilePager::FilePager(Environment& env, const std::filesystem::path& path, const Options& options)
    : env_(env), path_(path), options_(options) {
  openShared();
}

FilePager::FilePager(Environment& env, const std::filesystem::path& path, Version version,
                     PageNumber firstPages)
    : env_(env),
      path_(path),
      layout_(&FileLayout::of(version)),
      creating_(true),
      temporary_(temporaryName(path)) {
  options_.exclusive = true;
  const auto refuseExisting = [this] {
    if (env_.exists(path_)) throw Error(3204, {pathText(path_)}, "DAO.Workspace");
  };
  refuseExisting();
  locks_ = std::make_unique<LockFile>(env_, path_, LockFile::Options{.exclusive = true});
  refuseExisting();
  env_.remove(temporary_);
  // A journal that belonged to an earlier file of this name.
  env_.remove(Journal::pathOf(path_));
  file_ = env_.open(temporary_, Environment::Open::CreateNew);
  cache_ = std::make_unique<PageCache>(layout_->pageSize, options_.cachePages);
  journal_ = std::make_unique<Journal>(env_, path_, false);
  scratch_ = std::make_unique<uint8_t[]>(layout_->pageSize);
  pageCount_ = firstPages;
  stale_ = false;
  writing_ = true;
  levels_.push_back({firstPages, ++serial_, {}});
}

FilePager::~FilePager() {
  while (!levels_.empty()) rollback();
  if (locks_ && journal_) locks_->setWhenAlone([this] { journal_->removeFile(); });
  locks_.reset();
}

PageView FilePager::read(PageNumber page) {
  assert(readDepth_ > 0 || !levels_.empty());
  Frame* frame = cache_->find(page);
  return PageView(frame ? frame : load(page));
}

// The page from the file, checked to lie in it.
Frame* FilePager::load(PageNumber page) {
  refuseWhenDoomed();
  if (recoveryPending_) throw Error(3043, {}, "DAO.Workspace");
  if (page >= pageCount_) throwDamaged(u"page outside the file", page);
  Frame* frame = cache_->add(page);
  try {
    readFrame(frame);
  } catch (...) {
    cache_->discard(frame);
    throw;
  }
  return frame;
}

void FilePager::readFrame(Frame* frame) {
  const size_t size = layout_->pageSize;
  const size_t found = file_->read(offsetOf(frame->number), {frame->data.get(), size});
  // While a file is being made its last pages may not have been written yet.
  if (found < size && !creating_) throw Error(3043, {}, "DAO.Workspace");
  std::memset(frame->data.get() + found, 0, size - found);
}

// Undoes the changes of a page whose original is in the file.
void FilePager::forget(Frame* frame) {
  if (frame->pins > 0) {
    readFrame(frame);
    cache_->markClean(frame);
  } else {
    cache_->discard(frame);
  }
}

PageEdit FilePager::write(PageNumber page) {
  makeWritable();
  return change(page);
}

PageEdit FilePager::change(PageNumber page) {
  Frame* frame = cache_->find(page);
  PageEdit edit(frame ? frame : load(page));
  frame = edit.frame_;
  if (frame->savedIn != levels_.back().serial) saveImage(frame);
  cache_->markDirty(frame);
  return edit;
}

PageEdit FilePager::append() {
  makeWritable();
  if (offsetOf(pageCount_) + layout_->pageSize > layout_->maxFileSize) throw Error(3036, {}, "DAO.Workspace");
  Frame* stale = cache_->find(pageCount_);
  if (stale) cache_->discard(stale);
  PageEdit edit(cache_->add(pageCount_));
  std::memset(edit.data(), 0, layout_->pageSize);
  cache_->markDirty(edit.frame_);
  ++pageCount_;
  return edit;
}

// What write and append have in common before they change anything.
void FilePager::makeWritable() {
  assert(!levels_.empty());
  if (options_.readOnly) throw Error(3027);
  if (!writing_) throw Error(3049, {pathText(path_)}, "DAO.Workspace");
  refuseWhenDoomed();
  if (cache_->dirtyCount() >= options_.dirtyPages) spill();
}

// After a failure inside the transaction that left no savepoint to return to.
void FilePager::refuseWhenDoomed() const {
  if (doom_) std::rethrow_exception(doom_);
}

// Whether the transaction has not changed the page yet, or has undone what it did before it came to the file.
bool FilePager::isOriginal(const Frame* frame) const {
  return !creating_ && !frame->dirty && frame->number < levels_.front().pageCount &&
         !journal_->contains(frame->number);
}

void FilePager::saveImage(Frame* frame) {
  Level& level = levels_.back();
  // Pages that the level added vanish with it.
  if (frame->number < level.pageCount && !level.images.contains(frame->number)) {
    std::unique_ptr<uint8_t[]> copy;
    if (!isOriginal(frame)) {
      copy = std::make_unique_for_overwrite<uint8_t[]>(layout_->pageSize);
      std::memcpy(copy.get(), frame->data.get(), layout_->pageSize);
    }
    level.images.emplace(frame->number, std::move(copy));
  }
  frame->savedIn = level.serial;
}

void FilePager::begin() {
  levels_.reserve(levels_.size() + 1);
  if (levels_.empty()) startWriting();
  levels_.push_back({pageCount_, ++serial_, {}});
}

void FilePager::commit() {
  assert(!levels_.empty());
  if (levels_.size() == 1) {
    commitOutermost();
    return;
  }
  refuseWhenDoomed();
  mergeInto(levels_[levels_.size() - 2], levels_.back());
  levels_.pop_back();
}

// The outer level keeps its own earlier states and gets those of pages that only the inner one changed.
void FilePager::mergeInto(Level& outer, Level& inner) {
  const size_t most = outer.images.size() + inner.images.size();
  // Space first, so that the merge itself cannot fail half-way.
  if (static_cast<float>(most) >
      static_cast<float>(outer.images.bucket_count()) * outer.images.max_load_factor())
    outer.images.reserve(2 * most);
  outer.images.merge(inner.images);
}

void FilePager::rollback() noexcept {
  assert(!levels_.empty());
  if (levels_.size() == 1) {
    abandon();
    return;
  }
  try {
    if (!doom_) restore(levels_.back());
  } catch (...) {
    doom_ = std::current_exception();
  }
  ++changeCounter_;
  levels_.pop_back();
}

void FilePager::restore(const Level& level) {
  cache_->discardFrom(level.pageCount);
  pageCount_ = level.pageCount;
  for (const auto& [page, image] : level.images) {
    if (page >= level.pageCount) continue;
    Frame* frame = cache_->find(page);
    if (!image && !journal_->contains(page)) {
      if (frame) forget(frame);
      continue;
    }
    if (!frame) frame = cache_->add(page);
    cache_->markDirty(frame);
    if (image) {
      std::memcpy(frame->data.get(), image.get(), layout_->pageSize);
    } else {
      journal_->readImage(page, {frame->data.get(), layout_->pageSize});
    }
  }
}

}  // namespace jet
