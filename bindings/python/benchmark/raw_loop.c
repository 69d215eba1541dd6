// A reading over a bare socket, as often as asked: the error query and the level query, one after the other.
// Prints the seconds of wall time and of CPU time. Arguments: port, count.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <time.h>
#include <unistd.h>

static char buffer[65536];

static double now(clockid_t clock) {
  struct timespec at;
  clock_gettime(clock, &at);
  return (double)at.tv_sec + (double)at.tv_nsec / 1e9;
}

static void exchange(int link, const char* line, size_t size) {
  if (send(link, line, size, 0) != (ssize_t)size) exit(2);
  size_t have = 0;
  do {
    const ssize_t got = recv(link, buffer + have, sizeof buffer - have, 0);
    if (got <= 0) exit(3);
    have += (size_t)got;
  } while (buffer[have - 1] != '\n');
}

int main(int argc, char** argv) {
  if (argc < 3) return 1;
  struct sockaddr_in to = {.sin_family = AF_INET, .sin_port = htons((unsigned short)atoi(argv[1]))};
  to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const int link = socket(AF_INET, SOCK_STREAM, 0);
  const int on = 1;
  setsockopt(link, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  if (connect(link, (struct sockaddr*)&to, sizeof to) != 0) return 4;
  const double wall = now(CLOCK_MONOTONIC), cpu = now(CLOCK_PROCESS_CPUTIME_ID);
  for (int i = 0; i < atoi(argv[2]); ++i) {
    exchange(link, "SYST:ERR?\n", 10);
    exchange(link, "READ:RF:LEVEL?\n", 15);
  }
  printf("%.9f %.9f\n", now(CLOCK_MONOTONIC) - wall, now(CLOCK_PROCESS_CPUTIME_ID) - cpu);
  close(link);
  return 0;
}
