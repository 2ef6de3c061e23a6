// The settings record's storage.

#include "probe/settings.h"

namespace sonaprobe {

constinit Settings settings;

}  // namespace sonaprobe
