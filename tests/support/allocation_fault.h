#pragma once

#include <cstdint>

namespace jet::test {

// While it lives, the n-th allocation of this thread (1 is the next) throws std::bad_alloc, once.
class AllocationFault {
 public:
  explicit AllocationFault(uint64_t n);
  ~AllocationFault();
  AllocationFault(const AllocationFault&) = delete;
  AllocationFault& operator=(const AllocationFault&) = delete;
  static bool failed();  // since the last construction
};

}  // namespace jet::test
