#include "Imaging/ArchiveClasses.h"

#include "Imaging/CachedImage.h"
#include "Imaging/ColorOperations.h"
#include "Imaging/Convolution.h"
#include "Imaging/Image.h"
#include "Imaging/Kernel.h"
#include "Imaging/Mask.h"

namespace Imaging {

void registerArchiveClasses() {
    const Platform::NSArchivableClass<IMGImage> image("IMGImage");
    const Platform::NSArchivableClass<IMGImageFromNSImage> picture("IMGImageFromNSImage");
    const Platform::NSArchivableClass<IMGColorTransformOp> colorTransform("IMGColorTransformOp");
    const Platform::NSArchivableClass<IMGHueAdjustOp> hueAdjust("IMGHueAdjustOp");
    const Platform::NSArchivableClass<IMGMaskOp> mask("IMGMaskOp");
    const Platform::NSArchivableClass<IMGKernel> kernel("IMGKernel");
    const Platform::NSArchivableClass<IMGConvolutionOp> convolution("IMGConvolutionOp");
    const Platform::NSArchivableClass<IMGGaussianOp> gaussian("IMGGaussianOp");
}

} // namespace Imaging
