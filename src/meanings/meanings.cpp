// All tables of sentences as one.

#include "meanings/meanings.h"

#include <algorithm>
#include <array>

#include "meanings/tables.h"

namespace sonaprobe::meanings {

std::span<const Table> allMeanings() {
    static const std::array tables = {
        kHistoric,
        kDriverFamily,
        kHdaController,
        kHdaDriver,
        kHdaEngine,
        kHdaTopology,
        kHdaTdm,
        kUsb,
        kUsbStream,
        kUsbAudio2,
        kVoiceTrigger,
        kEmbeddedAudio,
        kHeadsetRemote,
        kEmbeddedCodecZ47,
        kMicrophone,
        kEmbeddedCodecZ58,
        kHeadsetBus,
        kEmbeddedAmplifiers,
        kAudioServer,
    };
    return tables;
}

std::string_view meaningOf(uint32_t code) {
    for (const Table table : allMeanings()) {
        const auto row = std::ranges::lower_bound(table, code, {}, &Meaning::code);
        if (row != table.end() && row->code == code) return row->sentence;
    }
    return {};
}

}  // namespace sonaprobe::meanings
