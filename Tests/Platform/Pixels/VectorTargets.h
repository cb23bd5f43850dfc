#pragma once

// What tests of vector code share: every kind of vector that this machine has, and words between guards.

#include "Tests/Support/Pixels.h"

#include <hwy/highway.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace Pixels {

/// Calls the body once for each kind of vector that was compiled and that this processor has, then goes back
/// to the best one.
inline void onEveryVectorTarget(const std::function<void(const std::string& name)>& body) {
    const auto choose = [](std::int64_t targets) {
        hwy::SetSupportedTargetsForTest(targets);
        hwy::GetChosenTarget().Update(hwy::SupportedTargets());
    };
    const std::vector<std::int64_t> all = hwy::SupportedAndGeneratedTargets();
    for (const std::int64_t target : all) {
        choose(target);
        body(hwy::TargetName(target));
    }
    choose(0);
}

inline std::uint32_t wordOf(Rgba p) {
    return std::uint32_t{p.a} << 24 | std::uint32_t{p.r} << 16 | std::uint32_t{p.g} << 8 | std::uint32_t{p.b};
}

inline Rgba pixelOf(std::uint32_t word) {
    const auto byte = [word](int shift) { return static_cast<std::uint8_t>(word >> shift); };
    return {byte(16), byte(8), byte(0), byte(24)};
}

/// Words that nothing may touch stand before and behind the ones in use.
class GuardedWords {
public:
    explicit GuardedWords(std::size_t most) : m_words(most + 2 * guards, guard) {}

    std::uint32_t* from(std::size_t offset) { return m_words.data() + guards + offset; }

    friend bool operator==(const GuardedWords&, const GuardedWords&) = default;

private:
    static constexpr std::size_t guards = 64;
    static constexpr std::uint32_t guard = 0xC7D8E9FA;

    std::vector<std::uint32_t> m_words;
};

} // namespace Pixels
