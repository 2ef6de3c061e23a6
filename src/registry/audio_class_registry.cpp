// The registry's table, its listing, and the resolution of class arguments.

#include "registry/audio_class_registry.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

namespace sonaprobe {

namespace {

// clang-format off
struct SourceRow {
    uint32_t id;
    char code[5];
    const char* name;
};

// Id 28 stands twice; the first row of an id is the one that counts.
constexpr SourceRow kSourceTable[] = {
    {0, "hhda", "kAudioTOrvelHDAHistoric"},
    {1, "ioac", "kAudioTPlexoControl"},
    {2, "iouc", "kAudioTPlexoControlUserClient"},
    {3, "ioad", "kAudioTPlexoDevice"},
    {4, "ioae", "kAudioTPlexoEngine"},
    {5, "ioec", "kAudioTPlexoEngineUserClient"},
    {6, "iolc", "kAudioTPlexoLevelControl"},
    {7, "ioap", "kAudioTPlexoPort"},
    {8, "iosc", "kAudioTPlexoSelectorControl"},
    {9, "ioas", "kAudioTPlexoStream"},
    {10, "iotc", "kAudioTPlexoToggleControl"},
    {11, "itif", "kAudioTPlexoTimeIntervalFilter"},
    {20, "hdac", "kAudioTOrvelHDAController"},
    {21, "hdad", "kAudioTOrvelHDADriver"},
    {22, "hdae", "kAudioTOrvelHDAEngine"},
    {23, "hdap", "kAudioTOrvelHDAPath"},
    {24, "hdcg", "kAudioTOrvelHDACodecGeneric"},
    {25, "hdan", "kAudioTOrvelHDANode"},
    {26, "hdaf", "kAudioTOrvelHDAFunctionGroup"},
    {27, "hdaw", "kAudioTOrvelHDAWidget"},
    {28, "hdeo", "kAudioTOrvelHDAEngineOutput"},
    {28, "hddp", "kAudioTOrvelHDAEngineOutputDP"},
    {29, "hdps", "kAudioTOrvelHDAPathSet"},
    {30, "hdei", "kAudioTOrvelHDAEngineInput"},
    {31, "hdfb", "kAudioTOrvelHDAFrameBuffer"},
    {32, "htdm", "kAudioTOrvelHDATDM"},
    {35, "usbd", "kAudioTOrvelUSBAudioDevice"},
    {36, "usbD", "kAudioTOrvelUSBAudioDictionary"},
    {37, "usbe", "kAudioTOrvelUSBAudioEngine"},
    {38, "usbs", "kAudioTOrvelUSBAudioStream"},
    {39, "usbp", "kAudioTOrvelUSBAudioPlugin"},
    {40, "usbc", "kAudioTOrvelUSBAudioControlInterface"},
    {41, "usb2", "kAudioTOrvelUSBAudioPlexo2"},
    {42, "nimb", "kAudioTOrvelNimbrelKite"},
    {43, "aeae", "kAudioTOrvelEmbeddedAudio"},
    {44, "piml", "kAudioTOrvelPimlet"},
    {45, "ae47", "kAudioTOrvelEmbeddedAudioZ47"},
};
// clang-format on

// The first character is taken as unsigned, the others as signed bytes: one of 0x80 and above sets
// all bits above it, and the value is no class's code.
constexpr uint32_t packCode(const char* text) {
    const auto signedByte = [](char c) {
        return static_cast<uint32_t>(static_cast<int32_t>(static_cast<signed char>(c)));
    };
    return static_cast<uint32_t>(static_cast<unsigned char>(text[0])) << 24 |
           signedByte(text[1]) << 16 | signedByte(text[2]) << 8 | signedByte(text[3]);
}

struct Entries {
    std::array<AudioClassRegistry::Entry, std::size(kSourceTable)> list{};
    size_t count = 0;
};

constexpr Entries kEntries = [] {
    Entries entries;
    for (const SourceRow& row : kSourceTable) {
        const bool known = entries.count > 0 && entries.list[entries.count - 1].id == row.id;
        if (!known) entries.list[entries.count++] = {row.id, packCode(row.code), row.name};
    }
    return entries;
}();

static_assert(std::ranges::is_sorted(kSourceTable, {}, &SourceRow::id));

}  // namespace

std::span<const AudioClassRegistry::Entry> AudioClassRegistry::entries() {
    return std::span(kEntries.list).first(kEntries.count);
}

void AudioClassRegistry::ListClasses() {
    std::fputs("\tSupported Audio classes\n", stderr);
    for (const Entry& entry : entries()) {
        const auto byte = [&](unsigned shift) {
            return static_cast<int>(entry.code >> shift & 0xFF);
        };
        std::fprintf(stderr, "\t%u\t|\t'%c%c%c%c'\t|\t%s\n", entry.id, byte(24), byte(16), byte(8),
                     byte(0), entry.name);
    }
}

uint32_t AudioClassRegistry::ResolveClassArgument(const char* text) {
    const std::string_view given = text;
    if (given.size() == 4) {
        const auto found = std::ranges::find(entries(), packCode(text), &Entry::code);
        if (found != entries().end()) return found->id;
    } else if (std::ranges::all_of(given, [](char c) { return c >= '0' && c <= '9'; })) {
        return static_cast<uint32_t>(std::strtoull(text, nullptr, 0));  // 0 for an empty text
    }
    const auto named =
        std::ranges::find_if(entries(), [&](const Entry& entry) { return entry.name == given; });
    return named != entries().end() ? named->id : kUnresolvedClass;
}

}  // namespace sonaprobe
