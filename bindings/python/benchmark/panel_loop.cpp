// A reading over the embedded front panel through the typed C++ call, as often as asked. Prints the seconds
// of wall time and of CPU time. Argument: count.
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <iostream>
#include <string>

#include "driver/clsKEL4x.h"
#include "workbench/workbench.h"

int main(int argc, char** argv) {
  if (argc != 2) return 1;
  // As open("SIM") has it in Python.
  workbench::Workbench bench({.virtual_clock = true});
  host::SetCurrentHost(&bench);
  qkel4x::clsKEL4x driver;
  driver.Settings()->Item("Remote Control")->SetValue(std::string("QPort.clsGUI"), -1, -1);
  driver.Settings()->Item("Log Messages")->SetValue(std::string("No"), -1, -1);
  driver.OnLine(true);
  if (!driver.OnLine() || driver.MeasureRfLevel() == 0) return 2;
  const int count = std::atoi(argv[1]);
  double sum = 0;
  const std::clock_t cpu = std::clock();
  const auto wall = std::chrono::steady_clock::now();
  for (int i = 0; i < count; ++i) sum += driver.MeasureRfLevel();
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - wall;
  std::cout << passed.count() << ' ' << static_cast<double>(std::clock() - cpu) / CLOCKS_PER_SEC << '\n';
  return sum == 0 ? 3 : 0;
}
