// An idle live run without anything but its waiting: the 20 ms sleep, and the lock of a pass's two
// operations on the trace facility, taken and released by each. Runs until it is ended.

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

static void setLock(int file, short type) {
    struct flock lock = {.l_type = type, .l_whence = SEEK_SET, .l_len = 1};
    if (fcntl(file, F_SETLKW, &lock) != 0) exit(1);
}

int main(void) {
    FILE* const file = tmpfile();
    if (file == NULL) return 1;
    for (;;) {
        for (int operation = 0; operation < 2; operation++) {
            setLock(fileno(file), F_WRLCK);
            setLock(fileno(file), F_UNLCK);
        }
        usleep(20000);
    }
}
