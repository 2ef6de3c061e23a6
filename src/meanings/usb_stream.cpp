// The streams of USB audio (class 38), and the interface and pipe below them (class 40).

#include "meanings/tables.h"

namespace sonaprobe::meanings {

namespace {

constexpr Meaning kUsbStreamRows[] = {
    // OrvelUSBAudioStream
    {0x05249800, "Releases what the stream has allocated."},
    {0x05249804, "Sets the stream up, with a format for each alternate setting of its interface."},
    {0x0524980C, "Detaches the stream from its provider, at its end."},
    {0x05249830, "Computes how many frame lists the stream keeps in flight, and how long each is."},
    {0x05249834, "Puts the samples of received frames together, without the gaps of short frames."},
    {0x05249840, "Changes the stream's format to the alternate setting that has it."},
    {0x05249848, "Computes the safety offset and the latency that the stream reports."},
    {0x0524984C, "Copies the pair of frame number and time from which times are counted."},
    {0x05249850, "Smooths a measured time stamp by those before it."},
    {0x05249854, "Computes the time at which the buffer began anew within a frame."},
    {0x05249864, "Opens the endpoints of the alternate setting, and checks that a frame fits their packets."},
    {0x0524986C, "Gives the interface's bandwidth back, by alternate setting 0, and closes it."},
    {0x05249870, "Queues the first frame lists for receiving."},
    {0x05249874, "Fills and queues the first frame lists for sending."},
    {0x05249880, "Fills a frame list with samples to be sent."},
    {0x05249884, "Prepares frame lists for receiving, and queues them."},
    {0x05249888, "Fills a frame list for a host controller that needs aligned memory."},
    {0x05249894, "Is called when the first frames have arrived that serve only to start the input."},
    {0x05249898, "Queues the next frame list for receiving."},
    {0x0524989C, "Is called when a frame list has been received."},
    {0x052498A0, "Processes a received frame list and notes how far the buffer is filled."},
    {0x052498A8, "Is called with the device's feedback: how many samples a frame it takes."},
    {0x052498B8, "Opens the interface and sets its sample rate, before the stream starts."},
    {0x052498BC, "Starts the stream for the audio server, or takes over from one of silence."},
    {0x052498C0, "Stops the stream, or lets it go on with silence."},
    {0x052498C4, "Is called before the stream's provider goes away."},
    {0x052498CC, "Fills and queues the next frame list for sending."},
    {0x052498D4, "Processes a sent frame list and notes how far the buffer is read."},
    {0x052498DC, "Reports to the audio server when the buffer began anew."},
    {0x052498FC, "Sends a request of a plug-in to the device, for this stream."},
    {0x0524990C, "Looks from time to time whether transfers still complete, and resumes the stream where not."},
    {0x05249910, "Puts the watchdog off, since a transfer has completed."},
    {0x05249914, "Starts the stream anew at a later frame, after it has lost its place."},
    {0x05249918, "Is called with a message of another driver, such as a stalled endpoint."},
    {0x0524991C, "Adapts the stream to an alternate setting that the host has chosen."},
    {0x05249920, "Starts sending silence, so that the device keeps its clock."},
    {0x05249924, "Is called when a frame list of silence was sent, and queues the next."},
    {0x05249928, "Closes the stream's interface under the lock, after its transfers have ended."},
    {0x0524992C, "Collects the times at which frames were transferred."},
    {0x05249930, "Closes the stream's interface for one client."},
    {0x05249934, "Takes a completed transfer over, and drops it where the stream is gone."},
    {0x05249938, "Chooses the first frame, queues from there, and so starts the transfer."},
    // OrvelUSBAudioControlInterface and OrvelUSBAudioIsocPipe
    {0x0524A044, "Hands a frame list for receiving to the pipe of the host controller."},
    {0x0524A048, "Hands a frame list for sending to the pipe of the host controller."},
    {0x0524A058, "Looks whether a hub translates between the device's speed and the bus's."},
    {0x0524A060, "Chooses an alternate setting of a streaming interface."},
    {0x0524A194, "Finds the pipe of an endpoint after the alternate setting has changed."},
};

}  // namespace

constinit const Table kUsbStream(kUsbStreamRows);

}  // namespace sonaprobe::meanings
