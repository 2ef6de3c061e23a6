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
    sel(1, "ERROR: timed out - offset: 0x%x mask: 0x%08x wanted: 0x%08x value: 0x%08x polls: %d", hi(a2), lo(a2), hi(a3), lo(a3), hi(a4)),

    event(0x05245040, "gfxMatchedHandler"),
    start("Start - newService: %p fGfxService: %p fPMPowerState: %lld", a2, a3, a4),
    end("End - fGfxService: %p fGfxPowerState: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "registering for power state changes - fGfxService: %p", a2),
    sel(1, "already matched - newService: %p fGfxService: %p", a2, a3),

    event(0x05245050, "gfxTerminatedHandler"),
    start("Start - terminatedService: %p fGfxService: %p fGfxPowerState: %lld", a2, a3, a4),
    end("End - fGfxService: %p fDisplayReadyMask: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "ignoring another service - terminatedService: %p fGfxService: %p", a2, a3),
    sel(1, "ERROR: terminated before acknowledging - fGfxService: %p gfxPowerState: %lld", a2, a3),

    event(0x05245074, "framebufferEventHandler"),
    start("Start - framebuffer: %p event: 0x%08x fDisplayReadyMask: 0x%08x", a2, lo(a3), lo(a4)),
    end("End - event: 0x%08x fDisplayReadyMask: 0x%08x result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "power off - holding codec commands - fCRTCIndex: %d pending: %lld", lo(a2), a3),
    sel(1, "power on - releasing codec commands - fCRTCIndex: %d pending: %lld", lo(a2), a3),
    sel(2, "ignoring unknown framebuffer - event: 0x%08x framebuffer: %p", lo(a2), a3),

    event(0x05245078, "requestBandwidth"),
    start("Start - stream: %p wordsPerFrame: %lld OUTPAY: %lld", a2, a3, a4),
    end("End - wordsPerFrame: %lld OUTPAY: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "ERROR: link capacity exceeded - wordsPerFrame: %lld available: %lld", a2, a3),
    sel(1, "stripe control: %lld SDOs: %lld", a2, a3),

    event(0x05245080, "displayIsReady"),
    verbose(start("Start - codecAddress: %d fCRTCIndex: %d fDisplayReadyMask: 0x%08x fGfxPowerState: %lld", hi(a2), lo(a2), lo(a3), a4)),
    verbose(end("End - fCRTCIndex: %d ready: %s fDisplayReadyMask: 0x%08x", lo(a2), boolean(a3), lo(a4))),
    sel(0, "ERROR: display not ready - fCRTCIndex: %d waited: %d.%03d.%03d.%03d", lo(a2), nanos(a3)),

    event(0x0524508C, "protectedRunPeriodicTasks"),
    verbose(start("Start - fPMPowerState: %lld fActiveStreamCount: %lld fClockStopDeadline: %d.%03d.%03d.%03d", a2, a3, nanos(a4))),
    verbose(end("End - fClockStopped: %s timeout: %d.%03d.%03d.%03d", boolean(a2), nanos(a3))),
    sel(0, "calling commandWakeup (&fClockStopTimer)"),

    event(0x05245094, "retriggerClockStopTimer"),
    verbose(start("Start - fClockStopDeadline: %d.%03d.%03d.%03d fClockStopDelay: %d.%03d.%03d.%03d fClockStopped: %s", nanos(a2), nanos(a3), boolean(a4))),
    verbose(end("End - fClockStopDeadline: %d.%03d.%03d.%03d", nanos(a2))),
    verbose(sel(0, "not armed - fClockStopAllowed: %s fActiveStreamCount: %lld", boolean(a2), a3)),

    event(0x0524509C, "setupHostInterface"),
    start("Start"),
    end("End - fRegisters: %p GCAP: 0x%04x result: 0x%08x", a2, lo(a3), lo(a4)),
    // The three counts as GCAP has them.
    sel(0, "outputStreams: %d inputStreams: %d bidirectionalStreams: %d", byte(2, a2), byte(1, a2), byte(0, a2)),
    sel(1, "rings - address: 0x%llx CORB entries: %d RIRB entries: %d", a2, hi(a3), lo(a3)),
    sel(2, "DMA position buffer - address: 0x%llx streams: %lld", a2, a3),

    event(0x052450CC, "resetAudioController"),
    start("Start - GCTL: 0x%08x STATESTS: 0x%04x fPMPowerState: %lld", lo(a2), lo(a3), a4),
    end("End - GCTL: 0x%08x STATESTS: 0x%04x result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "link in reset - GCTL: 0x%08x elapsed: %d.%03d.%03d.%03d", lo(a2), nanos(a3)),
    sel(1, "link out of reset - GCTL: 0x%08x elapsed: %d.%03d.%03d.%03d", lo(a2), nanos(a3)),
    sel(2, "codecs changed by reset - STATESTS: 0x%04x -> 0x%04x", lo(a2), named("new STATESTS", lo(a3))),

    event(0x052450D0, "setupAudioController"),
    start("Start - fRegisters: %p pciID: 0x%08x pciCommand: 0x%04x", a2, lo(a3), lo(a4)),
    end("End - pciCommand: 0x%04x INTCTL: 0x%08x result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "interrupt index: %lld messageSignalled: %s", a2, boolean(a3)),
    sel(1, "traffic class: %lld snooping: %s", a2, boolean(a3)),

    event(0x05245104, "setCodecProperties"),
    start("Start - codec: %p codecAddress: %d vendorID: 0x%08x", a2, lo(a3), lo(a4)),
    end("End - codec: %p subsystemID: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "not in platform tables - codecAddress: %d subsystemID: 0x%08x", lo(a2), lo(a3)),

    event(0x0524510C, "startCORB"),
    start("Start - CORBCTL: 0x%02x CORBWP: %d CORBRP: %d", lo(a2), lo(a3), lo(a4)),
    end("End - CORBCTL: 0x%02x CORBSIZE: 0x%02x result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "read pointer reset - CORBRP: %d elapsed: %d.%03d.%03d.%03d", lo(a2), nanos(a3)),

    event(0x05245110, "stopCORB"),
    start("Start - CORBCTL: 0x%02x CORBWP: %d CORBRP: %d pending: %d", lo(a2), hi(a3), lo(a3), lo(a4)),
    end("End - CORBCTL: 0x%02x dropped: %d result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "ERROR: DMA engine still running - CORBCTL: 0x%02x waited: %d.%03d.%03d.%03d", lo(a2), nanos(a3)),

    event(0x05245118, "stopRIRB"),
    start("Start - RIRBCTL: 0x%02x RIRBWP: %d fRIRBReadPointer: %d", lo(a2), lo(a3), lo(a4)),
    end("End"),
    sel(0, "ERROR: DMA engine still running - RIRBCTL: 0x%02x waited: %d.%03d.%03d.%03d", lo(a2), nanos(a3)),
    sel(1, "responses not read - RIRBWP: %d fRIRBReadPointer: %d", lo(a2), lo(a3)),

    event(0x05245120, "handleCodecCommandAction"),
    verbose(start("Start - codecAddress: %d command: 0x%08x fPMPowerState: %lld fClockStopped: %s", hi(a2), lo(a2), a3, boolean(a4))),
    verbose(end("End - generation: %lld response: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4))),
    verbose(sel(0, "calling commandSleep - generation: %lld CORBWP: %d CORBRP: %d", a2, hi(a3), lo(a3))),
    sel(1, "ERROR: CORB full - codecAddress: %d command: 0x%08x CORBWP: %d CORBRP: %d", hi(a2), lo(a2), hi(a3), lo(a3)),
    sel(2, "ERROR: controller without power - codecAddress: %d command: 0x%08x fPMPowerState: %lld", hi(a2), lo(a2), a3),

    event(0x05245128, "serviceRIRB"),
    verbose(start("Start - RIRBSTS: 0x%02x RIRBWP: %d fRIRBReadPointer: %d", lo(a2), lo(a3), lo(a4))),
    verbose(end("End - responses: %d unsolicited: %d fRIRBReadPointer: %d", lo(a2), lo(a3), lo(a4))),
    verbose(sel(0, "solicited - codecAddress: %d response: 0x%08x generation: %lld", hi(a2), lo(a2), a3)),
    sel(1, "unsolicited - codecAddress: %d response: 0x%08x tag: 0x%llx", hi(a2), lo(a2), a3),
    sel(2, "ERROR: response without command - codecAddress: %d response: 0x%08x generation: %lld", hi(a2), lo(a2), a3),
    sel(3, "ERROR: response overrun - RIRBSTS: 0x%02x RIRBWP: %d fRIRBReadPointer: %d", lo(a2), hi(a3), lo(a3)),

    event(0x0524512C, "checkCodecCommandTimeout"),
    start("Start - generation: %lld wakeUp: %s fPMPowerState: %d", a2, boolean(a3), lo(a4)),
    end("End- generation: %lld wakeUp: %s fPMPowerState: %d", a2, boolean(a3), lo(a4)),  // sic, no blank before the hyphen
    sel(0, "ERROR: command timed out - codecAddress: %d command: 0x%08x generation: %lld", hi(a2), lo(a2), a3),
    sel(1, "ERROR: resetting link - codecAddress: %d timeouts: %d", lo(a2), lo(a3)),

    event(0x052451BC, "resetStreamForOffset"),
    start("Start - offset: 0x%x SDCTL: 0x%06x SDSTS: 0x%02x", lo(a2), lo(a3), lo(a4)),
    end("End - offset: 0x%x SDCTL: 0x%06x result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "stream in reset - offset: 0x%x elapsed: %d.%03d.%03d.%03d", lo(a2), nanos(a3)),
    sel(1, "stream out of reset - offset: 0x%x elapsed: %d.%03d.%03d.%03d", lo(a2), nanos(a3)),
    sel(2, "ERROR: reset bit not followed - offset: 0x%x SDCTL: 0x%06x waited: %d.%03d.%03d.%03d", hi(a2), lo(a2), nanos(a3)),

    event(0x05245214, "message"),
    start("Start - type: 0x%08x provider: %p argument: %p", lo(a2), a3, a4),
    end("End - type: 0x%08x result: 0x%08x", lo(a2), lo(a3)),
    sel(0, "passing on - type: 0x%08x codec: %p", lo(a2), a3),
    sel(1, "calling up to superclass - type: 0x%08x", lo(a2)),

    event(0x05245220, "setPowerState"),
    start("Start - powerState: %lld", a2),
    end(nonZero(a3), "End - powerState: %lld FROM A DIFFERENT POLICYMAKER: %p result: %lld", a2, named("policymaker", a3), a4),
    end("End - powerState: %lld result: %lld", a2, a4),  // arg3 is null where the controller's own policymaker asked
    sel(0, "waiting for pending change - powerState: %lld pendingPowerState: %lld", a2, a3),

    event(0x05245224, "handleSetPowerState"),
    start("Start - powerState: %lld fPMPowerState: %lld fPowerThreadCall: %p", a2, a3, a4),
    end("End - fPMPowerState: %lld acknowledged: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "acknowledging - powerState: %lld elapsed: %d.%03d.%03d.%03d", a2, nanos(a3)),
    sel(1, "superseded - powerState: %lld pendingPowerState: %lld", a2, a3),

    event(0x05245228, "setPowerStateGated"),
    start("Start - powerState: %lld fPMPowerState: %lld fFunctionGroupsInD0: %lld", a2, a3, a4),
    end("End - fPMPowerState: %lld elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "powering up - fGfxPowerState: %lld codecMask: 0x%04x", a2, lo(a3)),
    sel(1, "powering down - fActiveStreamCount: %lld pending: %lld", a2, a3),
    sel(2, "ERROR: codec not present - codecAddress: %lld STATESTS: 0x%04x", a2, lo(a3)),

    event(0x05245230, "shutdownHDAController"),
    start("Start - fPMPowerState: %lld fActiveStreamCount: %lld INTCTL: 0x%08x", a2, a3, lo(a4)),
    end("End - GCTL: 0x%08x WAKEEN: 0x%04x", lo(a2), lo(a3)),
    sel(0, "stopping stream - offset: 0x%x SDCTL: 0x%06x", lo(a2), lo(a3)),
    sel(1, "interrupts off - INTCTL: 0x%08x INTSTS: 0x%08x", lo(a2), lo(a3)),

    event(0x05245234, "gfxSetPowerState"),
    start("Start - gfxPowerState: %lld fGfxPowerState: %lld fPMPowerState: %lld", a2, a3, a4),
    end("End - gfxPowerState: %lld result: 0x%08x", a2, lo(a3)),
    sel(0, "no gfx service yet - gfxPowerState: %lld", a2),

    event(0x05245238, "gfxSetPowerStateGated"),
    start("Start - gfxPowerState: %lld fGfxService: %p fGfxPowerOnCount: %lld", a2, a3, a4),
    end("End - fGfxPowerState: %lld fGfxPowerOnCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "other users - fGfxPowerState: %lld fGfxPowerOnCount: %lld", a2, a3),
    sel(1, "ERROR: power state not reached - fGfxPowerState: %lld waited: %d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x05245240, "powerStateWillChangeTo"),
    start("Start - device: %p stateNumber: %lld capabilities: 0x%llx", a2, a3, a4),
    end("End - stateNumber: %lld microsecondsUntilReady: %lld", a2, a3),
    sel(0, "finishing display codec commands - pending: %lld fDisplayReadyMask: 0x%08x", a2, lo(a3)),

    event(0x05245244, "powerStateDidChangeTo"),
    start("Start - device: %p stateNumber: %lld capabilities: 0x%llx", a2, a3, a4),
    end("End - fGfxPowerState: %lld fDisplayReadyMask: 0x%08x microsecondsUntilReady: %lld", a2, lo(a3), a4),
    sel(0, "calling commandWakeup (&fGfxPowerState) - fGfxPowerState: %lld waiters: %lld", a2, a3),

    event(0x05245254, "setControllerClockStopState"),
    verbose(start("Start - stopClock: %s fClockStopped: %s fActiveStreamCount: %lld", boolean(a2), boolean(a3), a4)),
    verbose(end("End - fClockStopped: %s result: 0x%08x", boolean(a2), lo(a3))),
    verbose(sel(0, "clock needed - codecMask: 0x%04x clockStopMask: 0x%04x", lo(a2), lo(a3))),
    sel(1, "ERROR: clock did not follow - stopClock: %s waited: %d.%03d.%03d.%03d", boolean(a2), nanos(a3)),

    event(0x0524525C, "stopWaitControllerClock"),
    start("Start - fClockStopped: %s waiters: %lld fClockStopDeadline: %d.%03d.%03d.%03d", boolean(a2), a3, nanos(a4)),
    end("End - fClockStopped: %s elapsed: %d.%03d.%03d.%03d result: 0x%08x", boolean(a2), nanos(a3), lo(a4)),
    sel(0, "clock running - fPMPowerState: %lld", a2),

    event(0x05245260, "waitForClockStopTimerEvent"),
    start("Start - fClockStopDeadline: %d.%03d.%03d.%03d fFunctionGroupsInD0: %lld", nanos(a2), a3),
    end("End - fClockStopped: %s waited: %d.%03d.%03d.%03d result: 0x%08x", boolean(a2), nanos(a3), lo(a4)),
    sel(0, "calling commandSleep (&fClockStopTimer) - fClockStopDeadline: %d.%03d.%03d.%03d", nanos(a2)),
    sel(1, "woken before deadline - fClockStopDeadline: %d.%03d.%03d.%03d", nanos(a2)),

    event(0x05245278, "registerAfgPowerStateWithController"),
    verbose(start("Start - codecAddress: %lld afgPowerState: %lld fFunctionGroupsInD0: %lld", a2, a3, a4)),
    verbose(end("End - codecAddress: %lld fFunctionGroupsInD0: %lld result: 0x%08x", a2, a3, lo(a4))),
    sel(0, "first in D0 - codecAddress: %lld fClockStopped: %s", a2, boolean(a3)),
    sel(1, "last out of D0 - codecAddress: %lld timeout: %d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x052452B8, "forcePMPowerStateToOff"),
    start("Start - fPMPowerState: %lld fFunctionGroupsInD0: %lld fActiveStreamCount: %lld", a2, a3, a4),
    end("End - fPMPowerState: %lld fFunctionGroupsInD0: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "functionGroup: %p afgPowerState: %lld", a2, a3),

    event(0x052452BC, "ProtectedWaitForPowerOn"),
    start("Start - fPMPowerState: %lld pendingPowerState: %lld timeout: %d.%03d.%03d.%03d", a2, a3, nanos(a4)),
    end("End - fPMPowerState: %lld waited: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "calling commandSleep (&fPMPowerState) - fPMPowerState: %lld waiters: %lld", a2, a3),
    sel(1, "ERROR: timed out - fPMPowerState: %lld pendingPowerState: %lld", a2, a3),
};

}  // namespace

constexpr Decoder kHdaController = decoder<kControllerRows, "OrvelHDAController">(audioClass(20), 34);

}  // namespace sonaprobe::decoders
