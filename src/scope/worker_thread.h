// Threads beside the one that reads and writes.

#pragma once

#include <functional>
#include <thread>

namespace sonaprobe::scope {

// A thread that no signal comes to. They are left to the one that writes: it removes the file that
// it has not finished, and holds them back for a moment where it could not.
std::thread workerThread(std::function<void()> work);

}  // namespace sonaprobe::scope
