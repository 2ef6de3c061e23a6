// The indentation that follows the nesting of start and end events: one depth for the whole
// program, never negative, held at its limit.

#pragma once

namespace sonaprobe {

// Each puts its blanks on the line being printed.
void indentIn();   // as many as the depth, which then grows by one
void indentOut();  // the depth shrinks by one, unless it is 0; then as many as the depth
void indentPad();  // as many as the depth

// Forgets all open starts: their ends may have been lost.
void resetIndentation();

}  // namespace sonaprobe
