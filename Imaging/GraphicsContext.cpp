#include "Imaging/GraphicsContext.h"

namespace Imaging {

IMGDrawingTarget::~IMGDrawingTarget() = default;

GraphicsContext::GraphicsContext() = default;

GraphicsContext::~GraphicsContext() = default;

void GraphicsContext::drawImage(IMGImage&, const TransformAndClipList&, int, float) {}

} // namespace Imaging
