// The names nearest to one that fits nothing.

#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace sonaprobe {

// Without regard to the case of ASCII letters.
bool sameName(std::string_view one, std::string_view other);
bool containsName(std::string_view text, std::string_view part);

// At most `most` of the names, the nearest first: those that hold the given one, then those that
// some wrong, missing or surplus letters turn into it. None where nothing is near.
std::vector<std::string_view> nearestNames(std::string_view given,
                                           std::span<const std::string_view> names,
                                           size_t most = 3);

// "; the nearest are 'a', 'b' and 'c'", or empty.
std::string nearestPhrase(std::string_view given, std::span<const std::string_view> names);

}  // namespace sonaprobe
