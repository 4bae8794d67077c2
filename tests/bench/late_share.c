/* Lets a share answer late: loaded into the Wine server, which opens all files of all programs, it
 * waits before each opening below the folder that TRELV_LATE_FOLDER names, for half a millisecond.
 *
 *   cc -shared -fPIC -O2 late_share.c -o late_share.so
 *   LD_PRELOAD=late_share.so TRELV_LATE_FOLDER=FOLDER wineserver -p
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdlib.h>
#include <string.h>
#include <sys/types.h>
#include <time.h>

static const struct timespec kLateness = {0, 500000};

static void waitForShare(const char *path) {
  const char *folder = getenv("TRELV_LATE_FOLDER");
  if (folder != NULL && strncmp(path, folder, strlen(folder)) == 0) {
    clock_nanosleep(CLOCK_MONOTONIC, 0, &kLateness, NULL);
  }
}

typedef int Open(const char *, int, ...);

static int openLate(const char *name, const char *path, int flags, mode_t mode) {
  waitForShare(path);
  return ((Open *)dlsym(RTLD_NEXT, name))(path, flags, mode);
}

/* The mode stands behind the flags where a file may be made; else there is nothing to read, and what
 * is handed on is not looked at. */
static mode_t modeOf(int flags, va_list more) {
  return (flags & (O_CREAT | O_TMPFILE)) != 0 ? va_arg(more, mode_t) : 0;
}

int open(const char *path, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = modeOf(flags, more);
  va_end(more);
  return openLate("open", path, flags, mode);
}

int open64(const char *path, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = modeOf(flags, more);
  va_end(more);
  return openLate("open64", path, flags, mode);
}
