// What the HD-audio driver builds a path from: nodes, paths, display outputs, inputs (classes 23 to 31).

#include "meanings/tables.h"

namespace sonaprobe::meanings {

namespace {

constexpr Meaning kHdaTopologyRows[] = {
    // OrvelHDAPath
    {0x05245C0C, "Connects a stream through the codec, widget by widget, with its format."},
    {0x05245C1C, "Programs a stream format into the widgets of the path."},
    {0x05245C20, "Brings all widgets of the path to a power state."},
    // OrvelHDACodecGeneric
    {0x05246004, "Starts the codec's driver: turns its audio function group on, looks at it, and gives it its former power state back."},
    {0x0524604C, "Brings the audio function group to a power state."},
    {0x05246054, "Lets the codec report changes of its jacks by itself, for which the function group must be on."},
    // OrvelHDANode
    {0x0524643C, "Asks the node for its power state, and corrects what is remembered."},
    {0x05246440, "Brings the node to a power state, unless it is believed to be in it."},
    // OrvelHDAFunctionGroup
    {0x0524686C, "Counts the users of the function group's power, and goes to D0 with the first and to D3 after the last."},
    // OrvelHDAWidget
    {0x05246C04, "Asks the codec what the node is and can do."},
    {0x05246CA4, "Renews the remembered pin sense after the codec has reported a change by itself."},
    {0x05246CF0, "Answers from memory whether something is plugged into the pin."},
    {0x05246D34, "Asks for the power state of the widget, of its delegate or of the superclass."},
    {0x05246D38, "Brings the widget to a power state."},
    {0x05246E30, "Asks the codec whether something is plugged into the pin, and waits for the answer."},
    {0x05246E34, "Answers for a pin behind the TDM bus whether something is plugged in, from that bus's codec."},
    // OrvelHDAEngineOutputDP
    {0x05247000, "Stops the display's engine for sleep."},
    {0x05247004, "Allows the display to power off, unless another engine needs it."},
    {0x05247008, "Stops the audio packets to the display."},
    {0x0524700C, "Changes the stream's format, where the display supports it."},
    {0x05247010, "Is called after the video went on again, and compares the display with the former one."},
    {0x05247014, "Wakes the display for the engine."},
    {0x05247018, "Moves the state of the display's description (EDID) forward, where the step is allowed."},
    {0x0524701C, "Does after wake what was put off while the machine slept."},
    {0x05247020, "Pauses the engine before the video goes off."},
    {0x05247024, "Pauses the engine before the video mode changes."},
    {0x05247028, "Offers the formats that fit the new video mode."},
    {0x0524702C, "Lets the graphics driver send audio packets to the display, or stop them."},
    // OrvelHDAPathSet
    {0x05247400, "Brings all paths of a set to a power state: first as a dry run, then for good."},
    {0x05247404, "Enables all paths of a set for a stream, and takes them back where one fails."},
    {0x05247408, "Disables all paths of a set."},
    {0x0524740C, "Builds a set of paths from the platform's description, with the function group on meanwhile."},
    {0x05247410, "Programs a format into all paths of a set, with the function group on meanwhile."},
    // OrvelHDAEngineInput
    {0x05247800, "Switches the input to another set of paths, and sets the power state of a set."},
    {0x05247804, "Switches to no input, with the function group on meanwhile."},
    {0x05247808, "Adapts the input to the kind of its client, with the function group on meanwhile."},
    // FRAMEBUFFER
    {0x05247C18, "Tells others that a display is about to change its power state, or has."},
};

}  // namespace

constinit const Table kHdaTopology(kHdaTopologyRows);

}  // namespace sonaprobe::meanings
