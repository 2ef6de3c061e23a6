// Binds criteria to the decoder tables, and asks records.

#include "analysis/selection.h"

#include <algorithm>
#include <limits>

#include "analysis/event_tables.h"
#include "analysis/event_traits.h"
#include "analysis/nearest.h"
#include "analysis/spelled.h"
#include "events/event.h"
#include "events/log_text.h"
#include "registry/audio_class_registry.h"

namespace sonaprobe {

namespace {

// visit(decoder, row) for each event and each text.
template <class Visit>
void forEachRow(const Visit& visit) {
    forEachEvent([&](const Decoder& decoder, const Row& event, std::span<const Row> texts) {
        visit(decoder, event);
        for (const Row& text : texts) visit(decoder, text);
    });
}

std::string_view nameIn(const Decoder& decoder, const Row& row) {
    return decoder.text(row.name).view();
}

std::string_view groupIn(const Decoder& decoder, const Row& row) {
    return nameIn(decoder, row).substr(0, row.groupLength);
}

std::string_view methodIn(const Decoder& decoder, const Row& row) {
    return nameIn(decoder, row).substr(row.groupLength + kNameSeparator.size());
}

// Whether a name is meant by what was given: it is the same, or ends in the same words.
bool fits(std::string_view given, std::string_view name) {
    if (sameName(given, name)) return true;
    return name.size() > given.size() && name[name.size() - given.size() - 1] == ' ' &&
           sameName(given, name.substr(name.size() - given.size()));
}

void sortUnique(std::vector<std::string_view>& names) {
    std::ranges::sort(names);
    names.erase(std::unique(names.begin(), names.end()), names.end());
}

template <class NameOf>
std::vector<std::string> namesOfRows(const NameOf& nameOf) {
    std::vector<std::string_view> names;
    forEachRow(
        [&](const Decoder& decoder, const Row& row) { names.push_back(nameOf(decoder, row)); });
    sortUnique(names);
    return {names.begin(), names.end()};
}

std::string quoted(std::string_view name) { return "'" + std::string(name) + "'"; }

// Whether it is among those asked for, or none is.
bool isOneOf(const std::vector<uint64_t>& asked, uint64_t found) {
    return asked.empty() || std::ranges::find(asked, found) != asked.end();
}

std::string fourCharacters(uint32_t code) {
    std::string text;
    for (const unsigned shift : {24U, 16U, 8U, 0U}) text += static_cast<char>(code >> shift);
    return text;
}

// What is known of the value of one piece, beyond its name.
bool isText(const Piece& piece) {
    return piece.reading == Reading::words || piece.reading == Reading::fourCharacters ||
           piece.reading == Reading::character;
}

}  // namespace

std::vector<std::string> driverNames() { return namesOfRows(groupIn); }
std::vector<std::string> methodNames() { return namesOfRows(methodIn); }

// Finding what a name stands for, one kind of name at a time.
class SelectionBinder {
  public:
    explicit SelectionBinder(Selection& selection) : selection_(&selection) {}

    std::optional<Refusal> bind() {
        const Criteria& criteria = selection_->criteria_;
        for (const std::string& name : criteria.drivers) bindDriver(name);
        for (const std::string& name : criteria.methods) bindMethod(name);
        if (!criteria.where.empty()) bindWhere(criteria.where);
        return refusal_;
    }

  private:
    void bindDriver(const std::string& given) {
        Selection::Named& named = selection_->drivers_;
        named.asked = true;
        bool found = false;
        std::vector<std::string_view> known;
        forEachRow([&](const Decoder& decoder, const Row& row) {
            known.push_back(groupIn(decoder, row));
            if (!sameName(given, groupIn(decoder, row))) return;
            named.rows.insert(&row);
            found = true;
        });
        const std::optional<uint64_t> number = spelledNumber(given);
        for (const AudioClassRegistry::Entry& entry : AudioClassRegistry::entries()) {
            known.emplace_back(entry.name);
            // The codes of two classes differ in the case of one letter.
            if (sameName(given, entry.name) || given == fourCharacters(entry.code)) {
                named.classes.insert(entry.id);
                found = true;
            }
        }
        if (number && *number < kClassCount) {
            named.classes.insert(static_cast<uint32_t>(*number));
            found = true;
        }
        if (!found) refuse("driver", "no driver is called " + quoted(given), given, known);
    }

    void bindMethod(const std::string& given) {
        Selection::Named& named = selection_->methods_;
        named.asked = true;
        if (const std::optional<uint64_t> code = spelledNumber(given)) {
            named.codes.insert(codeOf(static_cast<uint32_t>(*code)));
            return;
        }
        const bool whole = given.find(kNameSeparator) != std::string::npos;
        bool found = false;
        std::vector<std::string_view> known;
        forEachRow([&](const Decoder& decoder, const Row& row) {
            const std::string_view name = whole ? nameIn(decoder, row) : methodIn(decoder, row);
            known.push_back(name);
            if (!sameName(given, name)) return;
            named.rows.insert(&row);
            found = true;
        });
        if (!found) refuse("method", "no method is called " + quoted(given), given, known);
    }

    void bindWhere(const std::string& text) {
        auto parsed = ValueExpression::parse(text);
        if (const Mistake* const mistake = std::get_if<Mistake>(&parsed)) {
            return refuseWhere(mistake->what, mistake->at);
        }
        selection_->where_ = std::move(std::get<ValueExpression>(parsed));
        for (const Comparison& comparison : selection_->where_.comparisons()) {
            bindComparison(comparison);
        }
    }

    void bindComparison(const Comparison& comparison) {
        auto& fitting = selection_->fitting_.emplace_back();
        bool takesText = false;
        bool takesNumber = false;
        std::vector<std::string_view> known;
        forEachRow([&](const Decoder& decoder, const Row& row) {
            for (const Piece& piece : decoder.piecesOf(row)) {
                if (piece.reading == Reading::nothing) continue;
                known.push_back(decoder.nameOf(piece));
                if (!fits(comparison.name, decoder.nameOf(piece))) continue;
                fitting[&row].push_back(&piece);
                (isText(piece) ? takesText : takesNumber) = true;
            }
        });
        if (fitting.empty()) {
            sortUnique(known);
            return refuseWhere("no value is called " + quoted(comparison.name) +
                                   nearestPhrase(comparison.name, known),
                               comparison.nameAt);
        }
        if (!comparison.number && !takesText) {
            refuseWhere(quoted(comparison.name) + " is a number", comparison.constantAt);
        }
    }

    void refuse(const char* option, const std::string& message, std::string_view given,
                std::vector<std::string_view>& known) {
        if (refusal_) return;
        sortUnique(known);
        refusal_ = Refusal{option, message + nearestPhrase(given, known)};
    }

    // With the place of the mistake marked below the expression.
    void refuseWhere(const std::string& what, size_t at) {
        if (refusal_) return;
        refusal_ = Refusal{"where", what + "\n  " + selection_->criteria_.where + "\n  " +
                                        std::string(at, ' ') + "^"};
    }

    static constexpr uint32_t kClassCount = 64;

    Selection* selection_;
    std::optional<Refusal> refusal_;
};

std::variant<Selection, Refusal> Selection::make(Criteria criteria) {
    Selection selection;
    const Criteria& own = selection.criteria_ = std::move(criteria);
    selection.all_ = !own.from && !own.to && !own.aroundDropouts && !own.longer && !own.failed &&
                     own.drivers.empty() && own.methods.empty() && own.threads.empty() &&
                     own.cpus.empty() && own.objects.empty() && own.where.empty();
    if (const auto refusal = SelectionBinder(selection).bind()) return *refusal;
    return selection;
}

void Selection::setDropouts(const std::vector<Nanoseconds>& times) {
    const Wide around = criteria_.aroundDropouts.value_or(0);
    windows_.clear();
    for (const Nanoseconds time : times) {
        // The record at the very end of a window is in it.
        const Window window{saturated(time - around), saturated(time + around + 1)};
        if (windows_.empty() || window.begin > windows_.back().end) {
            windows_.push_back(window);
        } else {
            windows_.back().end = std::max(windows_.back().end, window.end);
        }
    }
}

bool Selection::Named::contains(const TraceRecord& record, const Row* event,
                                const Row* text) const {
    if (!asked) return true;
    // A text may print under another name than its event's.
    if (rows.contains(text != nullptr ? text : event)) return true;
    if (codes.contains(codeOf(record.debugid))) return true;
    return classWordOf(record.debugid) == kAudioClassWord &&
           classes.contains(classIdOf(record.debugid));
}

bool Selection::containsTime(Nanoseconds time) const {
    if (criteria_.from && time < *criteria_.from) return false;
    if (criteria_.to && time >= *criteria_.to) return false;
    if (!criteria_.aroundDropouts) return true;
    const auto after = std::ranges::upper_bound(windows_, time, {}, &Window::begin);
    return after != windows_.begin() && time < std::prev(after)->end;
}

namespace {

Truth truthOf(bool holds) { return holds ? Truth::yes : Truth::no; }

Truth compareText(const Event& event, const Piece& piece, const Comparison& comparison) {
    char text[kLogTextRoom];
    const char* const end = putValue(text, event, piece, 1);
    const std::string_view found(text, static_cast<size_t>(end - text));
    const bool same = sameName(found, comparison.text);
    return truthOf(same == (comparison.relation == Relation::equal));
}

Truth compareNumber(const Value& value, const Comparison& comparison) {
    const Relation relation = comparison.relation;
    const Wide wanted = *comparison.number;
    if (relation == Relation::equal || relation == Relation::notEqual) {
        // In as many bits as the value has: -1 is 0xFFFFFFFF of 32 bits.
        const uint64_t mask = ~uint64_t{0} >> (64U - value.bits);
        const uint64_t low = static_cast<uint64_t>(wanted) & mask;
        const bool represented = wanted >= -(Wide{1} << (value.bits - 1)) && wanted <= Wide{mask};
        const bool same = represented && low == (value.word & mask);
        return truthOf(same == (relation == Relation::equal));
    }
    const bool isSigned = value.reading == Reading::signedDecimal;
    const Wide found = isSigned ? Wide{static_cast<int64_t>(value.word)} : Wide{value.word};
    return truthOf(holds(relation, found, wanted));
}

}  // namespace

bool Selection::containsValues(const TraceRecord& record) const {
    const Event event = decode(record);
    if (!drivers_.contains(record, event.event, event.text)) return false;
    if (!methods_.contains(record, event.event, event.text)) return false;
    if (criteria_.failed && !isFailure(event)) return false;
    if (criteria_.where.empty()) return true;
    return where_.evaluate([&](size_t place) {
        const auto found = fitting_[place].find(event.text);
        if (found == fitting_[place].end()) return Truth::unknown;
        const Comparison& comparison = where_.comparisons()[place];
        // Of several values with names that fit, one is enough.
        Truth truth = Truth::unknown;
        for (const Piece* const piece : found->second) {
            if (truth == Truth::yes) break;
            if (comparison.number) {
                truth = compareNumber(valueOf(event, *piece), comparison);
            } else if (isText(*piece)) {
                truth = compareText(event, *piece, comparison);
            }
        }
        return truth;
    }) == Truth::yes;
}

bool Selection::contains(const TraceRecord& record, uint64_t slot, Nanoseconds time) const {
    if (all_) return true;
    if (!containsTime(time)) return false;
    if (!isOneOf(criteria_.threads, record.arg5) || !isOneOf(criteria_.cpus, record.cpuid)) {
        return false;
    }
    if (!criteria_.objects.empty() &&
        !(hasObject(record.debugid) && isOneOf(criteria_.objects, record.arg1))) {
        return false;
    }
    if (criteria_.longer && !std::ranges::binary_search(longCallSlots_, slot)) return false;
    return containsValues(record);
}

}  // namespace sonaprobe
