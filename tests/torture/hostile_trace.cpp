// Writes a trace that is made to exhaust whoever reads it: hostile-trace KIND COUNT > FILE. As well
// formed as any, but no driver would tell such a story.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string_view>
#include <vector>

#include "record/trace_record.h"

using sonaprobe::TraceRecord;

namespace {

constexpr uint32_t kStart = 1;
constexpr uint32_t kEnd = 2;
constexpr uint32_t kEnable = 0x05245C0C;     // OrvelHDAPath, with an object
constexpr uint32_t kSetFormat = 0x05245C1C;  // the same
constexpr uint32_t kOverload = 0x21040000;   // of the audio server, as are all 0x2104
constexpr uint32_t kIoCycle = 0x21040008;
constexpr uint32_t kClient = 0x2104000C;
constexpr uint32_t kZeroTimeStamp = 0x21040010;
constexpr uint32_t kUnknown = 0x01400004;
constexpr uint64_t kTicks = 24;  // a microsecond
constexpr uint64_t kBegin = 1'000'000 * kTicks;
constexpr uint64_t kMost = UINT64_MAX;

struct Slot {
    uint32_t debugid = 0;
    uint64_t time = 0;
    uint64_t thread = 7;
    uint64_t object = 1;
    uint32_t cpu = 0;
};

void put(const Slot& slot) {
    const TraceRecord record{.timestamp = slot.time,
                             .arg1 = slot.object,
                             .arg2 = slot.time,
                             .arg3 = 0,
                             .arg4 = 0,
                             .arg5 = slot.thread,
                             .debugid = slot.debugid,
                             .cpuid = slot.cpu,
                             .reserved = 0};
    std::fwrite(&record, sizeof record, 1, stdout);
}

void putDivisor(uint64_t ticks) {
    put({.debugid = sonaprobe::kDivisorMarker, .time = ticks, .thread = 0, .object = 0});
}

uint64_t at(uint64_t number) { return kBegin + number * kTicks; }

struct Kind {
    std::string_view name;
    // The slot of this number among `count`.
    Slot (*slot)(uint64_t number, uint64_t count);
};

constexpr Kind kKinds[] = {
    // One thread's calls, each inside the one before; none ends.
    {"nested",
     [](uint64_t n, uint64_t) {
         return Slot{kEnable | kStart, at(n), 7, n};
     }},
    // The same, and all end in order.
    {"nested-ended",
     [](uint64_t n, uint64_t count) {
         return n < count / 2 ? Slot{kEnable | kStart, at(n), 7, n}
                              : Slot{kEnable | kEnd, at(n), 7, count / 2 * 2 - 1 - n};
     }},
    // Two events by turns, so that each level is another event than the one around it.
    {"recursion",
     [](uint64_t n, uint64_t count) {
         const uint64_t level = n < count / 2 ? n : count / 2 * 2 - 1 - n;
         return Slot{(level % 2 == 0 ? kEnable : kSetFormat) | (n < count / 2 ? kStart : kEnd),
                     at(n)};
     }},
    // Ends that match nothing, above calls that stay open.
    {"orphans",
     [](uint64_t n, uint64_t count) {
         return Slot{n < count / 2 ? kEnable | kStart : kSetFormat | kEnd, at(n), 7, n};
     }},
    {"threads",
     [](uint64_t n, uint64_t) {
         return Slot{kEnable | kStart, at(n), n};
     }},
    // A thread's records far from each other, so that none is the last one's.
    {"threads-in-turn",
     [](uint64_t n, uint64_t count) {
         const uint64_t threads = std::max<uint64_t>(1, count / 4);
         return Slot{kEnable | (n / threads % 2 == 0 ? kStart : kEnd), at(n), n % threads};
     }},
    {"objects",
     [](uint64_t n, uint64_t) {
         return Slot{kEnable | (n % 2 == 0 ? kStart : kEnd), at(n), 7, n / 2};
     }},
    {"processors",
     [](uint64_t n, uint64_t) {
         return Slot{kEnable | (n % 2 == 0 ? kStart : kEnd), at(n), 7, 1,
                     static_cast<uint32_t>(n / 2)};
     }},
    {"codes",
     [](uint64_t n, uint64_t) {
         return Slot{static_cast<uint32_t>(kUnknown + n / 2 * 4) | (n % 2 == 0 ? kStart : kEnd),
                     at(n)};
     }},
    {"back",
     [](uint64_t n, uint64_t count) {
         return Slot{kEnable | kStart, at(count - n), 7, n};
     }},
    {"back-in-threads",
     [](uint64_t n, uint64_t count) {
         return Slot{kEnable | kStart, at(count - n), n, n};
     }},
    // From the first moment to the last one and back.
    {"leaps",
     [](uint64_t n, uint64_t) {
         return Slot{kEnable | (n % 4 < 2 ? kStart : kEnd), n % 2 == 0 ? 0 : kMost, n % 3};
     }},
    {"divisors",
     [](uint64_t n, uint64_t) {
         constexpr uint64_t kDivisors[] = {0, kMost, 1, kTicks};
         return n % 2 == 0 ? Slot{sonaprobe::kDivisorMarker, kDivisors[n / 2 % 4], 0, 0}
                           : Slot{kEnable | (n % 4 == 1 ? kStart : kEnd), at(n)};
     }},
    {"one-moment",
     [](uint64_t n, uint64_t) {
         return Slot{kEnable | (n % 2 == 0 ? kStart : kEnd), at(0), 7, 1};
     }},
    // Years between two records.
    {"gaps",
     [](uint64_t n, uint64_t count) {
         return Slot{kEnable | (n % 2 == 0 ? kStart : kEnd), kMost / count * n};
     }},
    // An I/O thread of nothing but dropouts.
    {"dropouts",
     [](uint64_t n, uint64_t) {
         constexpr uint32_t kCodes[] = {kIoCycle | kStart, kOverload | kStart, kIoCycle | kEnd};
         return Slot{kCodes[n % 3], at(n), 7, n};
     }},
    // Overloads of threads that have no cycle.
    {"overloads",
     [](uint64_t n, uint64_t) {
         return Slot{kOverload | kStart, at(n), n, n};
     }},
    // Cycles that all are open, each with a client.
    {"io-threads",
     [](uint64_t n, uint64_t) {
         return Slot{(n % 2 == 0 ? kIoCycle : kClient) | kStart, at(n), n / 2, n};
     }},
    // Threads that were told their next cycle, then another divisor at each slot.
    {"io-threads-divisors",
     [](uint64_t n, uint64_t count) {
         if (n >= count / 2) return Slot{sonaprobe::kDivisorMarker, 1 + n % 2, 0, 0};
         return Slot{kIoCycle | (n % 2 == 0 ? kStart : kEnd), at(n), n / 2, n};
     }},
    // Dropouts of as many threads with cycles, and stamps of as many others.
    {"io-threads-dropouts",
     [](uint64_t n, uint64_t count) {
         const uint64_t thread = n % (count / 8 + 1);
         if (n < count / 4) return Slot{kIoCycle | kStart, at(n), thread, n};
         if (n < count / 2) return Slot{kIoCycle | kEnd, at(n), thread, n};
         return Slot{(n % 2 == 0 ? kOverload : kZeroTimeStamp) | kStart, at(n),
                     n % 4 == 0 ? thread : count + n, n};
     }},
    // One cycle of dropouts and stamps by turns.
    {"dropouts-stamps",
     [](uint64_t n, uint64_t) {
         if (n == 0) return Slot{kIoCycle | kStart, at(n), 7, 1};
         return Slot{(n % 2 == 0 ? kOverload : kZeroTimeStamp) | kStart, at(n), 7, n};
     }},
    // Dropouts while another thread is deep in calls.
    {"dropouts-nested",
     [](uint64_t n, uint64_t count) {
         if (n < count / 2) return Slot{kEnable | kStart, at(n), 8, n};
         return Slot{kOverload | kStart, at(n), 7, n};
     }},
    // Calls of many threads that cover a cycle that is late.
    {"holders",
     [](uint64_t n, uint64_t count) {
         if (n % 4 == 0) return Slot{kIoCycle | (n % 8 == 0 ? kStart : kEnd), at(n), 7, n};
         if (n % 4 == 1) return Slot{kOverload | kStart, at(n), 7, n};
         return Slot{kEnable | (n < count / 2 ? kStart : kEnd), at(n), 8 + n % (count / 4 + 1), 1};
     }},
    {"failures",
     [](uint64_t n, uint64_t) {
         return Slot{0x05245C1C | (n % 2 == 0 ? kStart : kEnd), at(n), n / 2 % 5, 1};
     }},
    {"invalid",
     [](uint64_t n, uint64_t) {
         return n % 2 == 0 ? Slot{sonaprobe::kInvalidMarker, 0, 0, 0} : Slot{kEnable, at(n)};
     }},
};

}  // namespace

int main(int argc, char** argv) {
    if (argc == 1) {
        for (const Kind& kind : kKinds) std::printf("%s\n", kind.name.data());
        return 0;
    }
    const auto kind = std::ranges::find(kKinds, std::string_view(argv[1]), &Kind::name);
    if (argc != 3 || kind == std::end(kKinds)) return 2;
    const uint64_t count = std::strtoull(argv[2], nullptr, 10);
    putDivisor(kTicks);
    for (uint64_t n = 0; n < count; ++n) put(kind->slot(n, count));
    return std::fflush(stdout) == 0 ? 0 : 1;
}
