// The tables of sentences, one for each source of decoders.

#pragma once

#include "meanings/meanings.h"

namespace sonaprobe::meanings {

using Table = std::span<const Meaning>;

extern const Table kHistoric;
extern const Table kDriverFamily;
extern const Table kHdaController;
extern const Table kHdaDriver;
extern const Table kHdaEngine;
extern const Table kHdaTopology;
extern const Table kHdaTdm;
extern const Table kUsb;
extern const Table kUsbStream;
extern const Table kUsbAudio2;
extern const Table kVoiceTrigger;
extern const Table kEmbeddedAudio;
extern const Table kHeadsetRemote;
extern const Table kEmbeddedCodecZ47;
extern const Table kMicrophone;
extern const Table kEmbeddedCodecZ58;
extern const Table kHeadsetBus;
extern const Table kEmbeddedAmplifiers;
extern const Table kAudioServer;

}  // namespace sonaprobe::meanings
