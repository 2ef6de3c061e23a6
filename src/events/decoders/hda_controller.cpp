// The high-definition audio controller (class 20): its register interface, the CORB and RIRB rings,
// stopping the link clock, its own power state and that of the graphics hardware beside it.

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

// Gated is what every poll, command, response, tick and idle moment prints; what goes wrong, and
// what decides whether the link keeps its clock, prints without being asked for.
constexpr Entry kControllerRows[] = {
    event(0x05245028, "pollRegister"),
    verbose(start("Start - offset: 0x%x mask: 0x%08x wanted: 0x%08x timeout: %d.%03d.%03d.%03d", lo(a2), hi(a3), lo(a3), nanos(a4))),
    verbose(end("End - offset: 0x%x value: 0x%08x polls: %d result: 0x%08x", lo(a2), hi(a3), lo(a3), lo(a4))),
    verbose(sel(0, "offset: 0x%x value: 0x%08x elapsed: %d.%03d.%03d.%03d", hi(a2), lo(a2), nanos(a3))),
    sel(1, "timed out - offset: 0x%x mask: 0x%08x wanted: 0x%08x value: 0x%08x polls: %d", hi(a2), lo(a2), hi(a3), lo(a3), hi(a4)),

    event(0x05245040, "gfxMatchedHandler"),
    start("Start - newService: %p fGfxService: %p fPMPowerState: %lld", a2, a3, a4),
    end("End - fGfxService: %p fGfxPowerState: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "registering for power state changes of fGfxService: %p", a2),
    sel(1, "ignoring newService: %p - already matched fGfxService: %p", a2, a3),

    event(0x05245050, "gfxTerminatedHandler"),
    start("Start - terminatedService: %p fGfxService: %p fGfxPowerState: %lld", a2, a3, a4),
    end("End - fGfxService: %p fDisplayReadyMask: 0x%08x", a2, lo(a3)),
    sel(0, "ignoring terminatedService: %p - it is not fGfxService: %p", a2, a3),
    sel(1, "fGfxService: %p is gone before acknowledging gfxPowerState: %lld", a2, a3),

    event(0x05245074, "framebufferEventHandler"),
    start("Start - framebuffer: %p event: 0x%08x fDisplayReadyMask: 0x%08x", a2, lo(a3), lo(a4)),
    end("End - event: 0x%08x fDisplayReadyMask: 0x%08x result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "fCRTCIndex(%d) is losing power - holding back its codec commands, pending: %lld", lo(a2), a3),
    sel(1, "fCRTCIndex(%d) has power again - releasing its codec commands, pending: %lld", lo(a2), a3),
    sel(2, "event: 0x%08x from a framebuffer that is not ours: %p", lo(a2), a3),

    event(0x05245078, "requestBandwidth"),
    start("Start - stream: %p bytesPerSecond: %llu fBandwidthInUse: %llu", a2, a3, a4),
    end("End - bytesPerSecond: %llu fBandwidthInUse: %llu result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "not enough left - bytesPerSecond: %llu available: %llu", a2, a3),
    sel(1, "memory latency limit going from %d.%03d.%03d.%03d to %d.%03d.%03d.%03d", nanos(a2), nanos(a3)),

    event(0x05245080, "displayIsReady"),
    verbose(start("Start - codecAddress: %d fCRTCIndex(%d) fDisplayReadyMask: 0x%08x fGfxPowerState: %lld", hi(a2), lo(a2), lo(a3), a4)),
    verbose(end("End - fCRTCIndex(%d) ready: %s fDisplayReadyMask: 0x%08x", lo(a2), boolean(a3), lo(a4))),
    sel(0, "fCRTCIndex(%d) still not ready after %d.%03d.%03d.%03d", lo(a2), nanos(a3)),

    event(0x0524508C, "protectedRunPeriodicTasks"),
    verbose(start("Start - fPMPowerState: %lld fActiveStreamCount: %lld fClockStopDeadline: %d.%03d.%03d.%03d", a2, a3, nanos(a4))),
    verbose(end("End - fClockStopped: %s next run in: %d.%03d.%03d.%03d", boolean(a2), nanos(a3))),
    sel(0, "calling commandWakeup (&fClockStopTimer)"),

    event(0x05245094, "retriggerClockStopTimer"),
    verbose(start("Start - fClockStopDeadline: %d.%03d.%03d.%03d fClockStopDelay: %d.%03d.%03d.%03d fClockStopped: %s", nanos(a2), nanos(a3), boolean(a4))),
    verbose(end("End - fClockStopDeadline: %d.%03d.%03d.%03d", nanos(a2))),
    verbose(sel(0, "not armed - fClockStopAllowed: %s fActiveStreamCount: %lld", boolean(a2), a3)),

    event(0x0524509C, "setupHostInterface"),
    start("Start"),
    end("End - fRegisters: %p GCAP: 0x%04x result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "streams - output: %d input: %d bidirectional: %d", byte(2, a2), byte(1, a2), byte(0, a2)),
    sel(1, "rings at 0x%llx - CORB entries: %d RIRB entries: %d", a2, hi(a3), lo(a3)),
    sel(2, "DMA position buffer at 0x%llx for %lld streams", a2, a3),

    event(0x052450CC, "resetAudioController"),
    start("Start - GCTL: 0x%08x STATESTS: 0x%04x fPMPowerState: %lld", lo(a2), lo(a3), a4),
    end("End - GCTL: 0x%08x STATESTS: 0x%04x result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "link is in reset - GCTL: 0x%08x after %d.%03d.%03d.%03d", lo(a2), nanos(a3)),
    sel(1, "link is out of reset - GCTL: 0x%08x after %d.%03d.%03d.%03d", lo(a2), nanos(a3)),
    sel(2, "codec mask changed over the reset from 0x%04x to 0x%04x", lo(a2), lo(a3)),

    event(0x052450D0, "setupAudioController"),
    start("Start - fRegisters: %p deviceID: 0x%08x pciCommand: 0x%04x", a2, lo(a3), lo(a4)),
    end("End - pciCommand: 0x%04x INTCTL: 0x%08x result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "interrupt index: %lld messageSignalled: %s", a2, boolean(a3)),
    sel(1, "traffic class: %lld snooping: %s", a2, boolean(a3)),

    event(0x05245104, "setCodecProperties"),
    start("Start - codec: %p codecAddress: %d vendorID: 0x%08x", a2, lo(a3), lo(a4)),
    end("End - codec: %p subsystemID: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "codecAddress: %d - nothing in the platform's tables for subsystemID: 0x%08x", hi(a2), lo(a2)),

    event(0x0524510C, "startCORB"),
    start("Start - CORBCTL: 0x%02x CORBWP: %d CORBRP: %d", lo(a2), lo(a3), lo(a4)),
    end("End - CORBCTL: 0x%02x CORBSIZE: 0x%02x result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "read pointer reset - CORBRP: 0x%04x after %d.%03d.%03d.%03d", lo(a2), nanos(a3)),

    event(0x05245110, "stopCORB"),
    start("Start - CORBCTL: 0x%02x CORBWP: %d CORBRP: %d commands pending: %d", lo(a2), hi(a3), lo(a3), lo(a4)),
    end("End - CORBCTL: 0x%02x commands dropped: %d result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "still fetching commands - CORBCTL: 0x%02x after %d.%03d.%03d.%03d", lo(a2), nanos(a3)),

    event(0x05245118, "stopRIRB"),
    start("Start - RIRBCTL: 0x%02x RIRBWP: %d fRIRBReadPointer: %d", lo(a2), lo(a3), lo(a4)),
    end("End"),
    sel(0, "still writing responses - RIRBCTL: 0x%02x after %d.%03d.%03d.%03d", lo(a2), nanos(a3)),
    sel(1, "leaving responses unread - RIRBWP: %d fRIRBReadPointer: %d", lo(a2), lo(a3)),

    event(0x05245120, "handleCodecCommandAction"),
    verbose(start("Start - codecAddress: %d command: 0x%08x fPMPowerState: %lld fClockStopped: %s", hi(a2), lo(a2), a3, boolean(a4))),
    verbose(end("End - generation: %lld response: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4))),
    verbose(sel(0, "calling commandSleep - generation: %lld CORBWP: %d CORBRP: %d", a2, hi(a3), lo(a3))),
    sel(1, "CORB is full - codecAddress: %d command: 0x%08x CORBWP: %d CORBRP: %d", hi(a2), lo(a2), hi(a3), lo(a3)),
    sel(2, "refused without power - codecAddress: %d command: 0x%08x fPMPowerState: %lld", hi(a2), lo(a2), a3),

    event(0x05245128, "serviceRIRB"),
    verbose(start("Start - RIRBSTS: 0x%02x RIRBWP: %d fRIRBReadPointer: %d", lo(a2), lo(a3), lo(a4))),
    verbose(end("End - responses: %d unsolicited: %d fRIRBReadPointer: %d", lo(a2), lo(a3), lo(a4))),
    verbose(sel(0, "codecAddress: %d response: 0x%08x generation: %lld", hi(a2), lo(a2), a3)),
    sel(1, "codecAddress: %d unsolicited response: 0x%08x tag: %lld", hi(a2), lo(a2), a3),
    sel(2, "codecAddress: %d response: 0x%08x to no command, generation: %lld", hi(a2), lo(a2), a3),
    sel(3, "responses lost to an overrun - RIRBSTS: 0x%02x RIRBWP: %d fRIRBReadPointer: %d", lo(a2), hi(a3), lo(a3)),

    event(0x0524512C, "checkCodecCommandTimeout"),
    start("Start - generation: %lld wakeUp: %s fPMPowerState: %d", a2, boolean(a3), lo(a4)),
    end("End- generation: %lld wakeUp: %s fPMPowerState: %d", a2, boolean(a3), lo(a4)),  // sic, no blank before the hyphen
    sel(0, "codecAddress: %d left command: 0x%08x unanswered, generation: %lld", hi(a2), lo(a2), a3),
    sel(1, "codecAddress: %d timeouts in a row: %d - resetting the link", hi(a2), lo(a2)),

    event(0x052451BC, "resetStreamForOffset"),
    start("Start - offset: 0x%x SDCTL: 0x%06x SDSTS: 0x%02x", lo(a2), lo(a3), lo(a4)),
    end("End - offset: 0x%x SDCTL: 0x%06x result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "offset: 0x%x entered reset after %d.%03d.%03d.%03d", lo(a2), nanos(a3)),
    sel(1, "offset: 0x%x left reset after %d.%03d.%03d.%03d", lo(a2), nanos(a3)),
    sel(2, "offset: 0x%x ignores the reset bit - SDCTL: 0x%06x after %d.%03d.%03d.%03d", hi(a2), lo(a2), nanos(a3)),

    event(0x05245214, "message"),
    start("Start - type: 0x%08x provider: %p argument: %p", lo(a2), a3, a4),
    end("End - type: 0x%08x result: 0x%08x", lo(a2), lo(a3)),
    sel(0, "passing type: 0x%08x on to codec: %p", lo(a2), a3),
    sel(1, "type: 0x%08x is not for the controller - calling up to superclass", lo(a2)),

    event(0x05245220, "setPowerState"),
    start("Start - powerState: %lld", a2),
    // arg3 is null where the controller's own policymaker asked, arg4 the result either way.
    end(nonZero(a3), "End - powerState: %lld FROM A DIFFERENT POLICYMAKER: %p result: %lld", a2, a3, a4),
    end("End - powerState: %lld result: %lld", a2, a4),
    sel(0, "powerState: %lld has to wait for the change to pendingPowerState: %lld", a2, a3),

    event(0x05245224, "handleSetPowerState"),
    start("Start - powerState: %lld fPMPowerState: %lld fPowerThreadCall: %p", a2, a3, a4),
    end("End - fPMPowerState: %lld acknowledged: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "acknowledging powerState: %lld after %d.%03d.%03d.%03d", a2, nanos(a3)),
    sel(1, "powerState: %lld was overtaken by pendingPowerState: %lld", a2, a3),

    event(0x05245228, "setPowerStateGated"),
    start("Start - powerState: %lld fPMPowerState: %lld fFunctionGroupsInD0: %lld", a2, a3, a4),
    end("End - fPMPowerState: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "powering up - fGfxPowerState: %lld codecs expected: 0x%04x", a2, lo(a3)),
    sel(1, "powering down - fActiveStreamCount: %lld commands pending: %lld", a2, a3),
    sel(2, "codecAddress: %lld did not come back - STATESTS: 0x%04x", a2, lo(a3)),

    event(0x05245230, "shutdownHDAController"),
    start("Start - fPMPowerState: %lld fActiveStreamCount: %lld INTCTL: 0x%08x", a2, a3, lo(a4)),
    end("End - GCTL: 0x%08x WAKEEN: 0x%04x", lo(a2), lo(a3)),
    sel(0, "stopping the stream at offset: 0x%x - SDCTL: 0x%06x", lo(a2), lo(a3)),
    sel(1, "interrupts are off - INTCTL: 0x%08x INTSTS: 0x%08x", lo(a2), lo(a3)),

    event(0x05245234, "gfxSetPowerState"),
    start("Start - gfxPowerState: %lld fGfxPowerState: %lld fPMPowerState: %lld", a2, a3, a4),
    end("End - gfxPowerState: %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "no gfx service matched - gfxPowerState: %lld is kept for gfxMatchedHandler", a2),

    event(0x05245238, "gfxSetPowerStateGated"),
    start("Start - gfxPowerState: %lld fGfxService: %p fGfxPowerOnCount: %lld", a2, a3, a4),
    end("End - fGfxPowerState: %lld fGfxPowerOnCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "other users left - fGfxPowerState stays: %lld fGfxPowerOnCount: %lld", a2, a3),
    sel(1, "fGfxPowerState is still %lld after %d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x05245240, "powerStateWillChangeTo"),
    start("Start - device: %p leaving for stateNumber: %lld capabilities: 0x%llx", a2, a3, a4),
    end("End - stateNumber: %lld microsecondsUntilReady: %lld", a2, a3),
    sel(0, "finishing commands of the display codecs first - pending: %lld fDisplayReadyMask: 0x%08x", a2, lo(a3)),

    event(0x05245244, "powerStateDidChangeTo"),
    start("Start - device: %p arrived in stateNumber: %lld capabilities: 0x%llx", a2, a3, a4),
    end("End - fGfxPowerState: %lld fDisplayReadyMask: 0x%08x", a2, lo(a3)),
    sel(0, "waking those who wait for fGfxPowerState: %lld - waiters: %lld", a2, a3),

    event(0x05245254, "setControllerClockStopState"),
    verbose(start("Start - stopClock: %s fClockStopped: %s fActiveStreamCount: %lld", boolean(a2), boolean(a3), a4)),
    verbose(end("End - fClockStopped: %s result: 0x%08x", boolean(a2), lo(a3))),
    verbose(sel(0, "clock stays on - codecs: 0x%04x of which do without it: 0x%04x", lo(a2), lo(a3))),
    sel(1, "clock does not obey stopClock: %s after %d.%03d.%03d.%03d", boolean(a2), nanos(a3)),

    event(0x0524525C, "stopWaitControllerClock"),
    start("Start - fClockStopped: %s waiters: %lld fClockStopDeadline: %d.%03d.%03d.%03d", boolean(a2), a3, nanos(a4)),
    end("End - fClockStopped: %s clock back after: %d.%03d.%03d.%03d result: 0x%08x", boolean(a2), nanos(a3), lo(a4)),
    sel(0, "clock is running and nobody waits - fPMPowerState: %lld", a2),

    event(0x05245260, "waitForClockStopTimerEvent"),
    start("Start - fClockStopDeadline: %d.%03d.%03d.%03d fFunctionGroupsInD0: %lld", nanos(a2), a3),
    end("End - fClockStopped: %s slept: %d.%03d.%03d.%03d result: 0x%08x", boolean(a2), nanos(a3), lo(a4)),
    sel(0, "calling commandSleep (&fClockStopTimer) - fClockStopDeadline: %d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "woken early - fClockStopDeadline is now %d.%03d.%03d.%03d", nanos(a2)),

    event(0x05245278, "registerAfgPowerStateWithController"),
    verbose(start("Start - functionGroup: %p afgPowerState: %lld fFunctionGroupsInD0: %lld", a2, a3, a4)),
    verbose(end("End - functionGroup: %p fFunctionGroupsInD0: %lld result: 0x%08x", a2, a3, lo(a4))),
    sel(0, "functionGroup: %p is the first in D0 - clock has to run, fClockStopped: %s", a2, boolean(a3)),
    sel(1, "functionGroup: %p was the last in D0 - clock may stop in %d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x052452B8, "forcePMPowerStateToOff"),
    start("Start - fPMPowerState: %lld fFunctionGroupsInD0: %lld fActiveStreamCount: %lld", a2, a3, a4),
    end("End - fPMPowerState: %lld fFunctionGroupsInD0: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "going off although functionGroup: %p is in afgPowerState: %lld", a2, a3),

    event(0x052452BC, "ProtectedWaitForPowerOn"),
    start("Start - fPMPowerState: %lld pendingPowerState: %lld timeout: %d.%03d.%03d.%03d", a2, a3, nanos(a4)),
    end("End - fPMPowerState: %lld waited: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "calling commandSleep (&fPMPowerState) - fPMPowerState: %lld waiters: %lld", a2, a3),
    sel(1, "timed out - fPMPowerState: %lld pendingPowerState: %lld", a2, a3),
};

}  // namespace

constexpr Decoder kHdaController = decoder<kControllerRows, "OrvelHDAController">(audioClass(20), 34);

}  // namespace sonaprobe::decoders
