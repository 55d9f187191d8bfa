#include "jet/sql/row_store.h"

#include <algorithm>
#include <cstring>
#include <optional>

#include "jet/format/text.h"
#include "jet/sql/types.h"

namespace jet::sql {
namespace {

constexpr size_t kFirstBlock = 4096, kLargestBlock = size_t{1} << 20;

bool isNegativeZero(uint8_t kind, Bytes payload) {
  if (kind != static_cast<uint8_t>(Type::Double) && kind != static_cast<uint8_t>(Type::Single)) return false;
  return payload.back() == 0x80 &&
         std::all_of(payload.begin(), payload.end() - 1, [](uint8_t b) { return b == 0; });
}

template <typename T>
T payloadAs(Bytes payload) {
  T v{};
  std::memcpy(&v, payload.data(), std::min(sizeof v, payload.size()));
  return v;
}

Value decode(uint8_t kind, Bytes p) {
  if (kind == RowStore::kStoredText) return decodeText(p);
  switch (static_cast<Type>(kind)) {
    case Type::Boolean:
      return p[0] != 0;
    case Type::Byte:
      return p[0];
    case Type::Integer:
      return static_cast<int16_t>(get16(p.data()));
    case Type::Long:
      return static_cast<int32_t>(get32(p.data()));
    case Type::Currency:
      return Currency{static_cast<int64_t>(get64(p.data()))};
    case Type::Single:
      return getSingle(p.data());
    case Type::Double:
      return getDouble(p.data());
    case Type::Date:
      return Date{getDouble(p.data())};
    case Type::Guid:
      return payloadAs<Guid>(p);
    case Type::Decimal:
      return payloadAs<Decimal>(p);
    case Type::Binary:
      return Binary(p.begin(), p.end());
    case Type::Text: {
      std::u16string text(p.size() / 2, u'\0');
      std::memcpy(text.data(), p.data(), p.size());
      return text;
    }
    default:
      return {};
  }
}

struct Packer {
  RowStore& store;
  void put(Type type, const uint8_t* bytes, size_t size) const {
    store.addCell(static_cast<uint8_t>(type), {bytes, size});
  }
  void operator()(std::monostate) const { store.addNull(); }
  void operator()(bool b) const {
    const uint8_t byte = b;
    put(Type::Boolean, &byte, 1);
  }
  void operator()(uint8_t b) const { put(Type::Byte, &b, 1); }
  void operator()(int16_t n) const {
    uint8_t b[2];
    put16(b, static_cast<uint16_t>(n));
    put(Type::Integer, b, 2);
  }
  void operator()(int32_t n) const {
    uint8_t b[4];
    put32(b, static_cast<uint32_t>(n));
    put(Type::Long, b, 4);
  }
  void operator()(Currency c) const {
    uint8_t b[8];
    put64(b, static_cast<uint64_t>(c.scaled));
    put(Type::Currency, b, 8);
  }
  void operator()(float f) const {
    uint8_t b[4];
    putSingle(b, f);
    put(Type::Single, b, 4);
  }
  void operator()(double d) const {
    uint8_t b[8];
    putDouble(b, d);
    put(Type::Double, b, 8);
  }
  void operator()(Date d) const {
    uint8_t b[8];
    putDouble(b, d.days);
    put(Type::Date, b, 8);
  }
  void operator()(const Guid& g) const { put(Type::Guid, g.bytes.data(), g.bytes.size()); }
  void operator()(const Decimal& d) const {
    put(Type::Decimal, reinterpret_cast<const uint8_t*>(&d), sizeof d);
  }
  void operator()(const Binary& b) const { put(Type::Binary, b.data(), b.size()); }
  void operator()(const Text& t) const { store.addText(t); }
};

void mix(uint64_t& hash, uint64_t value) {
  hash ^= value + 0x9E3779B97F4A7C15u + (hash << 6) + (hash >> 2);
  hash *= 0xFF51AFD7ED558CCDu;
  hash ^= hash >> 32;
}

// The bits of the double that a number or date equals, one zero for both signs; nullopt for anything else.
std::optional<uint64_t> numberIn(uint8_t kind, Bytes p) {
  double d = 0;
  switch (static_cast<Type>(kind)) {
    case Type::Boolean:
      d = p[0] ? -1 : 0;
      break;
    case Type::Byte:
      d = p[0];
      break;
    case Type::Integer:
      d = static_cast<int16_t>(get16(p.data()));
      break;
    case Type::Long:
      d = static_cast<int32_t>(get32(p.data()));
      break;
    case Type::Currency:
      d = static_cast<double>(static_cast<int64_t>(get64(p.data()))) / 10000;
      break;
    case Type::Single:
      d = getSingle(p.data());
      break;
    case Type::Double:
    case Type::Date:
      d = getDouble(p.data());
      break;
    default:
      return std::nullopt;
  }
  uint64_t bits = 0;
  if (d != 0) std::memcpy(&bits, &d, sizeof bits);
  return bits;
}

bool isScalar(Type t) { return t != Type::Null && !isText(t) && !isBinary(t) && t != Type::Decimal; }

}  // namespace

void RowStore::begin() {
  cells_.clear();
  starts_.clear();
}

void RowStore::add(const Value& value) { std::visit(Packer{*this}, value.storage()); }

void RowStore::addText(std::u16string_view text) {
  starts_.push_back(static_cast<uint32_t>(cells_.size()));
  cells_.push_back(static_cast<char>(Type::Text));
  cells_.append(reinterpret_cast<const char*>(text.data()), text.size() * 2);
}

void RowStore::addCell(uint8_t kind, Bytes payload) {
  starts_.push_back(static_cast<uint32_t>(cells_.size()));
  cells_.push_back(static_cast<char>(kind));
  cells_.append(asChars(payload));
  if (isNegativeZero(kind, payload)) cells_.back() = 0;
}

uint8_t* RowStore::reserve(size_t size) {
  if (blocks_.empty() || blockSize_ - used_ < size) {
    blockSize_ = std::max(size, std::min(kLargestBlock, std::max(kFirstBlock, blockSize_ * 2)));
    blocks_.push_back(std::make_unique<uint8_t[]>(blockSize_));
    used_ = 0;
  }
  return blocks_.back().get() + used_;
}

void RowStore::end() {
  const size_t width = cells_.size() > 0xFFFF ? 4 : 2;
  const size_t head = 1 + width * (columns_ + 1);
  lastRowSize_ = head + cells_.size();
  uint8_t* row = reserve(lastRowSize_);
  used_ += lastRowSize_;
  *row = static_cast<uint8_t>(width);
  uint8_t* p = row + 1;
  starts_.push_back(static_cast<uint32_t>(cells_.size()));
  for (const uint32_t start : starts_) {
    if (width == 2)
      put16(p, start);
    else
      put32(p, start);
    p += width;
  }
  std::memcpy(p, cells_.data(), cells_.size());
  rows_.push_back(row);
}

void RowStore::dropLast() {
  rows_.pop_back();
  used_ -= lastRowSize_;
}

std::pair<uint8_t, Bytes> RowStore::cell(size_t row, size_t column) const {
  const uint8_t* p = rows_[row];
  const size_t width = *p++;
  const auto offset = [&](size_t i) { return width == 2 ? get16(p + 2 * i) : get32(p + 4 * i); };
  const uint8_t* cells = p + width * (columns_ + 1);
  const size_t from = offset(column), to = offset(column + 1);
  return {cells[from], Bytes(cells + from + 1, to - from - 1)};
}

Value RowStore::value(size_t row, size_t column) const {
  const auto [kind, payload] = cell(row, column);
  return decode(kind, payload);
}

uint64_t RowStore::scalarHash(size_t row, const std::vector<Type>& types) const {
  uint64_t hash = columns_;
  for (size_t i = 0; i < columns_; ++i) {
    const auto [kind, payload] = cell(row, i);
    if (kind == static_cast<uint8_t>(Type::Null)) {
      mix(hash, 0x51);
    } else if (const auto number = isScalar(types[i]) ? numberIn(kind, payload) : std::nullopt) {
      // A value may be of another number type than its column, so equal numbers are mixed in as doubles.
      mix(hash, *number);
    } else if (isScalar(types[i]) && kind == static_cast<uint8_t>(types[i])) {
      for (size_t at = 0; at < payload.size(); at += 8)
        mix(hash, payloadAs<uint64_t>(payload.subspan(at, std::min<size_t>(8, payload.size() - at))) + 1);
    } else {
      mix(hash, 0x7);
    }
  }
  return hash;
}

}  // namespace jet::sql
