#include "users/password.h"

namespace tandeko {

namespace {

constexpr int kFirst = 32;
constexpr int kLast = 126;
constexpr int kSpan = kLast - kFirst + 1;

bool isKept(QChar c) { return c.unicode() >= kFirst && c.unicode() <= kLast; }

// The fixed source of fractions in [0, 1). It must never change: stored passwords depend on it. A linear
// congruential generator modulo 2^32 (multiplier 1664525, increment 1013904223); a fraction is the state's
// upper 24 bits divided by 2^24, the state being advanced before each one. Seeding puts it into its start
// state, the constant below, with the seed mixed in by exclusive or.
class Fractions {
 public:
  explicit Fractions(int32_t seed) : state_(kStart ^ static_cast<uint32_t>(seed)) {}

  double next() {
    state_ = state_ * 1664525u + 1013904223u;
    return static_cast<double>(state_ >> 8) / 16777216.0;
  }
  int offset() { return static_cast<int>(next() * 96); }

 private:
  static constexpr uint32_t kStart = 0x50000u;
  uint32_t state_;
};

}  // namespace

int32_t PassSeed(const QString& key) {
  uint32_t seed = 0;
  int a = 0, b = 0;
  for (const QChar c : key) {
    const uint32_t code = c.unicode();
    seed ^= (code << a) ^ (code << b);
    a = (a + 7) % 15;
    b = (b + 13) % 11;
  }
  return static_cast<int32_t>(seed);
}

QString PassEncode(const QString& key, const QString& text, int padLength) {
  const int32_t seed = PassSeed(key);
  QString out;
  Fractions offsets(seed);
  for (const QChar c : text)
    if (isKept(c)) out += QChar((c.unicode() - kFirst + offsets.offset()) % kSpan + kFirst);
  if (!text.isEmpty()) out += QChar(kPasswordEnd);
  Fractions filling(seed);
  for (qsizetype i = text.size(); i <= padLength; ++i)
    out += QChar(static_cast<char16_t>(filling.next() * kSpan + kFirst));
  return out;
}

QString PassDecode(const QString& key, const QString& stored) {
  const auto end = stored.indexOf(QChar(kPasswordEnd));
  QString out;
  Fractions offsets(PassSeed(key));
  for (const QChar c : stored) {
    if (!isKept(c)) continue;
    int code = (c.unicode() - kFirst - offsets.offset()) % kSpan;
    if (code < 0) code += kSpan;
    out += QChar(code + kFirst);
  }
  return end > 0 ? out.left(end) + QChar(kPasswordEnd) : out;
}

}  // namespace tandeko
