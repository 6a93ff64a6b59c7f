#include "tests/support/short_memory.h"

#include <cstddef>
#include <new>

// The linker leads the calls of operator new and realloc here (see CMakeLists.txt).
#define WRAPPED_NEW __wrap__Znwm
#define REAL_NEW __real__Znwm
#define WRAPPED_REALLOC __wrap_realloc
#define REAL_REALLOC __real_realloc
extern "C" {
void* WRAPPED_NEW(std::size_t size);
void* REAL_NEW(std::size_t size);
void* WRAPPED_REALLOC(void* block, std::size_t size);
void* REAL_REALLOC(void* block, std::size_t size);
}

namespace {

// Below 0 there is no limit.
long allocationsLeft = -1;
bool failed = false;

bool Fails() {
  if (allocationsLeft < 0 || allocationsLeft-- != 0) return false;
  failed = true;
  return true;
}

}  // namespace

void* WRAPPED_NEW(std::size_t size) {
  if (Fails()) throw std::bad_alloc();
  return REAL_NEW(size);
}

void* WRAPPED_REALLOC(void* block, std::size_t size) { return Fails() ? nullptr : REAL_REALLOC(block, size); }

void LimitAllocations(long count) {
  allocationsLeft = count;
  failed = false;
}

bool EndAllocationLimit() {
  allocationsLeft = -1;
  return failed;
}
