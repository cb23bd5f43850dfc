// Whole convolutions: rows are widened to 16 bits once, kept in a ring for as long as a kernel reaches, and
// weighed block by block so that they stay in the cache.

#include "Imaging/Pixels/ConvolutionPasses.h"

#include "Imaging/Pixels/ConvolutionVectors.h"
#include "Imaging/Pixels/PixelWorkers.h"
#include "hwy/aligned_allocator.h"

#include <algorithm>
#include <array>
#include <new>
#include <span>
#include <vector>

namespace Imaging {

namespace {

/// How much of the rows under a kernel is meant to stay in the second-level cache of a core.
constexpr std::size_t ringBytes = std::size_t{128} << 10;
constexpr std::size_t cacheLine = 64;
/// In samples. The narrower a block, the more of what is widened for it lies beside it.
constexpr std::size_t smallestBlock = 512;
/// Rows that are dealt out together: the more, the fewer source rows are widened twice; the fewer, the better
/// the two threads share the work.
constexpr std::int64_t bandRows = 32;

/// Wide samples, all 0, from the start of a cache line on: loads that cross cache lines take twice as long.
using AlignedSamples = hwy::AlignedFreeUniquePtr<WideSample[]>;

AlignedSamples alignedSamples(std::size_t count) {
    AlignedSamples samples = hwy::AllocateAligned<WideSample>(count);
    if (samples == nullptr) throw std::bad_alloc();
    std::fill_n(samples.get(), count, WideSample{0});
    return samples;
}

/// Rows of wide samples, of which the latest are kept: row y lies in the slot y modulo the number of slots.
class RowRing {
public:
    RowRing(std::size_t slots, std::size_t rowSamples)
        : m_slots(slots),
          m_stride(stride(rowSamples + wideRowPadding)),
          m_samples(alignedSamples(m_slots * m_stride)) {}

    WideSample* row(std::int64_t y) { return m_samples.get() + slotOffset(y); }
    const WideSample* start() const { return m_samples.get(); }
    std::ptrdiff_t slotOffset(std::int64_t y) const {
        return static_cast<std::ptrdiff_t>(static_cast<std::size_t>(y) % m_slots * m_stride);
    }

private:
    /// An odd number of cache lines, so that the rows do not compete for the same few places of the cache.
    static std::size_t stride(std::size_t samples) {
        constexpr std::size_t lineSamples = cacheLine / sizeof(WideSample);
        return ((samples + lineSamples - 1) / lineSamples | 1U) * lineSamples;
    }

    std::size_t m_slots;
    std::size_t m_stride;
    AlignedSamples m_samples;
};

/// What one thread writes to besides its part of the destination; made before the threads are, since memory
/// may run out.
struct Scratch {
    RowRing ring;
    AlignedSamples row;                  ///< one source row, for the separable kernel
    std::vector<std::ptrdiff_t> offsets; ///< into the ring, for one output row
};

/// A record of the plain workers with what the passes need besides. Its first row and step count what is
/// dealt out instead: blocks of columns, or bands of rows.
template<class Record>
struct PassRecord : Record {
    const ConvolutionPlan* plan = nullptr;
    const std::ptrdiff_t* rowOffsets = nullptr; ///< the plan's taps along a row, in samples
    Scratch* scratch = nullptr;
    std::size_t samples = 0;    ///< of a pixel
    std::size_t rowSamples = 0; ///< of a row
    std::size_t block = 0;      ///< samples of a row that are worked on at a time
    std::int64_t band = 0;      ///< rows that are dealt out together, in two dimensions
};

using RectangleRecord = PassRecord<Convolve2Record>;
using LineRecord = PassRecord<Convolve1Record>;

/// How wide a block of columns is when so many of its rows are kept: half a row, so that both threads have
/// work, or less where that would not fit in the cache.
std::size_t blockSamples(std::size_t rowSamples, std::size_t keptRows) {
    const std::size_t half = (rowSamples / 2 + cacheLine) / cacheLine * cacheLine;
    const std::size_t fitting = ringBytes / sizeof(WideSample) / keptRows / cacheLine * cacheLine;
    return std::min(half, std::max(fitting, smallestBlock));
}

// The separable kernel

/// A block of columns: the samples `first` to `end` - 1 of every row.
struct Block {
    std::size_t first;
    std::size_t end;
};

/// Filters one row of a block along the row, into the ring.
void filterRow(const LineRecord& record, Block block, std::int64_t y) {
    const std::size_t half = static_cast<std::size_t>(record.kernelLength / 2) * record.samples;
    const std::size_t low = block.first - std::min(block.first, half);
    const std::size_t high = std::min(record.rowSamples, block.end + half);
    WideSample* const wide = record.scratch->row.get();
    widenSamples(sourceRow(record, y) + low, wide, high - low);
    WideSample* const filtered = record.scratch->ring.row(y);
    const std::size_t right = record.rowSamples - std::min(record.rowSamples, half);
    const std::size_t from = std::clamp(half, block.first, block.end);
    const std::size_t to = std::clamp(right, from, block.end);
    std::copy(wide + (block.first - low), wide + (from - low), filtered);
    if (from < to) {
        convolveSamples(*record.plan, record.rowOffsets, wide + (from - half - low),
                        filtered + (from - block.first), to - from);
    }
    std::copy(wide + (to - low), wide + (block.end - low), filtered + (to - block.first));
}

/// Makes an output row of a block from the rows in the ring.
void filterColumns(const LineRecord& record, Block block, std::int64_t y) {
    Scratch& scratch = *record.scratch;
    const std::int64_t top = y - record.kernelLength / 2;
    for (std::size_t i = 0; i < scratch.offsets.size(); ++i) {
        scratch.offsets[i] = scratch.ring.slotOffset(top + record.plan->order[i]);
    }
    convolveSamples(*record.plan, scratch.offsets.data(), scratch.ring.start(),
                    destinationRow(record, y) + block.first, block.end - block.first);
}

/// The first thread walks its blocks downward and the second one upward: two threads in step would both wait
/// for each fresh page of the destination.
void filterBlock(const LineRecord& record, Block block, bool upward) {
    const std::int64_t height = record.height;
    const std::int64_t half = record.kernelLength / 2;
    const std::int64_t above = upward ? -half : record.kernelLength - 1 - half;
    for (std::int64_t i = 0; i < height; ++i) {
        const std::int64_t y = upward ? height - 1 - i : i;
        filterRow(record, block, y);
        if (y < half || y >= height - half) {
            narrowSamples(record.scratch->ring.row(y), destinationRow(record, y) + block.first,
                          block.end - block.first);
        }
        const std::int64_t complete = y - above; // the output row whose last source row this is
        if (complete >= half && complete < height - half) filterColumns(record, block, complete);
    }
}

/// Blocks are dealt out in turn, like the columns of the plain worker.
void separableWorker(const LineRecord& record) {
    const std::size_t step = static_cast<std::size_t>(record.rowStep) * record.block;
    std::size_t first = static_cast<std::size_t>(record.firstRow) * record.block;
    for (; first < record.rowSamples; first += step) {
        filterBlock(record, {first, std::min(first + record.block, record.rowSamples)}, record.firstRow != 0);
    }
}

// The two-dimensional kernel

/// The output pixels of a row that the kernel reaches no edge from.
struct Span {
    std::int64_t from;
    std::int64_t to;
};

std::int64_t shiftOf(const Convolve2Record& record) {
    return record.kernelHeight / 2 -
           record.kernelWidth / 2; // from an output pixel's number to its left column
}

Span innerSpan(const Convolve2Record& record) {
    const std::int64_t columns = Plain::convolve2Columns(record);
    const std::int64_t shift = shiftOf(record);
    const std::int64_t from = std::clamp<std::int64_t>(-shift, 0, columns);
    return {from, std::clamp<std::int64_t>(record.width - record.kernelWidth - shift + 1, from, columns)};
}

/// Whether all rows under the kernel are in the picture, so that no sample is read from an edge instead.
bool coversRow(const Convolve2Record& record, std::int64_t y) {
    const std::int64_t top = y - record.kernelHeight / 2;
    return top >= 0 && top + record.kernelHeight <= record.height;
}

/// The samples of one output row from `first` on, made from the rows in the ring, whose first sample lies
/// under the kernel's left column.
void rectangleRow(const RectangleRecord& record, std::int64_t y, std::size_t first, std::size_t count) {
    Scratch& scratch = *record.scratch;
    const std::int64_t top = y - record.kernelHeight / 2;
    const auto kernelWidth = static_cast<std::uint32_t>(record.kernelWidth);
    for (std::size_t i = 0; i < scratch.offsets.size(); ++i) {
        const std::uint32_t tap = record.plan->order[i];
        scratch.offsets[i] = scratch.ring.slotOffset(top + tap / kernelWidth) +
                             static_cast<std::ptrdiff_t>(tap % kernelWidth * record.samples);
    }
    convolveSamples(*record.plan, scratch.offsets.data(), scratch.ring.start(),
                    destinationRow(record, y) + first, count);
}

/// The rows `begin` to `end` - 1 of the output samples `first` to `last` - 1, counted from the inner span's
/// start.
void rectangleTile(const RectangleRecord& record, Span rows, Block tile) {
    const std::int64_t from = innerSpan(record).from;
    const auto sampleOf = [&](std::int64_t pixel) {
        return static_cast<std::size_t>(pixel) * record.samples;
    };
    const std::size_t source = sampleOf(from + shiftOf(record)) + tile.first;
    const std::size_t destination = sampleOf(from + record.kernelWidth / 2) + tile.first;
    const std::size_t count = tile.end - tile.first;
    const std::size_t under = count + sampleOf(std::max(record.kernelWidth - 1, 0));
    std::int64_t ready = 0; // the source row that is widened next
    for (std::int64_t y = rows.from; y < rows.to; ++y) {
        if (!coversRow(record, y)) continue;
        const std::int64_t top = y - record.kernelHeight / 2;
        for (ready = std::max(ready, top); ready < top + record.kernelHeight; ++ready) {
            widenSamples(sourceRow(record, ready) + source, record.scratch->ring.row(ready), under);
        }
        rectangleRow(record, y, destination, count);
    }
}

/// Pixels near the edges one after another, all others tile by tile with vectors.
template<class Pixel, class Sum>
void rectangleBand(const RectangleRecord& record, Span rows) {
    const Span inner = innerSpan(record);
    const std::int64_t columns = Plain::convolve2Columns(record);
    for (std::int64_t y = rows.from; y < rows.to; ++y) {
        const bool covered = coversRow(record, y);
        Plain::convolve2Span<Pixel, Sum>(record, y, 0, covered ? inner.from : columns);
        if (covered) Plain::convolve2Span<Pixel, Sum>(record, y, inner.to, columns);
    }
    const std::size_t samples = static_cast<std::size_t>(inner.to - inner.from) * record.samples;
    for (std::size_t first = 0; first < samples; first += record.block) {
        rectangleTile(record, rows, {first, std::min(first + record.block, samples)});
    }
}

/// Rows are dealt out in bands, and the second thread begins with its last one.
template<class Pixel, class Sum>
void rectangleWorker(const RectangleRecord& record) {
    const std::int64_t begin = record.kernelWidth / 2;
    const std::int64_t end = record.height - record.kernelWidth / 2;
    const std::int64_t bands = end > begin ? (end - begin + record.band - 1) / record.band : 0;
    const std::int64_t steps = (bands - record.firstRow + record.rowStep - 1) / record.rowStep;
    for (std::int64_t i = 0; i < steps; ++i) {
        const std::int64_t turn = record.firstRow == 0 ? i : steps - 1 - i;
        const std::int64_t first = begin + (record.firstRow + turn * record.rowStep) * record.band;
        rectangleBand<Pixel, Sum>(record, {first, std::min(first + record.band, end)});
    }
}

/// Edges are copied when the threads are done: for kernels that are not square they overlap what is computed.
template<class Pixel, class Sum>
void convolveRectangleOf(const std::array<RectangleRecord, 2>& records) {
    runPixelWorkers(rectangleWorker<Pixel, Sum>, records);
    Plain::copy_edges<Pixel>(records[0]);
}

template<class Record>
PassRecord<Record> passRecord(const Record& plain, const ConvolutionPlan& plan, int samplesPerPixel) {
    PassRecord<Record> record;
    static_cast<Record&>(record) = plain;
    record.plan = &plan;
    record.samples = static_cast<std::size_t>(samplesPerPixel);
    record.rowSamples = static_cast<std::size_t>(plain.width) * record.samples;
    return record;
}

/// How many rows have to be kept for a kernel of a height; for one taller than the picture none are used.
std::size_t keptRows(std::int32_t kernelHeight, std::int32_t height) {
    return static_cast<std::size_t>(kernelHeight > height ? 1 : std::max(kernelHeight, 1));
}

std::span<const std::int32_t> tapsOf(const std::int32_t* taps, std::int64_t count) {
    return {taps, static_cast<std::size_t>(count)};
}

} // namespace

void convolveRectangle(const Convolve2Record& plain, int samplesPerPixel) {
    const std::int64_t tapCount = std::int64_t{plain.kernelWidth} * plain.kernelHeight;
    const ConvolutionPlan plan = convolutionPlan(tapsOf(plain.taps, tapCount), plain.divisor);
    RectangleRecord record = passRecord(plain, plan, samplesPerPixel);
    const std::size_t kept = keptRows(plain.kernelHeight, plain.height);
    record.block = blockSamples(2 * record.rowSamples, kept);
    record.band = std::clamp<std::int64_t>(plain.height / 2, 1, bandRows);
    const std::size_t reach = std::min(
        static_cast<std::size_t>(std::max(plain.kernelWidth - 1, 0)) * record.samples, record.rowSamples);
    const auto scratch = [&] {
        return Scratch{RowRing(kept, record.block + reach), nullptr,
                       std::vector<std::ptrdiff_t>(plan.order.size())};
    };
    std::array<Scratch, 2> scratches = {scratch(), scratch()};
    std::array<RectangleRecord, 2> records = interleavedRows(record);
    for (std::size_t i = 0; i < 2; ++i) records[i].scratch = &scratches[i];
    switch (samplesPerPixel) {
    case 1:
        return convolveRectangleOf<GPixel, GPixelSum>(records);
    case 2:
        return convolveRectangleOf<GAPixel, GAPixelSum>(records);
    case 3:
        return convolveRectangleOf<RGBPixel, RGBPixelSum>(records);
    default:
        return convolveRectangleOf<RGBAPixel, RGBAPixelSum>(records);
    }
}

void convolveSeparably(const Convolve1Record& plain, int samplesPerPixel) {
    const ConvolutionPlan plan = convolutionPlan(tapsOf(plain.taps, plain.kernelLength), plain.divisor);
    LineRecord record = passRecord(plain, plan, samplesPerPixel);
    const std::size_t kept = keptRows(plain.kernelLength, plain.height);
    record.block = blockSamples(record.rowSamples, kept);
    std::vector<std::ptrdiff_t> rowOffsets;
    for (const std::uint32_t tap : plan.order) {
        rowOffsets.push_back(static_cast<std::ptrdiff_t>(tap * record.samples));
    }
    record.rowOffsets = rowOffsets.data();
    const std::size_t reach = 2 * static_cast<std::size_t>(plain.kernelLength / 2) * record.samples;
    const std::size_t widened = std::min(record.block + reach, record.rowSamples);
    const auto scratch = [&] {
        return Scratch{RowRing(kept, record.block), alignedSamples(widened + wideRowPadding),
                       std::vector<std::ptrdiff_t>(plan.order.size())};
    };
    std::array<Scratch, 2> scratches = {scratch(), scratch()};
    std::array<LineRecord, 2> records = interleavedRows(record);
    for (std::size_t i = 0; i < 2; ++i) records[i].scratch = &scratches[i];
    runPixelWorkers(separableWorker, records);
}

} // namespace Imaging
