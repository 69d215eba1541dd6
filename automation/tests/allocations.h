// How often this thread has taken memory from the heap.
#pragma once

#include <cstddef>

namespace automation_tests {

std::size_t Allocations();

}  // namespace automation_tests
