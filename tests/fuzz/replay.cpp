// Runs a fuzz target over files, where there is no fuzzer: the seeds and old finds as tests.
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

#include "tests/fuzz/input.h"

int main(int argc, char** argv) {
  int run = 0;
  for (int i = 1; i < argc; ++i) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[i])) {
      if (!entry.is_regular_file()) continue;
      std::ifstream file(entry.path(), std::ios::binary);
      const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
      std::cout << entry.path().string() << std::endl;  // a crash then names its file
      LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
      ++run;
    }
  }
  if (run > 0) return 0;
  std::cerr << "there is no seed\n";
  return 1;
}
