// An I/O thread of the audio server, cycle by cycle, and what makes one of its cycles late.

#pragma once

#include <optional>
#include <span>
#include <vector>

#include "sim/dropouts/cause.h"
#include "sim/dropouts/driver_pool.h"
#include "sim/dropouts/score.h"

namespace sonaprobe::sim {

// A dropout as it was planted.
struct Planted {
    Ticket overload;
    Cause cause;
    Ticket culprit;       // or kNoTicket
    Ticks lostUntil = 0;  // of lost records: the culprit is the first that is left from here on
};

// A gate that is held for whom it may concern.
struct SharedGate {
    Ticks held;
    Ticks released;
    Ticket culprit;
};

// What the threads of a trace share.
struct Studio {
    Score& score;
    DriverPool& drivers;
    const Level& level;
    Ticks hostOffset = 0;  // of the host clock before the trace clock
    std::vector<SharedGate> gates{};
    std::vector<LostStretch> lost{};
    std::vector<Planted> planted{};
};

class IoThread {
  public:
    IoThread(Studio& studio, uint32_t number);

    void begin();

    // The next cycle; false where a fault was asked for and could not be played.
    bool playCycle(std::optional<Cause> fault);
    void end();

    Ticks time() const { return due_; }
    Ticks budget() const { return budget_; }

  private:
    // Why a cycle is late.
    struct Delay {
        Cause cause;
        Ticket culprit;
        Ticks lostUntil = 0;
    };

    struct Client {
        Ticks usual;
        const DriverAct* call;  // or null
    };

    // What happens to a client, or to the driver's call in it.
    struct Fault {
        Cause cause;
        Ticks length;
        bool inCall;
    };

    Ticks hostTime(Ticks time) const;
    Ticket put(uint32_t debugid, uint64_t a1 = 0, uint64_t a2 = 0, uint64_t a3 = 0,
               uint64_t a4 = 0);
    void rest(Ticks least, Ticks most) { now_ += score_.chance(least, most); }
    Ticket stamp(int64_t departure);
    void wake();

    // The thread stands still for about a length of time, for that cause; `own` is the call that is
    // to blame where nobody else is. Nothing where no driver thread is free to be the cause.
    std::optional<Delay> standStill(Cause cause, Ticks length, Ticket own);
    std::optional<Delay> waitForHolder(Ticks length, std::span<const DriverAct> acts, Cause cause);
    std::optional<Delay> waitForProcessor(Ticks length);
    void passGates();
    bool playClient(const Client& client, std::optional<Fault> fault);
    void overload(Ticks target);
    Ticks loseRecords(Ticks lastEnd, Ticks lastClient, Ticks client);

    Studio& studio_;
    Score& score_;
    const Level& level_;
    uint64_t thread_;
    uint64_t stampThread_;
    uint32_t firstCpu_;
    uint32_t cpu_;
    uint64_t rate_;
    uint64_t frames_;
    uint64_t sample_;
    Ticks budget_;
    Ticks due_;
    Ticks now_;
    uint64_t stampEvery_;
    uint64_t cycles_ = 0;
    std::vector<Client> clients_{};
    Ticks firstClient_ = 0;           // when the first client of the latest cycle began
    std::optional<Delay> delay_{};    // of the present cycle
    std::optional<Delay> carried_{};  // of the one before, where it ended after its deadline
};

}  // namespace sonaprobe::sim
