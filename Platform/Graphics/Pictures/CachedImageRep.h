#pragma once

// Internal: what was drawn into a picture, as one of its representations. Not installed.

#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/Pictures/DrawablePicture.h"

#include <memory>

namespace Imaging::Platform {

/// A representation that exists only as drawn pixels. Its size is that of the picture's bounds.
class NSCachedImageRep : public NSImageRep {
public:
    explicit NSCachedImageRep(std::shared_ptr<DrawablePicture> picture);
    ~NSCachedImageRep() override;

    const std::shared_ptr<DrawablePicture>& picture() const { return m_picture; }

private:
    std::shared_ptr<DrawablePicture> m_picture;
};

} // namespace Imaging::Platform
