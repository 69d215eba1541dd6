/* What the clients of the wire benchmarks share: arguments, clocks and the line that they report. C and C++.
 */
#pragma once

#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

/* CLIENT PORT WHAT COUNT [CONNECTIONS]: how often each of the connections, one thread each, does WHAT. */
struct arguments {
  uint16_t port;
  const char* what;
  long count;
  int connections;
};

static inline struct arguments parse_arguments(int argc, char** argv, const char* offered) {
  struct arguments a;
  if (argc != 4 && argc != 5) {
    fprintf(stderr, "usage: %s PORT WHAT COUNT [CONNECTIONS]\n  WHAT is one of: %s\n", argv[0], offered);
    exit(2);
  }
  a.port = (uint16_t)atoi(argv[1]);
  a.what = argv[2];
  a.count = atol(argv[3]);
  a.connections = argc == 5 ? atoi(argv[4]) : 1;
  return a;
}

static inline double seconds_of(clockid_t clock) {
  struct timespec now;
  clock_gettime(clock, &now);
  return (double)now.tv_sec + (double)now.tv_nsec * 1e-9;
}

struct stopwatch {
  double wall;
  double cpu;
};

static inline struct stopwatch start_stopwatch(void) {
  struct stopwatch s;
  s.wall = seconds_of(CLOCK_MONOTONIC);
  s.cpu = seconds_of(CLOCK_PROCESS_CPUTIME_ID);
  return s;
}

/* Microseconds of wall time and of CPU for each of `done` rounds, and allocations where they were counted
   (negative where not), as one line of JSON. */
static inline void report(struct stopwatch since, long done, double allocations) {
  const double wall = seconds_of(CLOCK_MONOTONIC) - since.wall;
  const double cpu = seconds_of(CLOCK_PROCESS_CPUTIME_ID) - since.cpu;
  printf("{\"wall\": %.4f, \"cpu\": %.4f", wall * 1e6 / (double)done, cpu * 1e6 / (double)done);
  if (allocations >= 0) printf(", \"allocations\": %.4f", allocations);
  printf("}\n");
}
