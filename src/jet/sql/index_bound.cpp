#include "jet/sql/index_bound.h"

#include <cmath>
#include <limits>

#include "jet/sql/types.h"

namespace jet::sql {
namespace {

bool isNumeric(const Value& v) {
  const Type t = v.type();
  return isNumber(t) || t == Type::Boolean || t == Type::Date;
}

template <typename T>
std::optional<Value> exactInteger(double d) {
  if (d != std::floor(d) || d < std::numeric_limits<T>::min() || d > std::numeric_limits<T>::max())
    return std::nullopt;
  return Value(static_cast<T>(d));
}

// The largest magnitude that a Currency can hold, in its units.
constexpr double kCurrencyLimit = 9.2e14;

enum class Side { Low, High };

// A bound as a key value: the nearest value of the column's type that is not inside of the bound. nullopt
// leaves the side open.
struct Bound {
  std::optional<Value> value;
  bool isBeyond = false;  // no value of the type lies within the bound
};

template <typename T>
Bound integerBound(double d, Side side) {
  constexpr double kMin = std::numeric_limits<T>::min(), kMax = std::numeric_limits<T>::max();
  if (side == Side::Low) {
    if (d > kMax) return {std::nullopt, true};
    return d <= kMin ? Bound{} : Bound{Value(static_cast<T>(std::floor(d))), false};
  }
  if (d < kMin) return {std::nullopt, true};
  return d >= kMax ? Bound{} : Bound{Value(static_cast<T>(std::ceil(d))), false};
}

Bound boundFor(Type column, const Value& v, Side side) {
  if (isText(column)) return {v.type() == Type::Text ? std::optional(v) : std::nullopt, false};
  if (!isNumeric(v)) return {};
  const double d = toDouble(v);
  if (std::isnan(d)) return {};
  switch (column) {
    case Type::Byte:
      return integerBound<uint8_t>(d, side);
    case Type::Integer:
      return integerBound<int16_t>(d, side);
    case Type::Long:
      return integerBound<int32_t>(d, side);
    case Type::Currency: {
      if (const auto* c = v.getIf<Currency>()) return {Value(*c), false};
      if (std::fabs(d) > kCurrencyLimit) return {};
      const double scaled = d * 10000;
      return {Value(Currency{
                  static_cast<int64_t>(side == Side::Low ? std::floor(scaled) - 1 : std::ceil(scaled) + 1)}),
              false};
    }
    case Type::Double:
      return {Value(d), false};
    case Type::Date:
      return {Value(Date{d}), false};
    default:
      return {};
  }
}

}  // namespace

bool isSearchable(Type column) {
  return isText(column) || isInteger(column) || column == Type::Boolean || column == Type::Currency ||
         column == Type::Single || column == Type::Double || column == Type::Date || column == Type::Guid;
}

std::optional<Value> exactKey(Type column, const Value& v) {
  if (v.isNull()) return std::nullopt;
  if (v.type() == heldType(column)) return v;
  if (isText(column) || column == Type::Guid || !isNumeric(v)) return std::nullopt;
  const double d = toDouble(v);
  switch (column) {
    case Type::Boolean:
      if (d != 0 && d != -1) return std::nullopt;
      return Value(d != 0);
    case Type::Byte:
      return exactInteger<uint8_t>(d);
    case Type::Integer:
      return exactInteger<int16_t>(d);
    case Type::Long:
      return exactInteger<int32_t>(d);
    case Type::Currency: {
      if (std::fabs(d) > kCurrencyLimit) return std::nullopt;
      const auto scaled = static_cast<int64_t>(std::llround(d * 10000));
      if (static_cast<double>(scaled) / 10000 != d) return std::nullopt;
      return Value(Currency{scaled});
    }
    case Type::Single: {
      const auto f = static_cast<float>(d);
      if (static_cast<double>(f) != d) return std::nullopt;
      return Value(f);
    }
    case Type::Double:
      return Value(d);
    case Type::Date:
      return Value(Date{d});
    default:
      return std::nullopt;
  }
}

KeyBounds rangeBounds(const Table& table, int index, std::vector<Value> prefix,
                      const std::optional<Value>& low, const std::optional<Value>& high) {
  const IndexColumn& column = table.def().realIndexes[static_cast<size_t>(index)].columns[prefix.size()];
  const Type type = table.def().columns[static_cast<size_t>(column.ordinal)].type();
  const Bound lower = low ? boundFor(type, *low, Side::Low) : Bound{};
  const Bound upper = high ? boundFor(type, *high, Side::High) : Bound{};
  if (lower.isBeyond || upper.isBeyond) return {{}, true};

  const std::string common = prefix.empty() ? std::string() : table.indexKey(index, prefix);
  const auto keyOf = [&](const Value& v) {
    prefix.push_back(v);
    std::string key = table.indexKey(index, prefix);
    prefix.pop_back();
    return key;
  };
  KeyBounds bounds;
  Table::KeyRange& range = bounds.range;
  // Nulls stand before everything; no condition on a range holds for them.
  range.low = lower.value ? keyOf(*lower.value) : keyOf(Value());
  range.lowExclusive = !lower.value;
  range.high = upper.value ? keyOf(*upper.value) : common;
  if (column.descending) {
    std::swap(range.low, range.high);
    std::swap(range.lowExclusive, range.highExclusive);
  }
  return bounds;
}

KeyBounds likeBounds(const Table& table, int index, std::vector<Value> prefix, const std::u16string& text) {
  const IndexColumn& column = table.def().realIndexes[static_cast<size_t>(index)].columns[prefix.size()];
  if (column.descending || text.empty()) return rangeBounds(table, index, std::move(prefix), {}, {});
  const size_t common = prefix.empty() ? 0 : table.indexKey(index, prefix).size();
  prefix.emplace_back(text);
  std::string key = table.indexKey(index, prefix);
  const bool jet3 = table.def().rowLayout.file->version == Version::Jet3;
  // The codes of the letters come first; every text that begins with these letters has a key that begins
  // with their codes. A byte 01 (Jet 3: 00) is the end of the codes.
  const size_t end = key.find(jet3 ? '\0' : '\1', common + 1);
  if (jet3 && end + 1 != key.size())
    return rangeBounds(table, index, {prefix.begin(), prefix.end() - 1}, {}, {});
  if (end != key.npos) key.resize(end);
  return {{key, key}, false};
}

}  // namespace jet::sql
