// High-definition audio below the engines: paths, codecs, nodes, function groups, engine input, the
// frame buffer's power notifications (classes 23 to 26, 30, 31), and the historic controller (0).

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

constexpr Entry kHistoricRows[] = {
    event(0x05240004, "interruptFilter"),
    start("insts: 0x%08llx", a2),
    end("insts: 0x%08llx loopcount: %llu", a2, a3),
    other("temp: %llu", a2),

    event(0x05240008, "interruptFilter or handleStreamInterruptOnISR"),  // one phrase, blanks and all
    any("value: 0x%08llx", a2),

    event(0x0524000C, "interruptFilter"),
    any("intsts: 0x%08llx  prevIntsts:0x%08llx  loopcount: %llu", a2, a3, a4),  // blanks as they are

    event(0x05240010, "_streamInterruptHandler"),
    any("timestamp: 0x%16llx mExpectedWrapInterval: 0x%16llx", a2, a3),

    event(0x05240014, "_streamInterruptHandler"),
    any("filtered timestamp: 0x%16llx mExpectedWrapInterval: 0x%16llx", a2, a3),
};

constexpr Entry kPathRows[] = {
    event(0x05245C0C, "enable"),
    start("Start - stream: %p channelID: %d channelConfig: %d", a2, lo(a3), lo(a4)),
    end("End - stream: %p channelID: %d result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "sampleRate: %d bitsPerSample: %d channelCount: %d sampleFormat: 0x%08x", hi(a2), lo(a2), hi(a3), lo(a3)),

    event(0x05245C1C, "setPathFormat"),
    start("Start - sampleRate: %d bitsPerSample: %d channelCount: %d sampleFormat: 0x%08x channelConfig: 0x%08x context: 0x%08x", hi(a2), lo(a2), hi(a3), lo(a3), hi(a4), lo(a4)),
    end("End - result: 0x%08x", lo(a4)),

    event(0x05245C20, "setPowerState"),
    start("Start - plexoDevicePowerState: %lld fAudioFunctionGroup: %p fCurrentPowerState: %lld", a2, a3, a4),
    end("End - returning 0x%llx", named("returning", a4)),
    sel(0, "index: %lld widget: %p", a2, a3),
};

constexpr Entry kCodecGenericRows[] = {
    event(0x05246004, "start"),
    sel(0, "turning function group: %p ON (D0)", named("function group", a2)),  // selectors the other way round than below
    sel(1, "found functionGroup %p in state %lld - sending back", named("functionGroup", a2), named("state", a3)),

    event(0x0524604C, "setAFGPowerState"),
    start("function group: %p afgPowerState: %lld", a2, a3),
    end("function group: %p afgPowerState: %lld result: 0x%llx", a2, a3, a4),

    event(0x05246054, "enableUnsolicited"),
    sel(0, "getting power state for function group: %p", named("function group", a2)),
    sel(1, "turning function group: %p ON (D0)", named("function group", a2)),
    sel(2, "found functionGroup %p in state %lld - sending back", named("functionGroup", a2), named("state", a3)),
};

constexpr Entry kNodeRows[] = {
    event(0x0524643C, "powerState"),
    verbose(start("Start - powerStatePtr: %p fCurrentPowerState: %lld", a2, a3)),
    verbose(end("End - fCurrentPowerState: %lld result: 0x%08x", a2, lo(a4))),
    verbose(sel(0, "updating fCurrentPowerState from %lld to %lld due to hardware state", named("fCurrentPowerState", a2), named("new fCurrentPowerState", a4))),  // arg4, although its low byte selects

    event(0x05246440, "setPowerState"),
    verbose(start("Start - powerState: %lld fCurrentPowerState: %lld forcePowerState: %s", a2, a3, boolean(a4))),
    verbose(end("End - fCurrentPowerState: %lld result: 0x%08x", a2, lo(a4))),
};

constexpr Entry kFunctionGroupRows[] = {
    event(0x0524686C, "setPowerState"),
    verbose(start("Start - aPowerState: %lld forcePowerState: %s", a2, boolean(a3))),
    verbose(end("End - aPowerState: %lld forcePowerState: %s result: 0x%08x", a2, boolean(a3), lo(a4))),
    verbose(sel(0, "going to D0, fPowerManagementD0Count: %lld, currentPowerState: %lld", a2, a3)),
    verbose(sel(1, "going to D3, fPowerManagementD0Count: %lld, currentPowerState: %lld", a2, a3)),
    verbose(sel(2, "calling registerAfgPowerStateWithController(%lld, %lld)", named("codecAddress", a2), named("afgPowerState", a3))),
};

constexpr Entry kEngineInputRows[] = {
    event(0x05247800, "protectedChangePathSet"),
    sel(0, "putting pathSet: %p into power state: %lld", named("pathSet", a2), named("power state", a3)),

    event(0x05247804, "handleInputNone"),
    sel(0, "turning functionGroup: %p ON", named("functionGroup", a2)),
    sel(1, "putting functionGroup: %p into restorePowerState: %lld", named("functionGroup", a2), named("restorePowerState", a3)),

    event(0x05247808, "adjustEngineForClientType"),
    sel(0, "turning functionGroup: %p ON", named("functionGroup", a2)),
    sel(1, "putting functionGroup: %p into afgPowerState: %lld", named("functionGroup", a2), named("afgPowerState", a3)),
};

constexpr Entry kFrameBufferRows[] = {
    event(0x05247C18, "DEBUG_PM"),
    start("Start: fCRTCIndex(%d) fCurrentPowerState (%d) newState (%d) BeefCheck: %x", named("fCRTCIndex", lo(a2)), named("fCurrentPowerState", hi(a3)), named("newState", lo(a3)), hi(a4)),
    end("End: fCRTCIndex(%d) BeefCheck: %x", named("fCRTCIndex", lo(a2)), lo(a4)),  // the low half here, the high one at the start
    sel(1, "sending kIOFBNotifyWillPowerOff fCRTCIndex(%d)", named("fCRTCIndex", lo(a2))),
    sel(2, "sending kIOFBNotifyDidPowerOff fCRTCIndex(%d)", named("fCRTCIndex", lo(a2))),
    sel(3, "sending kIOFBNotifyWillSleep fCRTCIndex(%d)", named("fCRTCIndex", lo(a2))),
    sel(4, "sending kIOFBNotifyDidWake fCRTCIndex(%d)", named("fCRTCIndex", lo(a2))),
    sel(5, "sending kIOFBNotifyWillPowerOn fCRTCIndex(%d)", named("fCRTCIndex", lo(a2))),
    sel(6, "sending kIOFBNotifyDidPowerOn fCRTCIndex(%d)", named("fCRTCIndex", lo(a2))),
};

}  // namespace

// Group of class 20 too: the historic class traced the same controller.
constexpr Decoder kHdaHistoric = gated(Gate::historic, decoder<kHistoricRows, "OrvelHDAController">(audioClass(kHistoricClass), 5));
constexpr Decoder kHdaPath = decoder<kPathRows, "OrvelHDAPath">(audioClass(23), 3);
constexpr Decoder kHdaCodecGeneric = decoder<kCodecGenericRows, "OrvelHDACodecGeneric">(audioClass(24), 3);
constexpr Decoder kHdaNode = decoder<kNodeRows, "OrvelHDANode">(audioClass(25), 2);
constexpr Decoder kHdaFunctionGroup = decoder<kFunctionGroupRows, "OrvelHDAFunctionGroup">(audioClass(26), 1);
constexpr Decoder kHdaEngineInput = decoder<kEngineInputRows, "OrvelHDAEngineInput">(audioClass(30), 3);
constexpr Decoder kHdaFrameBuffer = decoder<kFrameBufferRows, "FRAMEBUFFER">(audioClass(31), 1);

}  // namespace sonaprobe::decoders
