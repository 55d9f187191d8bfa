#include "fuzz/targets.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  jet::fuzz::readFile({reinterpret_cast<const char*>(data), size});
  return 0;
}

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t* data, size_t size, size_t maxSize, unsigned seed) {
  return jet::fuzz::damageFile(data, size, maxSize, seed);
}
