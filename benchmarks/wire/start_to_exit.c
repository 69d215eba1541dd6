/* Runs a command COUNT times and reports wall time, CPU time and greatest memory of each run, one line of
   JSON each. A small process does this: the memory of who starts a program counts as the program's own until
   it begins. */
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

static double milliseconds(void) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return (double)now.tv_sec * 1e3 + (double)now.tv_nsec * 1e-6;
}

static double of(struct timeval time) { return (double)time.tv_sec * 1e3 + (double)time.tv_usec * 1e-3; }

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  for (long i = atol(argv[1]); i > 0; --i) {
    int status = 0;
    struct rusage used;
    const double begin = milliseconds();
    const pid_t child = fork();
    if (child == 0) {
      dup2(open("/dev/null", O_WRONLY), 1);
      execv(argv[2], argv + 2);
      _exit(127);
    }
    if (child < 0 || wait4(child, &status, 0, &used) != child || status != 0) return 1;
    printf("{\"wall\": %.3f, \"cpu\": %.3f, \"kib\": %ld}\n", milliseconds() - begin,
           of(used.ru_utime) + of(used.ru_stime), used.ru_maxrss);
  }
  return 0;
}
