// The embedded amplifiers Z14 and Z26 (classes 49 and 50).

#include "meanings/tables.h"

namespace sonaprobe::meanings {

namespace {

constexpr Meaning kEmbeddedAmplifiersRows[] = {
    // OrvelEmbeddedAudioZ14
    {0x0524C400, "Holds the amplifiers half powered, so that sound can start soon."},
    {0x0524C404, "Powers the amplifiers for the first user."},
    {0x0524C408, "Powers the amplifiers down after the last user, or back to half power."},
    {0x0524C40C, "Enables or disables playing on channels."},
    {0x0524C410, "Enables or disables the amplifiers' measurements of voltage and current, as inputs."},
    {0x0524C414, "Programs format and clocks of the amplifiers' serial port."},
    {0x0524C418, "Keeps the amplifiers from going to standby while no sound is played."},
    {0x0524C41C, "Gives an amplifier its channel and slot."},
    {0x0524C420, "Enables or disables one channel."},
    {0x0524C424, "Counts the users of the master clock, and switches it with the first and the last."},
    {0x0524C428, "Resets the amplifiers and looks which of them answer."},
    {0x0524C42C, "Sets an amplifier up for the speaker that it drives: boost, current limit."},
    {0x0524C430, "Is called when the bus's clocks run, and unmutes the amplifiers."},
    {0x0524C434, "Sets a channel's volume, within the limit of the speaker."},
    {0x0524C438, "Powers an amplifier, first step: supply and master clock."},
    {0x0524C43C, "Powers an amplifier, second step: boost converter."},
    {0x0524C440, "Powers an amplifier, third step: output stage, with a ramp."},
    {0x0524C444, "Writes the power register of an amplifier's half-powered state."},
    {0x0524C448, "Brings the amplifiers from off to half powered."},
    {0x0524C44C, "Brings the amplifiers from off to playing, in three steps."},
    {0x0524C450, "Brings the amplifiers from half powered to playing."},
    {0x0524C454, "Brings the amplifiers from half powered to off."},
    {0x0524C458, "Brings the amplifiers from playing to half powered."},
    {0x0524C45C, "Brings the amplifiers from playing to off."},
    {0x0524C460, "Powers one amplifier down and waits for its boost converter to discharge."},
    {0x0524C464, "Is called when a secondary driver changes its state, format or data source."},
    // OrvelEmbeddedAudioZ26
    {0x0524C800, "Holds the amplifiers half powered, once the bus's clocks run."},
    {0x0524C804, "Powers the amplifiers for the first user."},
    {0x0524C808, "Powers the amplifiers down after the last user; it has its enabling twin's name."},
    {0x0524C80C, "Enables or disables playing on channels."},
    {0x0524C810, "Enables or disables the amplifiers' measurements as inputs; it has its output twin's name."},
    {0x0524C814, "Programs slots and bit clock of the amplifiers' serial port."},
    {0x0524C818, "Keeps the amplifiers' PLL locked while no sound is played."},
    {0x0524C81C, "Gives an amplifier its channel, slots and crossover."},
    {0x0524C820, "Enables or disables one channel, on all its amplifiers at once."},
    {0x0524C824, "Switches the clock of the amplifiers, which is a PLL on the bit clock."},
    {0x0524C828, "Resets the amplifiers and waits until they have booted."},
    {0x0524C82C, "Sets an amplifier up for the speaker that it drives: calibration, temperature limit."},
    {0x0524C830, "Is called when the bus's clocks run, and does what was waiting for them."},
    {0x0524C834, "Sets a channel's volume, within what temperature and supply allow."},
    {0x0524C838, "Powers the amplifiers, first step: PLL on the bit clock."},
    {0x0524C83C, "Powers the amplifiers, second step: boost converter, which others follow."},
    {0x0524C840, "Powers the amplifiers, third step: output stages, with speaker protection."},
    {0x0524C844, "Writes the power register of the half-powered state on all amplifiers."},
    {0x0524C848, "Brings the amplifiers from off to half powered."},
    {0x0524C84C, "Brings the amplifiers from off to playing, in three steps."},
    {0x0524C850, "Brings the amplifiers from half powered to playing."},
    {0x0524C854, "Brings the amplifiers from half powered to hibernation."},
    {0x0524C858, "Brings the amplifiers from playing to half powered."},
    {0x0524C85C, "Brings the amplifiers from playing to off."},
    {0x0524C860, "Powers the amplifiers down, those that follow first."},
    {0x0524C864, "Is called when a secondary driver changes its state, format or data source."},
    {0x0524C868, "Sets the amplifiers' sample rate, with their outputs muted."},
};

}  // namespace

constinit const Table kEmbeddedAmplifiers(kEmbeddedAmplifiersRows);

}  // namespace sonaprobe::meanings
