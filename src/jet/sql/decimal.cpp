#include "jet/sql/decimal.h"

#include <algorithm>
#include <charconv>

#include "jet/format/error.h"

namespace jet::sql {

namespace {

constexpr int kLimbs = 8;
constexpr int kMaxScale = 38;  // of a magnitude that still fits when it is aligned

[[noreturn]] void overflow() { throw Error(6, {}, "DAO.Expression"); }

// A magnitude from a file may claim any scale.
int scaleOf(const Decimal& a) {
  if (a.scale > kMaxScale) overflow();
  return a.scale;
}

Decimal pack(bool negative, const Wide& m, int scale) {
  Decimal d;
  for (int i = 0; i < 4; ++i) d.magnitude[i] = m.limb(3 - i);
  d.scale = static_cast<uint8_t>(scale);
  d.negative = negative && !m.isZero();
  return d;
}

// Brings any result to 28 digits and 28 places.
Decimal normalized(bool negative, Wide m, int scale, bool inexact = false) {
  for (;;) {
    const int excess = std::max({0, scale - kDecimalDigits, m.digits() - kDecimalDigits});
    if (excess == 0) return pack(negative, m, scale);
    if (excess > scale) overflow();
    m.dropPlaces(excess, inexact);
    scale -= excess;
    inexact = false;
  }
}

}  // namespace

Wide::Wide(const std::array<uint32_t, 4>& magnitude) {
  for (int i = 0; i < 4; ++i) limbs_[i] = magnitude[3 - i];
}

bool Wide::isZero() const {
  return std::all_of(limbs_.begin(), limbs_.end(), [](uint32_t l) { return l == 0; });
}

int Wide::bits() const {
  for (int i = kLimbs - 1; i >= 0; --i) {
    if (limbs_[i] == 0) continue;
    int n = 0;
    for (uint32_t l = limbs_[i]; l; l >>= 1) ++n;
    return i * 32 + n;
  }
  return 0;
}

int Wide::digits() const { return isZero() ? 0 : static_cast<int>(text().size()); }

int Wide::compare(const Wide& other) const {
  for (int i = kLimbs - 1; i >= 0; --i)
    if (limbs_[i] != other.limbs_[i]) return limbs_[i] < other.limbs_[i] ? -1 : 1;
  return 0;
}

void Wide::add(const Wide& other) {
  uint64_t carry = 0;
  for (int i = 0; i < kLimbs; ++i) {
    carry += uint64_t{limbs_[i]} + other.limbs_[i];
    limbs_[i] = static_cast<uint32_t>(carry);
    carry >>= 32;
  }
}

void Wide::subtract(const Wide& other) {
  uint64_t borrow = 0;
  for (int i = 0; i < kLimbs; ++i) {
    const uint64_t taken = uint64_t{other.limbs_[i]} + borrow;
    borrow = limbs_[i] < taken;
    limbs_[i] = static_cast<uint32_t>(limbs_[i] - taken);
  }
}

void Wide::multiply(uint32_t factor, uint32_t plus) {
  uint64_t carry = plus;
  for (uint32_t& limb : limbs_) {
    carry += uint64_t{limb} * factor;
    limb = static_cast<uint32_t>(carry);
    carry >>= 32;
  }
}

Wide Wide::times(const Wide& other) const {
  Wide product;
  for (int i = 0; i < kLimbs; ++i) {
    uint64_t carry = 0;
    for (int j = 0; i + j < kLimbs; ++j) {
      carry += uint64_t{limbs_[i]} * other.limbs_[j] + product.limbs_[i + j];
      product.limbs_[i + j] = static_cast<uint32_t>(carry);
      carry >>= 32;
    }
  }
  return product;
}

uint32_t Wide::divide(uint32_t divisor) {
  uint64_t rest = 0;
  for (int i = kLimbs - 1; i >= 0; --i) {
    rest = rest << 32 | limbs_[i];
    limbs_[i] = static_cast<uint32_t>(rest / divisor);
    rest %= divisor;
  }
  return static_cast<uint32_t>(rest);
}

Wide Wide::divide(const Wide& divisor) {
  Wide quotient, rest;
  for (int i = bits() - 1; i >= 0; --i) {
    rest.add(rest);
    rest.limbs_[0] |= limbs_[i / 32] >> (i % 32) & 1;
    if (rest.compare(divisor) < 0) continue;
    rest.subtract(divisor);
    quotient.limbs_[i / 32] |= uint32_t{1} << (i % 32);
  }
  *this = quotient;
  return rest;
}

void Wide::shiftPlaces(int places) {
  for (; places >= 9; places -= 9) multiply(1'000'000'000);
  for (; places > 0; --places) multiply(10);
}

void Wide::dropPlaces(int places, bool inexact) {
  uint32_t last = 0;
  for (; places > 0; --places) {
    inexact |= last != 0;
    last = divide(uint32_t{10});
  }
  if (last > 5 || (last == 5 && (inexact || isOdd()))) add(Wide(1));
}

std::string Wide::text() const {
  std::string out;
  for (Wide rest = *this; !rest.isZero();) {
    uint32_t group = rest.divide(uint32_t{1'000'000'000});
    for (int i = 0; i < 9 && (group || !rest.isZero()); ++i, group /= 10)
      out.push_back(static_cast<char>('0' + group % 10));
  }
  std::reverse(out.begin(), out.end());
  return out.empty() ? "0" : out;
}

Decimal decimalOf(int64_t v, int scale) {
  const uint64_t magnitude = v < 0 ? 0 - static_cast<uint64_t>(v) : static_cast<uint64_t>(v);
  return pack(v < 0, Wide(magnitude), scale);
}

Decimal add(const Decimal& a, const Decimal& b) {
  const int scale = std::max(scaleOf(a), scaleOf(b));
  Wide x(a.magnitude), y(b.magnitude);
  x.shiftPlaces(scale - a.scale);
  y.shiftPlaces(scale - b.scale);
  if (a.negative == b.negative) {
    x.add(y);
    return normalized(a.negative, x, scale);
  }
  if (x.compare(y) < 0) {
    y.subtract(x);
    return normalized(b.negative, y, scale);
  }
  x.subtract(y);
  return normalized(a.negative, x, scale);
}

Decimal negated(Decimal a) {
  a.negative = !a.negative && !isZero(a);
  return a;
}

Decimal multiply(const Decimal& a, const Decimal& b) {
  return normalized(a.negative != b.negative, Wide(a.magnitude).times(Wide(b.magnitude)),
                    scaleOf(a) + scaleOf(b));
}

Decimal divide(const Decimal& a, const Decimal& b) {
  Wide quotient(a.magnitude);
  quotient.shiftPlaces(kMaxScale);
  const bool inexact = !quotient.divide(Wide(b.magnitude)).isZero();
  int scale = scaleOf(a) + kMaxScale - scaleOf(b);
  while (!inexact && scale > 0 && !quotient.isZero()) {
    Wide shorter = quotient;
    if (shorter.divide(uint32_t{10}) != 0) break;
    quotient = shorter;
    --scale;
  }
  if (quotient.isZero()) scale = 0;
  return normalized(a.negative != b.negative, quotient, scale, inexact);
}

int compare(const Decimal& a, const Decimal& b) {
  const bool aNegative = a.negative && !isZero(a), bNegative = b.negative && !isZero(b);
  if (aNegative != bNegative) return aNegative ? -1 : 1;
  const int scale = std::max(scaleOf(a), scaleOf(b));
  Wide x(a.magnitude), y(b.magnitude);
  x.shiftPlaces(scale - a.scale);
  y.shiftPlaces(scale - b.scale);
  return aNegative ? y.compare(x) : x.compare(y);
}

bool isZero(const Decimal& a) { return a.magnitude == std::array<uint32_t, 4>{}; }

Decimal rounded(const Decimal& a, int scale, bool exact) {
  Wide m(a.magnitude);
  if (scaleOf(a) > scale) {
    m.dropPlaces(a.scale - scale);
    return normalized(a.negative, m, scale);
  }
  if (!exact) return a;
  m.shiftPlaces(scale - a.scale);
  if (m.digits() > kDecimalDigits) overflow();
  return pack(a.negative, m, scale);
}

Decimal truncated(const Decimal& a) {
  Wide m(a.magnitude);
  for (int i = scaleOf(a); i > 0; --i) m.divide(uint32_t{10});
  return pack(a.negative, m, 0);
}

double toDouble(const Decimal& a) {
  const std::string text = toString(a);
  double d = 0;
  std::from_chars(text.data(), text.data() + text.size(), d);
  return d;
}

std::optional<int64_t> toInt64(const Decimal& a, int scale) {
  Wide m(a.magnitude);
  if (scaleOf(a) > scale)
    m.dropPlaces(a.scale - scale);
  else
    m.shiftPlaces(scale - a.scale);
  if (m.bits() > 64) return std::nullopt;
  const uint64_t magnitude = uint64_t{m.limb(1)} << 32 | m.limb(0);
  constexpr uint64_t kLimit = uint64_t{1} << 63;
  if (magnitude > kLimit || (magnitude == kLimit && !a.negative)) return std::nullopt;
  return static_cast<int64_t>(a.negative ? 0 - magnitude : magnitude);
}

std::string toString(const Decimal& a) {
  std::string text = Wide(a.magnitude).text();
  const size_t scale = a.scale;
  if (text.size() <= scale) text.insert(0, scale + 1 - text.size(), '0');
  if (scale > 0) {
    text.insert(text.size() - scale, 1, '.');
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
  }
  return a.negative && text != "0" ? "-" + text : text;
}

std::optional<Decimal> decimalFromString(std::string_view number) {
  const bool negative = !number.empty() && number[0] == '-';
  if (negative) number.remove_prefix(1);
  Wide m;
  int scale = 0, exponent = 0, digits = 0;
  bool fraction = false, inexact = false;
  for (size_t i = 0; i < number.size(); ++i) {
    const char c = number[i];
    if (c == '.') {
      fraction = true;
    } else if (c == 'E' || c == 'e') {
      const size_t start = i + 1 < number.size() && number[i + 1] == '+' ? i + 2 : i + 1;
      const auto end = number.data() + number.size();
      if (std::from_chars(number.data() + start, end, exponent).ec != std::errc()) return std::nullopt;
      break;
    } else if (digits < 60) {
      m.multiply(10, static_cast<uint32_t>(c - '0'));
      digits += digits > 0 || c != '0';
      scale += fraction;
    } else {
      inexact |= c != '0';
      scale -= !fraction;
    }
  }
  if (m.isZero()) return Decimal{};
  if (exponent > 200 || (scale -= exponent) < -kDecimalDigits) return std::nullopt;
  if (scale > 200) return Decimal{};
  if (scale < 0) {
    if (m.digits() - scale > kDecimalDigits) return std::nullopt;
    m.shiftPlaces(-scale);
    scale = 0;
  }
  if (m.digits() - scale > kDecimalDigits) return std::nullopt;
  return normalized(negative, m, scale, inexact);
}

}  // namespace jet::sql
