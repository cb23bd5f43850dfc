// Random choices come from a counter instead of a generator with a memory, so that the n-th one can be told
// without those before it.

#include "Show/TransitionChoice.h"

#include "Platform/Foundation/Exception.h"

#include <string>

namespace Imaging {

namespace {

/// Positions of the random sequence that lie between two that depend on nothing before them.
constexpr std::size_t blockLength = 64;

/// The splitmix64 generator's output for a counter: Steele, Lea and Flood, "Fast splittable pseudorandom
/// number generators" (2014), with the constants of Stafford's "variant 13" mixer.
std::uint64_t mixed(std::uint64_t number) {
    number += 0x9E3779B97F4A7C15;
    number = (number ^ (number >> 30)) * 0xBF58476D1CE4E5B9;
    number = (number ^ (number >> 27)) * 0x94D049BB133111EB;
    return number ^ (number >> 31);
}

/// A number below `count`, which is small, for a place of a seed's sequence. `use` keeps numbers apart that
/// are drawn for the same place.
std::size_t randomNumber(std::uint64_t seed, std::size_t place, std::uint64_t use, std::size_t count) {
    const std::uint64_t bits = mixed(mixed(mixed(seed) ^ place) ^ use);
    return static_cast<std::size_t>(((bits >> 32) * count) >> 32);
}

enum RandomUse : std::uint64_t { KindOfBlock, Kind, Variant };

} // namespace

TransitionChoice::TransitionChoice(std::string_view text, std::uint64_t seed)
    : m_random(text == "random"), m_seed(seed) {
    if (m_random || text == "all") {
        for (const TransitionKind& kind : transitionKinds()) {
            if (whyNotDrawn(kind).empty()) m_rounds.push_back(variantsOf(kind));
        }
        return;
    }
    std::size_t comma = 0;
    while (comma != std::string_view::npos) {
        comma = text.find(',');
        const std::string_view one = text.substr(0, comma);
        if (one == "all" || one == "random") {
            throw Platform::NSException(Platform::NSInvalidArgumentException,
                                        "'" + std::string(one) +
                                            "' stands alone; a list is of transitions by name");
        }
        m_rounds.push_back({transitionWithText(one)});
        text.remove_prefix(comma == std::string_view::npos ? 0 : comma + 1);
    }
}

Transition TransitionChoice::at(std::size_t index) const {
    if (m_random) {
        const std::vector<Transition>& variants = m_rounds[randomPlace(index)];
        return variants[randomNumber(m_seed, index, Variant, variants.size())];
    }
    const std::vector<Transition>& variants = m_rounds[index % m_rounds.size()];
    return variants[index / m_rounds.size() % variants.size()];
}

std::size_t TransitionChoice::firstPlaceOfBlock(std::size_t block) const {
    return randomNumber(m_seed, block, KindOfBlock, m_rounds.size());
}

/// Each place is any but the one before. So that none depends on all before it, the sequence is cut into
/// blocks, whose first places are chosen freely; the last one of a block keeps off the next block's first.
std::size_t TransitionChoice::randomPlace(std::size_t index) const {
    const std::size_t block = index / blockLength;
    const std::size_t next = firstPlaceOfBlock(block + 1);
    std::size_t place = firstPlaceOfBlock(block);
    for (std::size_t i = block * blockLength + 1; i <= index; ++i) {
        const bool isLast = i % blockLength == blockLength - 1;
        std::vector<std::size_t> candidates;
        for (std::size_t candidate = 0; candidate < m_rounds.size(); ++candidate) {
            if (candidate != place && !(isLast && candidate == next)) candidates.push_back(candidate);
        }
        place = candidates[randomNumber(m_seed, i, Kind, candidates.size())];
    }
    return place;
}

} // namespace Imaging
