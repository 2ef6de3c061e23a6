// A rank test and a test of rates that do not take neighbours for independent.

#include "analysis/significance.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <vector>

namespace sonaprobe {

namespace {

// Batches that a sample is cut into.
constexpr std::array<size_t, 2> kBatches{64, 32};
constexpr size_t kLeastOfBatch = 2;

// Both tails of Student's distribution.
double studentTails(double t, double freedom) {
    return incompleteBeta(freedom / 2, 0.5, freedom / (freedom + t * t));
}

double sumOf(std::span<const double> values) {
    return std::accumulate(values.begin(), values.end(), 0.0);
}

// The variance of the values' mean, from the scatter of the means of batches.
double varianceOfMean(std::span<const double> values, size_t batches) {
    const double mean = sumOf(values) / static_cast<double>(values.size());
    double sum = 0;
    for (size_t i = 0; i < batches; ++i) {
        const size_t begin = i * values.size() / batches;
        const size_t end = (i + 1) * values.size() / batches;
        const auto batch = values.subspan(begin, end - begin);
        const double off = sumOf(batch) - mean * static_cast<double>(batch.size());
        sum += off * off;
    }
    const auto count = static_cast<double>(values.size());
    const auto n = static_cast<double>(batches);
    return sum / (count * count) * n / (n - 1);
}

// For each value of `sample`, which share of `other`, in ascending order, lies below it; ties count
// half.
std::vector<double> placements(std::span<const uint64_t> sample, std::span<const uint64_t> other) {
    std::vector<double> shares;
    shares.reserve(sample.size());
    for (const uint64_t value : sample) {
        const auto [least, most] = std::equal_range(other.begin(), other.end(), value);
        const double below =
            static_cast<double>(least - other.begin()) + static_cast<double>(most - least) / 2;
        shares.push_back(below / static_cast<double>(other.size()));
    }
    return shares;
}

// The variance of the superiority where both samples are of one kind and values independent.
double independentVariance(const std::vector<uint64_t>& first,
                           const std::vector<uint64_t>& second) {
    std::vector<uint64_t> all(first.size() + second.size());
    std::ranges::merge(first, second, all.begin());
    double ties = 0;
    for (auto at = all.begin(); at != all.end();) {
        const auto end = std::upper_bound(at, all.end(), *at);
        const auto tied = static_cast<double>(end - at);
        ties += tied * tied * tied - tied;
        at = end;
    }
    const auto n = static_cast<double>(all.size());
    return (n + 1 - ties / (n * (n - 1))) /
           (12 * static_cast<double>(first.size()) * static_cast<double>(second.size()));
}

// How much more counts scatter than those of independent events do, in stretches of `joined` of the
// given ones; at least 1.
double dispersionOf(const Counts& counts, size_t joined) {
    const double rate = sumOf(counts.counts) / sumOf(counts.exposures);
    double sum = 0;
    size_t stretches = 0;
    for (size_t i = 0; i < counts.counts.size(); i += joined) {
        const size_t length = std::min(joined, counts.counts.size() - i);
        const double expected = rate * sumOf(counts.exposures.subspan(i, length));
        if (expected <= 0) continue;
        const double off = sumOf(counts.counts.subspan(i, length)) - expected;
        sum += off * off / expected;
        ++stretches;
    }
    return stretches < 2 ? 1 : std::max(1.0, sum / static_cast<double>(stretches - 1));
}

double dispersionOf(const Counts& counts) {
    double dispersion = 1;
    if (sumOf(counts.counts) == 0) return dispersion;
    for (const size_t joined : {1U, 2U, 4U, 8U}) {
        dispersion = std::max(dispersion, dispersionOf(counts, joined));
    }
    return dispersion;
}

}  // namespace

RankResult compareRanks(std::span<const uint64_t> first, std::span<const uint64_t> second) {
    const size_t least = std::min(first.size(), second.size());
    RankResult result;
    if (least < 2 * kLeastOfBatch) return result;

    std::vector<uint64_t> sortedFirst(first.begin(), first.end());
    std::vector<uint64_t> sortedSecond(second.begin(), second.end());
    std::ranges::sort(sortedFirst);
    std::ranges::sort(sortedSecond);
    const std::vector<double> below = placements(second, sortedFirst);
    const std::vector<double> above = placements(first, sortedSecond);
    result.superiority = sumOf(below) / static_cast<double>(below.size());

    const double independent = independentVariance(sortedFirst, sortedSecond);
    result.probability = 0;
    for (const size_t wanted : kBatches) {
        const size_t batches = std::min(wanted, least / kLeastOfBatch);
        const double variance =
            std::max(independent, varianceOfMean(below, batches) + varianceOfMean(above, batches));
        if (variance <= 0) return {result.superiority, 1};  // all values are the same
        const double t = (result.superiority - 0.5) / std::sqrt(variance);
        result.probability =
            std::max(result.probability, studentTails(t, 2 * (static_cast<double>(batches) - 1)));
    }
    return result;
}

// Of all counts together, those of the second sample are a share that its exposure tells. Scatter
// makes counts worth less.
RateResult compareRates(const Counts& first, const Counts& second) {
    const double exposureFirst = sumOf(first.exposures);
    const double exposureSecond = sumOf(second.exposures);
    RateResult result;
    if (exposureFirst <= 0 || exposureSecond <= 0) return result;
    const double dispersion = std::max(dispersionOf(first), dispersionOf(second));
    const double countFirst = sumOf(first.counts);
    const double countSecond = sumOf(second.counts);
    result.first = countFirst / exposureFirst;
    result.second = countSecond / exposureSecond;

    const double share = exposureSecond / (exposureFirst + exposureSecond);
    const double a = countFirst / dispersion;
    const double b = countSecond / dispersion;
    // At most b of a + b, and at least b.
    const double atMost =
        b <= 0 && a <= 0 ? 1 : incompleteBeta(a <= 0 ? 1e-9 : a, b + 1, 1 - share);
    const double atLeast = b <= 0 ? 1 : incompleteBeta(b, a + 1, share);
    result.probability = std::min(1.0, 2 * std::min(atMost, atLeast));
    return result;
}

// By its continued fraction.
double incompleteBeta(double a, double b, double x) {
    if (x <= 0) return 0;
    if (x >= 1) return 1;
    if (x > (a + 1) / (a + b + 2)) return 1 - incompleteBeta(b, a, 1 - x);
    constexpr double kTiny = 1e-300;
    constexpr double kPrecision = 1e-15;
    constexpr int kMostSteps = 100'000;
    const double front = std::exp(std::lgamma(a + b) - std::lgamma(a) - std::lgamma(b) +
                                  a * std::log(x) + b * std::log1p(-x)) /
                         a;
    double c = 1;
    double d = 1 - (a + b) * x / (a + 1);
    d = 1 / (std::abs(d) < kTiny ? kTiny : d);
    double fraction = d;
    for (int m = 1; m < kMostSteps; ++m) {
        const double twice = 2.0 * m;
        for (const double step : {m * (b - m) * x / ((a + twice - 1) * (a + twice)),
                                  -(a + m) * (a + b + m) * x / ((a + twice) * (a + twice + 1))}) {
            d = 1 + step * d;
            d = 1 / (std::abs(d) < kTiny ? kTiny : d);
            c = 1 + step / c;
            if (std::abs(c) < kTiny) c = kTiny;
            fraction *= d * c;
        }
        if (std::abs(d * c - 1) < kPrecision) break;
    }
    return front * fraction;
}

}  // namespace sonaprobe
