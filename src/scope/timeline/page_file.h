// The page as a file: its parts from web/timeline/, bundled when the program is built, and a
// trace's chunks among them.

#pragma once

#include <functional>
#include <string_view>

#include "scope/timeline/packer.h"

namespace sonaprobe::scope::timeline {

// Whether this build has the page's parts: they need esbuild.
bool hasPage();

// Gives the page piece by piece.
void putPage(const PackedTrace& trace, std::string_view title,
             const std::function<void(std::string_view)>& put);

}  // namespace sonaprobe::scope::timeline
