// Records as lines.

#pragma once

#include "events/event.h"
#include "lines/line_state.h"

namespace sonaprobe {

// Prints records of one trace, in their order, on an output line, which outlives the printer.
class LinePrinter {
  public:
    LinePrinter(const LineOptions& options, OutputLine& line, NameLookup names = {})
        : state_{.options = options, .line = line, .names = names} {}

    // The record's line, or none: class filters, --basic, the decoder of its class, else the
    // unclassified layouts. Divisor slots and invalid ones are no records.
    void print(const TraceRecord& record);

    // A slot of a raw file: prints a record, takes over a divisor, passes over an invalid slot.
    void takeSlot(const TraceRecord& slot);

    // Forgets all open starts: their ends may have been lost.
    void resetIndentation() { state_.indentation = Indentation(); }

    // The clock of the records to come, 1000 at first. Any value will do: what the arithmetic
    // cannot hold saturates, and a time that is no number is 0.
    void setTicksPerMicrosecond(double ticks) { state_.ticksPerMicrosecond = ticks; }

  private:
    LineState state_;
};

}  // namespace sonaprobe
