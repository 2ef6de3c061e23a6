// A condition on the values of a record, as people write it: 'pin nodeID == 21 && result != 0'.
//
//     either     := both { "||" both }
//     both       := one { "&&" one }
//     one        := "!" one | "(" either ")" | comparison
//     comparison := name ( "==" | "!=" | "<" | "<=" | ">" | ">=" ) constant
//
// A name is one or several words, or stands in quotation marks. A constant is a number, decimal or
// after 0x hexadecimal, or a text: words, or in quotation marks.

#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "analysis/keyed_hash.h"

namespace sonaprobe {

enum class Relation : uint8_t { equal, notEqual, less, lessOrEqual, greater, greaterOrEqual };

// One value against one constant.
struct Comparison {
    std::string name;
    Relation relation = Relation::equal;
    std::string text;            // the constant as it was written, without quotation marks
    std::optional<Wide> number;  // the constant, where it is a number
    size_t nameAt = 0;           // where they stand in the expression, for messages
    size_t constantAt = 0;
};

// A record that lacks the value decides nothing, whatever stands before the comparison.
enum class Truth : uint8_t { no, yes, unknown };

// What is wrong with a text, and at which of its bytes.
struct Mistake {
    std::string what;
    size_t at = 0;
};

class ValueExpression {
  public:
    static std::variant<ValueExpression, Mistake> parse(std::string_view text);

    std::span<const Comparison> comparisons() const { return comparisons_; }

    // `compare` is asked by a comparison's place in comparisons().
    Truth evaluate(const std::function<Truth(size_t)>& compare) const;

  private:
    friend class ExpressionParser;

    enum class Kind : uint8_t { comparison, negation, both, either };
    struct Node {
        Kind kind{};
        size_t first = 0;  // a node, or the place of the comparison
        size_t second = 0;
    };

    Truth evaluate(const Node& node, const std::function<Truth(size_t)>& compare) const;

    std::vector<Comparison> comparisons_;
    std::vector<Node> nodes_;  // the last one is the whole
};

// Both sides of a relation, as text or as numbers.
template <class Type>
bool holds(Relation relation, const Type& left, const Type& right) {
    switch (relation) {
        case Relation::equal: return left == right;
        case Relation::notEqual: return left != right;
        case Relation::less: return left < right;
        case Relation::lessOrEqual: return left <= right;
        case Relation::greater: return left > right;
        case Relation::greaterOrEqual: return left >= right;
    }
    return false;
}

}  // namespace sonaprobe
