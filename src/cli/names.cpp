#include "cli/names.hpp"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <utility>

#include "base/ascii.hpp"

namespace kap::cli {
namespace {

constexpr std::size_t kMostSuggestions = 3;

// How many letters must be put in, left out or exchanged to make one name the other.
std::size_t distance(std::string_view from, std::string_view to) {
    std::vector<std::size_t> row(to.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t i = 1; i <= from.size(); ++i) {
        std::size_t diagonal = std::exchange(row[0], i);
        for (std::size_t j = 1; j <= to.size(); ++j) {
            const std::size_t exchanged = diagonal + (from[i - 1] == to[j - 1] ? 0 : 1);
            diagonal = row[j];
            row[j] = std::min({exchanged, row[j] + 1, row[j - 1] + 1});
        }
    }
    return row.back();
}

// How far `known` is from what was typed; a beginning is nearer than any mistake.
std::size_t farness(std::string_view wanted, std::string_view known) {
    constexpr std::size_t kShortestBeginning = 2;
    if (wanted.size() >= kShortestBeginning && known.starts_with(wanted)) {
        return 0;
    }
    return distance(wanted, known);
}

}  // namespace

std::vector<std::string> nearestNames(std::string_view wanted,
                                      const std::vector<std::string>& known) {
    constexpr std::size_t kLettersForAMistake = 3;
    const std::string typed = asciiLower(wanted);
    const std::size_t farthest = 1 + typed.size() / kLettersForAMistake;
    std::vector<std::pair<std::size_t, std::string>> candidates;
    for (const std::string& name : known) {
        const std::size_t apart = farness(typed, asciiLower(name));
        if (apart <= farthest) {
            candidates.emplace_back(apart, name);
        }
    }
    std::ranges::stable_sort(candidates, {}, [](const auto& candidate) { return candidate.first; });
    std::vector<std::string> nearest;
    for (auto& [apart, name] : candidates) {
        if (nearest.size() < kMostSuggestions) {
            nearest.push_back(std::move(name));
        }
    }
    return nearest;
}

std::string suggestion(std::string_view wanted, const std::vector<std::string>& known) {
    const std::vector<std::string> nearest = nearestNames(wanted, known);
    if (nearest.empty()) {
        return {};
    }
    std::string text = "; did you mean " + nearest.front();
    for (std::size_t i = 1; i < nearest.size(); ++i) {
        text += (i + 1 == nearest.size() ? " or " : ", ") + nearest[i];
    }
    return text + "?";
}

}  // namespace kap::cli
