#pragma once

// Internal: the inner loops of picture sampling. Not installed.
//
// Pixels are words of four samples of 8 bits. Between two steps samples are kept in steps of 1/128 (so that
// 255 is 32640) and factors in steps of 1/32768, up to 32767. Mixing is written as p + (q − p)·f, whose
// products are rounded to nearest, so that equal pixels always mix to themselves. Each function has a plain
// form that gives the same bits one sample after another. All are thread-safe for different targets.

#include <cstddef>
#include <cstdint>

namespace Imaging::Platform {

/// The most pixels that are mixed into one along an axis.
constexpr std::size_t maximumTaps = 32;

/// Samples of a row that is a mix of `taps` rows (1 to `maximumTaps`): row 0 plus the differences of the
/// others from it, scaled by `factors[1]`, `factors[2]` and so on; `factors[0]` is not read. `count` counts
/// pixels.
void mixRows(const std::uint32_t* const* rows, const std::int16_t* factors, std::size_t taps,
             std::int16_t* samples, std::size_t count);
void mixRowsPlain(const std::uint32_t* const* rows, const std::int16_t* factors, std::size_t taps,
                  std::int16_t* samples, std::size_t count);

/// Which pixels of a row are mixed into each of `count` pixels: those from `first[i]` on, `taps` in number.
/// The factor of tap k (from 1 on) for pixel i stands four times from `factors[((k - 1)·count + i)·4]` on.
struct ColumnMix {
    const std::int32_t* first = nullptr;
    const std::int16_t* factors = nullptr;
    std::size_t taps = 1;
    std::size_t count = 0;
};

/// Pixels `from` to `end` of a mix of columns, rounded to nearest, into `words[0]` and on.
void mixColumns(const std::int16_t* samples, const ColumnMix& mix, std::size_t from, std::size_t end,
                std::uint32_t* words);
void mixColumnsPlain(const std::int16_t* samples, const ColumnMix& mix, std::size_t from, std::size_t end,
                     std::uint32_t* words);

/// Pixels that all lie between their neighbours by the same factors: of `above` and `below`, each `count` + 1
/// words, the mix of neighbouring columns of the mix of both rows, rounded to nearest. The same bits as
/// `mixRows` and then `mixColumns` give. A factor of 0 leaves out what it would not count: the row below, or
/// the word behind the last one, which then are not read.
void mixShifted(const std::uint32_t* above, const std::uint32_t* below, std::int16_t right, std::int16_t down,
                std::uint32_t* words, std::size_t count);
void mixShiftedPlain(const std::uint32_t* above, const std::uint32_t* below, std::int16_t right,
                     std::int16_t down, std::uint32_t* words, std::size_t count);

/// The pixels that surround points: above left and above right in `above[i]` (the left one in the lower
/// half), below in `below[i]`, and how far each point lies to the right and below, in steps of 1/65536, of
/// which the lower 16 bits count and the last one does not.
constexpr std::size_t squaresAtOnce = 64;
struct Squares {
    alignas(64) std::uint64_t above[squaresAtOnce];
    alignas(64) std::uint64_t below[squaresAtOnce];
    alignas(64) std::uint32_t right[squaresAtOnce];
    alignas(64) std::uint32_t down[squaresAtOnce];
};

/// The bilinear mixes of `count` (up to `squaresAtOnce`) squares, rounded to nearest. May write `words` up
/// to `squaresAtOnce` whatever the count.
void mixSquares(const Squares& squares, std::size_t count, std::uint32_t* words);
void mixSquaresPlain(const Squares& squares, std::size_t count, std::uint32_t* words);

/// Means of 2 × 2 pixels, rounded to nearest (halves up): of two rows of 2·count words. The two rows may be
/// the same, which gives the means of neighbours in one row.
void halveRow(const std::uint32_t* above, const std::uint32_t* below, std::uint32_t* words,
              std::size_t count);
void halveRowPlain(const std::uint32_t* above, const std::uint32_t* below, std::uint32_t* words,
                   std::size_t count);

/// Means of two rows of `count` words, rounded to nearest (halves up).
void meanRow(const std::uint32_t* above, const std::uint32_t* below, std::uint32_t* words, std::size_t count);

} // namespace Imaging::Platform
