// The fields that public standards explain, with the chapter that does.

#include "meanings/meanings.h"

namespace sonaprobe::meanings {

namespace {

constexpr Field kHdaRegisters[] = {
    {"GCAP", "Global Capabilities, offset 0x00: bits 15-12 count the output streams, 11-8 the input streams, 7-3 the bidirectional ones; bit 0: the controller takes 64-bit addresses.", "3.3"},
    {"OUTPAY", "Output Payload Capability, offset 0x04: how many 16-bit words of a frame (48 kHz) the streams may fill.", "3.3"},
    {"GCTL", "Global Control, offset 0x08: bit 0 is 0 while the link is in reset, bit 8 lets unsolicited responses through.", "3.3"},
    {"WAKEEN", "Wake Enable, offset 0x0c: a bit for each codec that may wake the controller.", "3.3"},
    {"STATESTS", "State Change Status, offset 0x0e: a bit for each codec that has announced itself after a reset or in sleep.", "3.3"},
    {"codecMask", "A bit for each codec address, as in STATESTS.", "3.3"},
    {"INTCTL", "Interrupt Control, offset 0x20: bit 31 enables all interrupts, bit 30 the controller's own, the others one stream each.", "3.3"},
    {"INTSTS", "Interrupt Status, offset 0x24: bit 31 says that any bit is set, bit 30 is the controller's own, the others are one stream each.", "3.3"},
    {"CORBWP", "CORB Write Pointer, offset 0x48: the entry of the command ring that was written last.", "3.3, 4.4"},
    {"CORBRP", "CORB Read Pointer, offset 0x4a: the entry of the command ring that was sent last; bit 15 resets it.", "3.3, 4.4"},
    {"CORBCTL", "CORB Control, offset 0x4c: bit 1 lets the command ring run, bit 0 enables the interrupt for its memory errors.", "3.3"},
    {"CORBSIZE", "CORB Size, offset 0x4e: bits 1-0 are 0 for 2 entries, 1 for 16, 2 for 256; bits 7-4 say which are possible.", "3.3"},
    {"RIRBWP", "RIRB Write Pointer, offset 0x58: the entry of the response ring that the controller stored last.", "3.3, 4.4"},
    {"RIRBCTL", "RIRB Control, offset 0x5c: bit 1 lets the response ring run, bit 0 enables its interrupt, bit 2 that of its overrun.", "3.3"},
    {"RIRBSTS", "RIRB Status, offset 0x5d: bit 0 says that responses have come, bit 2 that some were lost by an overrun.", "3.3"},
    {"offset", "The address of a register: up to 0x7f one of the controller; from 0x80 one of a stream, which has 0x20 bytes, the input streams first.", "3.3"},
    {"SDCTL", "Stream Descriptor Control, at 0x00 of a stream: bit 0 resets it, bit 1 lets it run, bits 4-2 enable interrupts, bits 23-20 are its tag on the link.", "3.3"},
    {"SDSTS", "Stream Descriptor Status, at 0x03 of a stream: bit 5 says that the FIFO is ready, bit 4 descriptor error, bit 3 FIFO error, bit 2 buffer completed.", "3.3"},
    {"FIFOE", "FIFO errors (SDSTS bit 3): the data came too late or went too late.", "3.3"},
    {"DESE", "Descriptor errors (SDSTS bit 4): a buffer descriptor could not be fetched.", "3.3"},
    {"SDLPIB", "Link Position in Buffer, at 0x04 of a stream: how many bytes of the cyclic buffer have passed the link.", "3.3"},
    {"SDCBL", "Cyclic Buffer Length, at 0x08 of a stream, in bytes.", "3.3"},
    {"SDFMT", "Stream Format, at 0x12 of a stream: bit 15 is 1 for other than PCM, bit 14 chooses 44.1 kHz over 48 kHz, bits 13-11 multiply it, 10-8 divide it, 6-4 are the sample's size, 3-0 the channels less one.", "3.3, 3.7"},
    {"stripe control", "Over how many data lines (SDOs) a stream is striped.", "3.3"},
};

constexpr Field kHdaCodecs[] = {
    {"command", "A command to a codec: bits 31-28 are its address, 27-20 the node, 19-0 verb and payload. 0x015f0900 asks codec 0, node 0x15 (21), with verb 0xf09, for its pin sense.", "7.3"},
    {"response", "What the codec answers to a command, by the command's verb; an unsolicited one has its tag in bits 31-26.", "7.3"},
    {"codecAddress", "The codec's number on the link, 0 to 14.", "7.1"},
    {"nodeID", "A node of the codec: 0 is its root, then the function groups, then their widgets.", "7.1"},
    {"fNodeID", "As nodeID.", "7.1"},
    {"pin nodeID", "The node of a pin widget, which stands for a jack, a speaker or a microphone.", "7.1"},
    {"tag", "The number that the driver has given a node, with verb 0x708, by which its unsolicited responses are known.", "7.3.3"},
    {"pinSense", "Bit 31: something is plugged in. Bit 30, on a digital pin to a display, and added after 1.0a: its description (ELD) is valid. Bits 30-0 of an analog pin: its impedance, 0x7fffffff where it is unknown.", "7.3.3"},
    {"fPinSenseCachedResponse", "A pin sense that was read earlier.", "7.3.3"},
    {"fPinCapabilities", "What a pin can do: bit 0 impedance sense, 1 trigger needed for it, 2 presence detect, 3 headphone drive, 4 output, 5 input, 7 HDMI, bits 15-8 the reference voltages, 16 EAPD, 24 DisplayPort.", "7.3.4"},
    {"defaultConfiguration", "What the maker has connected to a pin: bits 31-30 jack or fixed, 29-24 where, 23-20 what (0 line out, 1 speaker, 2 headphones, 8 line in, 10 microphone), 19-16 connector, 15-12 colour, 7-4 association, 3-0 sequence.", "7.3.3"},
    {"afgPowerState", "The power state of the audio function group: 0 is D0, fully on; 3 is D3, off but for what answers commands.", "7.3.3"},
    {"vendorID", "Parameter 0x00 of the root node: the maker in bits 31-16, the codec in bits 15-0.", "7.3.4"},
    {"subsystemID", "By which the platform is known: bits 31-16 the maker of the board, 15-8 the board, 7-0 the assembly.", "7.3.3"},
    {"streamTag", "The number, 1 to 15, by which codecs find their stream in the link's frames.", "5.3"},
};

constexpr Field kUsbBus[] = {
    {"bmRequestType", "A request's direction (bit 7, 1 to the host), kind (bits 6-5, 1 is class) and recipient (bits 4-0: 1 interface, 2 endpoint).", "9.3"},
    {"bRequest", "Which request; for audio see SET_CUR and GET_CUR.", "9.3"},
    {"wValue", "Of an audio request: the control in the high byte, the channel in the low byte.", "9.3"},
    {"wIndex", "Of an audio request: the unit or terminal in the high byte, the interface or endpoint in the low byte.", "9.3"},
    {"wLength", "How many bytes of data the request has.", "9.3"},
    {"idVendor", "The maker of the device.", "9.6.1"},
    {"idProduct", "The product, by its maker's numbers.", "9.6.1"},
    {"bcdDevice", "The release of the device, in binary-coded decimal: 0x0102 is 1.02.", "9.6.1"},
    {"bConfigurationValue", "Which configuration of the device is chosen.", "9.6.3"},
    {"bInterfaceNumber", "The number of an interface of the device.", "9.6.5"},
    {"bAlternateSetting", "Which form of the interface is chosen; 0 of a streaming interface has no endpoint and takes no bandwidth.", "9.6.5"},
    {"endpoint", "Its address: bit 7 is 1 for input, bits 3-0 are its number.", "9.6.6"},
    {"bmAttributes", "An endpoint's kind: bits 1-0 are 1 for isochronous, 3 for interrupt; bits 3-2 of an isochronous one are 1 asynchronous, 2 adaptive, 3 synchronous.", "9.6.6"},
    {"wMaxPacketSize", "How many bytes a packet of the endpoint may have; bits 12-11 count further packets of a microframe.", "9.6.6"},
    {"bInterval", "How often the endpoint is asked: for isochronous ones every 2^(bInterval-1) frames or microframes.", "9.6.6"},
    {"feedback", "How many samples the device takes, as a fixed-point number: a frame with 14 binary places at full speed, a microframe with 16 at high speed.", "5.12.4"},
};

constexpr Field kUsbAudio[] = {
    {"SET_CUR", "Request 0x01: sets what a control has now.", "1.0, 5.2.1; 2.0, 5.2.1"},
    {"GET_CUR", "Request 0x81 of audio 1.0: asks what a control has now. Audio 2.0 has request 0x01 in both directions.", "1.0, 5.2.1; 2.0, 5.2.1"},
    {"GET_MIN", "Request 0x82: the least value of a control; of a volume in 1/256 dB, where 0x8000 is silence.", "1.0, 5.2.1 and 5.2.2"},
    {"GET_MAX", "Request 0x83: the greatest value of a control; of a volume in 1/256 dB.", "1.0, 5.2.1 and 5.2.2"},
    {"bcdADC", "The release of the audio class that the device keeps to: 0x0100 or 0x0200.", "1.0, 4.3.2; 2.0, 4.7.2"},
    {"wTotalLength", "The bytes of the class-specific descriptors together.", "1.0, 4.3.2"},
    {"bInCollection", "How many streaming interfaces belong to the control interface.", "1.0, 4.3.2"},
    {"wTerminalType", "What a terminal is: 0x0101 the USB stream, 0x0201 microphone, 0x0301 speaker, 0x0302 headphones, 0x0402 headset.", "Terminal Types 1.0, 2"},
    {"bNrInPins", "How many inputs a selector has.", "1.0, 4.3.2; 2.0, 4.7.2"},
    {"bmaControls", "Which controls a feature unit has for a channel: bit 0 mute, 1 volume, 2 bass, 3 mid, 4 treble, 6 automatic gain; audio 2.0 has two bits for each.", "1.0, 4.3.2; 2.0, 4.7.2"},
    {"controlSelector", "Which control of a unit is meant; of a feature unit 1 is mute, 2 volume.", "1.0, A.10; 2.0, A.17"},
    {"wFormatTag", "The format of the samples: 1 is PCM, 3 is floating point.", "1.0, 4.5.2"},
    {"bDelay", "By how many frames the interface delays the sound.", "1.0, 4.5.2"},
    {"wLockDelay", "How long the endpoint takes to lock to its clock.", "1.0, 4.6.1; 2.0, 4.10.1"},
    {"bRefresh", "A feedback endpoint brings news every 2^bRefresh frames.", "1.0, 4.6.2"},
    {"bInfo", "Of the device's interrupt message: bit 1 says that the endpoint is its origin, else the interface is; bit 0 that it is the maker's own.", "2.0, 6.1"},
    {"bAttribute", "Which request would read what has changed: 1 is CUR, 2 is RANGE.", "2.0, 6.1"},
    {"clockSourceID", "The entity from which the device takes a clock; it can be asked for its rate and whether it is valid.", "2.0, 4.7.2 and 5.2.5"},
    {"clockSelectorID", "The entity that chooses among clock sources.", "2.0, 4.7.2 and 5.2.5"},
};

constexpr FieldGroup kGroups[] = {
    {"Registers of an HD-audio controller", "High Definition Audio, revision 1.0a", kHdaRegisters},
    {"Codecs on the HD-audio link", "High Definition Audio, revision 1.0a", kHdaCodecs},
    {"USB requests and descriptors", "Universal Serial Bus, revision 2.0", kUsbBus},
    {"USB audio", "Universal Serial Bus Device Class Definition for Audio Devices, releases 1.0 and 2.0", kUsbAudio},
};

}  // namespace

std::span<const FieldGroup> fieldGroups() {
    return kGroups;
}

}  // namespace sonaprobe::meanings
