// Distances between names.

#include "analysis/nearest.h"

#include <algorithm>
#include <numeric>

namespace sonaprobe {

namespace {

constexpr char lower(char letter) {
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

// How many letters to change, insert or leave out.
size_t distance(std::string_view one, std::string_view other) {
    std::vector<size_t> row(other.size() + 1);
    std::iota(row.begin(), row.end(), size_t{0});
    for (size_t i = 0; i < one.size(); ++i) {
        size_t diagonal = row[0];
        row[0] = i + 1;
        for (size_t j = 0; j < other.size(); ++j) {
            const size_t changed = diagonal + (lower(one[i]) == lower(other[j]) ? 0 : 1);
            diagonal = row[j + 1];
            row[j + 1] = std::min({changed, row[j] + 1, row[j + 1] + 1});
        }
    }
    return row.back();
}

}  // namespace

bool sameName(std::string_view one, std::string_view other) {
    return std::ranges::equal(one, other, {}, lower, lower);
}

bool containsName(std::string_view text, std::string_view part) {
    const auto same = [](char one, char other) { return lower(one) == lower(other); };
    return std::search(text.begin(), text.end(), part.begin(), part.end(), same) != text.end() ||
           part.empty();
}

std::vector<std::string_view> nearestNames(std::string_view given,
                                           std::span<const std::string_view> names, size_t most) {
    struct Found {
        size_t distance;
        std::string_view name;
    };
    constexpr size_t kLeastPart = 3;  // shorter parts are held by too many names
    std::vector<Found> found;
    for (const std::string_view name : names) {
        if (name.empty()) continue;
        const bool part = given.size() >= kLeastPart && containsName(name, given);
        const size_t away = part ? 0 : distance(given, name);
        if (part || away <= (given.size() + 2) / 3) found.push_back({away, name});
    }
    std::ranges::stable_sort(
        found, {}, [](const Found& one) { return std::pair(one.distance, one.name.size()); });
    std::vector<std::string_view> nearest;
    for (const Found& one : found) {
        if (nearest.size() < most && std::ranges::find(nearest, one.name) == nearest.end()) {
            nearest.push_back(one.name);
        }
    }
    return nearest;
}

std::string nearestPhrase(std::string_view given, std::span<const std::string_view> names) {
    const std::vector<std::string_view> nearest = nearestNames(given, names);
    if (nearest.empty()) return {};
    std::string phrase = nearest.size() == 1 ? "; the nearest is " : "; the nearest are ";
    for (size_t i = 0; i < nearest.size(); ++i) {
        if (i > 0) phrase += i + 1 == nearest.size() ? " and " : ", ";
        phrase += "'" + std::string(nearest[i]) + "'";
    }
    return phrase;
}

}  // namespace sonaprobe
