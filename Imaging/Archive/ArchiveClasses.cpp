// The node classes of the library under the names that archives know them by, made known to unarchivers
// before main runs. This is the one place that knows every class, and no other part of the library knows it:
// the linker takes it in by the symbol below.

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

namespace {

/// One list instead of a static object in each class's own file, so that a program knows all of them or none.
bool registerArchiveClasses() {
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
    return true;
}

} // namespace

} // namespace Imaging

extern "C" {

/// What programs with the static library ask the linker for, since nothing refers to this file: the package's
/// link options say -u with this name (see cmake/ImagingLibrary.cmake). The shared library has the file
/// anyhow.
extern const bool imaging_archive_classes;
const bool imaging_archive_classes = Imaging::registerArchiveClasses();
}
