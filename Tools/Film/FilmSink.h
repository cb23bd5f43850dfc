#pragma once

#include "Tools/Command/Values.h"

#include <cstdint>
#include <memory>
#include <string>

namespace Imaging::Tool {

/// One frame: rows from the top, each of `size.width` words of 8-bit blue, green, red and an unused 255, in
/// this order in memory ("bgr0").
struct FrameView {
    const std::uint32_t* words = nullptr;
    std::size_t wordsPerRow = 0;
};

/// What a sink has to know beforehand.
struct FilmFormat {
    PixelSize size;
    std::int64_t rateNumerator = 25;
    std::int64_t rateDenominator = 1;
    std::uint64_t firstFrame = 0; ///< the number of the first frame written
    std::uint64_t frameCount = 0; ///< how many will be written
    bool loop = false;            ///< for formats that say so themselves
};

/// Where the frames of a film go: an encoder, a folder or a stream. One thread writes them in order.
/// Everything throws a Failure that names the output and says what to do. A sink that goes before `finish`
/// leaves nothing of a film behind, also when the process is interrupted.
class FilmSink {
public:
    virtual ~FilmSink() = default;
    FilmSink(const FilmSink&) = delete;
    FilmSink& operator=(const FilmSink&) = delete;

    /// The next frame, `times` times over. The words are read before it returns, or held by `owner` until
    /// they are.
    virtual void write(const FrameView& frame, std::uint64_t times, std::shared_ptr<const void> owner) = 0;

    /// The last frame was written: waits until all of it is in its place.
    virtual void finish() = 0;

protected:
    FilmSink() = default;
};

} // namespace Imaging::Tool
