// USB audio, the way to the host controller (class 40): the control interface and the isochronous
// pipes behind it.

#include "events/decoders/decoders.h"
#include "events/row_vocabulary.h"

namespace sonaprobe::decoders {

using namespace rows;

namespace {

constexpr Entry kUsbControlRows[] = {
    event(0x0524A044, "ReadForPipe"),
    verbose(start("Start - hostPipe: %p frameStart: %lld numFrames: %lld", a2, a3, a4)),
    verbose(end("End - hostPipe: %p result: 0x%08x", a2, lo(a3))),
    verbose(other("calling hostPipe->io frameStart: %lld getFrameNumber: %lld diff: %lld", named("frameStart", a2), a3, a4)),

    event(0x0524A048, "WriteForPipe"),
    verbose(start("Start - hostPipe: %p frameStart: %lld numFrames: %d bytes: %d", a2, a3, hi(a4), lo(a4))),
    verbose(end("End - hostPipe: %p bytes: %lld result: 0x%08x", a2, a3, lo(a4))),
    verbose(other("calling hostPipe->io frameStart: %lld getFrameNumber: %lld diff: %lld", named("frameStart", a2), a3, a4)),

    event(0x0524A058, "DetectSplitTransactions"),
    start("Start - device: %p mDeviceSpeed: %lld", a2, a3),
    end("End - returning %s", named("returning", boolean(a2))),
    other("hub: %p depth: %lld mDeviceSpeed: %lld", a2, a3, a4),

    event(0x0524A060, "SetAlternateInterfaceForStreamInterface"),
    start("Start - bInterfaceNumber: %lld bAlternateSetting: %lld ---> %lld", a2, a3, named("new bAlternateSetting", a4)),
    end("End - bInterfaceNumber: %lld bAlternateSetting: %lld result: 0x%08x", a2, a3, lo(a4)),
    other("aborting - pipes: %lld bInterfaceNumber: %lld", a2, a3),

    ofGroup("OrvelUSBAudioIsocPipe", event(0x0524A194, "NewAlternateInterface")),
    start("Start - interface: %p bAlternateSetting: %lld endpoint: 0x%02x", a2, a3, lo(a4)),
    end("End - hostPipe: %p wMaxPacketSize: %lld result: 0x%08x", a2, a3, lo(a4)),
    other("ERROR: no endpoint - bAlternateSetting: %lld endpoint: 0x%02x", a2, lo(a3)),
};

}  // namespace

constexpr Decoder kUsbControl = decoder<kUsbControlRows, "OrvelUSBAudioControlInterface">(audioClass(40), 5);

}  // namespace sonaprobe::decoders
