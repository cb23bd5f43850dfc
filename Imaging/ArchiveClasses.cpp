#include "Imaging/ArchiveClasses.h"

#include "Imaging/CachedImage.h"
#include "Imaging/Image.h"

namespace Imaging {

void registerArchiveClasses() {
    const Platform::NSArchivableClass<IMGImage> image("IMGImage");
    const Platform::NSArchivableClass<IMGImageFromNSImage> picture("IMGImageFromNSImage");
}

} // namespace Imaging
