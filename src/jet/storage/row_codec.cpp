#include "jet/storage/row_codec.h"

#include <algorithm>
#include <array>

#include "jet/format/text.h"

namespace jet {

namespace {

Decimal decodeDecimal(const uint8_t* p, uint8_t scale) {
  Decimal decimal;
  decimal.negative = (p[0] & 0x80) != 0;
  for (size_t i = 0; i < 4; ++i) decimal.magnitude[i] = get32(p + 1 + 4 * i);
  decimal.scale = scale;
  return decimal;
}

Value decodeFixed(const ColumnLayout& column, const uint8_t* p) {
  switch (column.type) {
    case Type::Byte:
      return p[0];
    case Type::Integer:
      return static_cast<int16_t>(get16(p));
    case Type::Long:
      return static_cast<int32_t>(get32(p));
    case Type::Currency:
      return Currency{static_cast<int64_t>(get64(p))};
    case Type::Single:
      return getSingle(p);
    case Type::Double:
      return getDouble(p);
    case Type::Date:
      return Date{getDouble(p)};
    case Type::Guid: {
      Guid guid;
      std::copy(p, p + guid.bytes.size(), guid.bytes.begin());
      return guid;
    }
    default:
      return decodeDecimal(p, column.scale);
  }
}

[[noreturn]] void throwWrongType() { throw Error(3421, {}, "DAO.Field"); }

template <typename T>
const T& as(const Value& value) {
  const T* held = value.getIf<T>();
  if (!held) throwWrongType();
  return *held;
}

void encodeFixed(const ColumnLayout& column, const Value& value, uint8_t* p) {
  switch (column.type) {
    case Type::Byte:
      p[0] = as<uint8_t>(value);
      break;
    case Type::Integer:
      put16(p, static_cast<uint16_t>(as<int16_t>(value)));
      break;
    case Type::Long:
      put32(p, static_cast<uint32_t>(as<int32_t>(value)));
      break;
    case Type::Currency:
      put64(p, static_cast<uint64_t>(as<Currency>(value).scaled));
      break;
    case Type::Single:
      putSingle(p, as<float>(value));
      break;
    case Type::Double:
      putDouble(p, as<double>(value));
      break;
    case Type::Date:
      putDouble(p, as<Date>(value).days);
      break;
    case Type::Guid: {
      const Guid& guid = as<Guid>(value);
      std::copy(guid.bytes.begin(), guid.bytes.end(), p);
      break;
    }
    default: {
      const Decimal& decimal = as<Decimal>(value);
      if (decimal.scale != column.scale) throwWrongType();
      p[0] = decimal.negative ? 0x80 : 0;
      for (size_t i = 0; i < 4; ++i) put32(p + 1 + 4 * i, decimal.magnitude[i]);
    }
  }
}

}  // namespace

LongValueRef LongValueRef::parse(Bytes stored, PageNumber page) {
  if (stored.size() < kFieldSize) throwDamaged(u"long value field cut short", page);
  const uint32_t head = get32(stored.data());
  LongValueRef ref;
  ref.length = head & 0x3FFFFFFF;
  if (head & 0x80000000) {
    if (ref.length > stored.size() - kFieldSize) throwDamaged(u"long value field cut short", page);
    ref.inlineBytes = stored.subspan(kFieldSize, ref.length);
    return ref;
  }
  ref.kind = head & 0x40000000 ? Kind::SingleRow : Kind::Chain;
  ref.row = RowId::fromStored(get32(stored.data() + 4));
  ref.stamp = get32(stored.data() + 8);
  return ref;
}

void RowReader::findJet3() {
  const auto size = static_cast<uint32_t>(row_.size());
  if (size < 2) throwDamaged(u"row too short", page_);
  columnCount_ = row_[0];
  const uint32_t maskSize = (columnCount_ + 7u) / 8;
  if (size < 1 + maskSize) throwDamaged(u"row too short", page_);
  mask_ = size - maskSize;
  const uint32_t jumpBytes = (size - 1) / 256;
  variableCount_ = row_[mask_ - 1];
  if (mask_ < 3 + jumpBytes + variableCount_) return;
  hasVariablePart_ = true;
  jumpTable_ = mask_ - 2;
  offsets_ = jumpTable_ - jumpBytes;
  // The data end where the offsets begin, so only that many of the jump bytes can be real.
  dataLimit_ = offsets_ - variableCount_;
  jumps_ = std::min(jumpBytes, dataLimit_ / 256);
}

Value RowReader::value(int ordinal) const {
  const ColumnLayout& c = column(ordinal);
  if (c.type == Type::Boolean) return maskBit(c);
  if (isNull(c)) return {};
  const Bytes bytes = c.fixed ? fixedBytes(c) : variableBytes(c);
  if (c.type == Type::Memo || c.type == Type::Ole) {
    const LongValueRef ref = LongValueRef::parse(bytes, page_);
    if (ref.kind != LongValueRef::Kind::Inline) throw Error(3001, {}, "DAO.Field");
    return decodeStored(c, layout_, ref.inlineBytes);
  }
  if (bytes.size() < fixedSize(c.type)) throwDamaged(u"value cut short", page_);
  return decodeStored(c, layout_, bytes);
}

std::optional<LongValueRef> RowReader::longValue(int ordinal) const {
  const ColumnLayout& c = column(ordinal);
  if (isNull(c)) return std::nullopt;
  return LongValueRef::parse(c.fixed ? fixedBytes(c) : variableBytes(c), page_);
}

Value decodeStored(const ColumnLayout& column, const RowLayout& layout, Bytes stored) {
  if (column.type == Type::Text || column.type == Type::Memo)
    return layout.file->version == Version::Jet3 ? decodeAnsi(stored, layout.codePage) : decodeText(stored);
  const uint32_t size = fixedSize(column.type);
  if (size == 0) return Binary(stored.begin(), stored.end());
  if (stored.size() < size) throw Error::withText(3049, u"The database is damaged: value cut short.");
  return decodeFixed(column, stored.data());
}

void encodeStored(const ColumnLayout& column, const RowLayout& layout, const Value& value, std::string& out) {
  if (const uint32_t size = fixedSize(column.type)) {
    out.resize(out.size() + size);
    encodeFixed(column, value, reinterpret_cast<uint8_t*>(out.data() + out.size() - size));
    return;
  }
  const bool longValue = column.type == Type::Memo || column.type == Type::Ole;
  size_t size = 0;  // counted before compression
  if (column.type == Type::Text || column.type == Type::Memo) {
    const Text& text = as<Text>(value);
    const bool ansi = layout.file->version == Version::Jet3;
    size = ansi ? text.size() : 2 * text.size();
    if (!longValue && size > column.length) throw Error(3163, {}, "DAO.Field");
    if (ansi)
      encodeAnsi(text, layout.codePage, out);
    else
      encodeText(text, column.compressed && !column.fixed, out);
  } else {
    const Binary& bytes = as<Binary>(value);
    if (!longValue && bytes.size() > column.length) throw Error(3163, {}, "DAO.Field");
    out.append(asChars(bytes));
  }
}

namespace {

// Fills the room of a fixed text or byte column that its value leaves.
void padFixed(const ColumnLayout& column, const RowLayout& layout, size_t start, size_t length,
              std::string& row) {
  if (column.type != Type::Text) return;
  const bool ansi = layout.file->version == Version::Jet3;
  for (size_t i = length; i + (ansi ? 0 : 1) < column.length; i += ansi ? 1 : 2) row[start + i] = ' ';
}

// Where a row's columns come from: `isSet(i)` gives the null-mask bit, `append(i, row)` the stored bytes of a
// column that is set.
template <typename IsSet, typename Append>
void encodeFixedArea(const RowLayout& layout, const IsSet& isSet, const Append& append, std::string& row) {
  const size_t head = row.size();
  size_t area = 0;
  for (const ColumnLayout& c : layout.columns)
    if (c.fixed && c.type != Type::Boolean) area = std::max(area, size_t{c.fixedOffset} + c.length);
  if (area > layout.file->maxRow) throw Error(3047, {}, "DAO.Recordset");
  row.resize(head + area);
  std::string bytes;
  for (size_t i = 0; i < layout.columns.size(); ++i) {
    const ColumnLayout& c = layout.columns[i];
    if (!c.fixed || c.type == Type::Boolean || !isSet(i)) continue;
    bytes.clear();
    append(i, bytes);
    if (bytes.size() > c.length) throw Error(3163, {}, "DAO.Field");
    const size_t start = head + c.fixedOffset;
    std::copy(bytes.begin(), bytes.end(), row.begin() + static_cast<std::ptrdiff_t>(start));
    padFixed(c, layout, start, bytes.size(), row);
  }
}

// Appends the values of the variable columns; offsets[v] is the start of the v-th, offsets[V] the end.
template <typename IsSet, typename Append>
void encodeVariableData(const RowLayout& layout, const IsSet& isSet, const Append& append,
                        std::span<uint32_t> offsets, std::string& row) {
  std::array<int16_t, kMaxColumns> ordinals;
  ordinals.fill(-1);
  for (size_t i = 0; i < layout.columns.size(); ++i) {
    const ColumnLayout& c = layout.columns[i];
    if (!c.fixed && c.type != Type::Boolean && c.variableIndex < layout.variableColumns)
      ordinals[c.variableIndex] = static_cast<int16_t>(i);
  }
  for (size_t v = 0; v < layout.variableColumns; ++v) {
    offsets[v] = static_cast<uint32_t>(row.size());
    if (ordinals[v] < 0) continue;
    const auto i = static_cast<size_t>(ordinals[v]);
    if (!isSet(i)) continue;
    append(i, row);
    if (row.size() > layout.file->maxRow) throw Error(3047, {}, "DAO.Recordset");
  }
  offsets[layout.variableColumns] = static_cast<uint32_t>(row.size());
}

void appendJet4Offsets(std::span<const uint32_t> offsets, std::string& row) {
  const size_t head = row.size();
  row.resize(head + 2 * offsets.size() + 2);
  auto* p = reinterpret_cast<uint8_t*>(row.data() + head);
  for (size_t v = offsets.size(); v-- > 0; p += 2) put16(p, offsets[v]);
  put16(p, static_cast<uint32_t>(offsets.size() - 1));
}

// Low bytes of the offsets; then for each 256 bytes of the finished row the index of the first offset that
// lies behind them, or FF.
void appendJet3Offsets(std::span<const uint32_t> offsets, size_t maskSize, std::string& row) {
  for (size_t v = offsets.size(); v-- > 0;) row += static_cast<char>(offsets[v]);
  size_t jumps = 0;
  const size_t rest = row.size() + 1 + maskSize;
  while ((rest + jumps - 1) / 256 != jumps) ++jumps;
  for (size_t k = jumps; k-- > 0;) {
    const auto behind = std::lower_bound(offsets.begin(), offsets.end(), (k + 1) * 256);
    row += behind == offsets.end() ? '\xFF' : static_cast<char>(behind - offsets.begin());
  }
  row += static_cast<char>(offsets.size() - 1);
}

constexpr size_t kMinRow = 4;

template <typename IsSet, typename Append>
void buildRow(const RowLayout& layout, const IsSet& isSet, const Append& append, std::string& row) {
  if (layout.nextColumn > kMaxColumns || layout.variableColumns > kMaxColumns)
    throw Error::withText(3190, std::u16string(errorText(3190)), "DAO.Recordset");
  const bool jet3 = layout.file->version == Version::Jet3;
  row.clear();
  row.reserve(256);
  row += static_cast<char>(layout.nextColumn);
  if (!jet3) row += static_cast<char>(layout.nextColumn >> 8);
  encodeFixedArea(layout, isSet, append, row);
  const size_t maskSize = (layout.nextColumn + 7u) / 8;
  if (layout.variableColumns > 0) {
    std::array<uint32_t, kMaxColumns + 1> table;
    const std::span<uint32_t> offsets = std::span(table).first(layout.variableColumns + 1u);
    encodeVariableData(layout, isSet, append, offsets, row);
    if (jet3)
      appendJet3Offsets(offsets, maskSize, row);
    else
      appendJet4Offsets(offsets, row);
  }
  // A row must leave room for the pointer that takes its place when it moves. Rows are read from their end,
  // so bytes before the mask do no harm.
  if (row.size() + maskSize < kMinRow) row.resize(kMinRow - maskSize);
  const size_t mask = row.size();
  row.resize(mask + maskSize);
  for (size_t i = 0; i < layout.columns.size(); ++i) {
    const ColumnLayout& c = layout.columns[i];
    if (c.number < layout.nextColumn && isSet(i))
      row[mask + c.number / 8u] |= static_cast<char>(1 << c.number % 8);
  }
  if (row.size() > layout.file->maxRow) throw Error(3047, {}, "DAO.Recordset");
}

}  // namespace

std::string encodeRow(const RowLayout& layout, std::span<const Value> values,
                      std::span<const LongValueField> longValues) {
  std::string row;
  buildRow(
      layout,
      [&](size_t i) {
        if (values[i].isNull()) return false;
        return layout.columns[i].type != Type::Boolean || as<bool>(values[i]);
      },
      [&](size_t i, std::string& out) {
        const ColumnLayout& c = layout.columns[i];
        if (c.type == Type::Memo || c.type == Type::Ole)
          out += longValues[i];
        else
          encodeStored(c, layout, values[i], out);
      },
      row);
  return row;
}

void encodeStoredRow(const RowLayout& layout, std::span<const StoredColumn> columns, std::string& row) {
  buildRow(
      layout, [&](size_t i) { return columns[i].isSet; },
      [&](size_t i, std::string& out) { out += asChars(columns[i].bytes); }, row);
}

}  // namespace jet
