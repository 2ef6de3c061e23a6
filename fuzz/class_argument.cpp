// The argument of --filter-out and --filter-all-except: any text names a class or none.

#include <string>

#include "fuzz.h"
#include "registry/audio_class_registry.h"

using sonaprobe::AudioClassRegistry;
using sonaprobe::fuzz::require;

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::string text(reinterpret_cast<const char*>(data), size);
    text.resize(std::strlen(text.c_str()));
    text.shrink_to_fit();

    const uint32_t id = AudioClassRegistry::ResolveClassArgument(text.c_str());
    if (text.find_first_not_of("0123456789") == std::string::npos && text.size() != 4) {
        const auto number = static_cast<uint32_t>(std::strtoul(text.c_str(), nullptr, 0));
        require(id == number, "digits, but four, are a number");
        return 0;
    }
    const auto entries = AudioClassRegistry::entries();
    const auto entry = std::ranges::find(entries, id, &AudioClassRegistry::Entry::id);
    require((entry != entries.end()) != (id == sonaprobe::kUnresolvedClass),
            "a text names a class of the registry or none");
    if (entry == entries.end()) return 0;
    const auto letter = [&](unsigned shift) { return static_cast<char>(entry->code >> shift); };
    const std::string code{letter(24), letter(16), letter(8), letter(0)};
    require(text == code || text == entry->name, "a class is named by its code or name alone");
    return 0;
}
