#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "jet/format/bytes.h"
#include "jet/format/error.h"
#include "jet/format/layout.h"
#include "jet/format/value.h"

namespace jet {

// What the row codec needs to know of a column.
struct ColumnLayout {
  Type type = Type::Long;
  bool fixed = true;        // kept in the fixed area (the descriptor's flag, not the type, decides)
  bool compressed = false;  // text may be stored compressed
  uint16_t number = 0;      // bit in the null mask
  uint16_t variableIndex = 0;
  uint16_t fixedOffset = 0;          // from the end of the column-count field
  uint16_t length = 0;               // bytes: size of fixed types, maximum of text and binary
  uint8_t precision = 0, scale = 0;  // Decimal
};

struct RowLayout {
  const FileLayout* file = nullptr;
  int codePage = 1252;                // of Jet 3 text
  uint16_t nextColumn = 0;            // columns ever defined: the count that new rows carry
  uint16_t variableColumns = 0;       // ever defined
  std::vector<ColumnLayout> columns;  // live ones, in descriptor order: the "ordinals" used everywhere above
};

// A 12-byte long-value field of a row.
struct LongValueRef {
  enum class Kind { Chain, SingleRow, Inline };
  Kind kind = Kind::Inline;
  uint32_t length = 0;  // bytes as stored
  RowId row;
  uint32_t stamp = 0;
  Bytes inlineBytes;  // Kind::Inline; points into the row

  static constexpr uint32_t kFieldSize = 12;
  // Reads the field at the start of `stored`; throws 3049 naming the page when it is cut short.
  static LongValueRef parse(Bytes stored, PageNumber page);
};

// One row's bytes, decoded column by column on demand. Cheap to make; checks everything it reads and
// throws Error 3049. The layout and the bytes must outlive it.
//
//   Jet 4: u16 C | fixed area | variable data | u16 end of data | u16 offsets, last first | u16 V | null mask
//   Jet 3: u8 C  | fixed area | variable data | u8 end of data | u8 offsets, last first | jumps | u8 V | null
//   mask
//
// C and V are the numbers of columns and variable columns when the row was written: a column added later
// is Null. The part from the end of data to V is there only if the table had a variable column then.
class RowReader {
 public:
  RowReader(const RowLayout& layout, Bytes row, PageNumber page) : layout_(layout), row_(row), page_(page) {
    if (layout.file->version == Version::Jet3)
      findJet3();
    else
      findJet4();
  }

  // Never of a boolean.
  bool isNull(int ordinal) const { return isNull(column(ordinal)); }
  // Stored bytes of the column; empty when Null. Not for booleans.
  Bytes stored(int ordinal) const {
    const ColumnLayout& c = column(ordinal);
    if (isNull(c)) return {};
    return c.fixed ? fixedBytes(c) : variableBytes(c);
  }
  // Fully decoded. Memo and OLE columns only when the value is in the row; Error 3001 when longValue() must
  // be followed.
  Value value(int ordinal) const;
  // Null mask bit of a boolean.
  bool boolean(int ordinal) const { return maskBit(column(ordinal)); }
  // nullopt when Null.
  std::optional<LongValueRef> longValue(int ordinal) const;
  Bytes bytes() const { return row_; }

 private:
  const ColumnLayout& column(int ordinal) const { return layout_.columns[static_cast<size_t>(ordinal)]; }
  bool maskBit(const ColumnLayout& c) const {
    return c.number < columnCount_ && (row_[mask_ + (c.number >> 3)] >> (c.number & 7) & 1);
  }
  bool isNull(const ColumnLayout& c) const {
    if (c.type == Type::Boolean) return false;
    return !maskBit(c) || (!c.fixed && c.variableIndex >= variableCount_);
  }
  Bytes fixedBytes(const ColumnLayout& c) const {
    const uint32_t start = countSize_ + c.fixedOffset;
    if (start + c.length > mask_) throwDamaged(u"fixed column outside its row", page_);
    return row_.subspan(start, c.length);
  }
  Bytes variableBytes(const ColumnLayout& c) const {
    // A variable column among the first C ones: the row must have a variable part.
    if (!hasVariablePart_) throwDamaged(u"row without its variable part", page_);
    const uint32_t start = offset(c.variableIndex), end = offset(c.variableIndex + 1u);
    if (start < countSize_ || start > end || end > dataLimit_) throwDamaged(u"column outside its row", page_);
    return row_.subspan(start, end - start);
  }
  // Of variable column `index` from the row's start; of index V the end of the data.
  uint32_t offset(uint32_t index) const {
    if (countSize_ == 2) return get16(row_.data() + offsets_ - 2 * index);
    uint32_t jump = 0;
    while (jump < jumps_ && row_[jumpTable_ - jump] <= index) ++jump;
    return row_[offsets_ - index] + 256 * jump;
  }
  void findJet4() {
    const auto size = static_cast<uint32_t>(row_.size());
    if (size < 3) throwDamaged(u"row too short", page_);
    countSize_ = 2;
    columnCount_ = get16(row_.data());
    const uint32_t maskSize = (columnCount_ + 7u) / 8;
    if (size < 2 + maskSize) throwDamaged(u"row too short", page_);
    mask_ = size - maskSize;
    if (mask_ < 6) return;
    variableCount_ = get16(row_.data() + mask_ - 2);
    offsets_ = mask_ - 4;
    const uint32_t tableSize = 2 * variableCount_ + 4;
    hasVariablePart_ = tableSize <= mask_ - 2;
    dataLimit_ = mask_ - tableSize;
  }
  void findJet3();

  const RowLayout& layout_;
  Bytes row_;
  PageNumber page_;
  // Positions in the row. When it has no variable part, what stands there only looks like one: the flag says
  // whether it would fit, and no column asks for it.
  uint32_t columnCount_ = 0, variableCount_ = 0, countSize_ = 1, mask_ = 0;
  uint32_t offsets_ = 0, dataLimit_ = 0, jumpTable_ = 0, jumps_ = 0;
  bool hasVariablePart_ = false;
};

// Decodes a column's stored bytes; a long value's bytes are those that a LongValueStore reads. Not for
// booleans. Throws Error 3049 when there are too few bytes.
Value decodeStored(const ColumnLayout& column, const RowLayout& layout, Bytes stored);
// Appends the stored bytes of a value that is not Null; of Memo and OLE values those that a LongValueStore
// writes. Not for booleans. Throws 3163 for text or bytes longer than the column, 3421 for a value of
// another type than the column's.
void encodeStored(const ColumnLayout& column, const RowLayout& layout, const Value& value, std::string& out);

// What a new row holds in a Memo or OLE column: nothing, or a finished 12-byte field (with the inline bytes
// behind it).
using LongValueField = std::string;

// Builds the bytes of a row. `values` by ordinal, already converted to the columns' types; for Memo and
// OLE columns `longValues[ordinal]` is taken instead (Null when the value is Null); without such columns the
// span may be empty.
// Throws 3047 when the row is longer than the layout allows, 3163 and 3421 as encodeStored does.
std::string encodeRow(const RowLayout& layout, std::span<const Value> values,
                      std::span<const LongValueField> longValues);

// A column that is stored already: `isSet` is its bit of the null mask (a boolean's value), `bytes` are as
// RowReader::stored gives them or a LongValueField.
struct StoredColumn {
  bool isSet = false;
  Bytes bytes;
};

// Builds a row of such columns, by ordinal, without decoding them. `row` is overwritten. Throws 3047 and 3163
// as encodeRow does.
void encodeStoredRow(const RowLayout& layout, std::span<const StoredColumn> columns, std::string& row);

}  // namespace jet
