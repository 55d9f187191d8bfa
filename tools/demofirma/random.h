#pragma once

#include <cstdint>
#include <span>

// A small generator whose numbers depend on the seed alone, on every machine and library.
class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed) {}

  uint64_t next() {
    uint64_t z = state_ += 0x9E3779B97F4A7C15;
    z = (z ^ z >> 30) * 0xBF58476D1CE4E5B9;
    z = (z ^ z >> 27) * 0x94D049BB133111EB;
    return z ^ z >> 31;
  }
  // low <= result <= high
  int between(int low, int high) {
    return low + static_cast<int>(next() % static_cast<uint64_t>(high - low + 1));
  }
  bool chance(int percent) { return between(1, 100) <= percent; }
  template <typename T>
  const T& pick(std::span<const T> from) {
    return from[next() % from.size()];
  }

 private:
  uint64_t state_;
};
