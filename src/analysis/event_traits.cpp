// The events whose starts are points, gathered once from the decoders' tables.

#include "analysis/event_traits.h"

#include <array>
#include <bitset>

#include "analysis/event_tables.h"

namespace sonaprobe {

namespace {

// By event number, of each class, and of the audio server after them.
constexpr size_t kServer = 64;
using PointEvents = std::array<std::bitset<256>, kServer + 1>;

constexpr size_t classOf(uint32_t code) {
    return classWordOf(code) == kAudioClassWord ? classIdOf(code) : kServer;
}

PointEvents gather() {
    PointEvents points;
    forEachEvent([&](const Decoder&, const Row& event, std::span<const Row> texts) {
        uint8_t qualifiers = 0;
        for (const Row& text : texts) qualifiers |= text.qualifiers;
        points[classOf(event.code)][eventNumberOf(event.code)] =
            (qualifiers & kOnStart) != 0 && (qualifiers & kOnEnd) == 0;
    });
    return points;
}

}  // namespace

bool startsArePoints(uint32_t code) {
    static const PointEvents points = gather();
    return decoderOf(code) != nullptr && points[classOf(code)][eventNumberOf(code)];
}

}  // namespace sonaprobe
