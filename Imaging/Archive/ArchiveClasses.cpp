#include "Imaging/Archive/ArchiveClasses.h"

#include "Imaging/CachedImage.h"
#include "Imaging/Canvas.h"
#include "Imaging/ColorOperations.h"
#include "Imaging/Convolution.h"
#include "Imaging/CropAndScale.h"
#include "Imaging/Generators.h"
#include "Imaging/Image.h"
#include "Imaging/Kernel.h"
#include "Imaging/Mask.h"
#include "Imaging/OpenGLImage.h"
#include "Imaging/TransformOperations.h"
#include "Imaging/Transitions.h"
#include "Imaging/Transpose.h"

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
    const Platform::NSArchivableClass<IMGAffineTransformOp> affine("IMGAffineTransformOp");
    const Platform::NSArchivableClass<IMGRotationOp> rotation("IMGRotationOp");
    const Platform::NSArchivableClass<IMGTranslationOp> translation("IMGTranslationOp");
    const Platform::NSArchivableClass<IMGTransposeOp> transpose("IMGTransposeOp");
    const Platform::NSArchivableClass<IMGCropAndScale> crop("IMGCropAndScale");
    const Platform::NSArchivableClass<IMGCanvas> canvas("IMGCanvas");
    const Platform::NSArchivableClass<IMGCompositeOp> composite("IMGCompositeOp");
    const Platform::NSArchivableClass<IMGNullGenerator> null("IMGNullGenerator");
    const Platform::NSArchivableClass<IMGConstantImageGenerator> constant("IMGConstantImageGenerator");
    const Platform::NSArchivableClass<IMGSimpleFrameGenerator> frame("IMGSimpleFrameGenerator");
    const Platform::NSArchivableClass<IMGDissolveTransitionOp> dissolve("IMGDissolveTransitionOp");
    const Platform::NSArchivableClass<IMGSpinTransitionOp> spin("IMGSpinTransitionOp");
    const Platform::NSArchivableClass<IMGCubeTransitionOp> cube("IMGCubeTransitionOp");
    const Platform::NSArchivableClass<OpenGLImage> bitmap("OpenGLImage");
}

} // namespace Imaging
