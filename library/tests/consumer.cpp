// A program outside this project: goes on line with the simulated front panel and reads the level.
#include <cmath>
#include <cstdio>

#include "automation/call.h"
#include "driver/clsKEL4x.h"
#include "host/automation_error.h"
#include "workbench/workbench.h"

int main() {
  workbench::Workbench bench({.virtual_clock = true});
  host::SetCurrentHost(&bench);
  int status = 1;
  try {
    qkel4x::clsKEL4x driver;
    driver.Settings()->Item("Remote Control")->SetValue(std::string("QPort.clsGUI"), -1, -1);
    driver.OnLine(true);
    const double typed = driver.MeasureRfLevel();
    const double named = std::get<double>(automation::Get(driver, "MeasureRfLevel"));
    std::printf("%g dBm typed, %g by name\n", typed, named);
    if (driver.OnLine() && typed < -20.0 && std::fabs(typed - named) < 2.0) status = 0;
    driver.Mode(qkel4x::kelNTSC);
    status = 2;
  } catch (const host::AutomationError& error) {
    // An error of the library must be caught as what it is.
    std::printf("%s\n", error.what());
    if (error.Code() != 380) status = 3;
  }
  host::SetCurrentHost(nullptr);
  return status;
}
