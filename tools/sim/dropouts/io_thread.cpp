// Plays I/O cycles as they are, or as a fault makes them.

#include "sim/dropouts/io_thread.h"

#include <algorithm>
#include <utility>

#include "sim/stories/codes.h"

namespace sonaprobe::sim {
namespace {

constexpr uint32_t kStart = 1;
constexpr uint32_t kEnd = 2;

constexpr uint64_t kRates[] = {48000, 44100, 96000};
constexpr uint64_t kFrames[] = {512, 256, 1024};
constexpr uint64_t kStampEvery[] = {32, 24, 16};
constexpr uint64_t kFirstThread = 0x1c52;
constexpr uint64_t kThreadStep = 0x31;
constexpr uint64_t kProcess = 412;

constexpr uint64_t kSlowClients = 30;  // one cycle in so many is slow and in time all the same
constexpr uint64_t kNearMisses = 60;   // or ends after its deadline without a dropout

Ticks hundredths(Ticks whole, Ticks share) { return whole * share / 100; }

}  // namespace

IoThread::IoThread(Studio& studio, uint32_t number)
    : studio_(studio),
      score_(studio.score),
      level_(studio.level),
      thread_(kFirstThread + kThreadStep * number),
      stampThread_(level_.moved != 0 && score_.oneIn(3) ? thread_ + 1 : thread_),
      firstCpu_(number * kCpusOfIoThread),
      cpu_(firstCpu_),
      rate_(kRates[number]),
      frames_(kFrames[score_.chance(0, 2)]),
      sample_(score_.chance(0, 9) * frames_),
      budget_(kTicksPerSecond * frames_ / rate_),
      due_(ms(300) + score_.chance(0, ms(40))),
      now_(due_),
      stampEvery_(kStampEvery[score_.chance(0, 2)]) {
    const Ticks share = budget_ / 10;
    for (Ticks count = score_.chance(1, 3); count > 0; count--) {
        const std::span<const DriverAct> calls = ioCalls();
        clients_.push_back(
            {.usual = score_.chance(share / 3, share),
             .call = score_.oneIn(2) ? &calls[score_.chance(0, calls.size() - 1)] : nullptr});
    }
    // Somewhere there is a driver's call to be slow.
    if (clients_.back().call == nullptr) clients_.back().call = ioCalls().data();
}

Ticks IoThread::hostTime(Ticks time) const { return kTraceOrigin + time + studio_.hostOffset; }

Ticket IoThread::put(uint32_t debugid, uint64_t a1, uint64_t a2, uint64_t a3, uint64_t a4) {
    const Ticket ticket = score_.put(now_, thread_, cpu_, debugid, a1, a2, a3, a4);
    rest(us(1), us(5));
    return ticket;
}

void IoThread::begin() {
    now_ = due_ - us(200);
    put(server::kIoThread | kStart, kProcess, rate_);
    stamp(0);
}

void IoThread::end() { put(server::kIoThread | kEnd); }

// Tells when a sample is played: at its due time, but for a departure and a little jitter.
Ticket IoThread::stamp(int64_t departure) {
    const auto jitter = static_cast<int64_t>(score_.chance(0, us(4))) - static_cast<int64_t>(us(2));
    const Ticks host = hostTime(due_) + static_cast<Ticks>(departure + jitter);
    const Ticket ticket =
        score_.put(now_, stampThread_, stampThread_ == thread_ ? cpu_ : kProcessors - 1,
                   server::kZeroTimeStamp | kStart, sample_, host, kTicksPerSecond, rate_);
    rest(us(1), us(5));
    return ticket;
}

void IoThread::wake() {
    if (score_.oneIn(24)) cpu_ = firstCpu_ + (cpu_ - firstCpu_ + 1) % kCpusOfIoThread;
    now_ = std::max(now_ + us(2), due_ + score_.chance(us(6), us(38)));
}

std::optional<IoThread::Delay> IoThread::waitForHolder(Ticks length,
                                                       std::span<const DriverAct> acts,
                                                       Cause cause) {
    const auto pick = [&]() -> const DriverAct& { return acts[score_.chance(0, acts.size() - 1)]; };
    const bool tangled =
        cause == Cause::blockedBy && level_.tangled != 0 && score_.oneIn(level_.tangled);
    const Ticks kind = tangled ? score_.chance(0, 2) : 3;
    const Ticks begin = now_ - score_.chance(us(60), us(1500));
    const Ticks past = now_ + length;
    const auto holdUntil = [&](const DriverAct& act, Ticks from, Ticks until) {
        return studio_.drivers.play(act, from, until - from, until - from + ms(2));
    };

    const DriverAct& act = pick();
    Ticket culprit = kNoTicket;
    Ticks holdsFrom = begin;
    Ticks until = past;
    if (kind == 0) {
        // The holder waits itself, for another one.
        const DriverAct& root = pick();
        const auto played = holdUntil(root, begin - score_.chance(us(100), us(900)), past);
        if (!played) return {};
        culprit = score_.find(*played, root.culprit | kStart);
        until = played->end + score_.chance(us(5), us(30));
    } else if (kind == 1) {
        // Another one holds a gate first, for the smaller part.
        const Ticks first = now_ + hundredths(length, score_.chance(20, 40));
        const auto other = holdUntil(pick(), begin - score_.chance(us(100), us(900)), first);
        if (other && score_.oneIn(2)) holdsFrom = other->end - score_.chance(us(20), us(200));
    }
    const auto played = holdUntil(act, holdsFrom, until);
    if (!played) return {};
    if (culprit == kNoTicket) culprit = score_.find(*played, act.culprit | kStart);
    Ticks released = played->end;
    if (level_.early != 0 && score_.oneIn(level_.early)) {
        const Ticket slowEnd = score_.find(*played, act.culprit | kEnd);
        released = score_.at(slowEnd).timestamp - kTraceOrigin;
    }
    if (kind == 2) studio_.gates.push_back({begin, released, culprit});
    now_ = released + score_.chance(us(4), us(30));
    return Delay{cause, culprit};
}

std::optional<IoThread::Delay> IoThread::waitForProcessor(Ticks length) {
    const auto played =
        studio_.drivers.interrupt(cpu_, now_ + score_.chance(us(2), us(20)), now_ + length);
    if (!played) return {};
    now_ = played->end + score_.chance(us(3), us(15));
    return Delay{Cause::preempted, played->first};
}

std::optional<IoThread::Delay> IoThread::standStill(Cause cause, Ticks length, Ticket own) {
    const Ticks begin = now_;
    std::optional<Delay> delay = Delay{cause, own};
    if (cause == Cause::blockedBy) {
        delay = waitForHolder(length, gateHolders(), cause);
    } else if (cause == Cause::engineChange) {
        delay = waitForHolder(length, engineChanges(), cause);
    } else if (cause == Cause::preempted) {
        delay = waitForProcessor(length);
    } else {
        now_ += length;
    }
    score_.reserve(cpu_, begin, now_);
    if (level_.interrupted != 0 && cause != Cause::preempted && score_.oneIn(level_.interrupted)) {
        const Ticks when = begin + hundredths(now_ - begin, score_.chance(10, 80));
        studio_.drivers.interrupt(cpu_, when, when + 1);
    }
    const bool mayMove = cause == Cause::blockedBy || cause == Cause::engineChange;
    if (mayMove && level_.moved != 0 && score_.oneIn(level_.moved)) {
        cpu_ = firstCpu_ + (cpu_ - firstCpu_ + 1) % kCpusOfIoThread;
        score_.reserve(cpu_, begin, now_);
    }
    return delay;
}

// Waits for a gate that another I/O thread waits for too.
void IoThread::passGates() {
    for (const SharedGate& gate : studio_.gates) {
        if (now_ <= gate.held || gate.released <= now_ + us(50)) continue;
        score_.reserve(cpu_, now_, gate.released);
        now_ = gate.released + score_.chance(us(4), us(30));
        delay_ = {Cause::blockedBy, gate.culprit};
    }
}

bool IoThread::playClient(const Client& client, std::optional<Fault> fault) {
    const uint64_t asked = sample_ + 2 * frames_;
    const Ticks usual = hundredths(client.usual, score_.chance(70, 130));
    const Ticks before = hundredths(usual, score_.chance(5, 60));
    const Ticket own = put(server::kClient | kStart, 0, 0, asked, hostTime(due_ + 2 * budget_));
    if (!fault) passGates();
    now_ += before;
    if (fault && !fault->inCall) {
        delay_ = standStill(fault->cause, fault->length, own);
        if (!delay_) return false;
    }
    if (client.call != nullptr) {
        Ticks hold = score_.chance(us(15), us(60));
        const bool isSlow = fault && fault->inCall && fault->cause == Cause::driverCall;
        if (isSlow) hold += fault->length;
        const Performance call = score_.play(client.call->table, thread_, cpu_, now_, hold);
        if (isSlow) {
            delay_ = {Cause::driverCall, score_.find(call, client.call->culprit | kStart)};
            score_.reserve(cpu_, call.begin, call.end);
        }
        now_ = call.end;
    }
    now_ += usual - before;
    put(server::kClient | kEnd);
    return true;
}

void IoThread::overload(Ticks target) {
    const bool blank = level_.blankWords != 0 && score_.oneIn(level_.blankWords);
    const Ticks played = (now_ - std::min(due_, now_)) * rate_ / kTicksPerSecond;
    const Ticket ticket = blank ? put(server::kOverload | kStart)
                                : put(server::kOverload | kStart, sample_ + played, hostTime(now_),
                                      sample_ + frames_, hostTime(target));
    const Delay& why = delay_ ? *delay_ : *carried_;
    studio_.planted.push_back({ticket, why.cause, why.culprit, why.lostUntil});
}

// Of a cycle that is late because its client was, what would tell so is lost.
Ticks IoThread::loseRecords(Ticks lastEnd, Ticks lastClient, Ticks client) {
    LostStretch lost{lastEnd + us(1), now_};  // the whole cycle, up to its overload
    switch (score_.chance(0, 2)) {
        case 0: lost.end = client + score_.chance(us(30), us(200)); break;
        case 1:
            // From one cycle's client into that of the next.
            if (lastClient != 0) lost.begin = lastClient + us(8);
            lost.end = client + us(6);
            break;
        default: break;
    }
    studio_.lost.push_back(lost);
    score_.lose(lost);
    return lost.end;
}

bool IoThread::playCycle(std::optional<Cause> cause) {
    const size_t planted = studio_.planted.size();
    const Ticks lastEnd = now_;
    const Ticks lastClient = std::exchange(firstClient_, 0);
    delay_.reset();
    wake();
    if (cycles_++ % stampEvery_ == 0) stamp(0);

    Ticks usual = us(30);
    for (const Client& client : clients_) {
        usual += client.usual + (client.call != nullptr ? us(80) : 0);
    }
    const Ticks deadline = due_ + budget_;
    const bool nearMiss = !cause && !carried_ && score_.oneIn(kNearMisses);
    const bool slow = !cause && !nearMiss && !carried_ && score_.oneIn(kSlowClients);
    const bool passesOn = cause && level_.carried != 0 && score_.oneIn(level_.carried);
    Ticks over = hundredths(
        budget_, passesOn ? score_.chance(102, 130) : score_.chance(level_.leastOver, 70));
    if (nearMiss) over = hundredths(budget_, score_.chance(1, 8));
    Ticks still = deadline + over - std::min(deadline, now_ + usual);
    if (slow) still = hundredths(still - over, score_.chance(20, 80));

    // Where the cycle stands still; -2 before it, -1 in it, else in a client.
    const auto clients = static_cast<int64_t>(clients_.size());
    int64_t place = static_cast<int64_t>(score_.chance(0, clients_.size() - 1));
    bool inCall = false;
    Cause why = cause.value_or(Cause::client);
    switch (why) {
        case Cause::client: break;
        case Cause::driverCall:
            inCall = true;
            while (clients_[static_cast<size_t>(place)].call == nullptr)
                place = (place + 1) % clients;
            break;
        case Cause::blockedBy:
        case Cause::preempted:
        case Cause::engineChange:
            if (score_.oneIn(3)) place = score_.oneIn(2) ? -1 : -2;
            break;
        case Cause::lateWake: place = -2; break;
        case Cause::lostRecords:
            place = 0;
            why = Cause::client;
            break;
        case Cause::unknown: place = -1; break;
        case Cause::clock: break;
    }
    const bool inTime = cause == Cause::clock || (cause == Cause::unknown && score_.oneIn(2));
    const bool standsStill = (cause || nearMiss || slow) && !inTime;
    const Ticks moved = cause == Cause::clock ? still : 0;

    const Ticket stamped = moved != 0 ? stamp(-static_cast<int64_t>(moved)) : kNoTicket;
    if (standsStill && place == -2) {
        delay_ = standStill(why, still, kNoTicket);
        if (!delay_) return false;
    }
    const Ticks begun = now_;
    put(server::kIoCycle | kStart, sample_, hostTime(now_), frames_);
    rest(us(5), us(15));
    bool done = true;
    if (standsStill && place == -1) {
        delay_ = standStill(why, still, kNoTicket);
        done = delay_.has_value();
    }
    for (int64_t number = 0; number < clients; number++) {
        if (number == 0) firstClient_ = now_;
        std::optional<Fault> fault;
        if (standsStill && number == place) fault = Fault{why, still, inCall};
        done = playClient(clients_[static_cast<size_t>(number)], fault) && done;
    }
    if (nearMiss || slow) delay_.reset();
    if (cause == Cause::unknown || cause == Cause::clock) {
        delay_ = {*cause, stamped};
    }
    if (cause == Cause::lostRecords) {
        delay_ = {*cause, kNoTicket, loseRecords(lastEnd, lastClient, firstClient_)};
    }

    const bool isLate = now_ > deadline;
    const bool isDropout = (done && delay_ && (isLate || inTime)) || (isLate && carried_);
    const bool after =
        isDropout && level_.moved != 0 && !inTime && score_.oneIn(5) && cause != Cause::lostRecords;
    if (isDropout && !after) overload(deadline - moved);

    // Where the device has played on for most of a cycle, the next one is left out.
    Ticks next = deadline;
    uint64_t frames = frames_;
    if (!passesOn) {
        while (now_ > next + hundredths(budget_, 80)) {
            next += budget_;
            frames += frames_;
        }
    }
    const bool staysMoved = moved != 0 && score_.oneIn(2);
    if (staysMoved) next -= moved;
    put(server::kIoCycle | kEnd, sample_ + frames, hostTime(next));
    if (after) overload(deadline);
    score_.reserve(cpu_, std::min(due_, begun), now_);
    if (!isLate)
        carried_.reset();
    else if (delay_)
        carried_ = delay_;
    due_ = next;
    sample_ += frames;
    return studio_.planted.size() > planted && done;
}

}  // namespace sonaprobe::sim
