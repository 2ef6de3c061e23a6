// The decoders of all traced classes, each a table in the source named beside it.

#pragma once

#include "events/decoder.h"

namespace sonaprobe::decoders {

// empty.cpp
extern const Decoder kEmpty;  // classes that are traced, known and never printed

// driver_family.cpp
extern const Decoder kPlexoControl;  // class 1
extern const Decoder kPlexoDevice;   // class 3
extern const Decoder kPlexoEngine;   // class 4
extern const Decoder kPlexoPort;     // class 7

// hda_controller.cpp, hda_driver.cpp, hda_engine.cpp
extern const Decoder kHdaController;  // class 20
extern const Decoder kHdaDriver;      // class 21
extern const Decoder kHdaEngine;      // class 22

// hda_topology.cpp
extern const Decoder kHdaHistoric;       // class 0
extern const Decoder kHdaPath;           // class 23
extern const Decoder kHdaCodecGeneric;   // class 24
extern const Decoder kHdaNode;           // class 25
extern const Decoder kHdaFunctionGroup;  // class 26
extern const Decoder kHdaEngineInput;    // class 30
extern const Decoder kHdaFrameBuffer;    // class 31

// hda_output.cpp
extern const Decoder kHdaWidget;          // class 27
extern const Decoder kHdaEngineOutputDP;  // class 28
extern const Decoder kHdaPathSet;         // class 29

// hda_tdm.cpp
extern const Decoder kHdaTdm;  // class 32

// usb_device.cpp, usb_engine.cpp, usb_stream.cpp, usb_control.cpp, usb_audio2.cpp
extern const Decoder kUsbDevice;   // class 35
extern const Decoder kUsbEngine;   // class 37
extern const Decoder kUsbStream;   // class 38
extern const Decoder kUsbControl;  // class 40
extern const Decoder kUsbAudio2;   // class 41

// voice_trigger.cpp, embedded_audio.cpp
extern const Decoder kVoiceTrigger;   // class 42
extern const Decoder kEmbeddedAudio;  // class 43

// headset_remote.cpp, headset_bus.cpp
extern const Decoder kPimlet;     // class 44
extern const Decoder kPimletBus;  // class 48

// embedded_codecs.cpp, embedded_amplifiers.cpp
extern const Decoder kEmbeddedAudioZ47;  // class 45
extern const Decoder kEmbeddedAudioZ58;  // class 47
extern const Decoder kEmbeddedAudioZ14;  // class 49
extern const Decoder kEmbeddedAudioZ26;  // class 50

// microphone.cpp
extern const Decoder kMicrophone;  // class 46

// audio_server.cpp
extern const Decoder kAudioServer;  // key 0x21040000, not an audio class

}  // namespace sonaprobe::decoders
