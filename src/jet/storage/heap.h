#pragma once

#include <optional>

#include "jet/storage/usage_map.h"

namespace jet {

// The rows of one table, unordered, as bytes. Knows nothing of columns, indexes or counts.
class Heap {
 public:
  // `definition`: the table definition page that owns the data pages.
  Heap(Pager& pager, PageNumber definition, RowId ownedMap, RowId freeMap);

  // Adds a row; the returned id stays the row's identity for life.
  RowId insert(Bytes row);
  // Replaces the row's bytes, moving them to another page when they no longer fit.
  void update(RowId id, Bytes row);
  void remove(RowId id);

  // A pinned row.
  struct Row {
    PageView page;
    Bytes bytes;
    PageNumber where = 0;  // the page that holds the bytes
  };
  // nullopt when the slot is deleted or does not exist.
  std::optional<Row> fetch(RowId id) const;

  // Walks all live rows in page and slot order; sees rows inserted behind its place.
  class Scan {
   public:
    explicit Scan(const Heap& heap);
    // False at the end.
    bool next();
    RowId id() const { return id_; }
    Bytes bytes() const { return bytes_; }
    PageNumber where() const { return where_; }

   private:
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
  Pager& pager_;
  PageNumber definition_;
  UsageMap owned_, free_;
};

}  // namespace jet
