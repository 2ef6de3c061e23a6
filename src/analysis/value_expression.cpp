// Parses and evaluates conditions on values.

#include "analysis/value_expression.h"

#include <array>

#include "analysis/spelled.h"

namespace sonaprobe {

namespace {

constexpr size_t kMostDepth = 100;
constexpr std::string_view kSpecial = "=!<>&|()\"'";

struct Operator {
    std::string_view spelling;
    Relation relation;
};
// The longer of two that begin alike comes first.
constexpr std::array kRelations{
    Operator{"==", Relation::equal},       Operator{"!=", Relation::notEqual},
    Operator{"<=", Relation::lessOrEqual}, Operator{">=", Relation::greaterOrEqual},
    Operator{"<", Relation::less},         Operator{">", Relation::greater},
};

constexpr bool isBlank(char character) { return character == ' ' || character == '\t'; }

std::string quoted(std::string_view text) { return "'" + std::string(text) + "'"; }

}  // namespace

class ExpressionParser {
  public:
    explicit ExpressionParser(std::string_view text) : text_(text) {}

    std::variant<ValueExpression, Mistake> parse() {
        either();
        if (!mistake_ && at_ < text_.size()) fail("&& or || is missing before " + rest());
        if (mistake_) return *mistake_;
        return std::move(expression_);
    }

  private:
    using Kind = ValueExpression::Kind;

    size_t either() {
        size_t left = both();
        while (take("||")) left = add({Kind::either, left, both()});
        return left;
    }

    size_t both() {
        size_t left = one();
        while (take("&&")) left = add({Kind::both, left, one()});
        return left;
    }

    size_t one() {
        skipBlanks();
        if (mistake_) return 0;
        if (++depth_ > kMostDepth) {
            fail("too many parentheses and ! inside each other");
            return 0;
        }
        size_t node = 0;
        if (take("!")) {
            node = add({Kind::negation, one()});
        } else if (const size_t open = at_; take("(")) {
            node = either();
            if (!mistake_ && !take(")")) {
                at_ = open;
                fail("the parenthesis is not closed");
            }
        } else {
            node = comparison();
        }
        --depth_;
        return node;
    }

    size_t comparison() {
        Comparison made;
        made.nameAt = at_;
        made.name = words();
        if (made.name.empty()) fail("the name of a value is missing");
        skipBlanks();
        made.relation = relation();
        skipBlanks();
        made.constantAt = at_;
        constant(made);
        if (mistake_) return 0;
        expression_.comparisons_.push_back(std::move(made));
        return add({Kind::comparison, expression_.comparisons_.size() - 1});
    }

    Relation relation() {
        if (mistake_) return {};
        for (const Operator& known : kRelations) {
            if (take(known.spelling)) return known.relation;
        }
        fail(peek("=") ? "write == to compare" : "==, !=, <, <=, > or >= is missing");
        return {};
    }

    void constant(Comparison& made) {
        if (mistake_) return;
        const bool quotes = peek("\"") || peek("'");
        made.text = words();
        if (made.text.empty() && !quotes) fail("a number or a text is missing");
        if (mistake_ || quotes) return;
        const bool negative = made.text.front() == '-';
        const char first = made.text[negative ? 1 : 0];
        if (first < '0' || first > '9') {
            if (made.relation == Relation::equal || made.relation == Relation::notEqual) return;
            at_ = made.constantAt;
            return fail("only numbers are less or greater");
        }
        const auto number = spelledNumber(std::string_view(made.text).substr(negative ? 1 : 0));
        if (!number) {
            at_ = made.constantAt;
            return fail(quoted(made.text) + " is no number; a text stands in quotation marks");
        }
        made.number = negative ? -Wide{*number} : Wide{*number};
    }

    // Words up to an operator with single blanks between them, or what stands in quotation marks.
    std::string words() {
        skipBlanks();
        for (const char mark : {'"', '\''}) {
            if (at_ < text_.size() && text_[at_] == mark) return inMarks(mark);
        }
        std::string found;
        while (at_ < text_.size() && kSpecial.find(text_[at_]) == std::string_view::npos) {
            if (!isBlank(text_[at_])) {
                found += text_[at_];
            } else if (!found.empty() && found.back() != ' ') {
                found += ' ';
            }
            ++at_;
        }
        if (found.ends_with(' ')) found.pop_back();
        return found;
    }

    std::string inMarks(char mark) {
        const size_t end = text_.find(mark, at_ + 1);
        if (end == std::string_view::npos) {
            fail("the quotation mark is not closed");
            return {};
        }
        const std::string_view found = text_.substr(at_ + 1, end - at_ - 1);
        at_ = end + 1;
        return std::string(found);
    }

    void skipBlanks() {
        while (at_ < text_.size() && isBlank(text_[at_])) ++at_;
    }

    bool peek(std::string_view spelling) const { return text_.substr(at_).starts_with(spelling); }

    bool take(std::string_view spelling) {
        skipBlanks();
        if (mistake_ || !peek(spelling)) return false;
        at_ += spelling.size();
        return true;
    }

    std::string rest() const { return quoted(text_.substr(at_)); }

    void fail(std::string what) {
        if (!mistake_) mistake_ = Mistake{std::move(what), at_};
    }

    size_t add(ValueExpression::Node node) {
        expression_.nodes_.push_back(node);
        return expression_.nodes_.size() - 1;
    }

    std::string_view text_;
    size_t at_ = 0;
    size_t depth_ = 0;
    std::optional<Mistake> mistake_;
    ValueExpression expression_;
};

std::variant<ValueExpression, Mistake> ValueExpression::parse(std::string_view text) {
    return ExpressionParser(text).parse();
}

Truth ValueExpression::evaluate(const std::function<Truth(size_t)>& compare) const {
    return evaluate(nodes_.back(), compare);
}

Truth ValueExpression::evaluate(const Node& node,
                                const std::function<Truth(size_t)>& compare) const {
    if (node.kind == Kind::comparison) return compare(node.first);
    const Truth first = evaluate(nodes_[node.first], compare);
    if (node.kind == Kind::negation) {
        return first == Truth::unknown ? first : first == Truth::yes ? Truth::no : Truth::yes;
    }
    // One side may decide alone.
    const Truth deciding = node.kind == Kind::both ? Truth::no : Truth::yes;
    if (first == deciding) return first;
    const Truth second = evaluate(nodes_[node.second], compare);
    return second == deciding || first != Truth::unknown ? second : first;
}

}  // namespace sonaprobe
