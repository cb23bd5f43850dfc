// Memory of pictures is the painter's levels, and the large buffers that are kept when they are freed.

#include "Platform/Graphics/PictureMemory.h"

#include "Platform/Painter/PictureLevels.h"
#include "Platform/Pixels/Memory/SpareMemory.h"

namespace Imaging::Platform {

void releasePictureMemory() {
    PictureLevels::letGoOfAll();
    releaseSpareMemory();
}

} // namespace Imaging::Platform
