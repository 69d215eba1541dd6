// A GPIB library of the NI-488.2 shape that answers each call with whatever it is fed: status bits, error
// numbers and counts that a sound library would never report.
#include "tests/fuzz/status_gpib.h"

#include <algorithm>
#include <cstring>

namespace {

const std::uint8_t* fed = nullptr;
std::size_t left = 0;

int Next() {
  if (left == 0) return 0;
  --left;
  return *fed++;
}

}  // namespace

#define EXPORTED __attribute__((visibility("default")))

extern "C" {

EXPORTED int ibsta = 0;
EXPORTED int iberr = 0;
EXPORTED int ibcnt = 0;

static int Answer() {
  ibsta = Next() << 8;
  iberr = Next() - 16;
  // One byte gives plausible counts; the largest values stand for absurd ones.
  const int count = Next();
  ibcnt = count < 250 ? count : (count - 253) * 0x10000000;
  return ibsta;
}

EXPORTED void status_feed(const std::uint8_t* data, std::size_t size) {
  fed = data;
  left = size;
}

EXPORTED int ibdev(int, int, int, int, int, int) {
  Answer();
  return 1;
}
EXPORTED int ibwrt(int, const void*, long size) {
  Answer();
  // Without input left the library is a sound one, so that a transfer comes to its end.
  if (left == 0) {
    ibsta = 0x0100;
    ibcnt = static_cast<int>(size);
  }
  return ibsta;
}
EXPORTED int ibrd(int, void* bytes, long most) {
  Answer();
  if (left == 0) {
    ibsta = 0x8000;
    iberr = 0;
  }
  const std::size_t size =
      std::min({static_cast<std::size_t>(std::max(ibcnt, 0)), static_cast<std::size_t>(most), left});
  if (size > 0) std::memcpy(bytes, fed, size);
  return ibsta;
}
EXPORTED int ibtmo(int, int) { return Answer(); }
EXPORTED int ibclr(int) { return Answer(); }
EXPORTED int ibloc(int) { return Answer(); }
EXPORTED int ibonl(int, int) { return Answer(); }
}
