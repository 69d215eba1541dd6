// Counts the system calls of a piece of work, in a child process that is traced.
#pragma once

#include <functional>
#include <map>

namespace benchmarks {

/// Runs `prepare` and then `work` in a child process and counts the system calls of `work` alone, by their
/// numbers. Fails with std::runtime_error where a process may not be traced, and where the child fails.
std::map<long, int> CountSystemCalls(const std::function<void()>& prepare, const std::function<void()>& work);

}  // namespace benchmarks
