/* The limit: a blocking socket and the two exchanges of a reading in strict order, nothing else. */
#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include "wire.h"

static struct arguments arguments;
static pthread_barrier_t start_line;

static int connected(uint16_t port) {
  const int one = 1;
  struct sockaddr_in address;
  const int s = socket(AF_INET, SOCK_STREAM, 0);
  memset(&address, 0, sizeof address);
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (s < 0 || connect(s, (struct sockaddr*)&address, sizeof address) != 0) {
    perror("connect");
    exit(1);
  }
  setsockopt(s, IPPROTO_TCP, TCP_NODELAY, &one, sizeof one);
  return s;
}

/* Sends one line and receives until the reply is complete: a line, or `bytes` bytes where that is not 0. */
static size_t exchange(int s, const char* line, size_t length, char* reply, size_t capacity, size_t bytes) {
  size_t have = 0;
  if (send(s, line, length, MSG_NOSIGNAL) != (ssize_t)length) {
    perror("send");
    exit(1);
  }
  for (;;) {
    const ssize_t got = recv(s, reply + have, capacity - have, 0);
    if (got <= 0) {
      perror("recv");
      exit(1);
    }
    have += (size_t)got;
    if (bytes == 0 ? memchr(reply, '\n', have) != NULL : have >= bytes) return have;
  }
}

static void reading(int s) {
  char reply[4096];
  size_t size = 0;
  do {
    size = exchange(s, "SYST:ERR?\n", 10, reply, sizeof reply, 0);
  } while (size != 13 || memcmp(reply, "0,\"No error\"\n", 13) != 0);
  size = exchange(s, "READ:RF:LEVEL?\n", 15, reply, sizeof reply - 1, 0);
  reply[size] = 0;
  if (strtod(reply, NULL) == 0) exit(1);
}

/* 32 000 bytes behind a definite-length header, and the terminator. */
static void screen(int s) {
  static __thread char block[65536];
  char reply[64];
  exchange(s, "SYST:ERR?\n", 10, reply, sizeof reply, 0);
  exchange(s, "READ:BUFFER:PCX?\n", 17, block, sizeof block, 7 + 32000 + 1);
  if (memcmp(block, "#532000", 7) != 0) exit(1);
}

static void rounds(int s, long count) {
  const int wants_screen = strcmp(arguments.what, "screen") == 0;
  for (long i = 0; i < count; ++i) {
    if (wants_screen) {
      screen(s);
    } else {
      reading(s);
    }
  }
}

static void* client(void* unused) {
  const int s = connected(arguments.port);
  (void)unused;
  rounds(s, arguments.count / 10 + 1);
  pthread_barrier_wait(&start_line); /* all are warm */
  pthread_barrier_wait(&start_line); /* the watch runs */
  rounds(s, arguments.count);
  close(s);
  return NULL;
}

int main(int argc, char** argv) {
  arguments = parse_arguments(argc, argv, "reading screen");
  pthread_t* threads = calloc((size_t)arguments.connections, sizeof *threads);
  pthread_barrier_init(&start_line, NULL, (unsigned)arguments.connections + 1);
  for (int i = 0; i < arguments.connections; ++i) pthread_create(&threads[i], NULL, client, NULL);
  pthread_barrier_wait(&start_line);
  const struct stopwatch watch = start_stopwatch();
  pthread_barrier_wait(&start_line);
  for (int i = 0; i < arguments.connections; ++i) pthread_join(threads[i], NULL);
  report(watch, arguments.count * arguments.connections, -1);
  free(threads);
  return 0;
}
