// The reference of all events, docs/events.md.

#pragma once

namespace sonaprobe::events {

// Prints the reference on standard output.
void printMarkdown();

}  // namespace sonaprobe::events
