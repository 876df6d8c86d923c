#include "model/diff/Matching.h"

#include <algorithm>
#include <numeric>
#include <tuple>

namespace ZVSmartModel {

namespace {

using Positions = std::vector<std::size_t>;

Positions AllOf(std::size_t count) {
    Positions positions(count);
    std::iota(positions.begin(), positions.end(), std::size_t{0});
    return positions;
}

/// Moves the pairs whose keys are equal from the two lists of positions to `pairs`; several of
/// one key in their order.
template <class List, class KeyOf>
void TakeEqual(const List& a, const List& b, KeyOf keyOf, Positions& leftA, Positions& leftB,
               std::vector<MatchedPair>& pairs) {
    const auto sort = [&keyOf](const List& list, Positions& positions) {
        std::stable_sort(positions.begin(), positions.end(), [&](std::size_t i, std::size_t j) {
            return keyOf(list[i]) < keyOf(list[j]);
        });
    };
    sort(a, leftA);
    sort(b, leftB);
    Positions restA, restB;
    auto i = leftA.begin();
    auto j = leftB.begin();
    while (i != leftA.end() && j != leftB.end()) {
        if (keyOf(a[*i]) < keyOf(b[*j])) {
            restA.push_back(*i++);
        } else if (keyOf(b[*j]) < keyOf(a[*i])) {
            restB.push_back(*j++);
        } else {
            pairs.emplace_back(*i++, *j++);
        }
    }
    restA.insert(restA.end(), i, leftA.end());
    restB.insert(restB.end(), j, leftB.end());
    std::sort(restA.begin(), restA.end());
    std::sort(restB.begin(), restB.end());
    leftA = std::move(restA);
    leftB = std::move(restB);
}

std::vector<MatchedPair> InOrder(std::vector<MatchedPair> pairs, const Positions& onlyA,
                                 const Positions& onlyB) {
    for (const std::size_t position : onlyA) pairs.emplace_back(position, std::nullopt);
    std::sort(pairs.begin(), pairs.end());
    for (const std::size_t position : onlyB) pairs.emplace_back(std::nullopt, position);
    return pairs;
}

template <class List, class FirstKey, class SecondKey>
std::vector<MatchedPair> Match(const List& a, const List& b, FirstKey firstKey,
                               SecondKey secondKey) {
    Positions leftA = AllOf(a.size());
    Positions leftB = AllOf(b.size());
    std::vector<MatchedPair> pairs;
    TakeEqual(a, b, firstKey, leftA, leftB, pairs);
    TakeEqual(a, b, secondKey, leftA, leftB, pairs);
    return InOrder(std::move(pairs), leftA, leftB);
}

}  // namespace

std::vector<MatchedPair> MatchFloors(const std::vector<FloorEntry>& a,
                                     const std::vector<FloorEntry>& b) {
    return Match(
        a, b, [](const FloorEntry& floor) { return std::tie(floor.name); },
        [](const FloorEntry& floor) { return floor.order; });
}

std::vector<MatchedPair> MatchComponents(const std::vector<CompEntry>& a,
                                         const std::vector<CompEntry>& b) {
    return Match(
        a, b, [](const CompEntry& comp) { return std::tie(comp.key, comp.floor); },
        [](const CompEntry& comp) { return std::tie(comp.key); });
}

}  // namespace ZVSmartModel
