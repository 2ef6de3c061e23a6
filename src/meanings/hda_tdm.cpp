// The amplifiers and codecs behind a codec's TDM bus (class 32).

#include "meanings/tables.h"

namespace sonaprobe::meanings {

namespace {

constexpr Meaning kHdaTdmRows[] = {
    // OrvelHDATDM: the configuration of a bus
    {0x05248000, "Makes a bus configuration from a dictionary of the platform: slots, bits, channel offsets."},
    {0x05248004, "Looks up at which bit of the frame a channel begins."},
    {0x05248008, "Releases a bus configuration."},
    // OrvelHDATDMBusManager, and what the CS4208 does otherwise
    {0x0524800C, "Sets the manager of the codec's TDM buses up."},
    {0x05248010, "Releases the manager, and tells which buses are still enabled."},
    {0x05248014, "Gives a widget's channels their slots on a bus, and starts the bus where it is the first."},
    {0x05248018, "Takes a widget's slots back, and stops the bus after the last."},
    {0x0524801C, "Counts the widgets that use a bus, but for one."},
    {0x05248020, "Tells whether a widget has a stream on its bus."},
    {0x05248024, "Sets the sample rate of a bus, by the divider of its master clock."},
    {0x05248028, "Looks up by which register a widget's TDM connection is controlled."},
    {0x0524802C, "Counts the users of the master clock, and switches it with the first and the last."},
    {0x05248030, "Tells whether any bus is in use."},
    {0x05248034, "Lets the interrupt line of a device arrive as an unsolicited response of a node."},
    {0x05248038, "Creates the driver that fits a device's type: amplifier or codec."},
    // OrvelHDATDMDevice
    {0x0524803C, "Sets a device up from a dictionary of the platform."},
    {0x05248040, "Releases the device."},
    {0x05248044, "Sets the controller through which the device's registers are reached."},
    {0x05248048, "Tells through which controller the device's registers are reached."},
    {0x0524804C, "Tells whether the device is a codec and no amplifier."},
    {0x05248050, "Tells which master clock the device runs by."},
    {0x05248054, "Counts the users of the device, and switches it with the first and the last."},
    {0x05248058, "Counts the device's channels that are enabled on a bus."},
    {0x0524805C, "Notes which of the device's channels are enabled on a bus."},
    {0x05248060, "Writes a register of the device, over its control bus."},
    {0x05248064, "Reads a register of the device, over its control bus."},
    {0x05248068, "Reads a sequence of registers of the device, over its control bus."},
    // OrvelHDATDMCodec, and what the Z58 does otherwise
    {0x0524806C, "Sets the codec up and checks that it is the expected one."},
    {0x05248070, "Tells how many TDM buses the codec has."},
    {0x05248074, "Tells the codec's identification and address."},
    {0x05248078, "Tells that the device is a codec."},
    {0x0524807C, "Starts or stops the codec's channels on a bus."},
    {0x05248080, "Resets the codec by its reset line."},
    {0x05248084, "Finds out which of the codec's interrupts an unsolicited response stands for."},
    {0x05248088, "Reads the codec's interrupt status, which clears it."},
    {0x0524808C, "Answers whether headphones are plugged in, in the form of a pin sense."},
    {0x05248090, "Answers whether a headset microphone is plugged in, in the form of a pin sense."},
    {0x05248094, "Powers the headphone amplifier up or down, in the order that avoids a pop."},
    {0x05248098, "Switches the headset microphone and its bias on or off."},
    {0x0524809C, "Puts the codec into standby, in which it still detects plugs."},
    {0x052480A0, "Powers the codec and restores its registers."},
    {0x052480A4, "Reads a register of the headset remote."},
    {0x052480A8, "Writes a register of the headset remote."},
    {0x052480AC, "Clamps the headphone output to ground, or releases it."},
    {0x052480B0, "Asks whether the automatic detection of the headset's type has ended."},
    {0x052480B4, "Starts the automatic detection of the headset's type with its interrupt, or ends it."},
    {0x052480B8, "Derives the codec's internal master clock from the bit clock, by PLL where needed."},
    {0x052480BC, "Programs slots and sample rate of the codec's serial port."},
    {0x052480C0, "Sets the codec's sample rate, with its converters muted."},
    {0x052480C4, "Powers the codec's input converter for a bus."},
    {0x052480C8, "Powers the codec's output converter for a bus."},
    // OrvelHDATDMAmp
    {0x052480CC, "Sets an amplifier up from a dictionary of the platform."},
    {0x052480D0, "Switches the amplifier, after its supply is stable."},
    {0x052480D4, "Is called when the amplifier reports a fault, and enables it again or leaves it off."},
};

}  // namespace

constinit const Table kHdaTdm(kHdaTdmRows);

}  // namespace sonaprobe::meanings
