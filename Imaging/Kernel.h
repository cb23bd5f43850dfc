#pragma once

#include "Platform/Foundation/Coder.h"
#include "Platform/Foundation/Data.h"
#include "Platform/Foundation/Export.h"
#include "Platform/Foundation/Geometry.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Imaging {

using Platform::NSData;
using Platform::NSSize;

/// What a convolution weighs a pixel's surroundings with: a rectangle of integer taps, row after row from the
/// top left one, and the divisor of the weighted sum. A kernel one tap high stands for a separable filter:
/// its row is used along both axes.
///
/// Kernels never change after they are made, so any thread may read one. They are held by std::shared_ptr.
///
/// Example:
/// @code
/// const std::int32_t edges[] = {-1, -1, -1, -1, 9, -1, -1, -1, -1};
/// const IMGKernel kernel({3, 3}, edges, "edges"); // whose divisor is their sum, 1
/// const auto blur = IMGKernel::kernelSeparableGaussianWithSigma(2);
/// @endcode
class IMAGING_EXPORT IMGKernel : public Platform::NSCoding {
public:
    /// The longest side of the kernels that are generated, in taps.
    static constexpr std::uint64_t maximumGeneratedSide = 65535;

    /// A kernel of width × height taps, copied from `data`: trunc(height × width × 4) bytes, the product
    /// formed in 32-bit floats; of 2^24 taps and more, where floats skip whole numbers, never more than the
    /// exact product. The size is kept as given; sizes whose product is not positive have no taps. Throws an
    /// NSException (NSInvalidArgumentException) when there are bytes to copy and `data` is null, and
    /// std::bad_alloc or std::length_error when they are too many.
    IMGKernel(NSSize size, const std::int32_t* data, std::optional<std::string> name);

    /// What an archive holds under "size", "data" and "name"; without these keys a size of zero, no taps and
    /// no name. An archive's data may be shorter than its size says: see `holdsAllTaps`.
    explicit IMGKernel(Platform::NSCoder& coder);
    ~IMGKernel() override;

    /// A 3 × 3 filter that raises a pixel against its surroundings; its divisor is 4. Named "sharpen".
    static std::shared_ptr<IMGKernel> kernelSharpen();

    /// A Gaussian bell of N × N taps that sum to about 4096: N = 2R + 1 with R = trunc(σ + 1), `sigma` in
    /// pixels. Tap (x, y), counted from the middle, is trunc(4096 · w / Σw) with w = exp(−(x² + y²) / 2σ²),
    /// all in double precision. A sigma below -1 gives the single tap 4096; a sigma of 0, too small to be
    /// squared, or not a number leaves the picture as it is: 3 × 3 taps with 4096 in the middle. Since taps
    /// are truncated, those of very wide bells are all 0. Named "gaussian blur".
    ///
    /// Throws an NSException (NSInvalidArgumentException) for more than `maximumGeneratedSide` taps a side,
    /// and std::bad_alloc.
    static std::shared_ptr<IMGKernel> kernelGaussianWithSigma(double sigma);

    /// The same bell as one row of N taps, to be used along both axes; the taps of a sigma of 0 are 0, 4096,
    /// 0. Named "separable gaussian blur".
    static std::shared_ptr<IMGKernel> kernelSeparableGaussianWithSigma(double sigma);

    /// The extent in taps.
    NSSize size() const { return m_size; }

    /// The taps' bytes, in the machine's byte order.
    const NSData& data() const { return m_data; }

    /// The taps, row after row, as long as the kernel lives; null or not to be read where there are none.
    const std::int32_t* dataAsIntArray() const { return m_taps.data(); }

    /// How many taps there are to read.
    std::size_t tapCount() const { return m_taps.size(); }

    /// Whether there are as many taps as a kernel of its truncated width and height needs.
    bool holdsAllTaps() const;

    /// Text for people; nullopt where the kernel was given none.
    const std::optional<std::string>& name() const { return m_name; }

    /// The sum of the first trunc(width × height) taps (the product in 32-bit floats; the sum modulo 2^32,
    /// read as signed), or 1 where that is 0. Taps that an archive did not hold count as 0.
    std::int32_t divisor() const;

    /// Another kernel with the same size, taps and name.
    virtual std::shared_ptr<IMGKernel> copy() const;

    std::string archiveClassName() const override;
    void encodeWithCoder(Platform::NSCoder& coder) const override;

private:
    IMGKernel(NSSize size, NSData data, std::optional<std::string> name);
    void readTaps();

    NSSize m_size;
    NSData m_data;
    std::vector<std::int32_t> m_taps; // the whole integers of m_data, where they may be read as such
    std::optional<std::string> m_name;
};

} // namespace Imaging
