// What drivers do in a dropouts trace: tables in the stories' vocabulary, each played by one thread
// when the trace's director says so.

#pragma once

#include <span>

#include "sim/story.h"

namespace sonaprobe::sim {

// The story variable that holds how many ticks the slow step of an act takes.
constexpr uint8_t kHold = 0;

struct DriverAct {
    Table table;
    uint32_t culprit = 0;  // the call that did it: of an engine change the outermost, else the innermost
};

// Calls that hold what others may wait for: a command gate, a lock. As a rule nobody does.
std::span<const DriverAct> gateHolders();

// Calls that stop, pause or reconfigure an engine, or lose its device.
std::span<const DriverAct> engineChanges();

// Short work without a slow step.
std::span<const DriverAct> shortWork();

// Interrupt work: one after the other these fill a processor.
std::span<const DriverAct> interruptWork();

// Calls of the I/O thread itself.
std::span<const DriverAct> ioCalls();

}  // namespace sonaprobe::sim
