#pragma once

#include <filesystem>
#include <memory>
#include <string_view>
#include <utility>

#include "jet/format/layout.h"
#include "jet/pager/env.h"

namespace jet {

class Pager;

// One cached page.
struct Frame {
  std::unique_ptr<uint8_t[]> data;
  uint32_t pageSize = 0;
  PageNumber number = 0;
  uint32_t pins = 0;
  bool cached = false;   // found under its number; otherwise free, or left to those who still have it pinned
  bool recent = false;   // used since the clock's hand passed
  bool dirty = false;    // differs from the file
  uint64_t savedIn = 0;  // serial of the transaction level that keeps this page's earlier state
};

// A pinned page: the bytes stay at their address while the object lives. Movable, cheap.
class PageView {
 public:
  PageView() = default;
  PageView(PageView&& other) noexcept : frame_(std::exchange(other.frame_, nullptr)) {}
  PageView& operator=(PageView&& other) noexcept {
    std::swap(frame_, other.frame_);
    return *this;
  }
  ~PageView() {
    if (frame_) --frame_->pins;
  }
  const uint8_t* data() const { return frame_->data.get(); }  // pageSize() bytes
  Bytes bytes() const { return {frame_->data.get(), frame_->pageSize}; }
  PageNumber number() const { return frame_->number; }
  explicit operator bool() const { return frame_ != nullptr; }

 protected:
  friend class FilePager;
  explicit PageView(Frame* frame) : frame_(frame) { ++frame->pins; }
  Frame* frame_ = nullptr;
};

// A pinned page that may be changed. Its state before the innermost open transaction level was kept.
class PageEdit : public PageView {
 public:
  PageEdit() = default;
  uint8_t* data() { return frame_->data.get(); }
  MutableBytes bytes() { return {frame_->data.get(), frame_->pageSize}; }

 private:
  friend class FilePager;
  using PageView::PageView;
};

// The file as an array of pages: cache, transactions, rollback journal, locks between copies. Everything
// above asks for pages by number and never touches the file.
//
// One Pager belongs to one thread. Every use happens inside a read (ReadScope) or a transaction.
class Pager {
 public:
  struct Options {
    bool exclusive = false;  // no other copy may have the file open
    bool readOnly = false;
    size_t cachePages = 4096;    // clean pages kept
    size_t dirtyPages = 16384;   // with more changed pages than this the transaction begins to write early
    unsigned lockWaitMs = 5000;  // how long a lock of another copy is waited for
  };

  // Opens an existing file; rolls back what a crash left. Checks the signature and the version only. A file
  // whose size is not a whole number of pages is read without its tail and cannot be written. Throws Error
  // 3024, 3343, 3045/3356 (held by another copy), 3051 (also when a crash must be rolled back and this
  // user may not write).
  static std::unique_ptr<Pager> open(Environment& env, const std::filesystem::path& path,
                                     const Options& options);
  // Makes a new file of `firstPages` zero pages inside an open transaction (level 1): the file appears
  // complete or not at all. Throws 3204 when the path exists.
  static std::unique_ptr<Pager> create(Environment& env, const std::filesystem::path& path, Version version,
                                       PageNumber firstPages);
  virtual ~Pager() = default;

  virtual const FileLayout& layout() const = 0;
  uint32_t pageSize() const { return layout().pageSize; }
  // Whole pages in the file, those added by the open transaction included.
  virtual PageNumber pageCount() const = 0;
  virtual bool readOnly() const = 0;
  virtual const std::filesystem::path& path() const = 0;
  virtual Environment& environment() const = 0;

  // Throws Error 3049 naming the page when it lies outside the file.
  virtual PageView read(PageNumber page) = 0;
  // Throws Error 3027 when read-only, 3049 when the file is cut short; needs an open transaction.
  virtual PageEdit write(PageNumber page) = 0;
  // Adds a zero page at the end of the file. Throws 3036 at the size limit.
  virtual PageEdit append() = 0;

  // Transactions nest without limit (statements use inner levels as savepoints); only the outermost
  // commit reaches the disk. begin at level 0 takes the write lock (Error 3260 after the wait), in a file
  // that cannot be written it only begins a read.
  virtual void begin() = 0;
  // After an Error from the outermost commit the transaction is rolled back.
  virtual void commit() = 0;
  virtual void rollback() noexcept = 0;  // the innermost level
  virtual int level() const = 0;

  // Reading between beginRead and endRead sees one state of the file, whatever other copies commit; they
  // nest. At the outermost beginRead pages that another copy has changed leave the cache.
  virtual void beginRead() = 0;
  virtual void endRead() noexcept = 0;

  // Grows with every commit by any copy and every rollback of this one; equal numbers mean that nothing that
  // was read has changed. Layers above key their own caches on it.
  virtual uint64_t changeCounter() const = 0;
};

class ReadScope {
 public:
  explicit ReadScope(Pager& pager) : pager_(pager) { pager_.beginRead(); }
  ~ReadScope() { pager_.endRead(); }
  ReadScope(const ReadScope&) = delete;
  ReadScope& operator=(const ReadScope&) = delete;

 private:
  Pager& pager_;
};

// Begins a level; rolls it back unless commit() was called.
class Transaction {
 public:
  explicit Transaction(Pager& pager) : pager_(&pager) { pager_->begin(); }
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  void commit();

 private:
  Pager* pager_;
};

}  // namespace jet
