#pragma once

#include "jet/catalog/table.h"

// Values of conditions as keys of an index.
namespace jet::sql {

// The value as a key column of this type holds it; nullopt when no row can be equal to it (Null, 2.5 in a
// whole-number column, text in a number column).
std::optional<Value> exactKey(Type column, const Value& v);

// Types whose index keys can be searched.
bool isSearchable(Type column);

struct KeyBounds {
  Table::KeyRange range;
  bool isEmpty = false;
};

// All keys that begin with the values of `prefix` and whose next column lies between the bounds, or a little
// more.
KeyBounds rangeBounds(const Table& table, int index, std::vector<Value> prefix,
                      const std::optional<Value>& low, const std::optional<Value>& high);
// ... and whose next column begins with `text`.
KeyBounds likeBounds(const Table& table, int index, std::vector<Value> prefix, const std::u16string& text);

}  // namespace jet::sql
