#include "benchmarks/tests/system_calls.h"

#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <stdexcept>

namespace benchmarks {
namespace {

// A call that nothing else makes marks where the work begins and where it ends.
constexpr long kMark = SYS_getpgrp;
void Mark() { ::syscall(kMark); }

[[noreturn]] void RunAsChild(const std::function<void()>& prepare, const std::function<void()>& work) {
  try {
    if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) ::_exit(2);
    std::raise(SIGSTOP);
    prepare();
    Mark();
    work();
    Mark();
    ::_exit(0);
  } catch (const std::exception& failure) {
    std::fprintf(stderr, "traced work: %s\n", failure.what());
    ::_exit(1);
  }
}

}  // namespace

std::map<long, int> CountSystemCalls(const std::function<void()>& prepare,
                                     const std::function<void()>& work) {
  const pid_t child = ::fork();
  if (child < 0) throw std::runtime_error("no child process");
  if (child == 0) RunAsChild(prepare, work);

  std::map<long, int> counts;
  int marks = 0;
  int status = 0;
  if (::waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) {
    throw std::runtime_error("this system does not let a process be traced");
  }
  ::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
  int signal = 0;
  while (::ptrace(PTRACE_SYSCALL, child, nullptr, signal) == 0 && ::waitpid(child, &status, 0) == child) {
    if (!WIFSTOPPED(status)) break;
    const bool at_call = WSTOPSIG(status) == (SIGTRAP | 0x80);
    signal = at_call ? 0 : WSTOPSIG(status);
    __ptrace_syscall_info info{};
    if (!at_call || ::ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof info, &info) <= 0) continue;
    if (info.op != PTRACE_SYSCALL_INFO_ENTRY) continue;
    const auto number = static_cast<long>(info.entry.nr);
    if (number == kMark) {
      ++marks;
    } else if (marks == 1) {
      ++counts[number];
    }
  }
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0 || marks != 2) {
    throw std::runtime_error("the traced work failed");
  }
  return counts;
}

}  // namespace benchmarks
