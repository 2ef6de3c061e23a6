// The bus that the headset remote talks on: bulk data and audio in both directions, the second
// hardware version (V11) and the line out on the same jack (LO) (class 48).

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

constexpr Entry kPimletBusRows[] = {
    event(0x0524C000, "EnableController"),
    start("Start - fEnableCount: %lld fBusClock(Hz): %lld fBusState: %lld", a2, a3, a4),
    end("End - fEnableCount: %lld synchronized: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "bus clock locked - elapsed: %d.%03d.%03d.%03d sync frames: %lld", nanos(a2), a3),
    sel(1, "ERROR: no answer from headset - retriesLeft: %lld", a2),

    event(0x0524C004, "DisableController"),
    start("Start - fEnableCount: %lld fDownlinkPending: %lld fUplinkPending: %lld", a2, a3, a4),
    end("End - fEnableCount: %lld fBusState: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "closing channels - trafficChannels: 0x%llx", a2),

    event(0x0524C008, "InterruptAction"),
    start("Start - interruptStatus: 0x%08x interruptMask: 0x%08x fBusState: %lld", lo(a2), lo(a3), a4),
    end("End - acknowledged: 0x%08x pendingStatus: 0x%08x", lo(a2), lo(a3)),
    sel(0, "uplink - bytes: %lld fUplinkPending: %lld", a2, a3),
    sel(1, "downlink - fDownlinkFree: %lld", a2),
    sel(2, "ERROR: synchronization lost - frame: %lld fSyncLossCount: %lld", a2, a3),
    sel(3, "ERROR: uplink parity - frame: %lld fParityErrorCount: %lld", a2, a3),

    event(0x0524C00C, "SetBroadcastPacket"),
    start("Start - packet: 0x%llx fBroadcastPacket: 0x%llx repeat: %lld", a2, a3, a4),
    end("End - fBroadcastPacket: 0x%llx first frame: %lld result: 0x%08x", a2, a3, lo(a4)),

    event(0x0524C010, "GetDownlinkDataBuffer"),
    start("Start - bytes: %lld fDownlinkFree: %lld", a2, a3),
    end("End - buffer: %p bytes: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "ERROR: ring full - fDownlinkHead: %lld fDownlinkTail: %lld", a2, a3),

    event(0x0524C014, "SendDownlinkBulkData"),
    start("Start - buffer: %p bytes: %lld fDownlinkPending: %lld", a2, a3, a4),
    end("End - bytes queued: %lld fDownlinkPending: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "ERROR: packet refused - packetNumber: %lld retry: %lld", a2, a3),

    event(0x0524C018, "FlushDownlinkBulkData"),
    start("Start - bytes pending: %lld fDownlinkHead: %d fDownlinkTail: %d", a2, lo(a3), lo(a4)),
    end("End - bytes dropped: %lld fDownlinkFree: %lld result: 0x%08x", a2, a3, lo(a4)),

    event(0x0524C01C, "FlushUplinkBulkData"),
    start("Start - bytes pending: %lld fUplinkHead: %d fUplinkTail: %d", a2, lo(a3), lo(a4)),
    end("End - bytes dropped: %lld partialPacket: %s result: 0x%08x", a2, boolean(a3), lo(a4)),

    event(0x0524C020, "FlushBulkData"),
    start("Start - fDownlinkPending: %lld fUplinkPending: %lld fBusState: %lld", a2, a3, a4),
    end("End - downlink bytes: %lld uplink bytes: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "controller off - fBusState: %lld", a2),

    event(0x0524C024, "SetTrafficChannelFormat"),
    start("Start - channel: %d sampleRate: %d bitsPerSample: %d slotMask: 0x%x uplink: %s", hi(a2), lo(a2), hi(a3), lo(a3), boolean(a4)),
    end("End - channel: %d formatControl: 0x%08x result: 0x%08x", lo(a2), lo(a3), lo(a4)),
    sel(0, "ERROR: slots in use - slotMask: 0x%llx channel: %lld", a2, a3),
    sel(1, "channel running - channel: %lld first frame: %lld", a2, a3),

    event(0x0524C028, "CreateAudio2Device"),
    start("Start - fAudio2Device: %p headsetID: 0x%llx directions: 0x%llx", a2, a3, a4),
    end("End - fAudio2Device: %p streams: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "previous device still closing - device: %p", a2),

    event(0x0524C02C, "RegisterLineOut"),
    start("Start - lineOut: %p fLineOut: %p", a2, a3),
    end("End - fLineOut: %p plugged: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "ERROR: already registered - fLineOut: %p rejected lineOut: %p", a2, a3),

    event(0x0524C030, "UnregisterLineOut"),
    start("Start - lineOut: %p fLineOut: %p fLineOutRunning: %s", a2, a3, boolean(a4)),
    end("End - lineOut: %p released: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "stopping - lineOut: %p", a2),

    event(0x0524C034, "GetLineOutRegistered"),
    start("Start - fLineOut: %p client: %p", a2, a3),
    end("End - returning %s", named("returning", boolean(a2))),

    event(0x0524C038, "ReloadConfig"),
    start("Start - fConfigVersion: %lld headsetID: 0x%llx fBusState: %lld", a2, a3, a4),
    end("End - fConfigVersion: %lld entries: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "ERROR: wrong checksum - checksum: 0x%llx expected checksum: 0x%llx", a2, a3),
    sel(1, "default configuration - headsetID: 0x%llx", a2),

    event(0x0524C03C, "GetSupportedSampleRate"),
    start("Start - index: %lld sampleRateMask: 0x%llx", a2, a3),
    end("End - index: %lld sampleRate: %lld result: 0x%08x", a2, a3, lo(a4)),

    event(0x0524C040, "V11CreateRootPort"),
    start("Start - controllerVersion: 0x%llx fRootPort: %p", a2, a3),
    end("End - fRootPort: %p channelCount: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "capabilities: 0x%llx bufferSize(bytes): %lld", a2, a3),

    event(0x0524C044, "V11LineOutStart"),
    start("Start - fLineOut: %p sampleRate: %lld busShared: %s", a2, a3, boolean(a4)),
    end("End - fLineOut: %p fLineOutRunning: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "waiting for bulk transfer - bytes left: %lld", a2),

    event(0x0524C048, "V11EnableController"),
    start("Start - fEnableCount: %lld control: 0x%08x status: 0x%08x", a2, lo(a3), lo(a4)),
    end("End - fEnableCount: %lld status: 0x%08x result: 0x%08x", a2, lo(a3), lo(a4)),
    sel(0, "out of reset - elapsed: %d.%03d.%03d.%03d slot entries: %lld", nanos(a2), a3),
    sel(1, "ERROR: controller not ready - status: 0x%08x waited: %d.%03d.%03d.%03d", lo(a2), nanos(a3)),

    event(0x0524C04C, "V11DisableController"),
    start("Start - fEnableCount: %lld trafficChannels: 0x%llx downlink level: %lld", a2, a3, a4),
    end("End - fEnableCount: %lld clockGated: %s result: 0x%08x", a2, boolean(a3), lo(a4)),
    sel(0, "other users - fEnableCount: %lld", a2),
    sel(1, "ERROR: resetting channel - channel: %lld frame: %lld", a2, a3),

    event(0x0524C050, "V11InterruptActionGated"),
    start("Start - interruptStatus: 0x%08x time: %d.%03d.%03d.%03d fInterruptCount: %lld", lo(a2), nanos(a3), a4),
    end("End - interruptMask: 0x%08x handled: 0x%08x", lo(a2), lo(a3)),
    sel(0, "uplink level: %lld client: %p", a2, a3),
    sel(1, "downlink watermark: %lld level: %lld", a2, a3),
    sel(2, "ERROR: headset gone - last frame: %lld", a2),

    event(0x0524C054, "V11SetBroadcastPacket"),
    start("Start - packet: 0x%llx slot: %lld busy: %s", a2, a3, boolean(a4)),
    end("End - packet: 0x%llx waited: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),

    event(0x0524C058, "V11GetDownlinkBufferAvailable"),
    start("Start - writePointer: 0x%llx readPointer: 0x%llx", a2, a3),
    end("End - bytes available: %lld bytes: %lld", a2, a3),

    event(0x0524C05C, "V11SendDownlinkBufferData"),
    start("Start - data: %p bytes: %lld bytes available: %lld", a2, a3, a4),
    end("End - bytes written: %lld writePointer: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "buffer wrap - preWrapBytes: %lld postWrapBytes: %lld", a2, a3),
    sel(1, "buffer full - bytes left: %lld", a2),

    event(0x0524C060, "V11FlustBulkData"),  // sic
    start("Start - downlink level: %lld uplink level: %lld status: 0x%08x", a2, a3, lo(a4)),
    end("End - elapsed: %d.%03d.%03d.%03d status: 0x%08x result: 0x%08x", nanos(a2), lo(a3), lo(a4)),

    event(0x0524C064, "V11SetTrafficChannelFormat"),
    start("Start - channel: %d sampleRate: %d bitsPerSample: %d channelCount: %d slotTable: 0x%llx", hi(a2), lo(a2), hi(a3), lo(a3), a4),
    end("End - slotTable: 0x%llx bitsPerFrame: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "ERROR: frame full - bits left: %lld bits needed: %lld", a2, a3),

    event(0x0524C068, "LOCreateRootPort"),
    start("Start - fLineOut: %p fLineOutPort: %p", a2, a3),
    end("End - fLineOutPort: %p sampleRateMask: 0x%llx result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "line out not registered - fLineOutPort: %p", a2),

    event(0x0524C06C, "LOLineOutStart"),
    start("Start - sampleRate: %d bitsPerSample: %d fLineOutPort: %p fLineOutRunning: %s", hi(a2), lo(a2), a3, boolean(a4)),
    end("End - fLineOutPort: %p elapsed: %d.%03d.%03d.%03d result: 0x%08x", a2, nanos(a3), lo(a4)),
    sel(0, "remote to line out - fBusState: %lld", a2),

    event(0x0524C070, "LOLineOutStop"),
    start("Start - fLineOutPort: %p frames played: %lld", a2, a3),
    end("End - fLineOutPort: %p underruns: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "line out to remote - fBusState: %lld", a2),

    event(0x0524C074, "StartAudio"),
    start("Start - trafficChannels: 0x%llx running: 0x%llx fBusState: %lld", a2, a3, a4),
    end("End - running: 0x%llx first frame: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "enabling controller - trafficChannels: 0x%llx", a2),
    sel(1, "ERROR: channel without format - channel: %lld", a2),

    event(0x0524C078, "StopAudio"),
    start("Start - trafficChannels: 0x%llx running: 0x%llx last frame: %lld", a2, a3, a4),
    end("End - running: 0x%llx frames dropped: %lld result: 0x%08x", a2, a3, lo(a4)),
    sel(0, "last channel - fDownlinkPending: %lld", a2),
};

}  // namespace

constexpr Decoder kPimletBus = decoder<kPimletBusRows, "OrvelPimletBus">(audioClass(48), 31);

}  // namespace sonaprobe::decoders
