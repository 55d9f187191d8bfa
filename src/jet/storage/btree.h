#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "jet/storage/entry_list.h"
#include "jet/storage/index_page.h"
#include "jet/storage/usage_map.h"

namespace jet {

// One index tree. Entries are (key bytes, row id), ordered by key bytes, then page and slot; the root
// page keeps its number for life. Everything read is checked: damage throws 3049 naming the page.
class BTree {
 public:
  // `definition`: the table definition page that owns the index; `map`: the index-pages map.
  BTree(Pager& pager, PageNumber definition, PageNumber root, RowId map);

  // Writes an empty leaf to a fresh page and returns its number (the root of a new index; the caller
  // puts it into the map).
  static PageNumber createRoot(Pager& pager, PageNumber definition);

  // False when the key was there already, as far as the leaf tells - good enough for the count of unique
  // entries. Throws 3393 for a key too long for two entries on a page.
  bool insert(Bytes key, RowId row);
  // False when there is no such entry.
  bool remove(Bytes key, RowId row);
  // An entry with exactly these key bytes exists (of a row other than `except`).
  bool containsKey(Bytes key, RowId except = {}) const;

  // Fills an empty tree bottom-up; `next` yields entries in ascending order until it returns false.
  struct Entry {
    std::string key;
    RowId row;
  };
  void build(const std::function<bool(Entry&)>& next);

  // A place between entries. Stays valid while the tree is not changed (the pager's change counter and
  // level are the caller's concern).
  class Cursor {
   public:
    explicit Cursor(const BTree& tree) : tree_(tree) {}
    // Before the first entry whose key is >= `key` (bytewise), or > every key that begins with `key`
    // when `after` is set. An empty key: the very beginning (with `after`: the end).
    void seek(Bytes key, bool after = false);
    // Go over the entry behind (before) the place; false at the end. A fresh cursor is at the beginning.
    bool next();
    bool previous();
    // The entry that next() or previous() went over.
    Bytes key() const { return asBytes(key_); }
    RowId row() const { return row_; }

   private:
    void load(PageView leaf);
    bool step(bool forward);
    void take(uint32_t start, uint32_t end);

    const BTree& tree_;
    PageView leaf_;
    std::optional<IndexPage> page_;  // of the leaf
    uint32_t place_ = 0;             // where the entry behind the place starts
    int64_t steps_ =
        0;  // leaves gone forward (below 0: back) in one go: more than there are pages is a cycle
    std::string key_;
    RowId row_;
  };

  // Every page of the tree, root first, checked level by level; `fault` receives each deviation, `entry`
  // each entry of the leaves in order. Does not throw for damage.
  void check(const std::function<void(const std::u16string&)>& fault,
             const std::function<void(Bytes key, RowId row)>& entry) const;
  // The pages that the tree consists of, as far as it can be read.
  std::vector<PageNumber> pages() const;
  void removeAll();  // frees all pages, the root too

  PageNumber root() const { return root_; }

 private:
  friend class BTreeInserter;

  // The nodes from the root down to a leaf, each with the entry that leads on (or its used(): the tail).
  struct Path {
    struct Step {
      PageNumber page;
      uint32_t start;
    };
    std::array<Step, kMaxIndexDepth> steps;
    int depth = 0;
  };

  IndexPage view(const PageView& page) const;
  PageView descend(const IndexTarget& target, Path* path) const;
  PageEdit edit(PageNumber page, int level);
  PageEdit newPage(int level);
  // Where an entry goes in its leaf. `isThere`: it is there already.
  struct Place {
    uint32_t start = 0;
    bool isThere = false, newKey = true;
  };
  static Place place(const IndexPage& leaf, const IndexTarget& target);
  void requireShort(Bytes key) const;
  static void makeEntry(const IndexTarget& target, std::string& entry);
  // As insert(key, row); `entry` is room for the entry. Returns in `leaf` the page that has it now, 0 when a
  // page was split.
  bool insert(const IndexTarget& target, std::string& entry, PageNumber& leaf);
  // False when the page was split.
  bool insertEntry(const Path& path, int depth, PageNumber number, uint32_t start, Bytes entry);
  void split(const Path& path, int depth, PageEdit page, const EntryList& entries, size_t added);
  void splitRoot(PageEdit root, const EntryList& entries, size_t cut);
  void removeChild(const Path& path, int depth);
  void unlinkAndFree(PageNumber number, int level);
  void collapseRoot();
  void moveToRoot(PageNumber child);
  void checkMap(const std::vector<bool>& tree,
                const std::function<void(PageNumber, std::u16string_view)>& report) const;

  Pager& pager_;
  PageNumber definition_, root_;
  RowId map_;
};

}  // namespace jet
