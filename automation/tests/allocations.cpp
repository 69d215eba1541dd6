// A file of its own, so that the compiler sees only one half of each pair of new and delete.
#include "automation/tests/allocations.h"

#include <cstdlib>
#include <new>

namespace {

thread_local std::size_t allocations = 0;

}  // namespace

namespace automation_tests {

std::size_t Allocations() { return allocations; }

}  // namespace automation_tests

void* operator new(std::size_t size) {
  ++allocations;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t /*size*/) noexcept { std::free(memory); }
