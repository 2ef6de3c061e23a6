// Names of drivers, methods and values, bound to those of the decoders: what is unknown is refused,
// what is known can be asked of any record. Each is compared with all there are, which is slow.
//
// An input is a record, the length of a name, the name, a condition on values.

#include "analysis/selection.h"

#include <variant>

#include "fuzz.h"

using namespace sonaprobe;
using fuzz::Input;
using fuzz::require;

namespace {

std::string textOf(std::span<const uint8_t> bytes) { return {bytes.begin(), bytes.end()}; }

void ask(const Selection& selection, TraceRecord record) {
    constexpr uint32_t kCodes[] = {0x05245C0C, 0x05249850, 0x21040008, 0x01300004};
    for (const uint32_t code : kCodes) {
        for (uint32_t qualifier = 0; qualifier < 4; ++qualifier) {
            record.debugid = code | qualifier;
            selection.contains(record, 1, 1000);
        }
    }
    selection.contains(record, 1, 1000);
}

void check(Criteria criteria, const TraceRecord& record) {
    const auto made = Selection::make(std::move(criteria));
    if (const auto* selection = std::get_if<Selection>(&made)) {
        ask(*selection, record);
    } else {
        require(!std::get<Refusal>(made).message.empty(), "a refusal is told");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    const auto record = input.number<TraceRecord>();
    const std::string name = textOf(input.bytes(input.number<uint8_t>() & 63));
    const std::string where = textOf(input.rest());
    if (!where.empty()) check({.where = where}, record);
    if (!name.empty()) {
        check({.drivers = {name}}, record);
        check({.methods = {name}}, record);
    }
    return 0;
}
