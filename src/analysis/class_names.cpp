// Names classes by the registry, else by their decoders.

#include "analysis/class_names.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdio>

#include "events/class_table.h"
#include "registry/audio_class_registry.h"

namespace sonaprobe {

uint32_t classOf(uint32_t debugid) {
    constexpr uint32_t kClassWord = 0xFFFF0000;
    const bool hasClass = decoderOf(debugid) != nullptr || classWordOf(debugid) == kAudioClassWord;
    return hasClass ? classKeyOf(debugid) : debugid & kClassWord;
}

std::string classNameOf(uint32_t classOfRecords) {
    if (classOfRecords == kAudioServerKey) return "audio server";
    const uint32_t word = classWordOf(classOfRecords);
    if (word != kAudioClassWord) {
        std::array<char, 32> text{};
        std::snprintf(text.data(), text.size(), "class word 0x%04" PRIX32, word);
        return text.data();
    }
    const uint32_t id = classIdOf(classOfRecords);
    const auto entries = AudioClassRegistry::entries();
    const auto entry = std::ranges::find(entries, id, &AudioClassRegistry::Entry::id);
    if (entry != entries.end()) {
        constexpr std::string_view kPrefix = "kAudioT";
        return std::string(entry->name).substr(kPrefix.size());
    }
    const Decoder* const decoder = kClassTable[id];
    return decoder != nullptr ? std::string(decoder->group) : "class " + std::to_string(id);
}

}  // namespace sonaprobe
