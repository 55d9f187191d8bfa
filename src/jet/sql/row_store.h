#pragma once

#include <memory>
#include <string>
#include <vector>

#include "jet/format/bytes.h"
#include "jet/format/value.h"

namespace jet::sql {

// Rows of a result, packed behind each other and decoded cell by cell on access.
//
// Row: u8 width of an offset (2 or 4), an offset for each column and one for the end (from the first
// cell), cells. Cell: u8 kind, payload. The kind is the type of the value, or kStoredText for a text in
// the form that a Jet 4 row has (decodeText reads it). Numbers are little-endian.
class RowStore {
 public:
  static constexpr uint8_t kStoredText = 0x20;

  explicit RowStore(size_t columns) : columns_(columns) {}

  size_t columnCount() const { return columns_; }
  size_t rowCount() const { return rows_.size(); }

  // A row is begun, its cells are added in order, and it is ended; then it is the last row.
  void begin();
  void addNull() { addCell(static_cast<uint8_t>(Type::Null), {}); }
  void add(const Value& value);
  void addText(std::u16string_view text);
  // Cell of a kind with the payload as it stands in a table's row. The payload of a floating-point zero loses
  // its sign.
  void addCell(uint8_t kind, Bytes payload);
  void end();
  void dropLast();

  Value value(size_t row, size_t column) const;
  // Kind and payload.
  std::pair<uint8_t, Bytes> cell(size_t row, size_t column) const;

  // Hash over the cells that hold a number, date, boolean or GUID of the wanted types; whether others are
  // Null counts too. Rows that DISTINCT calls equal have equal hashes.
  uint64_t scalarHash(size_t row, const std::vector<Type>& types) const;

 private:
  uint8_t* reserve(size_t size);

  size_t columns_;
  std::vector<std::unique_ptr<uint8_t[]>> blocks_;
  size_t blockSize_ = 0, used_ = 0, lastRowSize_ = 0;
  std::vector<const uint8_t*> rows_;
  std::string cells_;  // of the row being built
  std::vector<uint32_t> starts_;
};

}  // namespace jet::sql
