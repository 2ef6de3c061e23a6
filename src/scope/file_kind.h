// What a file is that is no trace, by its first bytes.

#pragma once

#include <cstddef>
#include <span>
#include <string>

namespace sonaprobe::scope {

// "this is a JPEG image", "this is packed with xz; unpack it first: xz -d", "this is empty": what
// to tell of a file in which no slot was found.
std::string kindOfFile(std::span<const std::byte> head);

}  // namespace sonaprobe::scope
