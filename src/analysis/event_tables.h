// Goes through the decoders' tables, event by event.

#pragma once

#include <cstdint>
#include <span>

#include "events/class_table.h"
#include "events/decoders/decoders.h"

namespace sonaprobe {

// visit(decoder, event, texts) with the event's row and those of its texts.
template <class Visit>
void forEachEvent(const Visit& visit) {
    const auto visitAll = [&](const Decoder& decoder) {
        const std::span<const Row> rows = decoder.rows;
        for (size_t i = 0; i < rows.size();) {
            size_t end = i + 1;
            while (end < rows.size() && !rows[end].isEvent()) ++end;
            visit(decoder, rows[i], rows.subspan(i + 1, end - i - 1));
            i = end;
        }
    };
    for (const Decoder* const decoder : kClassTable) {
        if (decoder != nullptr) visitAll(*decoder);
    }
    visitAll(decoders::kAudioServer);
}

}  // namespace sonaprobe
