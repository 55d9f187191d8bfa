#pragma once

#include <array>
#include <exception>
#include <unordered_map>
#include <vector>

#include "jet/pager/journal.h"
#include "jet/pager/lock_file.h"
#include "jet/pager/page_cache.h"
#include "jet/pager/pager.h"

namespace jet {

// The Pager over one file.
//
// A transaction's changes stay in the cache. Each level remembers for every page it changes the state before:
// a copy when the transaction had changed the page already, otherwise just that it is the original, which the
// file holds (or the journal, once the page was written early). The outermost commit writes the originals to
// the journal and then the changed pages to the file.
class FilePager final : public Pager {
 public:
  FilePager(Environment& env, const std::filesystem::path& path, const Options& options);
  FilePager(Environment& env, const std::filesystem::path& path, Version version, PageNumber firstPages);
  ~FilePager() override;

  const FileLayout& layout() const override { return *layout_; }
  PageNumber pageCount() const override { return pageCount_; }
  bool readOnly() const override { return options_.readOnly; }
  const std::filesystem::path& path() const override { return path_; }
  Environment& environment() const override { return env_; }

  PageView read(PageNumber page) override;
  PageEdit write(PageNumber page) override;
  PageEdit append() override;
  void begin() override;
  void commit() override;
  void rollback() noexcept override;
  int level() const override { return static_cast<int>(levels_.size()); }
  void beginRead() override;
  void endRead() noexcept override;
  uint64_t changeCounter() const override { return changeCounter_; }

 private:
  static constexpr uint32_t kCommitTableSize = 512;

  struct Level {
    PageNumber pageCount;
    uint64_t serial;
    std::unordered_map<PageNumber, std::unique_ptr<uint8_t[]>> images;  // nullptr: the original
  };

  // file_pager.cpp: pages, levels
  Frame* load(PageNumber page);
  void readFrame(Frame* frame);
  void forget(Frame* frame);
  PageEdit change(PageNumber page);
  void saveImage(Frame* frame);
  bool isOriginal(const Frame* frame) const;
  void makeWritable();
  void refuseWhenDoomed() const;
  void restore(const Level& level);
  void mergeInto(Level& outer, Level& inner);
  // sharing.cpp: one state of the file for a read or a transaction
  void openShared();
  void checkHead();
  void startReading();
  void startWriting();
  void recover(bool reading);
  void noticeChanges();
  void requireFile() const;
  static uint16_t nextCommitWord(uint16_t word);
  // commit.cpp: the way to the disk
  void commitOutermost();
  void commitCreation();
  void bumpCommitWord();
  void journalDirtyPages();
  void writePages(const std::vector<Frame*>& frames);
  void spill();
  void undoInFile();
  void dropChanges() noexcept;
  void finish() noexcept;
  void abandon() noexcept;

  uint64_t offsetOf(PageNumber page) const { return uint64_t{page} * layout_->pageSize; }

  Environment& env_;
  std::filesystem::path path_;
  Options options_;
  const FileLayout* layout_ = nullptr;
  std::unique_ptr<File> file_;
  std::unique_ptr<LockFile> locks_;
  std::unique_ptr<Journal> journal_;
  std::unique_ptr<PageCache> cache_;

  PageNumber pageCount_ = 0;
  bool cutShort_ = false;     // the file's size is not a whole number of pages, or beyond the format's limit
  bool creating_ = false;     // the file has its temporary name until the first commit
  bool stale_ = true;         // pageCount_, commitTable_ and the cache are not known to be the file's
  bool writing_ = false;      // the open transaction holds the write lock
  bool fileTouched_ = false;  // the open transaction has written to the file
  bool recoveryPending_ = false;  // rolling back in the file failed; the journal is hot
  std::exception_ptr doom_;       // why only the outermost rollback is left
  int readDepth_ = 0;
  uint64_t changeCounter_ = 1;
  uint64_t serial_ = 0;
  std::array<uint8_t, kCommitTableSize> commitTable_{};
  std::vector<Level> levels_;
  std::unique_ptr<uint8_t[]> scratch_;  // one page
  std::filesystem::path temporary_;     // the file's name while it is being made
};

}  // namespace jet
