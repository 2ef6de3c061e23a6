// The pager, as version control uses it.

#pragma once

#include <sys/types.h>

namespace sonaprobe::scope {

// Starts $SONASCOPE_PAGER, else $PAGER, else less, and puts it in the place of standard output. The
// process to be waited for after standard output has been closed; -1 where there is no pager.
pid_t startPager();

}  // namespace sonaprobe::scope
