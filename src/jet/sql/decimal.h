#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "jet/format/value.h"

// Exact decimal arithmetic. Results keep at most 28 significant digits and 28 decimal places, rounded
// half to even; what does not fit throws Error 6.
namespace jet::sql {

inline constexpr int kDecimalDigits = 28;

// An unsigned integer of 256 bits: holds any product of two magnitudes and any magnitude shifted by 38
// decimal places.
class Wide {
 public:
  Wide() = default;
  explicit Wide(uint64_t v) : limbs_{static_cast<uint32_t>(v), static_cast<uint32_t>(v >> 32)} {}
  explicit Wide(const std::array<uint32_t, 4>& magnitude);  // most significant first

  bool isZero() const;
  bool isOdd() const { return limbs_[0] & 1; }
  int bits() const;    // position of the highest bit plus one
  int digits() const;  // decimal digits, 0 for zero
  int compare(const Wide& other) const;
  uint32_t limb(int i) const { return limbs_[i]; }  // least significant first

  void add(const Wide& other);
  void subtract(const Wide& other);  // other <= *this
  void multiply(uint32_t factor, uint32_t plus = 0);
  Wide times(const Wide& other) const;  // low 256 bits
  uint32_t divide(uint32_t divisor);    // returns the remainder
  Wide divide(const Wide& divisor);     // becomes the quotient, returns the remainder
  void shiftPlaces(int places);         // times 10^places, 0..76
  // Divides by 10^places, rounding half to even; `inexact` says that the number is already a bit larger.
  void dropPlaces(int places, bool inexact = false);
  std::string text() const;

 private:
  std::array<uint32_t, 8> limbs_{};
};

Decimal decimalOf(int64_t v, int scale = 0);
Decimal add(const Decimal& a, const Decimal& b);
Decimal negated(Decimal a);
Decimal multiply(const Decimal& a, const Decimal& b);
Decimal divide(const Decimal& a, const Decimal& b);  // b is not zero
int compare(const Decimal& a, const Decimal& b);
bool isZero(const Decimal& a);
// With at most `scale` decimal places (exactly that many when `exact`), half to even.
Decimal rounded(const Decimal& a, int scale, bool exact = false);
Decimal truncated(const Decimal& a);
double toDouble(const Decimal& a);
std::optional<int64_t> toInt64(const Decimal& a, int scale);  // a * 10^scale, half to even
// Plain digits with a point, without trailing zeros after it.
std::string toString(const Decimal& a);
// The inverse for "-12.5E-3"; nullopt when the number has more than 28 digits before the point.
std::optional<Decimal> decimalFromString(std::string_view number);

}  // namespace jet::sql
