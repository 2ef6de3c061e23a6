// An idle live run without anything but its waiting: the 20 ms sleep, and around each of a pass's
// two looks at the trace facility a lock of a file and its release. Runs until it is ended.

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

static void setLock(int file, short type) {
    struct flock lock = {.l_type = type, .l_whence = SEEK_SET, .l_start = 0, .l_len = 1};
    if (fcntl(file, F_SETLKW, &lock) != 0) exit(1);
}

int main(void) {
    FILE* const file = tmpfile();
    if (file == NULL) return 1;
    for (;;) {
        for (int look = 0; look < 2; look++) {
            setLock(fileno(file), F_WRLCK);
            setLock(fileno(file), F_UNLCK);
        }
        usleep(20000);
    }
}
