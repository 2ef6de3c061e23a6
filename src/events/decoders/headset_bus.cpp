// The bus that the headset remote talks on: bulk data and audio in both directions, the second
// hardware version (V11) and the line out on the same jack (LO) (class 48).

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

constexpr Entry kPimletBusRows[] = {
    event(0x0524C000, "EnableController"),
    start("Start - fEnableCount: %lld fBusClock: %lld fBusState: %lld", a2, a3, a4),
    end("End - fEnableCount: %lld headset synchronized: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "bus clock locked after %d.%03d.%03d.%03d, sending synchronization frames: %lld", nanos(a2), a3),
    sel(1, "headset does not answer, synchronization retries left: %lld", a2),

    event(0x0524C004, "DisableController"),
    start("Start - fEnableCount: %lld fDownlinkPending: %lld fUplinkPending: %lld", a2, a3, a4),
    end("End - fEnableCount: %lld fBusState: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "traffic channels still open: 0x%llx - closing them", a2),

    event(0x0524C008, "InterruptAction"),
    start("Start - interruptStatus: 0x%08x interruptMask: 0x%08x fBusState: %lld", hi(a2), lo(a2), a3),
    end("End - acknowledged: 0x%08x still pending: 0x%08x", hi(a2), lo(a2)),
    sel(0, "uplink bulk data - bytes: %lld fUplinkPending: %lld", a2, a3),
    sel(1, "downlink has room again - fDownlinkFree: %lld", a2),
    sel(2, "frame synchronization lost at frame: %lld fSyncLossCount: %lld", a2, a3),
    sel(3, "parity error in uplink frame: %lld fParityErrorCount: %lld", a2, a3),

    event(0x0524C00C, "SetBroadcastPacket"),
    start("Start - packet: 0x%llx fBroadcastPacket: 0x%llx repeat: %lld", a2, a3, a4),
    end("End - fBroadcastPacket: 0x%llx first sent in frame: %lld result: 0x%08x", a2, a3, lo(a4)),

    event(0x0524C010, "GetDownlinkDataBuffer"),
    start("Start - bytes wanted: %lld fDownlinkFree: %lld", a2, a3),
    end("End - buffer: %p size: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "ring is full - fDownlinkHead: %lld fDownlinkTail: %lld", a2, a3),

    event(0x0524C014, "SendDownlinkBulkData"),
    start("Start - buffer: %p length: %lld fDownlinkPending: %lld", a2, a3, a4),
    end("End - bytes queued: %lld fDownlinkPending: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "headset refused packet: %lld, sending it again - retry: %lld", a2, a3),

    event(0x0524C018, "FlushDownlinkBulkData"),
    start("Start - bytes not yet sent: %lld fDownlinkHead: %d fDownlinkTail: %d", a2, hi(a3), lo(a3)),
    end("End - bytes thrown away: %lld fDownlinkFree: %lld result: 0x%08x", a2, a3, lo(a4)),

    event(0x0524C01C, "FlushUplinkBulkData"),
    start("Start - bytes not yet read: %lld fUplinkHead: %d fUplinkTail: %d", a2, hi(a3), lo(a3)),
    end("End - bytes dropped: %lld partial packet dropped: %s result: 0x%08x", a2, boolean(a3), lo(a4)),

    event(0x0524C020, "FlushBulkData"),
    start("Start - fDownlinkPending: %lld fUplinkPending: %lld fBusState: %lld", a2, a3, a4),
    end("End - bytes flushed, downlink: %lld uplink: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "controller is off, only the rings are reset - fBusState: %lld", a2),

    event(0x0524C024, "SetTrafficChannelFormat"),
    start("Start - channel: %d %s sampleRate: %d bitsPerSample: %d slots: 0x%llx", hi(a2), either(lo(a2), "uplink", "downlink"), hi(a3), lo(a3), a4),
    end("End - channel: %d formatControl: 0x%08x result: 0x%08x", hi(a2), lo(a2), lo(a3)),
    sel(0, "slots: 0x%llx belong to channel: %lld already", a2, a3),
    sel(1, "channel: %lld is running, new format from frame: %lld on", a2, a3),

    event(0x0524C028, "CreateAudio2Device"),
    start("Start - fAudio2Device: %p headsetID: 0x%llx directions: 0x%llx", a2, a3, a4),
    end("End - fAudio2Device: %p streams: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "device: %p of the headset before is still closing", a2),

    event(0x0524C02C, "RegisterLineOut"),
    start("Start - lineOut: %p fLineOut: %p", a2, a3),
    end("End - fLineOut: %p jack is in: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "fLineOut: %p is registered already, lineOut: %p turned away", a2, a3),

    event(0x0524C030, "UnregisterLineOut"),
    start("Start - lineOut: %p fLineOut: %p fLineOutRunning: %s", a2, a3, boolean(a4)),
    end("End - lineOut: %p released: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "lineOut: %p still plays, stopping it first", a2),

    event(0x0524C034, "GetLineOutRegistered"),
    start("Start - fLineOut: %p asked by: %p", a2, a3),
    end("End - returning %s", boolean(a2)),

    event(0x0524C038, "ReloadConfig"),
    start("Start - fConfigVersion: %lld headsetID: 0x%llx fBusState: %lld", a2, a3, a4),
    end("End - fConfigVersion: %lld entries: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "checksum: 0x%llx expected: 0x%llx - keeping the old configuration", a2, a3),
    sel(1, "headsetID: 0x%llx has no entry, taking the default configuration", a2),

    event(0x0524C03C, "GetSupportedSampleRate"),
    start("Start - index: %lld sampleRateMask: 0x%llx", a2, a3),
    end("End - index: %lld sampleRate: %lld result: 0x%08x", a2, a3, lo(a4)),

    event(0x0524C040, "V11CreateRootPort"),
    start("Start - controllerVersion: 0x%llx fRootPort: %p", a2, a3),
    end("End - fRootPort: %p traffic channels: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "capabilities: 0x%llx bulk buffer: %lld bytes", a2, a3),

    event(0x0524C044, "V11LineOutStart"),
    start("Start - fLineOut: %p sampleRate: %lld bus shared with remote: %s", a2, a3, boolean(a4)),
    end("End - fLineOut: %p fLineOutRunning: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "remote is in the middle of a bulk transfer, waiting for its last bytes: %lld", a2),

    event(0x0524C048, "V11EnableController"),
    start("Start - fEnableCount: %lld control: 0x%08x status: 0x%08x", a2, hi(a3), lo(a3)),
    end("End - fEnableCount: %lld status: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "out of reset after %d.%03d.%03d.%03d, loading slot table of entries: %lld", nanos(a2), a3),
    sel(1, "ERROR: status: 0x%llx never showed ready, waited %d.%03d.%03d.%03d", a2, nanos(a3)),

    event(0x0524C04C, "V11DisableController"),
    start("Start - fEnableCount: %lld trafficChannels: 0x%llx downlink buffer level: %lld", a2, a3, a4),
    end("End - fEnableCount: %lld clock gated: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "others hold the controller, staying on - fEnableCount: %lld", a2),
    sel(1, "traffic channel: %lld did not stop by frame: %lld - resetting", a2, a3),

    event(0x0524C050, "V11InterruptActionGated"),
    start("Start - interruptStatus: 0x%llx raised: %d.%03d.%03d.%03d fInterruptCount: %lld", a2, nanos(a3), a4),
    end("End - interruptMask: 0x%08x handled: 0x%08x", hi(a2), lo(a2)),
    sel(0, "uplink buffer level: %lld handing to client: %p", a2, a3),
    sel(1, "downlink buffer below watermark: %lld level: %lld", a2, a3),
    sel(2, "headset gone from the bus, last good frame: %lld", a2),

    event(0x0524C054, "V11SetBroadcastPacket"),
    start("Start - packet: 0x%llx slot: %lld broadcast busy: %s", a2, a3, boolean(a4)),
    end("End - packet register: 0x%llx waited: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),

    event(0x0524C058, "V11GetDownlinkBufferAvailable"),
    start("Start - write pointer: 0x%llx read pointer: 0x%llx", a2, a3),
    end("End - returning %lld of %lld bytes", a2, a3),

    event(0x0524C05C, "V11SendDownlinkBufferData"),
    start("Start - data: %p length: %lld available: %lld", a2, a3, a4),
    end("End - bytes written: %lld write pointer: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "wrapping, bytes up to the end: %lld from the beginning: %lld", a2, a3),
    sel(1, "does not fit, bytes left over for the next interrupt: %lld", a2),

    event(0x0524C060, "V11FlustBulkData"),  // sic
    start("Start - downlink buffer level: %lld uplink buffer level: %lld status: 0x%08x", a2, a3, lo(a4)),
    end("End - flush done in %d.%03d.%03d.%03d status: 0x%08x result: 0x%08x", nanos(a2), lo(a3), lo(a4)),

    event(0x0524C064, "V11SetTrafficChannelFormat"),
    start("Start - channel: %d sampleRate: %d bitsPerSample: %d channelCount: %d slotTable: 0x%llx", hi(a2), lo(a2), hi(a3), lo(a3), a4),
    end("End - slotTable: 0x%llx bits per frame used: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "frame has bits left: %lld but the format needs: %lld", a2, a3),

    event(0x0524C068, "LOCreateRootPort"),
    start("Start - fLineOut: %p fLineOutPort: %p", a2, a3),
    end("End - fLineOutPort: %p sample rates: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "no line out registered yet, fLineOutPort: %p waits for it", a2),

    event(0x0524C06C, "LOLineOutStart"),
    start("Start - sampleRate: %d bitsPerSample: %d fLineOutPort: %p fLineOutRunning: %s", hi(a2), lo(a2), a3, boolean(a4)),
    end("End - fLineOutPort: %p first frame out: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "taking the jack from the remote - fBusState: %lld", a2),

    event(0x0524C070, "LOLineOutStop"),
    start("Start - fLineOutPort: %p frames played: %lld", a2, a3),
    end("End - fLineOutPort: %p underruns: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "giving the jack back to the remote - fBusState: %lld", a2),

    event(0x0524C074, "StartAudio"),
    start("Start - trafficChannels: 0x%llx running: 0x%llx fBusState: %lld", a2, a3, a4),
    end("End - running: 0x%llx first frame: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "controller is off, enabling it for channels: 0x%llx", a2),
    sel(1, "channel: %lld has no format - not started", a2),

    event(0x0524C078, "StopAudio"),
    start("Start - trafficChannels: 0x%llx running: 0x%llx last frame: %lld", a2, a3, a4),
    end("End - running: 0x%llx frames dropped since start: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "no channel runs any more, leaving bulk data alone on the bus - fDownlinkPending: %lld", a2),
};

}  // namespace

constexpr Decoder kPimletBus = decoder<kPimletBusRows, "OrvelPimletBus">(audioClass(48), 31);

}  // namespace sonaprobe::decoders
