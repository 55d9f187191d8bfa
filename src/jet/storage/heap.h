#pragma once

#include <optional>

#include "jet/storage/usage_map.h"

namespace jet {

// The rows of one table, unordered, as bytes. Knows nothing of columns, indexes or counts.
//
// A row that outgrows its page leaves a pointer in its slot and goes to another page; the slot stays its
// identity. Pointers lead straight to the row's bytes, never to another pointer. A page whose last row is
// removed goes back to the file.
class Heap {
 public:
  // `definition`: the table definition page that owns the data pages.
  Heap(Pager& pager, PageNumber definition, RowId ownedMap, RowId freeMap);

  // Adds a row; the returned id stays the row's identity for life. Throws 3047 for a row that no page holds.
  RowId insert(Bytes row);
  // Replaces the row's bytes, moving them to another page when they no longer fit. Throws 3167 when the row
  // is gone. `row` must not point into a page.
  void update(RowId id, Bytes row);
  // Throws 3167 when the row is gone.
  void remove(RowId id);

  // A pinned row.
  struct Row {
    PageView page;
    Bytes bytes;
    PageNumber where = 0;  // the page that holds the bytes
  };
  // nullopt when the slot is deleted or does not exist.
  std::optional<Row> fetch(RowId id) const;

  // Walks all live rows in page and slot order; sees rows inserted behind its place. The bytes stay valid
  // until the next step or a change of the row's page.
  class Scan {
   public:
    explicit Scan(const Heap& heap) : heap_(heap) {}
    // False at the end.
    bool next();
    RowId id() const { return id_; }
    Bytes bytes() const { return bytes_; }
    PageNumber where() const { return where_; }

   private:
    bool nextPage();

    const Heap& heap_;
    RowId id_;
    Bytes bytes_;
    PageNumber where_ = 0;
    int slot_ = -1;
    PageView home_, target_;
  };

  const UsageMap& ownedPages() const { return owned_; }
  // Frees every data page (of a table that is dropped or emptied).
  void removeAll();

 private:
  // The slot that holds a row's bytes, found from the slot of its identity.
  struct Place {
    PageView page;
    int slot = 0;
  };
  PageView ownPage(PageNumber page) const;
  Place follow(RowId pointer) const;
  RowId requireLive(RowId id, uint16_t& word) const;
  // Stores the row on any page but `except`.
  RowId place(Bytes row, uint16_t flags, PageNumber except = 0);
  PageEdit pageWithRoom(size_t length, PageNumber except);
  PageEdit tryPage(PageNumber page, size_t length);
  void erase(PageNumber page, int slot);
  void noteRoom(PageNumber page, Bytes bytes);
  void giveBack(PageNumber page);

  Pager& pager_;
  const FileLayout& layout_;
  PageNumber definition_;
  UsageMap owned_, free_;
  PageNumber lastUsed_ = 0;    // took the last row; a hint that is checked before use
  PageNumber searchFrom_ = 1;  // pages of the free map before it were tried
};

}  // namespace jet
