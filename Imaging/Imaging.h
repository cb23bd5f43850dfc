#pragma once

/// Everything that the library offers in one header.

#include "Imaging/BitmapFormats.h"
#include "Imaging/Bounds.h"
#include "Imaging/CachedImage.h"
#include "Imaging/DrawingTarget.h"
#include "Imaging/GraphicsContext.h"
#include "Imaging/Image.h"
