// The language of --where: what it means, and where its mistakes are.

#include "analysis/value_expression.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>

namespace sonaprobe {
namespace {

// What an expression says of named numbers; a name that is not among them is unknown.
Truth evaluate(const std::string& text, const std::map<std::string, int>& values) {
    const auto parsed = ValueExpression::parse(text);
    if (const auto* const mistake = std::get_if<Mistake>(&parsed)) {
        ADD_FAILURE() << text << ": " << mistake->what;
        return Truth::unknown;
    }
    const auto& expression = std::get<ValueExpression>(parsed);
    return expression.evaluate([&](size_t place) {
        const Comparison& comparison = expression.comparisons()[place];
        const auto found = values.find(comparison.name);
        if (found == values.end() || !comparison.number) return Truth::unknown;
        return holds(comparison.relation, Wide{found->second}, *comparison.number) ? Truth::yes
                                                                                   : Truth::no;
    });
}

TEST(ValueExpression, ComparesAsItIsWritten) {
    const std::map<std::string, int> values{{"pin nodeID", 21}, {"result", -3}, {"x", 0}};
    struct {
        const char* text;
        Truth truth;
    } const cases[] = {
        {"pin nodeID == 21", Truth::yes},
        {"pin   nodeID==0x15", Truth::yes},
        {"\"pin nodeID\" != 21", Truth::no},
        {"result < 0", Truth::yes},
        {"result >= -3 && result <= -3", Truth::yes},
        {"x > 0 || result == -3", Truth::yes},
        {"x == 0 && result == 0", Truth::no},
        // && before ||
        {"x == 0 || x == 1 && x == 2", Truth::yes},
        {"(x == 0 || x == 1) && x == 2", Truth::no},
        {"!x == 0", Truth::no},
        {"!(x == 1) && !!(x == 0)", Truth::yes},
    };
    for (const auto& one : cases) EXPECT_EQ(evaluate(one.text, values), one.truth) << one.text;
}

TEST(ValueExpression, AValueThatIsMissingDecidesNothing) {
    const std::map<std::string, int> values{{"x", 0}};
    EXPECT_EQ(evaluate("y == 0", values), Truth::unknown);
    EXPECT_EQ(evaluate("!(y == 0)", values), Truth::unknown);
    EXPECT_EQ(evaluate("y == 0 && x == 0", values), Truth::unknown);
    EXPECT_EQ(evaluate("x == 0 && y == 0", values), Truth::unknown);
    EXPECT_EQ(evaluate("y == 0 && x == 1", values), Truth::no);
    EXPECT_EQ(evaluate("y == 0 || x == 0", values), Truth::yes);
    EXPECT_EQ(evaluate("y == 0 || x == 1", values), Truth::unknown);
}

TEST(ValueExpression, TakesTextsWithAndWithoutQuotationMarks) {
    for (const char* const text : {"mode == External clock", "mode == \"External clock\"",
                                   "mode == 'External clock'", " mode==External  clock "}) {
        const auto parsed = ValueExpression::parse(text);
        ASSERT_TRUE(std::holds_alternative<ValueExpression>(parsed)) << text;
        const Comparison& one = std::get<ValueExpression>(parsed).comparisons()[0];
        EXPECT_EQ(one.text, "External clock") << text;
        EXPECT_FALSE(one.number) << text;
    }
}

TEST(ValueExpression, TellsWhatIsWrongAndWhere) {
    struct {
        std::string text;
        const char* what;
        size_t at;
    } const cases[] = {
        {"", "the name of a value is missing", 0},
        {"== 3", "the name of a value is missing", 0},
        {"result", "==, !=, <, <=, > or >= is missing", 6},
        {"result = 3", "write == to compare", 7},
        {"result ==", "a number or a text is missing", 9},
        {"result == && x == 1", "a number or a text is missing", 10},
        {"result == 0x2G", "'0x2G' is no number; a text stands in quotation marks", 10},
        {"result < words", "only numbers are less or greater", 9},
        {"(result == 3", "the parenthesis is not closed", 0},
        {"result == 3)", "&& or || is missing before ')'", 11},
        {"result == 3 & x == 1", "&& or || is missing before '& x == 1'", 12},
        {"result == \"a", "the quotation mark is not closed", 10},
        {std::string(200, '('), "too many parentheses and ! inside each other", 100},
        {std::string(200, '!'), "too many parentheses and ! inside each other", 100},
    };
    for (const auto& one : cases) {
        const auto parsed = ValueExpression::parse(one.text);
        const auto* const mistake = std::get_if<Mistake>(&parsed);
        ASSERT_NE(mistake, nullptr) << one.text;
        EXPECT_EQ(mistake->what, one.what) << one.text;
        EXPECT_EQ(mistake->at, one.at) << one.text;
    }
}

}  // namespace
}  // namespace sonaprobe
