#pragma once

#include <memory>
#include <vector>

#include "jet/pager/pager.h"

namespace jet {

// The pages in memory, found by number in a table as long as the file. Clean unpinned pages leave by the
// clock algorithm; pinned and changed ones never.
class PageCache {
 public:
  PageCache(uint32_t pageSize, size_t cleanLimit) : pageSize_(pageSize), cleanLimit_(cleanLimit) {}
  PageCache(const PageCache&) = delete;
  PageCache& operator=(const PageCache&) = delete;

  // nullptr when the page is not in memory.
  Frame* find(PageNumber page) const {
    Frame* frame = page < table_.size() ? table_[page] : nullptr;
    if (frame) frame->recent = true;
    return frame;
  }
  // A clean frame for a page that is not in memory; its content is undefined. Evicts when full.
  Frame* add(PageNumber page);
  // Forgets the page, changed or not. Who has it pinned keeps the bytes, no one else finds them.
  void discard(Frame* frame);
  void discardAll();
  // Forgets the pages from `count` on.
  void discardFrom(PageNumber count);

  void markDirty(Frame* frame);
  void markClean(Frame* frame);
  size_t dirtyCount() const { return dirtyCount_; }
  // The changed pages in the order of their numbers.
  std::vector<Frame*> dirtyFrames() const;
  // Calls action(frame), which may clean or discard it.
  template <typename Action>
  void forEachDirty(Action action) const {
    for (const auto& frame : frames_)
      if (frame->dirty) action(frame.get());
  }
  // Gives memory back that a large transaction needed.
  void shrink();

 private:
  Frame* evict();

  uint32_t pageSize_;
  size_t cleanLimit_;
  size_t dirtyCount_ = 0;
  size_t hand_ = 0;
  std::vector<std::unique_ptr<Frame>> frames_;
  std::vector<Frame*> table_;
};

}  // namespace jet
