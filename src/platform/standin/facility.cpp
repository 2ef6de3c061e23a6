// The operations of the trace facility, each under the operation lock.

#include "platform/standin/facility.h"

#include <algorithm>
#include <cerrno>

#include "platform/standin/attachment.h"
#include "platform/standin/filter.h"
#include "platform/standin/lost_pages.h"
#include "platform/standin/notice.h"
#include "platform/standin/ring.h"

namespace sonaprobe::standin {
namespace {

using platform::KernelBufferInfo;
using platform::TraceInterest;

// This process's mapping of the ring, kept from one operation to the next, and the look at the
// files since when its own file is known to be in place.
Ring ring;
uint64_t ringLook = 0;

uint64_t ticketsDrawn(const State& state) {
    const uint64_t control = state.control.load(std::memory_order_acquire);
    return enabledIn(control) ? ticketsIn(control) : state.cut.load();
}

Progress progressOf(const State& state) {
    const auto [position, seen] = state.progress.read();
    return {position, seen};
}

// The mark by which the next operation finds that its predecessor was killed half-way; what takes
// several stores stands between the two.
void beginChange(State& state) { state.changing.store(1); }
void endChange(State& state) { state.changing.store(0); }

// Disables tracing and keeps the exact count of the tickets drawn until then.
void cutTickets(State& state, uint16_t number) {
    const uint64_t before = state.control.exchange(controlWord(number, false, 0));
    if (enabledIn(before)) state.cut.store(ticketsIn(before));
}

// A new number tells the producers to let go of the ring they have mapped.
void dropRing(State& state) {
    const uint16_t number = numberIn(state.control.load());
    cutTickets(state, static_cast<uint16_t>(number + 1));
    state.entries.store(0);
    unmapRing(ring);
    removeRing(folderDescriptor());
}

void forgetCounts(State& state) {
    state.cut.store(0);
    state.progress.publish({0, 0});
}

void removeAll(State& state) {
    dropRing(state);
    state.requestedEntries.store(0);
    state.interest.publish(wordsOf(kEverything));
}

// Whether the counts can be what an operation left behind.
bool plausible(const State& state) {
    const Progress progress = progressOf(state);
    return state.changing.load() == 0 && progress.seen <= progress.position &&
           progress.position <= ticketsDrawn(state);
}

// Has the ring of a set-up mapped. Errno: ENOENT where its file is gone or was cut short.
int mapPresentRing(uint16_t number) {
    const bool mapped = ring.entries != 0 && ring.number == number;
    const bool looked = ringLook == looks();
    ringLook = looks();
    if (mapped && looked && !hasLostPages(ring.base)) return 0;
    if (mapped) {
        const RingFile file = fileOf(folderDescriptor(), ring);
        if (file == RingFile::inPlace) return 0;
        if (file == RingFile::cutShort) {
            tellCutShort(kRingPath);
            return ENOENT;
        }
    }
    return mapRing(folderDescriptor(), number, ring);
}

// Takes what was left half done as removed, and likewise a set-up whose ring is gone. Else the
// ring is mapped, if set up. Errno where the ring file is refused.
int recover(State& state) {
    int error = 0;
    if (plausible(state)) {
        if (state.entries.load() == 0) {
            unmapRing(ring);
            return 0;
        }
        error = mapPresentRing(numberIn(state.control.load()));
        if (error == 0 && ring.entries == state.entries.load()) return 0;
    }
    if (error != 0 && error != ENOENT) return error;
    beginChange(state);
    removeAll(state);
    forgetCounts(state);
    endChange(state);
    return 0;
}

// Runs body(state) as the one operation of all processes. Its error is the operation's. The two
// operations of a pass look at the files ten times a second at most: an idle run consists of
// nothing but them.
template <Look look = Look::now, class Body>
int alone(Body body) {
    const auto hold = holdAttachment();
    State* state = attach(look);
    if (state == nullptr || !lockOperations()) return errno;
    int error = recover(*state);
    if (error == 0) error = body(*state);
    unlockOperations();
    // What the body has seen of a file that was cut short meanwhile means nothing.
    const bool sound = !hasLostPages(state) && !(ring.entries != 0 && hasLostPages(ring.base));
    return sound ? error : EIO;
}

// Counts a call of the operation; the errno to fail with, or 0.
int armedError(State& state, FailurePoint point) {
    ArmedFailure& failure = state.failures[static_cast<size_t>(point)];
    if (failure.times == 0) return 0;
    if (failure.after != 0) {
        failure.after--;
        return 0;
    }
    failure.times--;
    return static_cast<int>(failure.error);
}

// Like alone(), for an operation of the owner. A process that owned nothing before still does not
// when the operation fails.
template <Look look = Look::now, class Body>
int asOwner(Body body) {
    return alone<look>([&](State& state) {
        const bool owned = ownedHere();
        if (!(owned && look == Look::ifOld) && !takeOwnership()) return EBUSY;
        const int error = body(state);
        if (error != 0 && !owned) giveUpOwnership();
        return error;
    });
}

template <Look look = Look::now, class Body>
int asOwner(FailurePoint point, Body body) {
    return asOwner<look>([&](State& state) {
        const int error = armedError(state, point);
        return error != 0 ? error : body(state);
    });
}

KernelBufferInfo infoOf(const State& state) {
    const uint64_t control = state.control.load();
    const uint32_t entries = state.entries.load();
    const bool wrapped = entries != 0 && ticketsDrawn(state) - progressOf(state).position > entries;
    return {.entries = static_cast<int32_t>(entries),
            .nolog = enabledIn(control) ? 0 : 1,
            .flags = wrapped ? platform::kBufferWrapped : 0,
            .threads = 0,
            .bufid = entries != 0 ? numberIn(control) : 0};
}

}  // namespace

int getBufferInfo(KernelBufferInfo& info) {
    return alone<Look::ifOld>([&](State& state) {
        const int error = armedError(state, FailurePoint::getBuf);
        if (error == 0) info = infoOf(state);
        return error;
    });
}

int setBufferSize(uint32_t records) {
    return asOwner(FailurePoint::setBuf, [&](State& state) {
        if (records == 0) return EINVAL;
        state.requestedEntries.store(records);
        return 0;
    });
}

int setInterest(const TraceInterest& interest) {
    return asOwner(FailurePoint::setReg, [&](State& state) {
        if (!knownInterest(interest.type)) return EINVAL;
        state.interest.publish(wordsOf(interest));
        return 0;
    });
}

int setUp() {
    return asOwner(FailurePoint::setup, [](State& state) {
        const uint32_t wanted = state.requestedEntries.load();
        if (wanted == 0) return EINVAL;
        beginChange(state);
        dropRing(state);
        forgetCounts(state);
        uint32_t entries = 0;
        const uint16_t number = numberIn(state.control.load());
        int error = createRing(folderDescriptor(), number, wanted, entries);
        if (error == 0) error = mapRing(folderDescriptor(), number, ring);
        if (error == 0) state.entries.store(entries);
        endChange(state);
        return error;
    });
}

int enableTracing(bool on) {
    return asOwner(FailurePoint::enable, [&](State& state) {
        if (state.entries.load() == 0) return EINVAL;
        const uint64_t control = state.control.load();
        const uint16_t number = numberIn(control);
        if (on && !enabledIn(control)) {
            state.control.exchange(controlWord(number, true, state.cut.load()));
        } else if (!on) {
            beginChange(state);
            cutTickets(state, number);
            endChange(state);
        }
        return 0;
    });
}

int readRecords(unsigned char* records, uint64_t room, uint64_t& count) {
    return asOwner<Look::ifOld>(FailurePoint::readTr, [&](State& state) {
        if (state.entries.load() == 0 || room == 0) return EINVAL;
        Progress progress = progressOf(state);
        count = readRing(ring, state.control, ticketsDrawn(state), records, room, progress);
        // Whole or not at all: a reader killed before this has read nothing.
        state.progress.publish({progress.position, progress.seen});
        return 0;
    });
}

int removeBuffer() {
    return asOwner(FailurePoint::remove, [](State& state) {
        beginChange(state);
        removeAll(state);
        endChange(state);
        giveUpOwnership();
        return 0;
    });
}

int holdFacility() {
    return asOwner([](State&) { return 0; });
}

int resetFacility() {
    return asOwner([](State& state) {
        beginChange(state);
        removeAll(state);
        forgetCounts(state);
        state.audioFlags.store(0);
        state.failures.fill({});
        endChange(state);
        giveUpOwnership();
        return 0;
    });
}

int getAudioFlags(uint32_t& flags) {
    return alone([&](State& state) {
        int error = armedError(state, FailurePoint::audio);
        if (error == 0) error = armedError(state, FailurePoint::audioGet);
        if (error == 0) flags = state.audioFlags.load();
        return error;
    });
}

int setAudioFlags(uint32_t flags) {
    return alone([&](State& state) {
        int error = armedError(state, FailurePoint::audio);
        if (error == 0) error = armedError(state, FailurePoint::audioSet);
        if (error == 0) state.audioFlags.store(flags);
        return error;
    });
}

int armFailure(FailurePoint point, const ArmedFailure& failure) {
    return alone([&](State& state) {
        state.failures[static_cast<size_t>(point)] = failure;
        return 0;
    });
}

int getStatus(FacilityStatus& status) {
    return alone([&](State& state) {
        const auto [position, seen] = progressOf(state);
        const uint64_t posted = ticketsDrawn(state);
        const uint64_t pending = std::min<uint64_t>(posted - position, state.entries.load());
        status = {.info = infoOf(state),
                  .owner = owner(),
                  .posted = posted,
                  .pending = pending,
                  .lost = posted - seen - pending,
                  .interest = interestOf(state.interest.read()),
                  .audioFlags = state.audioFlags.load()};
        return 0;
    });
}

}  // namespace sonaprobe::standin
