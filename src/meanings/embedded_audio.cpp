// The embedded audio controller (class 43) and the microphone controller (class 46).

#include "meanings/tables.h"

namespace sonaprobe::meanings {

namespace {

constexpr Meaning kEmbeddedAudioRows[] = {
    {0x0524AC00, "Counts the users of the audio hardware, and powers it with the first and down after the last."},
    {0x0524AC04, "Enables those parts of the audio hardware that the flags name, and waits until they have power."},
    {0x0524AC08, "Disables those parts of the audio hardware that the flags name, where nobody else uses them."},
    {0x0524AC0C, "Starts audio for a secondary driver that shares the hardware."},
    {0x0524AC10, "Stops audio for a secondary driver that shares the hardware."},
    {0x0524AC14, "Starts those parts of the audio hardware that a secondary driver's flags name."},
    {0x0524AC18, "Stops those parts of the audio hardware that a secondary driver's flags name."},
    {0x0524AC1C, "Writes a register of the codec."},
    {0x0524AC20, "Reads a register of the codec."},
    {0x0524AC24, "Tells that a register of the codec could not be read or written."},
    {0x0524AC28, "Writes a sequence of registers of the codec."},
    {0x0524AC2C, "Reads a sequence of registers of the codec."},
    {0x0524AC30, "Queues a notification of the power management for the power stages."},
    {0x0524AC34, "Puts a notification of the power management before those that wait."},
    {0x0524AC38, "Answers whether the machine may sleep, and objects while audio is in use."},
    {0x0524AC3C, "Reaches the stage in which the hardware has no power."},
    {0x0524AC40, "Reaches the first stage of powering down, before the machine sleeps."},
    {0x0524AC44, "Aims at full power, with a ramp."},
    {0x0524AC48, "Aims at full power, without waiting for a ramp."},
    {0x0524AC4C, "Reaches the stage of full power, and wakes those who wait for it."},
    {0x0524AC50, "Aims at no power, at once."},
    {0x0524AC54, "Aims at no power after a delay, in which new audio can cancel it."},
    {0x0524AC58, "Begins to ramp down, after the delay has passed."},
    {0x0524AC5C, "Aims at shutdown, and drops what still waits."},
    {0x0524AC60, "Cancels a power-off that a notification has asked for."},
    {0x0524AC64, "Tells the power management that audio is ready for sleep or wake."},
    {0x0524AC68, "Moves from one power stage to the next, where that is allowed."},
    {0x0524AC6C, "Turns a power state of the power management into a power stage, under the lock."},
    {0x0524AC70, "Starts or stops the time stamps of a stream."},
};

constexpr Meaning kMicrophoneRows[] = {
    // OrvelPDMController
    {0x0524B804, "Attaches the controller: maps its registers, finds its interrupt."},
    {0x0524B808, "Powers the controller's domain on and checks its revision."},
    {0x0524B80C, "Publishes an object for each decimator with a microphone."},
    {0x0524B810, "Lists the sample rates that the PDM clock can be decimated to."},
    {0x0524B814, "Tells whether a microphone is enabled."},
    {0x0524B818, "Lists the channel counts that the microphones allow."},
    {0x0524B81C, "Is called on an interrupt: a FIFO has run over or empty."},
    {0x0524B820, "Reads a register of the controller."},
    {0x0524B824, "Writes a register of the controller."},
    {0x0524B828, "Brings the controller to a power state, under the lock."},
    {0x0524B82C, "Starts recording, with the DMA for the first user."},
    {0x0524B830, "Sets at which filling the FIFO asks for a transfer."},
    {0x0524B834, "Stops recording, with the DMA for the last user."},
    {0x0524B838, "Opens or closes the gates of the microphones' clocks."},
    {0x0524B83C, "Switches decimators, which turn a microphone's bit stream into samples."},
    {0x0524B840, "Sets the sample rate, by PDM clock and decimation ratio."},
    {0x0524B844, "Computes how many frames the FIFO holds."},
    {0x0524B848, "Computes how many frames filter and FIFO delay the samples."},
    {0x0524B84C, "Is called when a DMA transfer has ended, and queues the next."},
    {0x0524B850, "Sends a command to the serial audio port (IIS)."},
    // OrvelPDMAudio
    {0x0524B854, "Attaches the audio device of the microphones to their controller."},
    {0x0524B858, "Asks the controller for a sample rate."},
    // OrvelPDMDecimator
    {0x0524B85C, "Sets a decimator up from its entry in the device tree."},
    {0x0524B860, "Enables or disables a microphone of the decimator."},
    {0x0524B864, "Tells whether the decimator runs."},
    {0x0524B868, "Programs filter and format of the decimator."},
    {0x0524B86C, "Reads a register of the decimator."},
    {0x0524B870, "Writes a register of the decimator."},
};

}  // namespace

constinit const Table kEmbeddedAudio(kEmbeddedAudioRows);
constinit const Table kMicrophone(kMicrophoneRows);

}  // namespace sonaprobe::meanings
