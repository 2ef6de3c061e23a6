// What the text that answers a record says of it.

#include "events/event.h"

namespace sonaprobe {

namespace {

const Row* namedRow(const Event& event) { return event.text != nullptr ? event.text : event.event; }

}  // namespace

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

std::span<const Piece> piecesOf(const Event& event) {
    if (event.text == nullptr) return {};
    return event.decoder->piecesOf(*event.text);
}

Value valueOf(const Event& event, const Piece& piece) {
    return {.name = event.decoder->nameOf(piece),
            .reading = piece.reading,
            .bits = static_cast<uint8_t>(piece.slice.bits()),
            .word = argumentOf(*event.record, piece.slice, piece.signExtend)};
}

bool hasFailedResult(const Event& event) {
    for (const Piece& piece : piecesOf(event)) {
        if (piece.isResult && argumentOf(*event.record, piece.slice) != 0) return true;
    }
    return false;
}

}  // namespace sonaprobe
