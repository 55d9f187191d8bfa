#pragma once

#include <functional>

#include "jet/storage/row_codec.h"
#include "jet/storage/usage_map.h"

namespace jet {

// Memo and OLE values of one column: inline in the row, in one row of a long-value page, or in a chain
// of rows. `owned` and `free` are the column's usage maps; `free` may be absent (page 0).
class LongValueStore {
 public:
  LongValueStore(Pager& pager, RowId owned, RowId free) : pager_(pager), owned_(owned), free_(free) {}

  // The stored bytes. Throws 3049 on a broken, cyclic or over-long chain.
  std::string read(const LongValueRef& ref) const;
  // Reads the parts one by one; stops when the visitor returns false.
  void visit(const LongValueRef& ref, const std::function<bool(Bytes)>& part) const;
  // Stores the value and returns the row's field. `mustMoveOut` forbids the inline form (row too long).
  LongValueField write(Bytes value, bool mustMoveOut = false);
  void remove(const LongValueRef& ref);

 private:
  Pager& pager_;
  RowId owned_, free_;
};

}  // namespace jet
