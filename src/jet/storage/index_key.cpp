#include "jet/storage/index_key.h"

#include <algorithm>
#include <array>

#include "jet/format/bytes.h"
#include "jet/format/error.h"

namespace jet {

namespace {

constexpr char kNullAscending = '\x00', kNullDescending = '\xFF';
constexpr char kAscending = '\x7F', kDescending = '\x80';
constexpr size_t kSegment = 8;

void invert(std::string& key, size_t from) {
  for (size_t i = from; i < key.size(); ++i) key[i] = static_cast<char>(~key[i]);
}

void appendBigEndian(uint64_t bits, size_t size, std::string& key) {
  char bytes[sizeof bits];
  for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(bits >> 8 * (size - 1 - i));
  key.append(bytes, size);
}

// Signed integers sort as unsigned ones with the top bit flipped.
void appendSigned(int64_t v, size_t size, std::string& key) {
  appendBigEndian(static_cast<uint64_t>(v) ^ (uint64_t{1} << (8 * size - 1)), size, key);
}

template <typename Bits>
void appendFloating(Bits bits, std::string& key) {
  constexpr Bits kSign = Bits{1} << (8 * sizeof(Bits) - 1);
  appendBigEndian(bits & kSign ? static_cast<Bits>(~bits) : bits ^ kSign, sizeof(Bits), key);
}

// Segments of 8 bytes, each but the last followed by 09, the last one zero-padded and followed by its
// length. Descending inverts the data and the last length, but not the 09.
void appendSegments(Bytes data, bool descending, std::string& key) {
  const uint8_t flip = descending ? 0xFF : 0x00;
  while (!data.empty()) {
    const size_t n = std::min(data.size(), kSegment);
    for (size_t i = 0; i < kSegment; ++i) key += static_cast<char>((i < n ? data[i] : 0) ^ flip);
    data = data.subspan(n);
    key += static_cast<char>(data.empty() ? n ^ flip : kSegment + 1);
  }
}

void appendGuid(const Guid& guid, bool descending, std::string& key) {
  std::array<uint8_t, 16> shown = guid.bytes;
  std::reverse(shown.begin(), shown.begin() + 4);
  std::reverse(shown.begin() + 4, shown.begin() + 6);
  std::reverse(shown.begin() + 6, shown.begin() + 8);
  appendSegments(shown, descending, key);
}

// The magnitude as the column stores it, that is with the column's number of decimals.
std::array<uint32_t, 4> rescaled(const Decimal& d, uint8_t scale) {
  std::array<uint32_t, 4> m = d.magnitude;
  for (int s = d.scale; s < scale; ++s) {
    uint64_t carry = 0;
    for (int i = 3; i >= 0; --i) {
      carry += uint64_t{m[i]} * 10;
      m[i] = static_cast<uint32_t>(carry);
      carry >>= 32;
    }
  }
  for (int s = d.scale; s > scale; --s) {
    uint64_t rest = 0;
    for (uint32_t& word : m) {
      rest = rest << 32 | word;
      word = static_cast<uint32_t>(rest / 10);
      rest %= 10;
    }
  }
  return m;
}

// Sign byte and 16 bytes of magnitude. Descending keeps the sign's order and turns only the magnitude
// round: so the format has it, although mixed signs then sort ascending.
void appendDecimal(const Decimal& d, const KeyColumn& column, std::string& key) {
  const size_t start = key.size();
  key += '\0';
  for (const uint32_t word : rescaled(d, column.scale)) appendBigEndian(word, 4, key);
  if (d.negative != column.descending) invert(key, start + 1);
  key[start] = d.negative ? '\x00' : '\xFF';
}

}  // namespace

void appendKeyColumn(const KeyColumn& column, const Value& value, std::string& key) {
  if (value.isNull() && column.type != Type::Boolean) {
    key += column.descending ? kNullDescending : kNullAscending;
    return;
  }
  key += column.descending ? kDescending : kAscending;
  const size_t start = key.size();
  switch (column.type) {
    case Type::Boolean:
      key += !value.isNull() && value.get<bool>() ? '\x00' : '\xFF';
      break;
    case Type::Byte:
      key += static_cast<char>(value.get<uint8_t>());
      break;
    case Type::Integer:
      appendSigned(value.get<int16_t>(), 2, key);
      break;
    case Type::Long:
      appendSigned(value.get<int32_t>(), 4, key);
      break;
    case Type::Currency:
      appendSigned(value.get<Currency>().scaled, 8, key);
      break;
    case Type::Single: {
      uint8_t stored[4];
      putSingle(stored, value.get<float>());
      appendFloating<uint32_t>(get32(stored), key);
      break;
    }
    case Type::Double:
    case Type::Date: {
      uint8_t stored[8];
      putDouble(stored, column.type == Type::Date ? value.get<Date>().days : value.get<double>());
      appendFloating<uint64_t>(get64(stored), key);
      break;
    }
    case Type::Text:
    case Type::Memo:
      column.collation->appendKey(value.get<Text>(), key);
      if (column.descending) {
        invert(key, start);
        if (!column.collation->isJet3()) key += '\0';
      }
      return;
    case Type::Guid:
      appendGuid(value.get<Guid>(), column.descending, key);
      return;
    case Type::Decimal:
      appendDecimal(value.get<Decimal>(), column, key);
      return;
    case Type::Ole:
      throw Error(3287);
    default:
      appendSegments(value.get<Binary>(), column.descending, key);
      return;
  }
  if (column.descending) invert(key, start);
}

std::string encodeKey(std::span<const KeyColumn> columns, std::span<const Value> values) {
  std::string key;
  key.reserve(16 * columns.size());
  for (size_t i = 0; i < columns.size(); ++i) appendKeyColumn(columns[i], values[i], key);
  return key;
}

}  // namespace jet
