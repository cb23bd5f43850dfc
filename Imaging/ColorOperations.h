#pragma once

// The operations on colours together, each of which has a header of its own.

#include "Imaging/ColorTransform.h"
#include "Imaging/HueAdjust.h"
