// Numbers as people read them.

#pragma once

#include <cstdint>
#include <string>

namespace sonaprobe::scope {

// "412 ns", "2.85 ms", "16.9 s", "3.5 min": three digits that matter.
std::string durationText(int64_t nanoseconds);

// A moment of a trace: "12.345 678 s", "-0.000 002 s".
std::string timeText(int64_t nanoseconds);

// "88,452".
std::string countText(uint64_t count);

// "37.5 %", "<0.1 %": of a whole that is not 0.
std::string shareText(double share);

// "0x0000000005245c0c": an address or another 64-bit word.
std::string wordText(uint64_t word);

// "0x5245c0c": the same for people.
std::string shortWordText(uint64_t word);

// "0x05245C0C": an event's code, as the reference of events spells it.
std::string codeText(uint32_t code);

}  // namespace sonaprobe::scope
