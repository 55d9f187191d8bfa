#pragma once

#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace jet {

using Bytes = std::span<const uint8_t>;
using MutableBytes = std::span<uint8_t>;

// Keys, rows and long values are built in std::string and looked at as Bytes.
inline Bytes asBytes(std::string_view s) { return {reinterpret_cast<const uint8_t*>(s.data()), s.size()}; }
inline std::string_view asChars(Bytes b) { return {reinterpret_cast<const char*>(b.data()), b.size()}; }

// Little-endian access without bounds checks, for offsets that are constants of the layout or were
// checked by the caller.
inline uint16_t get16(const uint8_t* p) { return static_cast<uint16_t>(p[0] | p[1] << 8); }
inline uint32_t get24(const uint8_t* p) { return p[0] | uint32_t{p[1]} << 8 | uint32_t{p[2]} << 16; }
inline uint32_t get32(const uint8_t* p) { return get24(p) | uint32_t{p[3]} << 24; }
inline uint64_t get64(const uint8_t* p) { return get32(p) | uint64_t{get32(p + 4)} << 32; }
inline void put16(uint8_t* p, uint32_t v) { p[0] = static_cast<uint8_t>(v), p[1] = static_cast<uint8_t>(v >> 8); }
inline void put24(uint8_t* p, uint32_t v) { put16(p, v), p[2] = static_cast<uint8_t>(v >> 16); }
inline void put32(uint8_t* p, uint32_t v) { put24(p, v), p[3] = static_cast<uint8_t>(v >> 24); }
inline void put64(uint8_t* p, uint64_t v) { put32(p, static_cast<uint32_t>(v)), put32(p + 4, static_cast<uint32_t>(v >> 32)); }

// Big-endian, as index entries store row pointers and child pages.
inline uint32_t get24be(const uint8_t* p) { return uint32_t{p[0]} << 16 | uint32_t{p[1]} << 8 | p[2]; }
inline uint32_t get32be(const uint8_t* p) { return get24be(p) << 8 | p[3]; }
inline void put24be(uint8_t* p, uint32_t v) {
  p[0] = static_cast<uint8_t>(v >> 16), p[1] = static_cast<uint8_t>(v >> 8), p[2] = static_cast<uint8_t>(v);
}
inline void put32be(uint8_t* p, uint32_t v) { p[0] = static_cast<uint8_t>(v >> 24), put24be(p + 1, v & 0xFFFFFF); }

inline double getDouble(const uint8_t* p) {
  const uint64_t bits = get64(p);
  double d;
  std::memcpy(&d, &bits, sizeof d);
  return d;
}
inline float getSingle(const uint8_t* p) {
  const uint32_t bits = get32(p);
  float f;
  std::memcpy(&f, &bits, sizeof f);
  return f;
}
inline void putDouble(uint8_t* p, double d) {
  uint64_t bits;
  std::memcpy(&bits, &d, sizeof bits);
  put64(p, bits);
}
inline void putSingle(uint8_t* p, float f) {
  uint32_t bits;
  std::memcpy(&bits, &f, sizeof bits);
  put32(p, bits);
}

}  // namespace jet
