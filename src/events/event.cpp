// What the text that answers a record says of it.

#include "events/event.h"

namespace sonaprobe {

namespace {

const Row* namedRow(const Event& event) { return event.text != nullptr ? event.text : event.event; }

}  // namespace

bool outcomeHangsOnArguments(uint32_t debugid) {
    TraceRecord example{};
    example.debugid = debugid;
    const Event event = decode(example);
    if (event.event == nullptr) return false;
    const unsigned qualifier = 1U << static_cast<unsigned>(qualifierOf(debugid));
    const Row* const end = event.decoder->rows.data() + event.decoder->rows.size();
    for (const Row* row = event.event + 1; row != end && !row->isEvent(); ++row) {
        if ((row->qualifiers & qualifier) != 0) return row->condition.test != Test::always;
    }
    return false;
}

std::string_view groupOf(const Event& event) {
    const Row* const row = namedRow(event);
    if (row == nullptr) return {};
    return event.decoder->text(row->name).view().substr(0, row->groupLength);
}

std::string_view methodOf(const Event& event) {
    const Row* const row = namedRow(event);
    if (row == nullptr) return {};
    return event.decoder->text(row->name).view().substr(row->groupLength + kNameSeparator.size());
}

bool hasFailedResult(const Event& event) {
    for (const Piece& piece : piecesOf(event)) {
        if (piece.isResult && argumentOf(*event.record, piece.slice) != 0) return true;
    }
    return false;
}

}  // namespace sonaprobe
