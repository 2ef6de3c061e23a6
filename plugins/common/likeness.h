// Whether a file is a raw file, as its first records tell.

#pragma once

namespace sonaprobe::plugins {

// 0: nothing speaks for it, or it cannot be looked at without being used up, as a pipe; up to 0.95,
// where a divisor comes first and all records are known.
double likenessOf(const char* path);

}  // namespace sonaprobe::plugins
