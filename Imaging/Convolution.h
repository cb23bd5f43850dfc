#pragma once

#include "Imaging/Kernel.h"
#include "Imaging/PixelOperation.h"

#include <memory>
#include <string>

namespace Imaging {

/// The source convolved with a kernel, every sample by itself, alpha included, as it is stored (premultiplied
/// where there is alpha). A sample of the result is
///
///     limited to 0 … 255: (Σ tap · sample under the tap) / divisor
///
/// in 32-bit integers that wrap, with the division truncated toward zero. The kernel is applied as it is
/// stored, not mirrored, with its middle (half its size, rounded down) on the pixel.
///
/// A kernel one tap high is used twice, along the rows and then along the columns of an 8-bit picture
/// between; any other one once, in two dimensions. Pixels so near an edge that the kernel does not cover them
/// are copied. Of the separable kernel's that means: half its length at the left and right is filtered along
/// the columns only, at the top and bottom along the rows only, and in the corners not at all. In two
/// dimensions the output rows begin at half the kernel's WIDTH, and each has the picture's width less twice
/// half its HEIGHT of pixels; square kernels leave a frame of copied pixels. For others, samples beyond an
/// edge read as the nearest edge pixel, and pixels that are neither computed nor copied are 0.
///
/// All four layouts are treated; an embedded colour profile is carried over to the result. The result is kept
/// until the source answers with another result: neither `setKernel` nor `changed` drops it, so the node goes
/// on showing the old kernel's until then.
///
/// Example:
/// @code
/// const auto photo = IMGImageFromNSImage::initWithContentsOfFile("photo.jpg");
/// const auto blurred = IMGGaussianOp::gaussianWithSourceImage(photo, 2.5F);
/// const auto sharpened = std::make_shared<IMGConvolutionOp>(photo, IMGKernel::kernelSharpen());
/// @endcode
class IMAGING_EXPORT IMGConvolutionOp : public SourceCachedOperation {
public:
    /// Throws an NSException (NSInvalidArgumentException) when the source is null. A node whose kernel is
    /// null, not wider than one tap or not at least one tap high fails an assertion when its result is asked
    /// for; a kernel with fewer taps than its size says has an NSInvalidArgumentException thrown there.
    IMGConvolutionOp(std::shared_ptr<IMGImage> source, std::shared_ptr<IMGKernel> kernel);

    /// What an archive holds, the kernel under "kernel"; null without it.
    explicit IMGConvolutionOp(Platform::NSCoder& coder);
    ~IMGConvolutionOp() override;

    const std::shared_ptr<IMGKernel>& kernel() const { return m_kernel; }

    /// Stores a kernel and announces the change. The kept result stays: see above.
    void setKernel(std::shared_ptr<IMGKernel> kernel);

    /// The kernel's name where it has one, otherwise the localised text for "convolution".
    std::string name() const;

    /// A node on the same source with the same kernel object.
    std::shared_ptr<IMGImage> copy() const override;

    std::string archiveClassName() const override;

    /// The name and the kernel's size.
    std::string parameterDescription() const override;
    void encodeWithCoder(Platform::NSCoder& coder) const override;

protected:
    void computePixels(const NSBitmapImageRep& source, NSBitmapImageRep& destination) override;

private:
    std::shared_ptr<IMGKernel> m_kernel;
};

/// The source blurred by a separable Gaussian kernel (`IMGKernel::kernelSeparableGaussianWithSigma`).
class IMAGING_EXPORT IMGGaussianOp : public IMGConvolutionOp {
public:
    /// `radius` is the σ of the bell, in pixels. Throws what making the kernel throws for one that is too
    /// large.
    IMGGaussianOp(std::shared_ptr<IMGImage> source, float radius);

    /// What an archive holds, the radius under "radius"; 0 without it. The kernel is the archive's own.
    explicit IMGGaussianOp(Platform::NSCoder& coder);
    ~IMGGaussianOp() override;

    static std::shared_ptr<IMGGaussianOp> gaussianWithSourceImage(std::shared_ptr<IMGImage> source,
                                                                  float radius);

    float radius() const { return m_radius; }

    /// Installs the kernel of another radius and drops the kept result. Announces two changes: that of the
    /// kernel, when the radius is still the old one, and its own. Nothing happens for the radius that the
    /// node has. Throws what making the kernel throws, and nothing is changed then.
    void setRadius(float radius);

    /// A node on the same source with the same radius, whose kernel is made anew.
    std::shared_ptr<IMGImage> copy() const override;

    std::string archiveClassName() const override;

    /// The radius.
    std::string parameterDescription() const override;
    void encodeWithCoder(Platform::NSCoder& coder) const override;

private:
    float m_radius;
};

} // namespace Imaging
