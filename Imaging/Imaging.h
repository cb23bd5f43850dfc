#pragma once

/// Everything that the library offers in one header.

#include "Imaging/Bezier.h"
#include "Imaging/BitmapFormats.h"
#include "Imaging/Bounds.h"
#include "Imaging/CachedImage.h"
#include "Imaging/Canvas.h"
#include "Imaging/ColorOperations.h"
#include "Imaging/Convolution.h"
#include "Imaging/CropAndScale.h"
#include "Imaging/DrawingTarget.h"
#include "Imaging/Generators.h"
#include "Imaging/Geometry.h"
#include "Imaging/GraphicsContext.h"
#include "Imaging/Image.h"
#include "Imaging/Kernel.h"
#include "Imaging/Mask.h"
#include "Imaging/Matrix4.h"
#include "Imaging/PixelOperation.h"
#include "Imaging/PolygonClipping.h"
#include "Imaging/TransformOperations.h"
#include "Imaging/Transpose.h"
