// Runs the member cases through the registered component. usage: component_cases late|early FOLDER
#include <objbase.h>
#include <windows.h>

#include <cstdio>
#include <exception>
#include <string>
#include <string_view>

#include "case_file.h"
#include "component_calls.h"
#include "run_case.h"

int main(int count, char** arguments) {
  const std::string_view way = count == 3 ? arguments[1] : "";
  if (way != "late" && way != "early") {
    std::fputs("usage: component_cases late|early FOLDER\n", stderr);
    return 2;
  }
  if (FAILED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))) return 2;
  std::size_t failed = 0;
  try {
    member_cases::OfferCurrentHost();
    member_cases::Calls& calls =
        way == "late" ? member_cases::LateBoundCalls() : member_cases::EarlyBoundCalls();
    const auto cases = member_cases::ReadAllCases(arguments[2]);
    for (const member_cases::Case& one : cases) {
      const std::string difference = member_cases::RunCase(one, calls);
      if (difference.empty()) continue;
      ++failed;
      std::printf("%s\n", difference.c_str());
    }
    std::printf("%zu member cases, %zu failed\n", cases.size(), failed);
    if (cases.empty()) failed = 1;
  } catch (const std::exception& error) {
    std::printf("%s\n", error.what());
    failed = 1;
  }
  std::fflush(stdout);
  // The component keeps what its host lent it: leave without undoing it.
  TerminateProcess(GetCurrentProcess(), failed == 0 ? 0 : 1);
}
