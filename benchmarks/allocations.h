// Counts heap allocations of the program that it is linked into, by replacing operator new and delete.
#pragma once

#include <cstdint>

namespace benchmarks {

/// What operator new and delete have done so far, on all threads.
struct Heap {
  std::uint64_t allocations = 0;
  std::int64_t bytes_in_use = 0;  ///< as the allocator rounds them up

  static Heap Now();
};

}  // namespace benchmarks
