// Goes over the rows of an area on all cores: what is not covered is passed over, what is covered wholly is
// read straight into its place where that is all there is to do, and everything else is blended.

#include "Platform/Painter/Painter.h"

#include "Platform/Painter/Blending.h"
#include "Platform/Pixels/CompositingOperation.h"
#include "Platform/Pixels/Rows/ParallelRows.h"
#include "Platform/Pixels/Rows/PixelImage.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <limits>

namespace Imaging::Platform {

namespace {

constexpr int atOnce = 512; ///< pixels that stay close at hand between sampling and blending

constexpr std::uint64_t eachByte = 0x0101010101010101;
constexpr std::ptrdiff_t bytesAtOnce = sizeof(std::uint64_t);

std::uint64_t eightBytes(const std::uint8_t* bytes) {
    std::uint64_t word = 0;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// The first byte that is not `value`.
const std::uint8_t* endOfRun(const std::uint8_t* first, const std::uint8_t* end, std::uint8_t value) {
    const std::uint64_t word = value * eachByte;
    while (end - first >= bytesAtOnce && eightBytes(first) == word) first += bytesAtOnce;
    while (first != end && *first == value) ++first;
    return first;
}

/// Behind the last byte that is not 0.
const std::uint8_t* startOfLastZeros(const std::uint8_t* first, const std::uint8_t* end) {
    while (end - first >= bytesAtOnce && eightBytes(end - bytesAtOnce) == 0) end -= bytesAtOnce;
    while (end != first && end[-1] == 0) --end;
    return end;
}

/// Paints the rows of one band.
class RowPainter {
public:
    RowPainter(const PixelTarget& target, const Coverage& coverage, const RowSampler& sampler,
               const Blend& blend, const Coverage* within)
        : m_target(target),
          m_coverage(coverage),
          m_reader(sampler.reader()),
          m_blend(blend),
          m_within(within),
          m_replaces(replaces(sampler, blend, within)) {}

    void paintRow(int y) {
        const PixelRect area = m_coverage.area;
        const std::uint8_t* const covers = m_coverage.row(y);
        if (covers == nullptr) {
            const int most = mostAtOnce();
            for (int x = area.left; x < area.right; x += std::min(most, area.right - x)) {
                paintPixels(x, y, std::min(most, area.right - x), nullptr);
            }
            return;
        }
        // What is not covered at the row's ends is not even looked at.
        const std::uint8_t* const end = covers + area.width();
        const std::uint8_t* first = endOfRun(covers, end, 0);
        const std::uint8_t* const last = startOfLastZeros(first, end);
        while (first != last) first = paintRun(first, last, area.left + static_cast<int>(first - covers), y);
    }

private:
    /// Whether covered pixels simply become the sampler's.
    static bool replaces(const RowSampler& sampler, const Blend& blend, const Coverage* within) {
        if (blend.fraction != Blend::one || within != nullptr) return false;
        if (blend.operation == NSCompositeCopy) return true;
        return sampler.isOpaque() &&
               (blend.operation == NSCompositeSourceOver || blend.operation == NSCompositeHighlight);
    }

    /// Pixels that are only put in their place need none close at hand.
    int mostAtOnce() const { return m_replaces ? std::numeric_limits<int>::max() : atOnce; }

    /// Paints a run of pixels that are all wholly covered, or a few that are not; returns where it ends.
    const std::uint8_t* paintRun(const std::uint8_t* first, const std::uint8_t* last, int x, int y) {
        const std::uint8_t* const limit = first + std::min<std::ptrdiff_t>(last - first, mostAtOnce());
        const std::uint8_t* end = endOfRun(first, limit, 255);
        const std::uint8_t* covers = nullptr;
        constexpr std::ptrdiff_t worthwhile = 16;
        if (end - first < worthwhile && end != last) {
            covers = first;
            end = std::min(limit, first + worthwhile);
        }
        paintPixels(x, y, static_cast<int>(end - first), covers);
        return end;
    }

    void paintPixels(int x, int y, int count, const std::uint8_t* covers) {
        std::uint32_t* const target = m_target.row(y) + x;
        const auto pixels = static_cast<std::size_t>(count);
        if (m_replaces && covers == nullptr) {
            const std::uint32_t* const words = m_reader->read(x, y, count, target);
            if (words != target) std::memcpy(target, words, pixels * sizeof(std::uint32_t));
            return;
        }
        const std::uint32_t* words = m_reader->read(x, y, count, m_words.data());
        if (m_within != nullptr) words = limited(words, x, y, count);
        blendRow(m_blend, words, covers, target, pixels);
    }

    /// The words in proportion to how far each pixel lies within the picture.
    const std::uint32_t* limited(const std::uint32_t* words, int x, int y, int count) {
        m_limited.fill(0);
        const PixelRect area = m_within->area;
        const int first = std::max(x, area.left);
        const int end = std::min(x + count, area.right);
        if (y >= area.top && y < area.bottom && first < end) {
            const std::uint8_t* const row = m_within->row(y);
            blendRow({NSCompositeCopy, Blend::one, false}, words + (first - x),
                     row != nullptr ? row + (first - area.left) : nullptr, m_limited.data() + (first - x),
                     static_cast<std::size_t>(end - first));
        }
        return m_limited.data();
    }

    const PixelTarget& m_target;
    const Coverage& m_coverage;
    std::unique_ptr<RowReader> m_reader;
    Blend m_blend;
    const Coverage* m_within;
    bool m_replaces;
    std::array<std::uint32_t, atOnce> m_words;
    std::array<std::uint32_t, atOnce> m_limited;
};

} // namespace

void paint(const PixelTarget& target, const Coverage& coverage, const RowSampler& sampler,
           NSCompositingOperation operation, double fraction, const Coverage* within) {
    const PixelRect area = coverage.area;
    if (area.isEmpty()) return;
    const Blend blend{operation, blendFraction(fraction), target.opaque};
    forEachRowBand(area.height(), minimumRowsPerBand(area.width()),
                   [&](std::int64_t first, std::int64_t end) {
                       RowPainter painter(target, coverage, sampler, blend, within);
                       for (std::int64_t y = first; y < end; ++y)
                           painter.paintRow(area.top + static_cast<int>(y));
                   });
}

} // namespace Imaging::Platform
