// How a test puts a device on the bus of the stand-in GPIB library.
#pragma once

extern "C" {

struct StandinDevice {
  void* context;
  void (*write)(void* context, const char* bytes, long size);
  /// Returns how many bytes it gave; sets *end where the last one ends the message.
  long (*read)(void* context, char* bytes, long most, long timeout_us, int* end);
  void (*clear)(void* context);
  void (*go_to_local)(void* context);
};

using StandinAttach = void(int address, const StandinDevice* device);
}
