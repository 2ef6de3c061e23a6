// What an event is called where it has one name.

#pragma once

#include <sonaprobe/sonaprobe.h>
#include <string>

namespace sonaprobe::plugins {

// "Driver::method", or "code 0x01400004" where no driver is known.
std::string nameOf(const sonaprobe_event* event);

}  // namespace sonaprobe::plugins
