#include <algorithm>
#include <cmath>

#include "jet/format/bytes.h"
#include "jet/sql/numbers.h"
#include "jet/sql/operators.h"

// Keys of one column:
//   Null               00
//   value              7F and the value
//   numbers, dates     the double, big-endian, ordered as an unsigned number; 8 bytes
//   Currency           the scaled integer with the sign flipped, big-endian; 8 bytes
//   Decimal            sign, then the magnitude with 28 places, big-endian; 29 bytes
//   text               each piece of 255 units: collation key, then 00 01 (end) or 00 02 (a piece follows)
//   bytes              the bytes, then 00 01
// A byte 00 inside of text and bytes is written 00 FF, so that no key is the beginning of another one. A
// descending key has every byte inverted.
namespace jet::sql {

namespace {

void append64(uint64_t bits, std::string& key) {
  for (int shift = 56; shift >= 0; shift -= 8) key += static_cast<char>(bits >> shift);
}

void appendDouble(double d, std::string& key) {
  if (std::isnan(d)) return append64(0, key);
  if (d == 0) d = 0;  // no negative zero
  uint64_t bits;
  std::memcpy(&bits, &d, sizeof bits);
  constexpr uint64_t kSign = uint64_t{1} << 63;
  append64(bits & kSign ? ~bits : bits | kSign, key);
}

void appendDecimal(const Decimal& value, std::string& key) {
  const Decimal d = rounded(value, kDecimalDigits);
  Wide m(d.magnitude);
  m.shiftPlaces(kDecimalDigits - d.scale);
  const bool negative = d.negative && !m.isZero();
  const uint32_t mask = negative ? 0xFFFFFFFF : 0;
  key += static_cast<char>(negative ? 0x7F : 0x80);
  for (int i = 6; i >= 0; --i)
    for (int shift = 24; shift >= 0; shift -= 8) key += static_cast<char>((m.limb(i) ^ mask) >> shift);
}

// Writes 00 FF for every 00 from `start` on.
void escapeZeros(size_t start, std::string& key) {
  for (size_t at = start; (at = key.find('\0', at)) != std::string::npos; at += 2)
    key.insert(at + 1, 1, '\xFF');
}

void appendTextKey(std::u16string_view text, const Collation& collation, std::string& key) {
  while (!text.empty() && text.back() == u' ') text.remove_suffix(1);
  for (;;) {
    const size_t start = key.size();
    collation.appendKey(text.substr(0, kKeyUnits), key);
    if (!collation.isJet3()) key.pop_back();  // always a 00
    escapeZeros(start, key);
    const bool isLast = text.size() <= kKeyUnits;
    key += '\0';
    key += isLast ? '\1' : '\2';
    if (isLast) return;
    text.remove_prefix(kKeyUnits);
  }
}

void appendBytes(Bytes bytes, std::string& key) {
  const size_t start = key.size();
  key += asChars(bytes);
  escapeZeros(start, key);
  key += '\0';
  key += '\1';
}

void appendBinary(const Value& v, std::string& key) {
  if (const Binary* b = v.getIf<Binary>()) return appendBytes(*b, key);
  std::string bytes;
  for (char16_t c : toText(v, {})) bytes.append({static_cast<char>(c), static_cast<char>(c >> 8)});
  appendBytes(asBytes(bytes), key);
}

void appendValue(const Value& v, Type as, const Collation& collation, std::string& key) {
  switch (as == Type::Null ? v.type() : as) {
    case Type::Text:
    case Type::Memo: {
      const Text* text = v.getIf<Text>();
      return appendTextKey(text ? *text : toText(v, {}), collation, key);
    }
    case Type::Currency: {
      const uint64_t bits = static_cast<uint64_t>(toCurrency(v).scaled);
      return append64(bits ^ uint64_t{1} << 63, key);
    }
    case Type::Decimal:
      return appendDecimal(toDecimal(v), key);
    case Type::Guid: {
      const Guid* guid = v.getIf<Guid>();
      return appendTextKey(guid ? guidText(*guid) : toText(v, {}), collation, key);
    }
    case Type::Binary:
    case Type::Ole:
    case Type::Internal:
      return appendBinary(v, key);
    default:
      return appendDouble(toDouble(v), key);
  }
}

}  // namespace

void appendSortKey(const Value& v, Type as, const Collation& collation, bool descending, std::string& key) {
  const size_t start = key.size();
  if (v.isNull()) {
    key += '\0';
  } else {
    key += '\x7F';
    appendValue(v, as, collation, key);
  }
  if (descending)
    for (size_t i = start; i < key.size(); ++i) key[i] = static_cast<char>(~key[i]);
}

}  // namespace jet::sql
