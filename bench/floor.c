// The least that printing can cost: writes a file's bytes from memory to standard output, in pieces
// of 64 KiB, and prints on standard error how many nanoseconds the writes took: of the wall clock,
// then of the processor.

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

static long long nanoseconds(clockid_t clock) {
    struct timespec time;
    clock_gettime(clock, &time);
    return time.tv_sec * 1000000000LL + time.tv_nsec;
}

static char* readAll(const char* path, size_t* size) {
    struct stat status;
    const int file = open(path, O_RDONLY);
    if (file < 0 || fstat(file, &status) != 0) return NULL;
    *size = (size_t)status.st_size;
    char* const bytes = malloc(*size);
    for (size_t have = 0; bytes != NULL && have < *size;) {
        const ssize_t got = read(file, bytes + have, *size - have);
        if (got <= 0) return NULL;
        have += (size_t)got;
    }
    close(file);
    return bytes;
}

int main(int argc, char** argv) {
    const size_t piece = 65536;
    size_t size = 0;
    char* const bytes = argc == 2 ? readAll(argv[1], &size) : NULL;
    if (bytes == NULL) {
        fputs("usage: floor FILE\n", stderr);
        return 1;
    }
    const long long wall = nanoseconds(CLOCK_MONOTONIC);
    const long long processor = nanoseconds(CLOCK_PROCESS_CPUTIME_ID);
    for (size_t done = 0; done < size;) {
        const size_t left = size - done;
        const ssize_t now = write(STDOUT_FILENO, bytes + done, left < piece ? left : piece);
        if (now <= 0) return 1;
        done += (size_t)now;
    }
    fprintf(stderr, "%lld %lld\n", nanoseconds(CLOCK_MONOTONIC) - wall,
            nanoseconds(CLOCK_PROCESS_CPUTIME_ID) - processor);
    free(bytes);
    return 0;
}
