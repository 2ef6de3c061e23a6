// An idle live run without anything but its waiting: the 20 ms sleep, and the locks of a pass's two
// looks at the trace facility, each taken and released, and the owner's asked for once. Runs until
// it is ended.

#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

enum { operationByte, ownerByte };

static void setLock(int file, off_t byte, short type) {
    struct flock lock = {.l_type = type, .l_whence = SEEK_SET, .l_start = byte, .l_len = 1};
    if (fcntl(file, F_SETLKW, &lock) != 0) exit(1);
}

int main(void) {
    FILE* const file = tmpfile();
    if (file == NULL) return 1;
    for (;;) {
        for (int look = 0; look < 2; look++) {
            setLock(fileno(file), operationByte, F_WRLCK);
            if (look == 1) setLock(fileno(file), ownerByte, F_WRLCK);
            setLock(fileno(file), operationByte, F_UNLCK);
        }
        usleep(20000);
    }
}
