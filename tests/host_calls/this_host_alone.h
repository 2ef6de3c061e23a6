/* Takes away what the C library of this host has and others lack, for the preset "host", which
 * includes this before each source. The C library's headers are read before their names go; a macro
 * is undefined instead, for a source may ask for it. */

#pragma once

#include <errno.h>
#include <fcntl.h>
#include <getopt.h>
#include <poll.h>
#include <pthread.h>
#include <sched.h>
#include <semaphore.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/types.h>
#include <sys/uio.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#undef CLOCK_BOOTTIME
#undef CLOCK_MONOTONIC_COARSE
#undef CLOCK_REALTIME_COARSE
#undef F_ADD_SEALS
#undef F_GETPIPE_SZ
#undef F_SETPIPE_SZ
#undef MAP_POPULATE
#undef O_DIRECT
#undef O_PATH
#undef O_TMPFILE
#undef POLLRDHUP
#undef TEMP_FAILURE_RETRY

#pragma GCC poison accept4 asprintf canonicalize_file_name clearerr_unlocked copy_file_range dup3
#pragma GCC poison epoll_create1 error_at_line euidaccess eventfd execvpe explicit_bzero fallocate
#pragma GCC poison fflush_unlocked fgets_unlocked fopencookie fputs_unlocked fread_unlocked
#pragma GCC poison fwrite_unlocked get_current_dir_name get_nprocs getauxval getrandom gettid
#pragma GCC poison inotify_init1 memfd_create mempcpy memrchr mkostemp mremap pipe2 ppoll prctl
#pragma GCC poison preadv2 program_invocation_name program_invocation_short_name
#pragma GCC poison pthread_setaffinity_np pthread_timedjoin_np rawmemchr renameat2
#pragma GCC poison sched_getcpu sched_setaffinity secure_getenv signalfd splice statx strchrnul
#pragma GCC poison strerrordesc_np strverscmp sync_file_range syncfs tee timerfd_create
#pragma GCC poison unshare vmsplice
