// Registers every case twice, typed and by name, and runs them.
#include <gtest/gtest.h>

#include <exception>
#include <iostream>
#include <utility>

#include "calls.h"
#include "case_file.h"
#include "run_case.h"

namespace {

class CaseTest : public testing::Test {
 public:
  CaseTest(const member_cases::Case& one, member_cases::Calls& calls) : case_(one), calls_(calls) {}

  void TestBody() override {
    const std::string difference = member_cases::RunCase(case_, calls_);
    EXPECT_TRUE(difference.empty()) << difference;
  }

 private:
  const member_cases::Case& case_;
  member_cases::Calls& calls_;
};

void Register(const char* way, const std::vector<member_cases::Case>& cases, member_cases::Calls& calls) {
  for (const member_cases::Case& one : cases) {
    testing::RegisterTest(way, (one.file + "." + one.name).c_str(), nullptr, nullptr, __FILE__, __LINE__,
                          [&one, &calls]() -> testing::Test* { return new CaseTest(one, calls); });
  }
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  try {
    static const std::vector<member_cases::Case> kCases = member_cases::ReadAllCases(QKEL4X_CASES);
    Register("Typed", kCases, member_cases::TypedCalls());
    Register("ByName", kCases, member_cases::ByNameCalls());
    std::cout << kCases.size() << " member cases\n";
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
  return RUN_ALL_TESTS();
}
