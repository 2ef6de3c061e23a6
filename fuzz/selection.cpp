// Conditions on values and the names of drivers and methods, as people write them: a mistake is
// told at a place of the text, and what is understood can be asked of any record.
//
// An input is a record, a byte of choices, a name, an expression.

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

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    const auto record = input.number<TraceRecord>();
    const auto choice = input.number<uint8_t>();
    const size_t nameBytes = choice & 63;
    const std::string name = textOf(input.bytes(nameBytes));
    const std::string where = textOf(input.rest());

    const auto parsed = ValueExpression::parse(where);
    if (const auto* mistake = std::get_if<Mistake>(&parsed)) {
        require(mistake->at <= where.size(), "a mistake is in the text");
        require(!mistake->what.empty(), "a mistake is told");
    } else {
        const auto& expression = std::get<ValueExpression>(parsed);
        require(!expression.comparisons().empty(), "an expression compares something");
        for (const Truth truth : {Truth::no, Truth::yes, Truth::unknown}) {
            expression.evaluate([&](size_t) { return truth; });
        }
    }
    // Looking through all events for names takes a thousand times as long.
    if ((choice & 0xC0) != 0) return 0;
    const auto check = [&](Criteria criteria) {
        const auto made = Selection::make(std::move(criteria));
        if (const auto* selection = std::get_if<Selection>(&made))
            ask(*selection, record);
        else
            require(!std::get<Refusal>(made).message.empty(), "a refusal is told");
    };
    if (!where.empty()) check({.where = where});
    if (!name.empty()) {
        check({.drivers = {name}});
        check({.methods = {name}});
    }
    return 0;
}
