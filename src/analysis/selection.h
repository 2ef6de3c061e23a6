// Which records of a trace are asked for.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <variant>
#include <vector>

#include "analysis/trace_clock.h"
#include "analysis/value_expression.h"
#include "record/trace_record.h"

namespace sonaprobe {

struct Row;
struct Piece;

// What a record must be; what is empty asks nothing. Of several drivers, methods, threads,
// processors or objects one is enough.
struct Criteria {
    std::optional<Nanoseconds> from{};            // included
    std::optional<Nanoseconds> to{};              // not included
    std::optional<Nanoseconds> aroundDropouts{};  // before and after each
    std::vector<std::string> drivers{};  // "OrvelHDADriver", "hdad", "kAudioTOrvelHDADriver", "21"
    std::vector<std::string> methods{};  // "enable", "OrvelHDAPath::enable", "0x05245C0C"
    std::vector<uint64_t> threads{};
    std::vector<uint64_t> cpus{};
    std::vector<uint64_t> objects{};
    std::optional<Nanoseconds> longer{};  // start and end of calls that took at least so long
    bool failed = false;
    std::string where{};  // see value_expression.h
};

// A stretch of time, its end not included.
struct Window {
    Nanoseconds begin;
    Nanoseconds end;
};

// What --driver and --method may be: each once, in alphabetical order.
std::vector<std::string> driverNames();
std::vector<std::string> methodNames();

// Why criteria cannot be met, and which: "driver", "where" and so on.
struct Refusal {
    std::string option;
    std::string message;
};

class Selection {
  public:
    // A selection of all records.
    Selection() = default;

    // Refuses names that no decoder knows, with the nearest ones.
    static std::variant<Selection, Refusal> make(Criteria criteria);

    // Whether windows around dropouts or slots of long calls must be found before it can be asked.
    bool needsSurvey() const { return criteria_.aroundDropouts || criteria_.longer; }

    const Criteria& criteria() const { return criteria_; }

    // What a survey has found: each in ascending order.
    void setDropouts(const std::vector<Nanoseconds>& times);
    void setLongCalls(std::vector<uint64_t> slots) { longCallSlots_ = std::move(slots); }

    // Whether everything is selected.
    bool isAll() const { return all_; }

    // By the number of the record's slot and its time, as the criteria mean it.
    bool contains(const TraceRecord& record, uint64_t slot, Nanoseconds time) const;

  private:
    friend class SelectionBinder;

    // What the names of drivers and methods stand for.
    struct Named {
        bool asked = false;
        std::unordered_set<const Row*> rows;
        std::unordered_set<uint32_t> classes;  // of the audio class word
        std::unordered_set<uint32_t> codes;

        bool contains(const TraceRecord& record, const Row* event, const Row* text) const;
    };

    bool containsTime(Nanoseconds time) const;
    bool containsValues(const TraceRecord& record) const;

    Criteria criteria_;
    bool all_ = true;
    Named drivers_;
    Named methods_;
    ValueExpression where_;
    // By comparison of the expression: the values that its name fits, by text.
    std::vector<std::unordered_map<const Row*, std::vector<const Piece*>>> fitting_;
    std::vector<Window> windows_;
    std::vector<uint64_t> longCallSlots_;
};

}  // namespace sonaprobe
