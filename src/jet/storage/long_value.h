#pragma once

#include <functional>

#include "jet/storage/row_codec.h"
#include "jet/storage/usage_map.h"

namespace jet {

// Memo and OLE values of one column: inline in the row, in one row of a long-value page, or in a chain
// of rows. `owned` and `free` are the column's usage maps; `free` may be absent (page 0).
//
// The field in the row: u32 length and kind (the top two bits), u32 row pointer, u32 stamp. A row of a chain
// begins with the u32 pointer of the next one, 0 at the end, and is alone on its page; the first page's
// header holds the stamp too.
class LongValueStore {
 public:
  LongValueStore(Pager& pager, RowId owned, RowId free)
      : pager_(pager), owned_(pager, owned), free_(pager, free), hasFreeMap_(!free.isNull()) {}

  // The stored bytes. Throws 3049 on a broken, cyclic or over-long chain.
  std::string read(const LongValueRef& ref) const;
  // Reads the parts one by one; stops when the visitor returns false.
  void visit(const LongValueRef& ref, const std::function<bool(Bytes)>& part) const;
  // The same, with the row that holds each part (none for an inline value).
  void visitRows(const LongValueRef& ref, const std::function<bool(RowId, Bytes)>& part) const;
  // Stores the value and returns the row's field. `mustMoveOut` forbids the inline form (row too long, or a
  // text whose uncompressed length is over the inline limit).
  LongValueField write(Bytes value, bool mustMoveOut = false);
  void remove(const LongValueRef& ref);

  // Stores a value that comes in pieces, holding one page of it at a time. `length` must be the sum of the
  // pieces and longer than one page takes (FileLayout::maxLongValuePart).
  class Writer {
   public:
    Writer(LongValueStore& store, uint32_t length);
    void append(Bytes piece);
    LongValueField finish();

   private:
    void flush();

    LongValueStore& store_;
    uint32_t length_, stamp_;
    RowId first_;
    PageEdit last_;    // whose row waits for the pointer to the next one
    std::string row_;  // pointer and data of the part being filled
  };

 private:
  struct Part;
  // Calls `each` with every row of the value, from first to last.
  void walk(const LongValueRef& ref, const std::function<bool(const Part&)>& each) const;
  RowId writeSingle(Bytes value);
  PageEdit pageWithRoom(size_t length);
  PageEdit freshPage();
  void erase(RowId row);

  Pager& pager_;
  UsageMap owned_, free_;
  bool hasFreeMap_;
};

}  // namespace jet
