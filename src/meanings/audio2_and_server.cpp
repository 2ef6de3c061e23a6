// The second generation of USB audio (class 41), the voice trigger (class 42), and the audio server.

#include "meanings/tables.h"

namespace sonaprobe::meanings {

namespace {

constexpr Meaning kUsbAudio2Rows[] = {
    // Audio2Engine
    {0x0524A400, "Stops the engine's transfers and waits for those in flight."},
    {0x0524A404, "Pauses the engine, which keeps its place."},
    {0x0524A408, "Reports to the audio server when the buffer began anew."},
    {0x0524A40C, "Releases what the engine has allocated."},
    {0x0524A410, "Detaches the engine from its provider, at its end."},
    {0x0524A414, "Moves one I/O buffer between the audio server and the engine."},
    {0x0524A418, "Starts the engine's transfers."},
    // Audio2Device
    {0x0524A4C8, "Releases what the device has allocated."},
    {0x0524A4CC, "Is called before the device's provider goes away."},
    {0x0524A4D0, "Starts a power state change of the device, under the lock."},
    {0x0524A4D4, "Ends a power state change of the device, under the lock."},
    {0x0524A4D8, "Counts an engine that starts, and powers the device for the first."},
    {0x0524A4DC, "Counts an engine that has stopped, and lets the device idle after the last."},
    {0x0524A4E0, "Publishes an engine to the audio server."},
    {0x0524A4E4, "Takes all engines away from the audio server."},
    {0x0524A4E8, "Writes all controls' values to the device."},
    {0x0524A4EC, "Detaches the device from its provider, at its end."},
};

constexpr Meaning kVoiceTriggerRows[] = {
    {0x0524A800, "Notes at which sample and time the ring buffer of the always-on processor began anew."},
    {0x0524A804, "Is called when the always-on processor has new samples."},
    {0x0524A808, "Is called when the always-on processor hands over earlier samples, which it had kept."},
    {0x0524A80C, "Reads samples of the always-on processor for the audio server."},
    {0x0524A810, "Is called when the always-on processor has heard the trigger phrase."},
};

constexpr Meaning kAudioServerRows[] = {
    {0x21040000, "Tells that the I/O thread was late: a dropout. It has the time reached and the time aimed at."},
    {0x21040004, "Runs the I/O thread: one span from its begin to its end."},
    {0x21040008, "Runs one turn of the I/O thread: it wakes up, lets the clients work, and hands one buffer on."},
    {0x2104000C, "Runs one client of an I/O cycle."},
    {0x21040010, "Tells at which sample and time the device's buffer began anew, from which the server predicts the next wake-up."},
};

}  // namespace

constinit const Table kUsbAudio2(kUsbAudio2Rows);
constinit const Table kVoiceTrigger(kVoiceTriggerRows);
constinit const Table kAudioServer(kAudioServerRows);

}  // namespace sonaprobe::meanings
