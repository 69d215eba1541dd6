// Creates the component's classes by name where nothing is registered: this program's manifest names the
// assembly.
#include <cstdio>

#include "qkel4x.h"

int main() {
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  CLSID class_id{};
  _clsStatistics* statistics = nullptr;
  HRESULT result = CLSIDFromProgID(L"QKEL4x.clsStatistics", &class_id);
  if (SUCCEEDED(result)) {
    result = CoCreateInstance(class_id, nullptr, CLSCTX_INPROC_SERVER, __uuidof(_clsStatistics),
                              reinterpret_cast<void**>(&statistics));
  }
  double count = 1.0;
  if (SUCCEEDED(result)) result = statistics->get_CorrCntBeforeRs(&count);
  std::printf("0x%08lX %g\n", static_cast<unsigned long>(result), count);
  if (statistics != nullptr) statistics->Release();
  CoUninitialize();
  return SUCCEEDED(result) && count == 0.0 ? 0 : 1;
}
