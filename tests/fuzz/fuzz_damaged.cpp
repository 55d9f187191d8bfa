#include "fuzz/targets.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  jet::fuzz::runOnDamaged({reinterpret_cast<const char*>(data), size});
  return 0;
}
