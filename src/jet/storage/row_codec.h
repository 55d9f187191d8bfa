#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "jet/format/bytes.h"
#include "jet/format/layout.h"
#include "jet/format/value.h"

namespace jet {

// What the row codec needs to know of a column.
struct ColumnLayout {
  Type type = Type::Long;
  bool fixed = true;          // kept in the fixed area (the descriptor's flag, not the type, decides)
  bool compressed = false;    // text may be stored compressed
  uint16_t number = 0;        // bit in the null mask
  uint16_t variableIndex = 0;
  uint16_t fixedOffset = 0;   // from the end of the column-count field
  uint16_t length = 0;        // bytes: size of fixed types, maximum of text and binary
  uint8_t precision = 0, scale = 0;  // Decimal
};

struct RowLayout {
  const FileLayout* file = nullptr;
  int codePage = 1252;        // of Jet 3 text
  uint16_t nextColumn = 0;    // columns ever defined: the count that new rows carry
  uint16_t variableColumns = 0;  // ever defined
  std::vector<ColumnLayout> columns;  // live ones, in descriptor order: the "ordinals" used everywhere above
};

// A 12-byte long-value field of a row.
struct LongValueRef {
  enum class Kind { Chain, SingleRow, Inline };
  Kind kind = Kind::Inline;
  uint32_t length = 0;  // bytes as stored
  RowId row;
  uint32_t stamp = 0;
  Bytes inlineBytes;    // Kind::Inline; points into the row
};

// One row's bytes, decoded column by column on demand. Cheap to make; checks everything it reads and
// throws Error 3049. The bytes must outlive it.
class RowReader {
 public:
  RowReader(const RowLayout& layout, Bytes row, PageNumber page);

  bool isNull(int ordinal) const;
  // Stored bytes of the column; empty when Null. Not for booleans.
  Bytes stored(int ordinal) const;
  // Fully decoded, except that Memo and OLE columns are not followed: use longValue().
  Value value(int ordinal) const;
  // Null mask bit of a boolean.
  bool boolean(int ordinal) const;
  // nullopt when Null.
  std::optional<LongValueRef> longValue(int ordinal) const;
  Bytes bytes() const { return row_; }

 private:
  const RowLayout& layout_;
  Bytes row_;
  PageNumber page_;
  int columnCount_ = 0, variableCount_ = 0;
  // ... positions found by the constructor
  uint32_t variableTable_ = 0, mask_ = 0;
  int jumps_ = 0;
};

// Decodes stored bytes of a column as RowReader::value does; also used on packed result rows.
Value decodeStored(const ColumnLayout& column, const RowLayout& layout, Bytes stored);

// What a new row holds in a Memo or OLE column: nothing, or a finished 12-byte field (with the inline bytes behind it).
using LongValueField = std::string;

// Builds the bytes of a row. `values` by ordinal, already converted to the columns' types; for Memo and
// OLE columns `longValues[ordinal]` is taken instead (Null when the value is Null).
// Throws 3047 when the row is longer than the layout allows, 3163 for text longer than the column.
std::string encodeRow(const RowLayout& layout, std::span<const Value> values,
                      std::span<const LongValueField> longValues);

}  // namespace jet
