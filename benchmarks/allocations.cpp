#include "benchmarks/allocations.h"

#include <malloc.h>

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::uint64_t> allocations{0};
std::atomic<std::int64_t> bytes_in_use{0};

void* Counted(void* block) {
  if (block == nullptr) throw std::bad_alloc();
  allocations.fetch_add(1, std::memory_order_relaxed);
  bytes_in_use.fetch_add(static_cast<std::int64_t>(::malloc_usable_size(block)), std::memory_order_relaxed);
  return block;
}

void Free(void* block) {
  if (block == nullptr) return;
  bytes_in_use.fetch_sub(static_cast<std::int64_t>(::malloc_usable_size(block)), std::memory_order_relaxed);
  std::free(block);
}

void* Aligned(std::size_t size, std::align_val_t alignment) {
  const auto to = static_cast<std::size_t>(alignment);
  return Counted(std::aligned_alloc(to, (size + to - 1) / to * to));
}

}  // namespace

// The array and the nothrow forms of the standard library call these.
void* operator new(std::size_t size) { return Counted(std::malloc(size == 0 ? 1 : size)); }
void* operator new(std::size_t size, std::align_val_t alignment) { return Aligned(size, alignment); }
void operator delete(void* block) noexcept { Free(block); }
void operator delete(void* block, std::size_t) noexcept { Free(block); }
void operator delete(void* block, std::align_val_t) noexcept { Free(block); }
void operator delete(void* block, std::size_t, std::align_val_t) noexcept { Free(block); }

namespace benchmarks {

Heap Heap::Now() {
  return {::allocations.load(std::memory_order_relaxed), ::bytes_in_use.load(std::memory_order_relaxed)};
}

}  // namespace benchmarks
