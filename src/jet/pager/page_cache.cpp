#include "jet/pager/page_cache.h"

#include <algorithm>

namespace jet {

Frame* PageCache::add(PageNumber page) {
  if (page >= table_.size()) table_.resize(page + 1 + page / 8);
  Frame* frame = frames_.size() >= cleanLimit_ + dirtyCount_ ? evict() : nullptr;
  if (!frame) {
    auto fresh = std::make_unique<Frame>();
    fresh->data = std::make_unique_for_overwrite<uint8_t[]>(pageSize_);
    fresh->pageSize = pageSize_;
    frame = fresh.get();
    frames_.push_back(std::move(fresh));
  }
  frame->number = page;
  frame->cached = true;
  frame->recent = true;
  frame->savedIn = 0;
  table_[page] = frame;
  return frame;
}

// A page survives one passing of the hand after its last use.
Frame* PageCache::evict() {
  for (size_t steps = 2 * frames_.size(); steps > 0; --steps) {
    if (hand_ >= frames_.size()) hand_ = 0;
    Frame* frame = frames_[hand_++].get();
    if (frame->pins > 0 || frame->dirty) continue;
    if (frame->cached && frame->recent) {
      frame->recent = false;
      continue;
    }
    if (frame->cached) table_[frame->number] = nullptr;
    return frame;
  }
  return nullptr;
}

void PageCache::discard(Frame* frame) {
  markClean(frame);
  if (frame->cached) table_[frame->number] = nullptr;
  frame->cached = false;
}

void PageCache::discardAll() {
  for (const auto& frame : frames_) discard(frame.get());
}

void PageCache::discardFrom(PageNumber count) {
  for (size_t page = count; page < table_.size(); ++page)
    if (table_[page]) discard(table_[page]);
}

void PageCache::markDirty(Frame* frame) {
  if (!frame->dirty) ++dirtyCount_;
  frame->dirty = true;
}

void PageCache::markClean(Frame* frame) {
  if (frame->dirty) --dirtyCount_;
  frame->dirty = false;
}

std::vector<Frame*> PageCache::dirtyFrames() const {
  std::vector<Frame*> dirty;
  dirty.reserve(dirtyCount_);
  for (const auto& frame : frames_)
    if (frame->dirty) dirty.push_back(frame.get());
  std::sort(dirty.begin(), dirty.end(), [](const Frame* a, const Frame* b) { return a->number < b->number; });
  return dirty;
}

void PageCache::shrink() {
  for (size_t i = frames_.size(); i-- > 0 && frames_.size() > cleanLimit_ + dirtyCount_;) {
    Frame* frame = frames_[i].get();
    if (frame->pins > 0 || frame->dirty) continue;
    if (frame->cached) table_[frame->number] = nullptr;
    std::swap(frames_[i], frames_.back());
    frames_.pop_back();
  }
}

}  // namespace jet
