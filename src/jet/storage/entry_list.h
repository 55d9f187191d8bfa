#pragma once

#include "jet/storage/index_page.h"

namespace jet {

// The whole entries of an index page, for rewriting and splitting it.
class EntryList {
 public:
  // `leaf`: entries may leave out a common prefix; those of nodes are stored whole.
  EntryList(const FileLayout& layout, bool leaf) : layout_(layout), leaf_(leaf) {}
  EntryList(const FileLayout& layout, const IndexPage& page);

  size_t size() const { return ends_.size(); }
  bool empty() const { return ends_.empty(); }
  std::string_view at(size_t i) const;
  // at(i) without the child's page.
  std::string_view bound(size_t i) const;
  PageNumber child(size_t i) const;
  void insert(size_t i, std::string_view entry);
  void append(std::string_view entry) { insert(size(), entry); }
  void removeLast();
  void clear() { bytes_.clear(), ends_.clear(); }

  // Whether a page has room for [from, to).
  bool fits(size_t from, size_t to) const;
  // Replaces all entries of the page by [from, to), which fit. Compresses only when it must.
  void store(MutableBytes page, size_t from, size_t to) const;

  // Where to cut a page that overflowed so that both parts fit: entries before the cut go left; of a leaf
  // the others go right, of a node the one at the cut goes up and the others right. `added` is the entry
  // that found no room: at an outer end of the tree it alone is cut off, so that pages stay full when
  // keys arrive in order. Throws 3393 when entries are too long.
  size_t cut(size_t added, bool firstPage, bool lastPage) const;

 private:
  size_t commonPrefix(size_t from, size_t to) const;
  size_t packedSize(size_t from, size_t to, size_t prefix) const;
  size_t bestSize(size_t from, size_t to) const;

  const FileLayout& layout_;
  bool leaf_;
  std::string bytes_;
  std::vector<uint32_t> ends_;
};

}  // namespace jet
