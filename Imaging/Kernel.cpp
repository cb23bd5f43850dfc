// Kernels: copies the taps of a caller or an archive, and works out those of bells in double precision, which
// are truncated to whole numbers.

#include "Imaging/Kernel.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/LocalizedString.h"
#include "Platform/Pixels/PixelBuffer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace Imaging {

using Platform::NSException;

namespace {

constexpr double unity = 4096; // what the taps of a Gaussian bell sum to, before they are truncated

/// A non-negative count of things as an integer; what is not positive, or not a number, is none.
std::uint64_t truncatedCount(double count) {
    if (!(count >= 1)) return 0;
    return count < 1e18 ? static_cast<std::uint64_t>(count) : static_cast<std::uint64_t>(1e18);
}

/// How many bytes a caller's array of taps has: the product in 32-bit floats, by which callers count too.
/// From 2^24 on floats skip whole numbers, so that the product may be more taps than the sides have; there it
/// must not lead past the array's end. In double precision the product of two floats is exact.
std::uint64_t tapBytes(NSSize size) {
    constexpr float firstSkipping = 16777216; // 2^24
    const float taps = size.height * size.width;
    const std::uint64_t bytes = truncatedCount(static_cast<double>(taps * 4));
    if (taps < firstSkipping) return bytes;
    const double exact = static_cast<double>(size.height) * static_cast<double>(size.width) * 4;
    return std::min(bytes, truncatedCount(exact));
}

NSData copiedTaps(NSSize size, const std::int32_t* taps) {
    const std::uint64_t bytes = tapBytes(size);
    if (bytes == 0) return {};
    if (taps == nullptr) {
        throw NSException(Platform::NSInvalidArgumentException, "a kernel of a size needs taps");
    }
    NSData data(static_cast<std::size_t>(bytes));
    std::memcpy(data.data(), taps, data.size());
    return data;
}

/// A generated kernel, whose name people see and so is in their language.
std::shared_ptr<IMGKernel> named(float width, float height, const std::vector<std::int32_t>& taps,
                                 const char* key) {
    return std::make_shared<IMGKernel>(NSSize{width, height}, taps.data(),
                                       Platform::localizedStringForKey(key));
}

/// Twice the variance, as the exponent of the bell is divided by it.
double spread(double sigma) { return (sigma + sigma) * sigma; }

/// Whether there is no bell: the quotients of the exponents would not be numbers.
bool isPoint(double sigma) { return std::isnan(sigma) || spread(sigma) == 0; }

/// The taps on either side of the middle one. Limited, since in two dimensions they take their square in
/// memory.
std::int64_t bellRadius(double sigma) {
    const double radius = std::clamp(sigma + 1, 0.0, 4294967295.0);
    const auto whole = static_cast<std::uint64_t>(radius);
    if (2 * whole + 1 > IMGKernel::maximumGeneratedSide) {
        throw NSException(Platform::NSInvalidArgumentException,
                          "a blur that wide would need more than 65535 taps a side");
    }
    return static_cast<std::int64_t>(whole);
}

/// Truncated, not rounded, which is why the taps of a bell sum to a little less than 4096.
std::int32_t fixedPoint(double tap) { return static_cast<std::int32_t>(tap); }

} // namespace

IMGKernel::IMGKernel(NSSize size, const std::int32_t* data, std::optional<std::string> name)
    : IMGKernel(size, copiedTaps(size, data), std::move(name)) {}

IMGKernel::IMGKernel(NSSize size, NSData data, std::optional<std::string> name)
    : m_size(size), m_data(std::move(data)), m_name(std::move(name)) {
    readTaps();
}

IMGKernel::IMGKernel(Platform::NSCoder& coder)
    : IMGKernel(coder.decodeSize("size"), coder.decodeData("data").value_or(NSData{}),
                coder.decodeString("name")) {}

IMGKernel::~IMGKernel() = default;

void IMGKernel::readTaps() {
    // Copied, since bytes of an archive need not be aligned, and may end within a tap.
    m_taps.resize(m_data.size() / sizeof(std::int32_t));
    if (!m_taps.empty()) std::memcpy(m_taps.data(), m_data.data(), m_taps.size() * sizeof(std::int32_t));
}

std::shared_ptr<IMGKernel> IMGKernel::kernelSharpen() {
    return named(3, 3, {-1, -2, -1, -2, 16, -2, -1, -2, -1}, "sharpen");
}

std::shared_ptr<IMGKernel> IMGKernel::kernelGaussianWithSigma(double sigma) {
    constexpr const char* key = "gaussian blur";
    if (isPoint(sigma)) return named(3, 3, {0, 0, 0, 0, 4096, 0, 0, 0, 0}, key);
    const std::int64_t radius = bellRadius(sigma);
    const double divisor = spread(sigma);
    const auto weight = [divisor](std::int64_t x, std::int64_t y) {
        // By way of the root, since d * -d differs from -(x² + y²) in the last bits and taps are truncated.
        const double d = std::sqrt(static_cast<double>(x * x + y * y));
        return std::exp(d * -d / divisor);
    };
    double sum = 0;
    for (std::int64_t y = -radius; y <= radius; ++y) {
        for (std::int64_t x = -radius; x <= radius; ++x) sum += weight(x, y);
    }
    const auto side = static_cast<std::size_t>(2 * radius + 1);
    std::vector<std::int32_t> taps;
    taps.reserve(side * side); // at most 2^32
    for (std::int64_t y = -radius; y <= radius; ++y) {
        for (std::int64_t x = -radius; x <= radius; ++x) {
            taps.push_back(fixedPoint(unity * weight(x, y) / sum));
        }
    }
    return named(static_cast<float>(side), static_cast<float>(side), taps, key);
}

std::shared_ptr<IMGKernel> IMGKernel::kernelSeparableGaussianWithSigma(double sigma) {
    constexpr const char* key = "separable gaussian blur";
    if (isPoint(sigma)) return named(3, 1, {0, 4096, 0}, key);
    const std::int64_t radius = bellRadius(sigma);
    std::vector<double> weights;
    double sum = 0;
    for (std::int64_t i = -radius; i <= radius; ++i) {
        weights.push_back(std::exp(static_cast<double>(-i * i) / spread(sigma)));
        sum += weights.back();
    }
    std::vector<std::int32_t> taps;
    taps.reserve(weights.size());
    for (const double weight : weights) taps.push_back(fixedPoint(weight * unity / sum));
    return named(static_cast<float>(taps.size()), 1, taps, key);
}

bool IMGKernel::holdsAllTaps() const {
    const auto width = truncatedCount(static_cast<double>(m_size.width));
    const auto height = truncatedCount(static_cast<double>(m_size.height));
    const auto count = Platform::checkedProduct({width, height});
    return count.has_value() && *count <= m_taps.size();
}

std::int32_t IMGKernel::divisor() const {
    const std::uint64_t count = truncatedCount(static_cast<double>(m_size.width * m_size.height));
    const auto read = static_cast<std::size_t>(std::min<std::uint64_t>(count, m_taps.size()));
    std::uint32_t sum = 0; // unsigned, since it may wrap
    for (std::size_t i = 0; i < read; ++i) sum += static_cast<std::uint32_t>(m_taps[i]);
    return sum == 0 ? 1 : static_cast<std::int32_t>(sum);
}

std::shared_ptr<IMGKernel> IMGKernel::copy() const {
    return std::shared_ptr<IMGKernel>(new IMGKernel(m_size, m_data, m_name));
}

std::string IMGKernel::archiveClassName() const { return "IMGKernel"; }

void IMGKernel::encodeWithCoder(Platform::NSCoder& coder) const {
    coder.encodeSize(m_size, "size");
    coder.encodeData(m_data, "data");
    if (m_name.has_value()) coder.encodeString(*m_name, "name");
}

} // namespace Imaging
