#pragma once

#include <functional>
#include <vector>

#include "jet/pager/pager.h"

namespace jet {

// A set of page numbers kept in a row of a data page.
//
//   type 0: u8 0, u32 start page, bitmap (bit k of byte i = page start + 8*i + k)
//   type 1: u8 1, array of u32 numbers of bitmap pages (05 01 00 00, then PS-4 bytes of bitmap);
//           entry j covers the pages from j*(PS-4)*8
//
// A page outside the map is not in the set - except in the file's global map of free pages, where it is.
class UsageMap {
 public:
  UsageMap(Pager& pager, RowId row, bool outsideIsSet = false)
      : pager_(pager), row_(row), outside_(outsideIsSet) {}

  bool contains(PageNumber page) const;
  // Grows, shifts or converts the map row as needed.
  void insert(PageNumber page) { assign(page, true); }
  void erase(PageNumber page) { assign(page, false); }
  // Ascending; only pages inside the file.
  std::vector<PageNumber> pages() const;
  // The first page >= from inside the file, 0 when there is none.
  PageNumber next(PageNumber from) const;
  // The highest page inside the file, 0 when there is none.
  PageNumber last() const;
  // The map's own bitmap pages (type 1), for checks and for freeing.
  std::vector<PageNumber> bitmapPages() const;

  RowId row() const { return row_; }

 private:
  struct Row;
  struct Segment;
  Row load() const;
  // The bits that `page` belongs to; without a bitmap where nothing is stored.
  Segment segment(const Row& row, PageNumber page) const;
  void assign(PageNumber page, bool member);
  void extend(PageNumber page);
  void convert(const Row& row);
  PageNumber addBitmapPage(PageNumber page);
  void storeBit(PageNumber bitmapPage, uint32_t byte, uint32_t bit, bool member);
  PageNumber pagesPerBitmap() const { return (pager_.pageSize() - 4) * 8; }

  Pager& pager_;
  RowId row_;
  bool outside_;
};

// Takes pages from and gives pages back to the file's global map of free pages.
class PageAllocator {
 public:
  explicit PageAllocator(Pager& pager);
  // A zeroed page, reused or appended; the caller writes its header and puts it into its owner's map.
  PageEdit allocate();
  // The page must be out of its owner's maps. Its content may stay. Throws 3049 for one of the pages that
  // every file has at its place.
  void free(PageNumber page);
  bool isFree(PageNumber page) const { return map_.contains(page); }

 private:
  Pager& pager_;
  UsageMap map_;
};

// Rows of fresh usage maps: adds an empty map row (or one holding `first`) to the map page `near` when it has
// room, else to a new map page, whose number replaces `near`.
RowId createUsageMap(Pager& pager, PageNumber& near, PageNumber first = 0);
// Deletes the map row, its bitmap pages, and the map page when no live row is left on it.
void dropUsageMap(Pager& pager, RowId row);

}  // namespace jet
