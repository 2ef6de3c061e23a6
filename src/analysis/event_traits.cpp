// The events whose starts are points, gathered from the decoders' tables.

#include "analysis/event_traits.h"

#include <bitset>
#include <memory>

#include "events/class_table.h"
#include "events/decoders/decoders.h"

namespace sonaprobe {

namespace {

constexpr uint32_t kServerKey = 0x21040000;
constexpr size_t kClasses = 64;
constexpr size_t kEventsOfClass = 256;

using PointEvents = std::bitset<(kClasses + 1) * kEventsOfClass>;

// The server's events stand after those of the classes.
size_t placeOf(size_t classId, uint32_t code) {
    return classId * kEventsOfClass + eventNumberOf(code);
}

void gather(PointEvents& points, const Decoder& decoder, size_t classId) {
    for (size_t i = 0; i < decoder.rows.size(); ++i) {
        if (!decoder.rows[i].isEvent()) continue;
        uint8_t qualifiers = 0;
        for (size_t n = i + 1; n < decoder.rows.size() && !decoder.rows[n].isEvent(); ++n) {
            qualifiers |= decoder.rows[n].qualifiers;
        }
        points[placeOf(classId, decoder.rows[i].code)] =
            (qualifiers & kOnStart) != 0 && (qualifiers & kOnEnd) == 0;
    }
}

PointEvents gatherAll() {
    PointEvents points;
    for (size_t classId = 0; classId < kClasses; ++classId) {
        if (kClassTable[classId] != nullptr) gather(points, *kClassTable[classId], classId);
    }
    gather(points, decoders::kAudioServer, kClasses);
    return points;
}

}  // namespace

bool startsArePoints(uint32_t code) {
    static const PointEvents points = gatherAll();
    if (classWordOf(code) == kAudioClassWord) return points[placeOf(classIdOf(code), code)];
    if ((code & ~0x3FFU) == kServerKey) return points[placeOf(kClasses, code)];
    return false;
}

}  // namespace sonaprobe
