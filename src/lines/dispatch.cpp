// Which printer a record goes to.

#include "lines/dispatch.h"

#include "events/class_table.h"
#include "events/decode.h"
#include "events/decoders/decoders.h"
#include "lines/unclassified.h"
#include "probe/settings.h"

namespace sonaprobe {

namespace {

constexpr uint32_t kAudioServerKey = 0x21040000;
constexpr uint32_t kHistoricClass = 0;

// A record's debug id without qualifier and event number.
constexpr uint32_t keyOf(uint32_t debugid) { return debugid & ~0x3FFU; }

// Only audio codes can be filtered; a class named by --filter-all-except outweighs --filter-out.
bool passesClassFilter(uint32_t key) {
    if (classWordOf(key) != kAudioClassWord) return true;
    const uint32_t classId = classIdOf(key);
    if (!settings.filterAllExcept.empty()) return settings.filterAllExcept.contains(classId);
    return !settings.filterOut.contains(classId);
}

}  // namespace

void dispatchRecord(const TraceRecord* record) {
    const uint32_t key = keyOf(record->debugid);
    if (!passesClassFilter(key)) return;
    if (settings.basicFormat) return printBasicRecord(record);
    if (key == kAudioServerKey) {
        if (settings.includeHAL) decodeRecord(decoders::kAudioServer, *record);
        return;
    }
    if (classWordOf(key) != kAudioClassWord) return printUnclassifiedRecord(record);

    const uint32_t classId = classIdOf(key);
    if (classId == kHistoricClass && !settings.showHistoric) return;
    const Decoder* const decoder = kClassTable[classId];
    if (decoder == nullptr) return printUnclassifiedRecord(record);
    decodeRecord(*decoder, *record);
}

}  // namespace sonaprobe
