// USB audio: device, engine, stream, control interface, and the second generation (classes 35 to 41).

#include "meanings/tables.h"

namespace sonaprobe::meanings {

namespace {

constexpr Meaning kUsbRows[] = {
    // OrvelUSBAudioDevice
    {0x05248C04, "Releases what the device has allocated."},
    {0x05248C1C, "Reads the device's descriptors, sets its configuration and creates its engines."},
    {0x05248C20, "Looks whether the device can report changes of its controls by an interrupt endpoint."},
    {0x05248C30, "Is called when the device has reported a change, and renews the controls that it concerns."},
    {0x05248C38, "Is called when the machine shuts down, restarts or sleeps."},
    {0x05248C40, "Carries a power state change of the device out, engine by engine."},
    {0x05248C44, "Detaches the device from its provider, at its end."},
    {0x05248C48, "Tells whether none of the device's engines runs."},
    {0x05248CB8, "Closes the device's control interface."},
    {0x05248CD4, "Walks the device's terminals and units and creates the controls that they offer."},
    {0x05248DAC, "Is called before the device goes away, and stops its engines."},
    {0x05248DD8, "Reads the bus's frame number and the time together, as a pair to count from."},
    {0x05248DE4, "Measures how long a frame of the bus takes by the machine's clock."},
    {0x05248DFC, "Is called by a timer to measure the frame's length again."},
    {0x05248E00, "Changes the sample rate of an engine, and of those that share its clock."},
    // OrvelUSBAudioEngine
    {0x05249400, "Releases what the engine has allocated."},
    {0x05249410, "Detaches the engine from its provider, at its end."},
    {0x05249428, "Converts the mixed samples into the form that the device takes."},
    {0x0524942C, "Changes the format, in the order that device and plug-in ask for."},
    {0x05249430, "Converts or copies received samples for a client."},
    {0x05249434, "Hands received samples to the client that reads them."},
    {0x0524944C, "Creates the engine's streams from the device's streaming interfaces."},
    {0x05249468, "Sends a request of a plug-in to the device."},
    {0x05249474, "Starts the streams of the engine."},
    {0x05249478, "Stops the streams of the engine."},
    {0x05249488, "Is called before the engine's provider goes away."},
    {0x05249490, "Chooses the clock source that the device's converters run by."},
    {0x052494B8, "Asks the device from time to time whether its clocks are valid and its jacks are plugged."},
    {0x052494C4, "Is called with a message of another driver."},
    {0x052494C8, "Takes a completed transfer over, and drops it where the engine is gone."},
};

}  // namespace

constinit const Table kUsb(kUsbRows);

}  // namespace sonaprobe::meanings
