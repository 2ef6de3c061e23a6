/* The header in a C program, before any other. */

#include "sonaprobe/sonaprobe.h"

const char* version_from_c(void);
const char* version_from_c(void) { return sonaprobe_version(); }
