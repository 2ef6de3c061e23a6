// What the texts of each event answer, gathered once from the decoders' tables.

#include "analysis/event_traits.h"

#include <array>

#include "analysis/event_tables.h"

namespace sonaprobe {

namespace {

// By event number, of each class, and of the audio server after them.
constexpr size_t kServer = 64;
using Qualifiers = std::array<std::array<uint8_t, 256>, kServer + 1>;

constexpr size_t classOf(uint32_t code) {
    return classWordOf(code) == kAudioClassWord ? classIdOf(code) : kServer;
}

Qualifiers gather() {
    Qualifiers answered{};
    forEachEvent([&](const Decoder&, const Row& event, std::span<const Row> texts) {
        uint8_t& qualifiers = answered[classOf(event.code)][eventNumberOf(event.code)];
        for (const Row& text : texts) qualifiers |= text.qualifiers;
    });
    return answered;
}

uint8_t answeredBy(uint32_t code) {
    static const Qualifiers answered = gather();
    return decoderOf(code) == nullptr ? uint8_t{0} : answered[classOf(code)][eventNumberOf(code)];
}

}  // namespace

bool startsArePoints(uint32_t code) { return (answeredBy(code) & (kOnStart | kOnEnd)) == kOnStart; }

bool tracesBothEnds(uint32_t code) {
    constexpr uint8_t kBoth = kOnStart | kOnEnd;
    return (answeredBy(code) & kBoth) == kBoth;
}

}  // namespace sonaprobe
