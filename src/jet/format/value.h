#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <string>
#include <string_view>
#include <type_traits>
#include <variant>
#include <vector>

namespace jet {

// Type codes as a column descriptor stores them.
enum class Type : uint8_t {
  Null = 0,  // only of a value or an expression, never of a column
  Boolean = 0x01,
  Byte = 0x02,
  Integer = 0x03,  // 16 bits
  Long = 0x04,     // 32 bits
  Currency = 0x05,
  Single = 0x06,
  Double = 0x07,
  Date = 0x08,
  Binary = 0x09,
  Text = 0x0A,
  Ole = 0x0B,
  Memo = 0x0C,
  Guid = 0x0F,
  Decimal = 0x10,
  Internal = 0x11,  // objects of the user interface; bytes, copied as they are
};

// Bytes that every value of the type takes in a row; 0 of those that vary and of Boolean, which is a bit of
// the row's mask.
constexpr uint16_t fixedSize(Type type) {
  switch (type) {
    case Type::Byte:
      return 1;
    case Type::Integer:
      return 2;
    case Type::Long:
    case Type::Single:
      return 4;
    case Type::Currency:
    case Type::Double:
    case Type::Date:
      return 8;
    case Type::Guid:
      return 16;
    case Type::Decimal:
      return 17;
    default:
      return 0;
  }
}

// A sum of money: the amount times 10,000.
struct Currency {
  int64_t scaled = 0;
  auto operator<=>(const Currency&) const = default;
};

// Days since 1899-12-30; the fraction is the time of day, counted forward also before that date.
struct Date {
  double days = 0;
  auto operator<=>(const Date&) const = default;
};

struct Guid {
  std::array<uint8_t, 16> bytes{};  // as in the row: u32, u16, u16 little-endian, then 8 bytes
  auto operator<=>(const Guid&) const = default;
};

// A decimal number: (negative ? -1 : 1) * magnitude / 10^scale.
struct Decimal {
  bool negative = false;
  std::array<uint32_t, 4> magnitude{};  // most significant first
  uint8_t scale = 0;
  bool operator==(const Decimal&) const = default;
};

using Text = std::u16string;
using Binary = std::vector<uint8_t>;

// The types that a Value can hold.
template <typename T, typename... Ts>
inline constexpr bool kIsOneOf = (std::is_same_v<T, Ts> || ...);
template <typename T>
concept ValueContent = kIsOneOf < std::remove_cvref_t<T>,
bool, uint8_t, int16_t, int32_t, Currency, float, double, Date, Binary, Text, Guid, Decimal > ;

// One field's value. Null is std::monostate. Text and Memo are both Text, Binary, OLE and Internal all
// Binary: which of them a value belongs to is a property of its column or expression.
class Value {
 public:
  using Storage = std::variant<std::monostate, bool, uint8_t, int16_t, int32_t, Currency, float, double, Date,
                               Binary, Text, Guid, Decimal>;

  Value() = default;
  template <ValueContent T>
  Value(T&& v) : storage_(std::in_place_type<std::remove_cvref_t<T>>, std::forward<T>(v)) {}
  Value(const char16_t* text) : storage_(Text(text)) {}
  Value(std::u16string_view text) : storage_(Text(text)) {}
  // Not the variant's own copy: GCC 12's destroys what it has not made when memory runs out.
  Value(const Value& other) {
    if (const Text* text = other.getIf<Text>()) {
      storage_.emplace<Text>(*text);
    } else if (const Binary* bytes = other.getIf<Binary>()) {
      storage_.emplace<Binary>(*bytes);
    } else {
      storage_ = other.storage_;
    }
  }
  Value& operator=(const Value& other) {
    if (this != &other) storage_ = std::move(Value(other).storage_);
    return *this;
  }
  Value(Value&&) noexcept = default;
  Value& operator=(Value&&) noexcept = default;
  ~Value() = default;

  bool isNull() const { return storage_.index() == 0; }
  // Text for every text, Binary for every byte string.
  Type type() const;
  const Storage& storage() const { return storage_; }
  Storage& storage() { return storage_; }

  // The value as held; std::bad_variant_access when it is of another type.
  template <typename T>
  const T& get() const {
    return std::get<T>(storage_);
  }
  template <typename T>
  const T* getIf() const {
    return std::get_if<T>(&storage_);
  }

  // Same type and same content (texts compare exactly); Null equals Null. For tests and change
  // detection; Jet's own comparison is in sql/operators.h.
  bool operator==(const Value&) const = default;

 private:
  Storage storage_;
};

}  // namespace jet
