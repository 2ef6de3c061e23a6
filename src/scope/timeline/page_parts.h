// The page's parts as the build has bundled them (web/timeline/page_parts.cmake); empty where it
// had no esbuild.

#pragma once

#include <string_view>

namespace sonaprobe::scope::timeline {

struct PageParts {
    std::string_view page;  // with "@TITLE@" and the like where the rest goes
    std::string_view script;
    std::string_view scriptHash;  // SHA-256 in hexadecimal digits
    std::string_view style;
    std::string_view styleHash;
};

extern const PageParts kPageParts;

}  // namespace sonaprobe::scope::timeline
