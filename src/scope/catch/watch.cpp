// The watch: passes over the kernel's buffer, the ring, the trigger, and the files.

#include "scope/catch/watch.h"

#include <algorithm>
#include <optional>
#include <sys/stat.h>
#include <unistd.h>

#include "live/live_trace.h"
#include "live/signals.h"
#include "platform/steady_time.h"
#include "record/truncate.h"
#include "scope/catch/answers.h"
#include "scope/catch/record_ring.h"
#include "scope/catch/status_line.h"
#include "scope/catch/trigger.h"
#include "scope/escape.h"
#include "scope/failure.h"
#include "scope/new_file.h"
#include "scope/units.h"

namespace sonaprobe::scope {

namespace {

constexpr Nanoseconds kPassPeriod = 20'000'000;

// Thrown where a signal is taken. No window is open here, in which it would come from a handler.
struct Ended {};

void throwEnded(int) { throw Ended{}; }

// The messages are those of sonaprobe, which end their lines.
std::string withoutLineEnds(std::string message) {
    message.erase(message.find_last_not_of('\n') + 1);
    std::ranges::replace(message, '\n', ' ');
    return message;
}

void fail(const char* message) { throw Failure{withoutLineEnds(message)}; }
void warnOf(const char* message) { warn(withoutLineEnds(message)); }

std::string bytesText(uint64_t bytes) {
    constexpr uint64_t kMebi = 1 << 20;
    return countText((bytes + kMebi - 1) / kMebi) + " MiB";
}

// Whether records may be lost in a pass, before it, or at the end of the one before. The kernel
// tells of a buffer that has wrapped until it is asked, and not of one that wraps while it is read:
// but then this pass or the next brings more than half a buffer.
bool isLossy(const LiveTrace::Pass& pass) {
    return pass.wrapped || pass.records.size() > pass.room / 2;
}

std::string recordsText(uint64_t count) {
    return countText(count) + (count == 1 ? " record" : " records");
}

// One watch, from the check of what it was asked for to the end.
class Watch {
  public:
    explicit Watch(const WatchOptions& options)
        : options_(options),
          trigger_(options.on),
          answers_(options.then),
          ring_(options.memory),
          trace_({.fail = fail, .warn = warnOf}) {}
    ~Watch() { trace_.freeBuffer(); }
    Watch(const Watch&) = delete;
    Watch& operator=(const Watch&) = delete;

    Status run();

  private:
    struct Event {
        std::string condition;
        Nanoseconds time;  // of the pass that brought it
    };

    std::string pathOf(uint64_t number) const {
        return numberedPath(options_.path, number, options_.count);
    }
    void checkPaths() const;
    void setUp();
    void takePass();
    void noteLoss(Nanoseconds time);
    void goOnBesideWork();
    void sleep();
    Event nextEvent();
    void catchEvents();
    void cleanUp();
    void save(const std::string& path, const std::string& reason, Nanoseconds eventTime);
    void showStatus(Nanoseconds now);
    void sayEnd();

    const WatchOptions& options_;
    Trigger trigger_;
    Answers answers_;
    RecordRing ring_;
    LiveTrace trace_;
    StatusLine status_;

    uint64_t ticksPerMicrosecond_ = 0;
    bool live_ = false;
    bool cleaned_ = true;         // or some step of it has failed
    std::optional<Event> event_;  // that is waited after
    uint64_t files_ = 0;
    uint64_t records_ = 0;
    uint64_t losses_ = 0;
    Nanoseconds begin_ = 0;
    Nanoseconds latestPass_ = 0;
    Nanoseconds shownAt_ = 0;
    uint64_t shownRecords_ = 0;
};

// Before hours of watching: the names are free, and the folder takes files.
void Watch::checkPaths() const {
    for (uint64_t number = 1; number <= options_.count; ++number) {
        struct stat status {};
        if (lstat(pathOf(number).c_str(), &status) == 0) {
            throw Failure{escaped(pathOf(number)) + " exists; give another name"};
        }
    }
    const NewFile attempt = NewFile::ofCaller(pathOf(1));
}

// As sonaprobe does it, step by step.
void Watch::setUp() {
    if (options_.startDrivers) trace_.startDrivers();
    takeSignal();
    trace_.allocateBuffer(options_.buffer);
    takeSignal();
    trace_.setUpBuffer({.records = options_.buffer,
                        .interestType = platform::kInterestRange,
                        .interestValue1 = options_.firstCode,
                        .interestValue2 = options_.lastCode});
    ticksPerMicrosecond_ = truncateToUnsigned(clockTicksPerMicrosecond());
    trigger_.beginAnew(ticksPerMicrosecond_);
    trace_.enableTracing(true);
    takeSignal();
    begin_ = shownAt_ = steadyNanoseconds();
}

void Watch::noteLoss(Nanoseconds time) {
    ring_.markLoss(time);
    trigger_.beginAnew(ticksPerMicrosecond_);
}

void Watch::takePass() {
    const LiveTrace::Pass pass = trace_.takePass();
    if (pass.result < 0) fail("trace facility failure, KERN_KDREADTR\n");
    const Nanoseconds now = steadyNanoseconds();
    latestPass_ = now;
    records_ += pass.records.size();
    const bool lossy = isLossy(pass);
    losses_ += lossy ? 1 : 0;
    if (lossy) noteLoss(now);
    ring_.add(pass.records, now);
    for (const TraceRecord& record : pass.records) {
        const auto met = trigger_.take(record);
        if (met && !event_) event_ = {std::string(*met), now};
        takeSignal();
    }
    if (lossy) noteLoss(now);
    ring_.forgetBefore((event_ ? event_->time : now) - options_.keep);
}

void Watch::sleep() {
    if (status_.isDue(latestPass_)) showStatus(latestPass_);
    takeSignal();
    usleep(static_cast<useconds_t>(kPassPeriod / 1000));
    takeSignal();
}

Watch::Event Watch::nextEvent() {
    for (;;) {
        takePass();
        if (event_ && latestPass_ >= event_->time + options_.after) break;
        sleep();
    }
    Event event = *event_;
    event_.reset();
    return event;
}

// Between two pieces of work that takes long.
void Watch::goOnBesideWork() {
    takeSignal();
    if (live_ && steadyNanoseconds() >= latestPass_ + kPassPeriod) takePass();
}

void Watch::save(const std::string& path, const std::string& reason, Nanoseconds eventTime) {
    NewFile file = NewFile::ofCaller(path);
    TraceRecord divisor{};
    divisor.timestamp = ticksPerMicrosecond_;
    divisor.debugid = kDivisorMarker;
    file.write(std::as_bytes(std::span(&divisor, 1)));
    const bool cutShort = ring_.hasLostSince(eventTime - options_.keep);
    const Nanoseconds oldest = ring_.empty() ? latestPass_ : ring_.oldest();
    const Nanoseconds span = latestPass_ - oldest;
    uint64_t records = 0;
    uint64_t marks = 0;
    std::vector<RecordRing::Piece> pieces = ring_.pieces();
    for (RecordRing::Piece& piece : pieces) {
        const auto slots = piece.records();
        const auto lost =
            static_cast<uint64_t>(std::ranges::count(slots, kInvalidMarker, &TraceRecord::debugid));
        marks += lost;
        records += slots.size() - lost;
        file.write(std::as_bytes(slots));
        piece.chunk.reset();
        goOnBesideWork();
    }
    file.keep();
    ++files_;
    std::string message = reason + ": " + recordsText(records) + " of " + durationText(span) +
                          " are in " + escaped(path);
    if (cutShort) {
        message += "; no more than " + durationText(std::max<Nanoseconds>(0, eventTime - oldest)) +
                   " before it went into " + bytesText(options_.memory) + ", see --memory";
    }
    if (marks > 0) message += "; records may be lost near " + countText(marks) + " invalid slots";
    status_.say(message);
    answers_.begin(path, live_);
}

void Watch::catchEvents() {
    while (files_ < options_.count) {
        const Event event = nextEvent();
        if (files_ + 1 == options_.count) {
            cleanUp();
            goOnAfterEnding();
        }
        save(pathOf(files_ + 1), event.condition, event.time);
    }
}

// Gives the facility back, once.
void Watch::cleanUp() {
    if (!live_) return;
    live_ = false;
    status_.clear();
    beginEnding();
    const char* const failure = trace_.cleanUp();
    if (failure == nullptr) return;
    warnOf(failure);
    cleaned_ = false;
}

void Watch::showStatus(Nanoseconds now) {
    const Nanoseconds passed = std::max<Nanoseconds>(1, now - shownAt_);
    const auto rate = static_cast<uint64_t>(static_cast<double>(records_ - shownRecords_) * 1e9 /
                                            static_cast<double>(passed));
    shownAt_ = now;
    shownRecords_ = records_;
    status_.draw("watched " + durationText(now - begin_) + ", " + countText(rate) + " records/s, " +
                     countText(losses_) + (losses_ == 1 ? " loss, " : " losses, ") +
                     countText(files_) + " caught",
                 now);
}

void Watch::sayEnd() {
    std::string message =
        "watched " + durationText(latestPass_ - begin_) + ": " + recordsText(records_);
    if (losses_ > 0) {
        message += "; records may be lost, for the kernel's buffer was too full " +
                   countText(losses_) + (losses_ == 1 ? " time" : " times") + ", see --buffer";
    } else {
        message += ", none lost";
    }
    if (files_ == 0) message += "; nothing is written";
    status_.say(message);
}

Status Watch::run() {
    checkPaths();
    installSignalHandlers(throwEnded);
    ignoreWriteSignals();
    live_ = true;
    try {
        setUp();
        std::string on;
        for (const std::string& condition : options_.on) on += (on.empty() ? "" : ", ") + condition;
        status_.say("watching for " + escaped(on) + "; Ctrl-C ends it");
        catchEvents();
    } catch (const Ended&) {
        const bool wasLive = live_;
        cleanUp();
        if (wasLive && options_.saveOnEnd && !ring_.empty()) {
            goOnAfterEnding();
            try {
                save(pathOf(files_ + 1), "end", latestPass_);
            } catch (const Ended&) {
                // A second signal ends the writing too.
            }
        }
    } catch (...) {
        cleanUp();
        throw;
    }
    sayEnd();
    const bool answered = answers_.finish();
    if (!cleaned_ || !(answered || isEnding())) return Status::trouble;
    return files_ > 0 ? Status::done : Status::findings;
}

}  // namespace

std::string numberedPath(const std::string& path, uint64_t number, uint64_t count) {
    if (count == 1) return path;
    const size_t name = path.find_last_of('/') + 1;
    const size_t dot = path.find_last_of('.');
    const size_t end = dot != std::string::npos && dot > name ? dot : path.size();
    return path.substr(0, end) + "-" + std::to_string(number) + path.substr(end);
}

Status watch(const WatchOptions& options) {
    Watch watch(options);
    return watch.run();
}

}  // namespace sonaprobe::scope
