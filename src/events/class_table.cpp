// Which decoder an audio class has.

#include "events/class_table.h"

namespace sonaprobe {

using namespace decoders;

constinit const std::array<const Decoder*, 64> kClassTable = [] {
    std::array<const Decoder*, 64> table{};
    table[0] = &kHdaHistoric;
    table[1] = &kPlexoControl;
    table[2] = &kEmpty;
    table[3] = &kPlexoDevice;
    table[4] = &kPlexoEngine;
    table[5] = &kEmpty;
    table[6] = &kEmpty;
    table[7] = &kPlexoPort;
    table[8] = &kEmpty;
    table[9] = &kEmpty;
    table[10] = &kEmpty;
    table[11] = &kEmpty;
    table[20] = &kHdaController;
    table[21] = &kHdaDriver;
    table[22] = &kHdaEngine;
    table[23] = &kHdaPath;
    table[24] = &kHdaCodecGeneric;
    table[25] = &kHdaNode;
    table[26] = &kHdaFunctionGroup;
    table[27] = &kHdaWidget;
    table[28] = &kHdaEngineOutputDP;
    table[29] = &kHdaPathSet;
    table[30] = &kHdaEngineInput;
    table[31] = &kHdaFrameBuffer;
    table[32] = &kHdaTdm;
    table[35] = &kUsbDevice;
    table[36] = &kEmpty;
    table[37] = &kUsbEngine;
    table[38] = &kUsbStream;
    table[39] = &kEmpty;
    table[40] = &kUsbControl;
    table[41] = &kUsbAudio2;
    table[42] = &kVoiceTrigger;
    table[43] = &kEmbeddedAudio;
    table[44] = &kPimlet;
    table[45] = &kEmbeddedAudioZ47;
    table[46] = &kMicrophone;
    table[47] = &kEmbeddedAudioZ58;
    table[48] = &kPimletBus;
    table[49] = &kEmbeddedAudioZ14;
    table[50] = &kEmbeddedAudioZ26;
    return table;
}();

}  // namespace sonaprobe
