// A live run's use of the kernel's trace facility and of the audio drivers' debug flags: set-up,
// passes, cleanup.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/kernel_abi.h"
#include "record/trace_record.h"
#include "trace/trace_facility.h"

namespace sonaprobe {

// Room for records, to be kept to the end of the program. Without data where there is no memory
// for so many.
std::span<TraceRecord> allocateRecords(size_t count);

// What the machine's trace clock says.
double clockTicksPerMicrosecond();

// One at a time in a program. An operation of the facility that fails ends the program, as a signal
// does where one broke the operation off.
class LiveTrace {
  public:
    // What the program says and how it ends; messages end in "\n".
    struct Program {
        void (*fail)(const char* message);  // cleans up, and does not come back
        void (*warn)(const char* message);  // something that stops nothing
    };

    explicit constexpr LiveTrace(Program program) : program_(program) {}
    LiveTrace(const LiveTrace&) = delete;
    LiveTrace& operator=(const LiveTrace&) = delete;

    // Saves the audio drivers' debug flags and sets bit 0 beside them, which makes the drivers post
    // records. Failures are warned of and change nothing else.
    void startDrivers();

    // Room for the records of a pass, allocated once for the whole run; empty before.
    void allocateBuffer(uint32_t records);
    std::span<TraceRecord> buffer() const { return buffer_; }

    // For a program that goes on after its run; others leave that to their end.
    void freeBuffer();

    // Takes the facility and reserves its buffer. Any type of interest but 0x200000 and 0x20000
    // becomes 0x40000. A signal is taken between two steps.
    struct Wanted {
        uint32_t records;
        uint32_t interestType;
        uint32_t interestValue1;
        uint32_t interestValue2;
    };
    void setUpBuffer(const Wanted& wanted);

    void enableTracing(bool on);
    platform::KernelBufferInfo bufferInfo();

    // A result below 0 is for the caller to report.
    trace::Read read(std::span<TraceRecord> room);

    // One pass: what the kernel's buffer holds. Where that has wrapped, records are lost before
    // these, and tracing is started anew. A result below 0 is for the caller to report.
    struct Pass {
        int result;
        bool wrapped;
        size_t room;                           // records that the kernel's buffer may hold
        std::span<const TraceRecord> records;  // up to the next pass
    };
    Pass takePass();

    // Disables tracing if that was enabled here, removes the buffer and sets the debug flags to
    // the saved ones, 0 where none were saved. A step that failed once is not tried again, those
    // after it are. The message of the last one that failed, or null.
    const char* cleanUp();

  private:
    std::span<TraceRecord> roomFor(int32_t entries) const;
    void removeBuffer();
    void endUnless(bool done, const char* message);

    Program program_;
    std::span<TraceRecord> buffer_;
    uint32_t savedAudioFlags_ = 0;
    bool enabled_ = false;
    bool disableTried_ = false;
    bool removeFailed_ = false;
};

}  // namespace sonaprobe
