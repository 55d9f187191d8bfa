#pragma once

#include <span>

#include "jet/format/value.h"
#include "jet/storage/collation.h"

namespace jet {

struct KeyColumn {
  Type type = Type::Long;
  bool descending = false;
  const Collation* collation = nullptr;  // text and memo
  uint8_t scale = 0;                     // decimal
};

// Appends one column's part of an index key, whose bytewise order is the order of the values. The value is of
// the column's type or Null (a boolean Null counts as False).
//
//   ascending   Null 00; value 7F, then: integers and Currency big-endian with the top bit flipped; floating
//               numbers and dates big-endian, the top bit flipped or, below 0, all bits; True 00, False FF; text
//               as its Collation has it; GUID and binary in segments of 8 bytes
//   descending  Null FF; value 80, then the same inverted (text: with a final 00 more)
//
// Throws 3287 for an OLE column.
void appendKeyColumn(const KeyColumn& column, const Value& value, std::string& key);

std::string encodeKey(std::span<const KeyColumn> columns, std::span<const Value> values);

}  // namespace jet
