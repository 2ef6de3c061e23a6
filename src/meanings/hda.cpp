// The HD-audio controller, driver and engine (classes 20 to 22).

#include "meanings/tables.h"

namespace sonaprobe::meanings {

namespace {

constexpr Meaning kHdaControllerRows[] = {
    {0x05245028, "Reads a register again and again until the masked bits have the wanted value, or gives up."},
    {0x05245040, "Is called when the graphics driver that powers the display codec has appeared."},
    {0x05245050, "Is called when the graphics driver that powers the display codec goes away."},
    {0x05245074, "Is called when a display goes on or off, and holds or releases the commands to its codec."},
    {0x05245078, "Reserves part of the link's capacity for a stream."},
    {0x05245080, "Tells whether a display has power, so that its codec answers commands."},
    {0x0524508C, "Does what is due from time to time, under the lock: it stops the clock of an idle link."},
    {0x05245094, "Puts the stop of the link's clock off, since the link was used."},
    {0x0524509C, "Maps the controller's registers, learns its streams, and allocates the rings for commands and responses."},
    {0x052450CC, "Resets the link and its codecs, and notes which codecs answer afterwards."},
    {0x052450D0, "Sets the controller up on its bus: interrupt, snooping, traffic class."},
    {0x05245104, "Looks up what is known of a codec on this platform."},
    {0x0524510C, "Starts the engine that sends commands to the codecs, from the command ring (CORB)."},
    {0x05245110, "Stops the engine that sends commands to the codecs, and drops what it has not sent."},
    {0x05245118, "Stops the engine that stores the codecs' responses in the response ring (RIRB)."},
    {0x05245120, "Sends a command to a codec and waits for its response."},
    {0x05245128, "Takes the codecs' responses out of the response ring and hands them to those who wait."},
    {0x0524512C, "Looks after a timeout which command a codec has left unanswered, and may reset the link."},
    {0x052451BC, "Resets the DMA engine of one stream."},
    {0x05245214, "Is called with a message of another driver, and passes it on to the codecs."},
    {0x05245220, "Is called by power management to bring the controller to another power state."},
    {0x05245224, "Carries a power state change of the controller out on a thread of its own, and acknowledges it."},
    {0x05245228, "Powers the controller and its link up or down, under the lock."},
    {0x05245230, "Stops streams and interrupts and resets the link, since the machine shuts down or restarts."},
    {0x05245234, "Asks for power of the graphics device, on which the display codec depends."},
    {0x05245238, "Counts the users of the graphics device's power, under the lock, and switches it with the first and the last."},
    {0x05245240, "Is called before the graphics device changes its power state, and lets codec commands under way end."},
    {0x05245244, "Is called after the graphics device has changed its power state, and wakes those who wait for it."},
    {0x05245254, "Stops or restarts the clock of the link, where all codecs allow it."},
    {0x0524525C, "Restarts the link's clock, for somebody who needs the link now."},
    {0x05245260, "Blocks until the time for stopping the clock has come or somebody uses the link."},
    {0x05245278, "Counts the codecs' audio function groups in D0: while one is, the controller keeps its clock."},
    {0x052452B8, "Powers the controller off, whatever its users say."},
    {0x052452BC, "Blocks until the controller has power, or gives up."},
};

constexpr Meaning kHdaDriverRows[] = {
    {0x05245404, "Finds the paths through the codec and creates the engines for them."},
    {0x05245414, "Does what is due from time to time: it looks for jacks that changed without an interrupt, and lets an idle codec go to a lower power state."},
    {0x05245454, "Starts the DMA of an engine's stream, after waiting for power where needed."},
    {0x05245478, "Creates the engine for the internal or the external outputs."},
    {0x0524547C, "Creates the engine for a display with audio (HDMI or DisplayPort)."},
    {0x0524548C, "Takes an engine away from its clients."},
    {0x0524549C, "Destroys the engine of the external output."},
    {0x052454AC, "Starts the change of all engines to a new power state."},
    {0x052454B0, "Carries a power state change out under the lock: sleep, idle or active."},
    {0x052454B4, "Brings codec and engines to full power, and restores what the codec has lost."},
    {0x052454B8, "Brings the codec to the idle state, in which only what runs keeps power."},
    {0x052454BC, "Pauses the engines and takes the codec's power away."},
    {0x052454C0, "Tells each engine the new power state."},
    {0x052454C4, "Asks for full power, for an engine that is about to run."},
    {0x052454D4, "Is called by power management with a new policy, which changes how soon an idle codec is powered down."},
    {0x052454F8, "Tells the driver of the headset remote the new power state."},
    {0x052454FC, "Sends a message to the driver of the headset remote."},
    {0x05245510, "Is called with a message of the controller, such as a codec's unsolicited response."},
    {0x05245518, "Takes the formats that a display can play from its description (EDID), under the lock."},
    {0x0524551C, "Adapts a display's engine to a new video mode, under the lock."},
    {0x05245520, "Is called when a display has gone: its description is no longer valid."},
    {0x05245524, "Is called when a display has brought a valid description of itself (EDID)."},
    {0x05245528, "Is called when the video mode of a display has changed."},
    {0x05245554, "Renews what is remembered of whether something is plugged into a pin."},
    {0x05245584, "Is called by power management to bring the driver to another power state."},
    {0x05245588, "Decides under the lock whether the driver sleeps, wakes or stays, and starts the change."},
    {0x0524558C, "Blocks until a power state change that is under way has ended."},
    {0x05245590, "Blocks until the codec has power, or gives up."},
    {0x05245594, "Terminates an engine under the lock, or puts that off until it has stopped."},
    {0x05245598, "Is called when an engine has stopped, and terminates the one that waited for it."},
};

constexpr Meaning kHdaEngineRows[] = {
    {0x05245820, "Detaches the engine from its provider, at its end."},
    {0x05245828, "Finds the formats that the engine's paths share and creates its stream."},
    {0x0524582C, "Disables the path of the engine's stream."},
    {0x05245850, "Stops the engine, when its last client has left."},
    {0x05245854, "Programs the stream's format and buffer and sets its DMA engine running."},
    {0x05245858, "Stops the stream's DMA engine, and tells which errors it had."},
    {0x0524585C, "Pauses the engine, since the controller loses its power or its link."},
    {0x052458A0, "Chooses among the plugged outputs or inputs the one that comes first."},
    {0x052458E8, "Hands a volume to all controls that belong together."},
    {0x05245908, "Hands a mute to all controls that belong together."},
    {0x05245968, "Powers the line input in advance, so that its first samples are settled."},
    {0x0524596C, "Brings the engine to the driver's new power state."},
    {0x05245974, "Brings the engine to full power and lets it go on where it was."},
    {0x05245978, "Brings the engine to the idle state: a path without a stream loses its power."},
    {0x0524597C, "Pauses the engine and disables its path, for sleep."},
    {0x052459E4, "Replaces the formats that the stream offers, as after another jack was plugged."},
    {0x05245A4C, "Notes at the start of the stream its first time stamp, as measured and as corrected."},
    {0x05245A50, "Notes at an interrupt of the stream its time stamp, as measured and as corrected."},
};

}  // namespace

constinit const Table kHdaController(kHdaControllerRows);
constinit const Table kHdaDriver(kHdaDriverRows);
constinit const Table kHdaEngine(kHdaEngineRows);

}  // namespace sonaprobe::meanings
