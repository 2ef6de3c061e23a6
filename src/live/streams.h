// Standard streams that nobody takes bytes from any more.

#pragma once

namespace sonaprobe {

// A descriptor of /dev/null or, in a root without it, of something else that takes no bytes.
int openNowhere();

// Turns a descriptor to there. Safe in a signal handler, as the next.
void turnToNowhere(int descriptor);

// The same of standard output or standard error, by its descriptor, unless it is a file, which
// takes what it is given.
void giveUpStream(int descriptor);

}  // namespace sonaprobe
