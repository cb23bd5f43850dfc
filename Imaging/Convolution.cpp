// Convolution and blur as nodes: checks the kernel and chooses between the pass in two dimensions and the two
// along rows and columns.

#include "Imaging/Convolution.h"

#include "Imaging/Drawing/AssertionLines.h"
#include "Imaging/Pixels/ConvolutionPasses.h"
#include "Imaging/Words.h"
#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/LocalizedString.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <utility>

namespace Imaging {

using Platform::NSException;

namespace {

/// A side of a kernel in whole taps.
std::int32_t wholeTaps(float side) {
    if (!(side >= 1)) return 0; // reached only where a failed assertion is tolerated
    constexpr auto most = std::numeric_limits<std::int32_t>::max();
    return side < static_cast<float>(most) ? static_cast<std::int32_t>(side) : most;
}

/// A record of either pass without the kernel's size.
template<class Record>
Record recordWith(const IMGKernel* kernel, const NSBitmapImageRep& source, NSBitmapImageRep& destination) {
    auto record = recordBetween<Record>(source, destination);
    record.taps = kernel != nullptr ? kernel->dataAsIntArray() : nullptr;
    record.divisor = kernel != nullptr ? kernel->divisor() : 1;
    return record;
}

/// Where the assertion handler lets a bad kernel pass, what there is of it is used: without taps every sum is
/// 0.
void convolve(const IMGKernel* kernel, const NSBitmapImageRep& source, NSBitmapImageRep& destination) {
    const NSSize size = kernel != nullptr ? kernel->size() : Platform::NSZeroSize;
    if (!(size.width > 1 && size.height >= 1)) {
        Platform::parameterAssertionFailed("kernel_size.width > 1 && kernel_size.height >= 1",
                                           "Imaging/Convolution", AssertionLines::convolutionKernelSize);
    }
    // Archives may hold less than they say; no worker could tell.
    if (kernel != nullptr && !kernel->holdsAllTaps()) {
        throw NSException(Platform::NSInvalidArgumentException,
                          "the kernel has fewer taps than its size says");
    }
    const std::int32_t height = wholeTaps(size.height); // one high is the mark of a separable kernel
    if (height == 1) {
        auto record = recordWith<Convolve1Record>(kernel, source, destination);
        record.kernelLength = wholeTaps(size.width);
        convolveSeparably(record, source.samplesPerPixel());
    } else {
        auto record = recordWith<Convolve2Record>(kernel, source, destination);
        record.kernelWidth = wholeTaps(size.width);
        record.kernelHeight = height;
        convolveRectangle(record, source.samplesPerPixel());
    }
}

} // namespace

// IMGConvolutionOp

IMGConvolutionOp::IMGConvolutionOp(std::shared_ptr<IMGImage> source, std::shared_ptr<IMGKernel> kernel)
    : SourceCachedOperation(std::move(source)), m_kernel(std::move(kernel)) {}

IMGConvolutionOp::IMGConvolutionOp(Platform::NSCoder& coder)
    : SourceCachedOperation(coder), m_kernel(coder.decodeObjectOfClass<IMGKernel>("kernel")) {}

IMGConvolutionOp::~IMGConvolutionOp() = default;

void IMGConvolutionOp::setKernel(std::shared_ptr<IMGKernel> kernel) {
    m_kernel = std::move(kernel);
    changed();
}

std::string IMGConvolutionOp::name() const {
    if (m_kernel != nullptr && m_kernel->name().has_value()) return *m_kernel->name();
    return Platform::localizedStringForKey("convolution");
}

std::shared_ptr<IMGImage> IMGConvolutionOp::copy() const {
    return std::make_shared<IMGConvolutionOp>(sourceAtIndex(0), m_kernel);
}

std::string IMGConvolutionOp::archiveClassName() const { return "IMGConvolutionOp"; }

std::string IMGConvolutionOp::parameterDescription() const {
    return name() + (kernel() != nullptr ? " " + inWords(kernel()->size()) : " without a kernel");
}

void IMGConvolutionOp::encodeWithCoder(Platform::NSCoder& coder) const {
    SourceCachedOperation::encodeWithCoder(coder);
    coder.encodeObject(m_kernel.get(), "kernel");
}

void IMGConvolutionOp::computePixels(const NSBitmapImageRep& source, NSBitmapImageRep& destination) {
    convolve(m_kernel.get(), source, destination);
    std::optional<Platform::NSImageProperty> profile =
        source.valueForProperty(Platform::NSImageColorSyncProfileData);
    if (profile.has_value()) {
        destination.setProperty(Platform::NSImageColorSyncProfileData, std::move(*profile));
    }
}

// IMGGaussianOp

IMGGaussianOp::IMGGaussianOp(std::shared_ptr<IMGImage> source, float radius)
    : IMGConvolutionOp(std::move(source),
                       IMGKernel::kernelSeparableGaussianWithSigma(static_cast<double>(radius))),
      m_radius(radius) {}

IMGGaussianOp::IMGGaussianOp(Platform::NSCoder& coder)
    : IMGConvolutionOp(coder), m_radius(coder.decodeFloat("radius")) {}

IMGGaussianOp::~IMGGaussianOp() = default;

std::shared_ptr<IMGGaussianOp> IMGGaussianOp::gaussianWithSourceImage(std::shared_ptr<IMGImage> source,
                                                                      float radius) {
    return std::make_shared<IMGGaussianOp>(std::move(source), radius);
}

void IMGGaussianOp::setRadius(float radius) {
    if (radius == m_radius) return;
    setKernel(IMGKernel::kernelSeparableGaussianWithSigma(static_cast<double>(radius)));
    m_radius = radius;
    dropResult();
    changed();
}

std::shared_ptr<IMGImage> IMGGaussianOp::copy() const {
    return std::make_shared<IMGGaussianOp>(sourceAtIndex(0), m_radius);
}

std::string IMGGaussianOp::archiveClassName() const { return "IMGGaussianOp"; }

std::string IMGGaussianOp::parameterDescription() const { return "radius " + inWords(radius()); }

void IMGGaussianOp::encodeWithCoder(Platform::NSCoder& coder) const {
    IMGConvolutionOp::encodeWithCoder(coder);
    coder.encodeFloat(m_radius, "radius");
}

} // namespace Imaging
