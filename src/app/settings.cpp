// The settings record's storage.

#include "app/settings.h"

namespace sonaprobe {

constinit Settings settings;

}  // namespace sonaprobe
