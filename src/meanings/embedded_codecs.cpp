// The embedded codecs Z47 and Z58 (classes 45 and 47).

#include "meanings/tables.h"

namespace sonaprobe::meanings {

namespace {

constexpr Meaning kEmbeddedCodecZ47Rows[] = {
    {0x0524B400, "Chooses the clocks of the serial port XSP for a sample rate."},
    {0x0524B404, "Writes the chosen clocks of XSP: who is master, dividers, frame sync."},
    {0x0524B408, "Powers XSP and waits until it has locked to its frame sync."},
    {0x0524B40C, "Routes slots of XSP to the headphone converters, muted meanwhile."},
    {0x0524B410, "Begins to route inputs to the serial port ASP; its end is printed under another method's name."},
    {0x0524B414, "Gives each input converter a slot of ASP."},
    {0x0524B418, "Sets the sample rate converter between inputs and ASP."},
    {0x0524B41C, "Powers the transmitter of ASP and unmutes the inputs."},
    {0x0524B420, "Begins to disable a direction of XSP, and keeps its clocks while the other runs."},
    {0x0524B424, "Ramps the output converters of XSP down and waits for them."},
    {0x0524B428, "Powers XSP down and checks that its clocks have stopped."},
    {0x0524B42C, "Takes the slots of disabled inputs of XSP back."},
    {0x0524B430, "Moves the remaining inputs of XSP to other slots."},
    {0x0524B434, "Powers input converters of XSP down that nobody uses."},
    {0x0524B438, "Finds which inputs use the slots that are to be disabled."},
    {0x0524B43C, "Decides which of those inputs stay, since a partner is active."},
    {0x0524B440, "Gives each input converter a slot of XSP."},
    {0x0524B444, "Readies the codec for audio: registers restored, oscillator running."},
    {0x0524B448, "Readies the codec for sleep, in which it may still detect jacks."},
    {0x0524B44C, "Counts a bus's users down, and stops the bus after the last."},
    {0x0524B450, "Counts a bus's users up, and starts the bus with the first."},
    {0x0524B454, "Releases the codec's reset and checks that it is the expected one."},
    {0x0524B458, "Tells that the codec's digital core has stopped by an error."},
    {0x0524B45C, "Restarts the codec's digital core after an error."},
    {0x0524B460, "Powers the codec down, but for what jack detection needs."},
    {0x0524B464, "Counts the codec's users down, and powers it down some time after the last."},
    {0x0524B468, "Counts the codec's users up, and cancels a pending power-down."},
    {0x0524B46C, "Reads whether the microphone bias is up or overloaded."},
    {0x0524B470, "Enables or disables inputs, such as the headset's microphone."},
    {0x0524B474, "Powers and programs the converter of one input."},
    {0x0524B478, "Switches the sidetone, by which a speaker hears the own voice."},
    {0x0524B47C, "Writes filter and gain of the sidetone."},
    {0x0524B480, "Switches the low-power converter that reads the headset's buttons."},
    {0x0524B484, "Trims the offset of the low-power converter."},
    {0x0524B488, "Sets the levels at which the low-power converter reports a button."},
    {0x0524B48C, "Switches the microphone line to the bus of the headset remote, or back."},
    {0x0524B490, "Switches the noise cancellation."},
    {0x0524B494, "Is called on an interrupt of the noise cancellation, such as an overload."},
    {0x0524B498, "Enables or disables recording from a data source."},
    {0x0524B49C, "Enables or disables playing to a data source."},
    {0x0524B4A0, "Sets the codec's sample rate, with the buses stopped."},
    {0x0524B4A4, "Is called when a secondary driver becomes active or inactive."},
    {0x0524B4A8, "Sets a control, or keeps its value until the codec has power."},
    {0x0524B4AC, "Sets several controls in one call."},
};

constexpr Meaning kEmbeddedCodecZ58Rows[] = {
    {0x0524BC00, "Counts the users of the codec, and powers it with the first."},
    {0x0524BC04, "Counts the users of the codec down."},
    {0x0524BC08, "Is called when the bus's clocks run, and unmutes what was waiting for them."},
    {0x0524BC0C, "Routes converters or digital microphones to slots of the bus."},
    {0x0524BC10, "Chooses who clocks the digital microphones."},
    {0x0524BC14, "Chooses where the digital microphones' data goes."},
    {0x0524BC18, "Chooses whether the master clock comes from the always-on processor."},
    {0x0524BC1C, "Sets the three switches for clock, data and master clock, by who records."},
    {0x0524BC20, "Switches the wind noise filter of the microphones."},
    {0x0524BC24, "Enables or disables recording from a data source."},
    {0x0524BC28, "Enables or disables playing to a data source."},
    {0x0524BC2C, "Routes slots of the bus to the output converters."},
    {0x0524BC30, "Asks the codec for its identification, to see that it answers."},
    {0x0524BC34, "Powers the codec, releases its reset and restores its registers."},
    {0x0524BC38, "Powers the codec off, but for what jack detection needs."},
    {0x0524BC3C, "Is called by a timer to power the codec off, unless it was enabled again."},
    {0x0524BC40, "Asks for a power-off, at once or after a delay."},
    {0x0524BC44, "Programs format and clocks of the codec's serial port."},
    {0x0524BC48, "Derives the codec's internal master clock, by PLL or divider."},
    {0x0524BC4C, "Mutes or unmutes the inputs."},
    {0x0524BC50, "Mutes or unmutes the outputs, with a soft ramp where asked."},
    {0x0524BC54, "Sets the gain of an input, shared between preamplifier and converter."},
    {0x0524BC58, "Sets the headphones' volume, within the limit of the headset."},
    {0x0524BC5C, "Sets the codec's sample rate, or keeps it until the codec has power."},
    {0x0524BC60, "Is called on an interrupt of the codec."},
    {0x0524BC64, "Lets interrupts of the headset remote through, or not."},
    {0x0524BC68, "Tells whether a control is a switch, and its value."},
    {0x0524BC6C, "Sets a control, or keeps its value until the codec has power."},
    {0x0524BC70, "Sets several controls in one call."},
};

}  // namespace

constinit const Table kEmbeddedCodecZ47(kEmbeddedCodecZ47Rows);
constinit const Table kEmbeddedCodecZ58(kEmbeddedCodecZ58Rows);

}  // namespace sonaprobe::meanings
