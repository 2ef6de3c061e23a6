// Compares two traces event by event.

#include "analysis/difference.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "analysis/significance.h"

namespace sonaprobe {

namespace {

constexpr double kSecond = 1e9;

// Differences that are smaller are none, however sure they are.
constexpr double kLeastSuperiority = 0.02;  // away from one half
constexpr double kLeastShift = 0.01;        // of the mean self time, or of a rate

const EventSample kNoEvent;

// Occurrences in the stretches of a whole trace, and how many seconds of it each stretch has.
struct Spread {
    std::vector<double> counts;
    std::vector<double> exposures;

    Counts view() const { return {counts, exposures}; }
};

// The counts in stretches that cover the trace.
TimeCounts covering(TimeCounts counts, Nanoseconds span) {
    while (span / counts.length() >= static_cast<Nanoseconds>(TimeCounts::kStretches)) {
        counts.lengthen(2 * counts.length());
    }
    return counts;
}

Spread spreadOverTime(const TimeCounts& given, Nanoseconds span) {
    const TimeCounts counts = covering(given, span);
    Spread spread;
    for (size_t i = 0; i < TimeCounts::kStretches; ++i) {
        const Nanoseconds begin = static_cast<Nanoseconds>(i) * counts.length();
        if (begin > span) break;
        spread.counts.push_back(counts.counts()[i]);
        const Nanoseconds length = std::min(counts.length(), span - begin);
        // A trace of one moment still has a length.
        spread.exposures.push_back(static_cast<double>(std::max<Nanoseconds>(length, 1)) / kSecond);
    }
    return spread;
}

Spread spreadOverOccurrences(const EventSample& event, Nanoseconds span) {
    const TimeCounts failed = covering(event.failed, span);
    const TimeCounts occurrences = covering(event.occurrences, span);
    return {{failed.counts().begin(), failed.counts().end()},
            {occurrences.counts().begin(), occurrences.counts().end()}};
}

bool differs(double first, double second) {
    return std::abs(second - first) > kLeastShift * std::max(first, second);
}

double meanSelf(const EventSample& event) {
    return event.finished == 0
               ? 0
               : static_cast<double>(event.self) / static_cast<double>(event.finished);
}

double medianSelf(const EventSample& event) {
    std::vector<uint64_t> times = event.selfTimes;
    const auto middle = times.begin() + static_cast<std::ptrdiff_t>((times.size() - 1) / 2);
    std::ranges::nth_element(times, middle);
    return static_cast<double>(*middle);
}

// Self time in each second of the trace, in nanoseconds.
double loadOf(const EventSample& event, Nanoseconds span) {
    return static_cast<double>(event.self) /
           (static_cast<double>(std::max<Nanoseconds>(span, 1)) / kSecond);
}

class EventComparison {
  public:
    EventComparison(const TraceSample& first, const TraceSample& second, uint32_t code)
        : code_(code),
          first_(first.find(code) ? *first.find(code) : kNoEvent),
          second_(second.find(code) ? *second.find(code) : kNoEvent),
          firstSpan_(first.span()),
          secondSpan_(second.span()) {}

    double load() const { return loadOf(second_, secondSpan_) - loadOf(first_, firstSpan_); }

    // How many tests can find a difference here.
    unsigned tests() const {
        const bool times = !first_.selfTimes.empty() && !second_.selfTimes.empty();
        const bool failures = first_.failures + second_.failures > 0;
        return 1U + (times ? 1U : 0U) + (failures ? 1U : 0U);
    }

    // `tests` is the number in the whole comparison: of so many, some would find what is not there.
    std::vector<Difference> differences(unsigned tests) const {
        std::vector<Difference> found;
        compareTimes(found);
        compareFrequency(found);
        compareFailures(found);
        std::erase_if(found, [tests](Difference& each) {
            each.confidence = 1 - (1 - each.confidence) * tests;
            return each.confidence <= 1 - kFalseFindings;
        });
        return found;
    }

  private:
    void add(std::vector<Difference>& found, Change change, double first, double second,
             double probability, double superiority = 0.5) const {
        found.push_back({.code = code_,
                         .change = change,
                         .first = first,
                         .second = second,
                         .superiority = superiority,
                         .confidence = 1 - probability,
                         .load = load(),
                         .explains = 0});
    }

    void compareTimes(std::vector<Difference>& found) const {
        const RankResult ranks = compareRanks(first_.selfTimes, second_.selfTimes);
        const bool tells = std::abs(ranks.superiority - 0.5) >= kLeastSuperiority &&
                           differs(meanSelf(first_), meanSelf(second_));
        if (!tells) return;
        add(found, ranks.superiority > 0.5 ? Change::slower : Change::faster, medianSelf(first_),
            medianSelf(second_), ranks.probability, ranks.superiority);
    }

    void compareFrequency(std::vector<Difference>& found) const {
        const Spread first = spreadOverTime(first_.occurrences, firstSpan_);
        const Spread second = spreadOverTime(second_.occurrences, secondSpan_);
        const RateResult rates = compareRates(first.view(), second.view());
        if (!differs(rates.first, rates.second)) return;
        Change change = rates.second > rates.first ? Change::moreOften : Change::lessOften;
        if (first_.count() == 0) change = Change::appeared;
        if (second_.count() == 0) change = Change::gone;
        add(found, change, rates.first, rates.second, rates.probability);
    }

    void compareFailures(std::vector<Difference>& found) const {
        const Spread first = spreadOverOccurrences(first_, firstSpan_);
        const Spread second = spreadOverOccurrences(second_, secondSpan_);
        const RateResult shares = compareRates(first.view(), second.view());
        if (!differs(shares.first, shares.second)) return;
        add(found, shares.second > shares.first ? Change::failsMore : Change::failsLess,
            shares.first, shares.second, shares.probability);
    }

    uint32_t code_;
    const EventSample& first_;
    const EventSample& second_;
    Nanoseconds firstSpan_;
    Nanoseconds secondSpan_;
};

}  // namespace

TraceComparison compareTraces(const TraceSample& first, const TraceSample& second) {
    std::set<uint32_t> codes;
    for (const EventSample& event : first.events()) codes.insert(event.code);
    for (const EventSample& event : second.events()) codes.insert(event.code);

    TraceComparison comparison{{}, codes.size()};
    std::vector<EventComparison> events;
    events.reserve(codes.size());
    for (const uint32_t code : codes) events.emplace_back(first, second, code);
    unsigned tests = 0;
    double changed = 0;
    for (const EventComparison& event : events) {
        tests += event.tests();
        changed += std::abs(event.load());
    }
    for (const EventComparison& event : events) {
        for (const Difference& difference : event.differences(tests)) {
            comparison.differences.push_back(difference);
        }
    }
    for (Difference& difference : comparison.differences) {
        difference.explains = changed <= 0 ? 0 : difference.load / changed;
    }
    std::ranges::stable_sort(comparison.differences, std::greater(), [](const Difference& each) {
        return std::pair(std::abs(each.explains), each.confidence);
    });
    return comparison;
}

}  // namespace sonaprobe
