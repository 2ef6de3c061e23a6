// What the formats of export have in common: what they are told of a trace, and their table.

#pragma once

#include <memory>
#include <span>
#include <string>

#include "analysis/call_tracker.h"
#include "analysis/event_names.h"
#include "events/event.h"
#include "lines/code_names.h"
#include "scope/export/text_output.h"

namespace sonaprobe::scope {

// A record that is selected.
struct ToldRecord {
    const TraceRecord* record = nullptr;
    Event event{};
    uint64_t slot = 0;
    Nanoseconds time = 0;    // as the user asks for it
    Nanoseconds placed = 0;  // from the trace's first record; of a point, see ToldCall
    uint64_t order = 0;      // counts starts, ends and points
    uint32_t thread = 0;     // the clock's number
    uint64_t ticksPerMicrosecond = 0;
};

// A call that has ended.
struct ToldCall {
    const Call* call;
    const Call* parent;  // null where it is outermost
    const Closing* closing;
    const TraceRecord* start;
    Nanoseconds startTime;  // as the user asks for it
    bool selected;          // its start or its end is
    bool endSelected;
    uint32_t note;  // what opened() gave for it
    // From the trace's first record. On a thread starts, ends and points have moments of their own:
    // where the trace has one time for several, they are a nanosecond apart. Never back.
    Nanoseconds placedStart;
    Nanoseconds placedEnd;
    uint64_t startOrder;
    uint64_t endOrder;
    uint64_t ticksPerMicrosecond;
};

// One run of a format over one trace. What it does not want it leaves as it is here.
class Format {
  public:
    Format() = default;
    virtual ~Format() = default;
    Format(const Format&) = delete;
    Format& operator=(const Format&) = delete;

    // Each record.
    virtual void record(const ToldRecord&) {}

    // Each record that is a point, after the same to record().
    virtual void point(const ToldRecord&) {}
    virtual void orphanEnd(const ToldRecord&) {}

    // The start of each call, selected or not, with the note of the call around it; gives its own.
    static constexpr uint32_t kNoNote = 0xFFFFFFFF;
    virtual uint32_t opened(const TraceRecord&, const Call&, bool /*selected*/,
                            uint32_t /*noteOfParent*/) {
        return kNoNote;
    }

    // The end of each call, selected or not.
    virtual void closed(const ToldCall&) {}

    // Between the first and the second reading, for formats that are told twice.
    virtual void again(const TraceClock&) {}

    // After the last.
    virtual void finish(const TraceClock&) {}
};

// What rows of json and csv are about.
enum class What : uint8_t { records, calls, stats };

// What becomes of the time in which an I/O thread waits for its next cycle.
enum class Waiting : uint8_t { frame, omit };

struct FormatOptions {
    std::string file;  // the trace, as messages name it
    What what = What::records;
    Waiting waiting = Waiting::frame;
    const CodeNames* names = nullptr;
};

struct FormatEntry {
    const char* name = nullptr;
    const char* summary = nullptr;
    bool isPicture = false;  // of calls; others have rows, of which --what says more
    // Of a format that is text; null of the database.
    std::unique_ptr<Format> (*make)(const FormatOptions& options, TextOutput& out) = nullptr;
    bool readsTwice = false;  // first by feedAhead()

    bool readsCalls(What what) const { return isPicture || what != What::records; }
};

// In the order in which help lists them.
std::span<const FormatEntry> formats();

std::unique_ptr<Format> makeJson(const FormatOptions& options, TextOutput& out);
std::unique_ptr<Format> makeCsv(const FormatOptions& options, TextOutput& out);
std::unique_ptr<Format> makeChrome(const FormatOptions& options, TextOutput& out);
std::unique_ptr<Format> makeSpeedscope(const FormatOptions& options, TextOutput& out);
std::unique_ptr<Format> makeFolded(const FormatOptions& options, TextOutput& out);
std::unique_ptr<Format> makeCallgrind(const FormatOptions& options, TextOutput& out);

}  // namespace sonaprobe::scope
