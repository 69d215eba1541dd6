/* The same two exchanges through liblxi on a raw TCP socket, as a peer. */
#include <lxi.h>

#include "wire.h"

static int device;

static int query(const char* line, char* reply, int capacity) {
  if (lxi_send(device, line, (int)strlen(line), 5000) < 0) exit(1);
  const int size = lxi_receive(device, reply, capacity - 1, 5000);
  if (size <= 0) exit(1);
  reply[size] = 0;
  return size;
}

static void rounds(long count, int screen) {
  static char reply[65536];
  for (long i = 0; i < count; ++i) {
    while (query("SYST:ERR?\n", reply, sizeof reply) != 13) {
    }
    if (screen) {
      int have = query("READ:BUFFER:PCX?\n", reply, sizeof reply);
      while (have < 7 + 32000 + 1) {
        const int more = lxi_receive(device, reply + have, (int)sizeof reply - have, 5000);
        if (more <= 0) exit(1);
        have += more;
      }
    } else {
      query("READ:RF:LEVEL?\n", reply, sizeof reply);
      if (strtod(reply, NULL) == 0) exit(1);
    }
  }
}

int main(int argc, char** argv) {
  const struct arguments asked = parse_arguments(argc, argv, "reading screen");
  const int screen = strcmp(asked.what, "screen") == 0;
  lxi_init();
  device = lxi_connect("127.0.0.1", asked.port, NULL, 5000, RAW);
  if (device < 0) return 1;
  rounds(asked.count / 10 + 1, screen);
  const struct stopwatch watch = start_stopwatch();
  rounds(asked.count, screen);
  report(watch, asked.count, -1);
  lxi_disconnect(device);
  return 0;
}
