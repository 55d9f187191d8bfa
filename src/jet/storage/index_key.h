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

// Appends one column's part of an index key: flag byte and value as section "index key encoding" of the
// format says. The value is of the column's type or Null (a boolean Null counts as False).
void appendKeyColumn(const KeyColumn& column, const Value& value, std::string& key);

std::string encodeKey(std::span<const KeyColumn> columns, std::span<const Value> values);

}  // namespace jet
