#include "support/allocation_fault.h"

#include <cstdlib>
#include <new>

namespace {

thread_local uint64_t allocationsLeft = 0;  // 0: none is to fail
thread_local bool allocationFailed = false;

}  // namespace

// Replaces the program's allocation functions. The forms for arrays call these, but a sanitizer's form without
// exceptions does not.
void* operator new(std::size_t size) {
  if (allocationsLeft > 0 && --allocationsLeft == 0) {
    allocationFailed = true;
    throw std::bad_alloc();
  }
  void* memory = std::malloc(size ? size : 1);
  if (!memory) throw std::bad_alloc();
  return memory;
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }

namespace jet::test {

AllocationFault::AllocationFault(uint64_t n) {
  allocationsLeft = n;
  allocationFailed = false;
}

AllocationFault::~AllocationFault() { allocationsLeft = 0; }

bool AllocationFault::failed() { return allocationFailed; }

}  // namespace jet::test
