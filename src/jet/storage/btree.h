#pragma once

#include <functional>
#include <string>
#include <vector>

#include "jet/storage/usage_map.h"

namespace jet {

// One index tree. Entries are (key bytes, row id), ordered by key bytes, then page and slot; the root
// page keeps its number for life.
class BTree {
 public:
  // `definition`: the table definition page that owns the index; `map`: the index-pages map.
  BTree(Pager& pager, PageNumber definition, PageNumber root, RowId map);

  // Writes an empty leaf to a fresh page and returns its number (the root of a new index; the caller
  // puts it into the map).
  static PageNumber createRoot(Pager& pager, PageNumber definition);

  // Throws 3393 for a key too long for two entries on a page.
  void insert(Bytes key, RowId row);
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
    bool next();
    bool previous();
    // The entry that next() or previous() reached.
    Bytes key() const { return asBytes(key_); }
    RowId row() const { return row_; }

   private:
    const BTree& tree_;
    PageView leaf_;
    int index_ = -1;       // of the entry before the place
    std::string key_;
    RowId row_;
    std::vector<uint16_t> ends_;  // entry ends of the leaf, decoded once a page
  };

  // Every page of the tree, root first, checked level by level; `fault` receives each deviation.
  void check(const std::function<void(const std::u16string&)>& fault,
             const std::function<void(Bytes key, RowId row)>& entry) const;
  void removeAll();  // frees all pages, the root too

  PageNumber root() const { return root_; }

 private:
  Pager& pager_;
  PageNumber definition_, root_;
  RowId map_;
};

}  // namespace jet
