// Directs the I/O threads and the driver threads, and writes down what was planted.

#include "sim/dropouts/dropouts_trace.h"

#include <algorithm>
#include <cinttypes>
#include <cstdarg>
#include <cstdio>

#include "events/class_table.h"
#include "events/decoders/decoders.h"
#include "sim/dropouts/driver_pool.h"
#include "sim/dropouts/io_thread.h"
#include "sim/dropouts/score.h"
#include "sim/stories/codes.h"

namespace sonaprobe::sim {
namespace {

constexpr uint64_t kTicksPerMicrosecond = kTicksPerSecond / 1'000'000;
constexpr uint64_t kQuietCycles = 40;     // at the beginning and at the end
constexpr uint64_t kHealthyCycles = 400;  // of a thread that has no faults
constexpr uint64_t kLeastApart = 8;       // cycles between two faults of a thread
constexpr uint64_t kMostApart = 30;
constexpr Ticks kRoomForGap = ms(120);  // around lost records, for other threads' faults

[[gnu::format(printf, 2, 3)]] void append(std::string& text, const char* format, ...) {
    char buffer[512];
    va_list values;
    va_start(values, format);
    const int length = std::vsnprintf(buffer, sizeof buffer, format, values);
    va_end(values);
    text.append(buffer, static_cast<size_t>(length));
}

// Whether a fault at that time would spoil, or be spoilt by, what is there already.
bool isCrowded(const Studio& studio, Cause cause, Ticks time) {
    const auto isNear = [&](Ticks other) {
        return time < other + kRoomForGap && other < time + kRoomForGap;
    };
    if (std::ranges::any_of(studio.lost, isNear, &LostStretch::begin)) return true;
    if (cause != Cause::lostRecords) return false;
    return std::ranges::any_of(studio.planted, [&](const Planted& planted) {
        return isNear(studio.score.at(planted.overload).timestamp - kTraceOrigin);
    });
}

// Plays a thread until its faults have happened, and on to `atLeast`. Returns when it ended.
Ticks playThread(Studio& studio, uint32_t number, std::span<const Cause> faults, Ticks atLeast) {
    IoThread thread(studio, number);
    thread.begin();
    uint64_t healthy = faults.empty() ? kHealthyCycles : kQuietCycles;
    size_t next = 0;
    while (next < faults.size() || healthy > 0 || thread.time() < atLeast) {
        const bool isDue =
            next < faults.size() && healthy == 0 && !isCrowded(studio, faults[next], thread.time());
        if (!isDue) {
            thread.playCycle({});
            healthy -= healthy > 0 ? 1 : 0;
        } else if (thread.playCycle(faults[next])) {
            next++;
            healthy =
                next < faults.size() ? studio.score.chance(kLeastApart, kMostApart) : kQuietCycles;
        }
    }
    thread.end();
    return thread.time();
}

struct Name {
    std::string_view driver;
    std::string_view method;
};

Name nameOf(uint32_t code) {
    const bool ofServer = classWordOf(code) != kAudioClassWord;
    const Decoder* decoder = ofServer ? &decoders::kAudioServer : kClassTable.at(classIdOf(code));
    for (size_t i = 0; decoder != nullptr && i + 1 < decoder->rows.size(); i++) {
        // An event's name is that of its first text.
        if (decoder->rows[i].isEvent() && decoder->rows[i].code == code) {
            const Row& text = decoder->rows[i + 1];
            const std::string_view name = decoder->text(text.name).view();
            return {name.substr(0, text.groupLength), name.substr(text.groupLength + 2)};
        }
    }
    return {};
}

void appendCulprit(std::string& truth, const TraceRecord& record, uint64_t slot) {
    const uint32_t code = codeOf(record.debugid);
    const Name name = nameOf(code);
    append(truth,
           "{\"driver\": \"%.*s\", \"method\": \"%.*s\", \"code\": \"0x%08" PRIx32
           "\", \"thread\": \"0x%" PRIx64 "\", \"cpu\": %" PRIu32 ", \"slot\": %" PRIu64 "}",
           static_cast<int>(name.driver.size()), name.driver.data(),
           static_cast<int>(name.method.size()), name.method.data(), code, record.arg5,
           record.cpuid, slot);
}

DropoutsTrace assemble(const DropoutsPlan& plan, Studio& studio) {
    constexpr uint64_t kLostSlot = 0;  // the divisor's, which no record has
    const std::vector<Ticket> order = studio.score.inOrder();
    std::vector<uint64_t> slotOf(studio.score.size(), kLostSlot);
    DropoutsTrace trace;
    TraceRecord divisor{};
    divisor.timestamp = kTicksPerMicrosecond;
    divisor.debugid = kDivisorMarker;
    trace.slots.push_back(divisor);
    for (const Ticket ticket : order) {
        slotOf[ticket] = trace.slots.size();
        trace.slots.push_back(studio.score.at(ticket));
    }
    std::ranges::sort(studio.planted, {}, [&](const Planted& p) { return slotOf[p.overload]; });

    std::string& truth = trace.truth;
    append(truth,
           "{\n  \"version\": 1,\n  \"level\": \"%s\",\n  \"seed\": %" PRIu64
           ",\n  \"dropouts\": [",
           plan.level->name.data(), plan.seed);
    const char* separator = "\n";
    for (const Planted& planted : studio.planted) {
        append(truth,
               "%s    {\"slot\": %" PRIu64 ", \"thread\": \"0x%" PRIx64
               "\", \"cause\": \"%s\", \"culprit\": ",
               separator, slotOf[planted.overload], studio.score.at(planted.overload).arg5,
               nameOf(planted.cause).data());
        separator = ",\n";
        if (planted.lostUntil != 0) {
            const auto first = std::ranges::find_if(order, [&](Ticket ticket) {
                return studio.score.at(ticket).timestamp >= kTraceOrigin + planted.lostUntil;
            });
            append(truth, "{\"slot\": %" PRIu64 "}", slotOf[*first]);
        } else if (planted.culprit != kNoTicket) {
            appendCulprit(truth, studio.score.at(planted.culprit), slotOf[planted.culprit]);
        } else {
            truth += "null";
        }
        truth += '}';
    }
    truth += "\n  ]\n}\n";
    return trace;
}

}  // namespace

DropoutsTrace makeDropoutsTrace(const DropoutsPlan& plan) {
    Score score(plan.seed);
    const Level& level = *plan.level;
    DriverPool drivers(score, level);
    Studio studio{.score = score, .drivers = drivers, .level = level};
    if (level.otherClock != 0 && score.oneIn(level.otherClock)) {
        studio.hostOffset = score.chance(ms(50), ms(100'000));
    }
    std::vector<std::vector<Cause>> faults(level.ioThreads);
    for (uint64_t i = 0; i < plan.count; i++) {
        faults[i % level.ioThreads].push_back(plan.causes[i % plan.causes.size()]);
    }
    // Which thread has which causes is left to chance.
    for (size_t i = plan.count; i > 1; i--) {
        const size_t other = score.chance(0, i - 1);
        std::swap(faults[(i - 1) % level.ioThreads][(i - 1) / level.ioThreads],
                  faults[other % level.ioThreads][other / level.ioThreads]);
    }
    Ticks end = 0;
    for (uint32_t number = 0; number < level.ioThreads; number++) {
        end = std::max(end, playThread(studio, number, faults[number], end));
    }
    drivers.fill(end);
    score.disorder(level.disordered, us(2500));
    return assemble(plan, studio);
}

}  // namespace sonaprobe::sim
