// Whether two samples differ by more than chance makes them.
//
// Neighbouring calls are often alike: a device is slow for a while, a story repeats. Both tests
// therefore look at how much batches of neighbours scatter, in several sizes, and take the largest
// scatter for what chance does.

#pragma once

#include <cstdint>
#include <span>

namespace sonaprobe {

struct RankResult {
    // The share of all pairs in which the second sample's value is the larger; a tie counts half.
    double superiority = 0.5;
    double probability = 1;  // that chance alone makes such a difference
};

// Compares two samples by the order of their values, each in the order in which they were taken.
RankResult compareRanks(std::span<const uint64_t> first, std::span<const uint64_t> second);

// Counts in equal stretches of something, and how much of it each stretch has.
struct Counts {
    std::span<const double> counts;
    std::span<const double> exposures;
};

struct RateResult {
    double first = 0;  // counts for each unit of exposure
    double second = 0;
    double probability = 1;  // that chance alone makes such a difference
};

RateResult compareRates(const Counts& first, const Counts& second);

// The regularised incomplete beta function.
double incompleteBeta(double a, double b, double x);

}  // namespace sonaprobe
