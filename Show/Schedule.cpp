// Time is counted in nanoseconds times frames, in numbers wide enough that nothing is ever rounded on the
// way: each boundary is rounded once, from the beginning of the show.

#include "Show/Schedule.h"

#include "Platform/Foundation/Exception.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace Imaging {

namespace {

__extension__ using WideNumber = __int128;

constexpr WideNumber nanosecondsPerSecond = 1'000'000'000;

/// Counts up time exactly: what people write as a decimal number of seconds is a whole number of nanoseconds.
class Clock {
public:
    explicit Clock(const Show& show)
        : m_numerator(show.rateNumerator), m_denominator(show.rateDenominator * nanosecondsPerSecond) {}

    void advance(double seconds) { m_nanoseconds += std::llround(seconds * 1e9); }

    /// The frame that begins nearest to now, of two the later one.
    WideNumber frame() const {
        return (2 * m_nanoseconds * m_numerator + m_denominator) / (2 * m_denominator);
    }

private:
    WideNumber m_nanoseconds = 0;
    WideNumber m_numerator;
    WideNumber m_denominator;
};

} // namespace

Schedule::Schedule(const Show& show) {
    Clock clock(show);
    const auto add = [&](std::size_t picture, bool moves, double seconds) {
        clock.advance(seconds);
        if (clock.frame() > static_cast<WideNumber>(maximumFrames)) {
            throw Platform::NSException(Platform::NSRangeException,
                                        "the show would have more than " + std::to_string(maximumFrames) +
                                            " frames; take fewer pictures, shorter times or a lower rate");
        }
        const auto end = static_cast<std::uint64_t>(clock.frame());
        if (end > m_frame_count) m_parts.push_back({picture, moves, m_frame_count, end - m_frame_count});
        m_frame_count = end;
    };
    const std::size_t count = show.pictures.size();
    for (std::size_t i = 0; i < count; ++i) {
        const ShowPicture& picture = show.pictures[i];
        m_easings.push_back(picture.next.easing);
        add(i, false, picture.hold);
        const bool goesOver = count > 1 && (i + 1 < count || show.loop);
        if (goesOver) add(i, true, picture.next.duration);
    }
    if (m_frame_count == 0) {
        throw Platform::NSException(
            Platform::NSInvalidArgumentException,
            "the show would have no frame; let its pictures stand or its transitions take longer");
    }
}

FrameContent Schedule::at(std::uint64_t frame) const {
    const auto after = std::upper_bound(m_parts.begin(), m_parts.end(), frame,
                                        [](std::uint64_t f, const Part& part) { return f < part.first; });
    const Part& part = *(after - 1);
    FrameContent content;
    content.picture = part.picture;
    content.moves = part.moves;
    if (!part.moves) return content;
    content.step = static_cast<std::size_t>(frame - part.first);
    const double time = static_cast<double>(content.step + 1) / static_cast<double>(part.count + 1);
    // Near an end of a long transition the nearest number may be the end itself.
    constexpr float lowest = 0x1p-126F;
    constexpr float highest = 0x1.fffffep-1F;
    content.weight = std::clamp(static_cast<float>(eased(m_easings.at(part.picture), time)), lowest, highest);
    return content;
}

} // namespace Imaging
