// Conditions on values, as people write them: a mistake is told at a place of the text, and what is
// understood means the same inside a larger condition.
//
// An input is a byte for what the comparisons come to, then the condition.

#include <string>
#include <variant>

#include "analysis/value_expression.h"
#include "fuzz.h"

using namespace sonaprobe;
using fuzz::Input;
using fuzz::require;

namespace {

Truth contrary(Truth truth) {
    if (truth == Truth::unknown) return truth;
    return truth == Truth::yes ? Truth::no : Truth::yes;
}

// Whether each comparison holds, by its number.
struct Answers {
    uint8_t seed;
    size_t comparisons;

    Truth operator()(size_t number) const {
        return static_cast<Truth>((seed >> number % comparisons % 7) % 3);
    }
};

// Of the text or a larger one, which may be too deep.
void requireTruth(const std::string& where, const Answers& answers, Truth expected) {
    const auto parsed = ValueExpression::parse(where);
    if (const auto* expression = std::get_if<ValueExpression>(&parsed)) {
        require(expression->evaluate(answers) == expected, "a condition means what its parts do");
    } else {
        require(std::get<Mistake>(parsed).what.find("too many") != std::string::npos,
                "parts that are understood make up a whole that is");
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    Input input(data, size);
    const auto seed = input.number<uint8_t>();
    const std::span<const uint8_t> bytes = input.rest();
    const std::string where(bytes.begin(), bytes.end());

    const auto parsed = ValueExpression::parse(where);
    if (const auto* mistake = std::get_if<Mistake>(&parsed)) {
        require(mistake->at <= where.size(), "a mistake is in the text");
        require(!mistake->what.empty(), "a mistake is told");
        return 0;
    }
    const auto& expression = std::get<ValueExpression>(parsed);
    require(!expression.comparisons().empty(), "an expression compares something");
    for (const Comparison& comparison : expression.comparisons()) {
        require(comparison.nameAt < where.size() && comparison.constantAt < where.size(),
                "a comparison is in the text");
    }
    const Answers answers{seed, expression.comparisons().size()};
    const Truth truth = expression.evaluate(answers);
    requireTruth("!(" + where + ")", answers, contrary(truth));
    requireTruth("(" + where + ") && !!(" + where + ")", answers, truth);
    requireTruth("!(" + where + "||" + where + ")", answers, contrary(truth));
    return 0;
}
