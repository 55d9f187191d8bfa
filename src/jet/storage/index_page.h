#pragma once

#include <string>
#include <vector>

#include "jet/pager/pager.h"

namespace jet {

// One page of an index tree.
//
//   0  u8 kind (3 node, 4 leaf), u8 1, u16 free bytes, u32 definition page
//   .. u32 previous page, u32 next page (same level), u32 tail: page of the last child (nodes)
//   .. u16 (Jet 3: u8) length p of the common prefix, u8 level (0 leaf)
//   .. mask: bit k set when an entry ends at offset k of the entry area
//   .. entry area: entries without gaps; all but the first one omit their first p bytes
//
// A leaf entry is key, page (3 bytes big-endian), slot; a node entry is the same for the last entry below
// its child - an upper bound -, then the child's page (4 bytes big-endian). The last child has no entry.
constexpr size_t kEntryRowBytes = 4, kEntryChildBytes = 4;
constexpr int kMaxIndexDepth = 20;

// Where a search wants to go: before all entries that are >= (key, row) or, with `behind`, that follow
// every key beginning with `key`.
struct IndexTarget {
  Bytes key;
  uint32_t row = 0;  // RowId::stored()
  bool behind = false;
};

// An entry in place: the shared prefix and its own bytes.
class EntryView {
 public:
  EntryView(const uint8_t* head, size_t headLength, const uint8_t* tail, size_t tailLength, size_t suffix)
      : head_(head),
        tail_(tail),
        headLength_(headLength),
        length_(headLength + tailLength),
        suffix_(suffix) {}

  size_t length() const { return length_; }
  size_t keyLength() const { return length_ - suffix_; }
  uint32_t row() const { return be32(keyLength()); }
  PageNumber child() const { return be32(length_ - kEntryChildBytes); }
  // <0 when the entry lies before the target.
  int compare(const IndexTarget& target) const;
  bool hasKey(Bytes key) const { return keyLength() == key.size() && compare({key, row()}) == 0; }
  void appendTo(std::string& bytes) const {
    bytes.append(reinterpret_cast<const char*>(head_), headLength_);
    bytes.append(reinterpret_cast<const char*>(tail_), length_ - headLength_);
  }
  // The first `length` bytes.
  void copy(size_t length, std::string& to) const;

 private:
  uint8_t at(size_t i) const { return i < headLength_ ? head_[i] : tail_[i - headLength_]; }
  uint32_t be32(size_t i) const {
    return uint32_t{at(i)} << 24 | uint32_t{at(i + 1)} << 16 | uint32_t{at(i + 2)} << 8 | at(i + 3);
  }
  const uint8_t *head_, *tail_;
  size_t headLength_, length_, suffix_;
};

// A page whose header was checked; entries are found through the mask without decoding it, and stay
// inside the page whatever the mask says. Throws 3049 for damage. Entries are named by the offset where
// they start.
class IndexPage {
 public:
  IndexPage(const FileLayout& layout, const uint8_t* page, PageNumber number, PageNumber definition);

  bool isLeaf() const { return level_ == 0; }
  int level() const { return level_; }
  uint32_t used() const { return used_; }
  uint32_t prefix() const { return prefix_; }
  PageNumber previous() const { return get32(page_ + layout_->indexPrev); }
  PageNumber next() const { return get32(page_ + layout_->indexNext); }
  PageNumber tail() const { return get32(page_ + layout_->indexTail); }
  PageNumber number() const { return number_; }
  bool empty() const { return used_ == 0; }

  // Where the entry that starts at `start` < used() ends, and where the one that ends at `end` > 0 starts.
  uint32_t entryEnd(uint32_t start) const;
  uint32_t entryStart(uint32_t end) const;
  EntryView entry(uint32_t start) const { return entry(start, entryEnd(start)); }
  EntryView entry(uint32_t start, uint32_t end) const;
  EntryView lastEntry() const { return entry(entryStart(used_), used_); }
  // The first entry that is not before the target; used() when all are.
  uint32_t find(const IndexTarget& target) const;
  // The child under the node entry at `start`; the tail when `start` is used().
  PageNumber child(uint32_t start) const;
  std::vector<uint16_t> entryEnds() const;

  static uint32_t capacity(const FileLayout& layout) { return layout.pageSize - layout.indexEntries; }

 private:
  uint64_t maskWord(uint32_t word) const;
  uint32_t firstEndBehind(uint32_t offset) const;
  uint32_t lastEndUpTo(uint32_t offset) const;

  const FileLayout* layout_;
  const uint8_t* page_;
  PageNumber number_;
  int level_ = 0;
  uint32_t used_ = 0, prefix_ = 0;
};

// Changes to a page. Callers have made an IndexPage of it, so that it is known to be sound.
namespace index_page {

void initialise(MutableBytes page, const FileLayout& layout, PageNumber definition, int level);
void setPrevious(MutableBytes page, const FileLayout& layout, PageNumber previous);
void setNext(MutableBytes page, const FileLayout& layout, PageNumber next);
void setTail(MutableBytes page, const FileLayout& layout, PageNumber tail);
// Makes the node entry at `start` (or the tail) point to another child.
void setChild(MutableBytes page, const FileLayout& layout, const IndexPage& view, uint32_t start,
              PageNumber child);
// Stores a whole entry before the one at `start` by moving bytes; false when the page lacks the room as
// it is compressed now, or the entry lacks the prefix.
bool insert(MutableBytes page, const FileLayout& layout, const IndexPage& view, uint32_t start, Bytes entry);
// Takes the entry at `start` out.
void erase(MutableBytes page, const FileLayout& layout, const IndexPage& view, uint32_t start);
// Replaces all entries; all but the first leave out `prefix` bytes. They must fit.
void storeEntries(MutableBytes page, const FileLayout& layout, std::span<const Bytes> entries,
                  uint32_t prefix);

}  // namespace index_page
}  // namespace jet
