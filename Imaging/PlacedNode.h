#pragma once

#include "Imaging/Image.h"

#include <memory>
#include <mutex>
#include <optional>

namespace Imaging {

/// A base for nodes that show their one source (at index 0) under a transform and touch no pixels. The
/// transform is computed once and kept until the next `changed`, which a change of the source brings too. A
/// class for the code alone, which programs may use for nodes of their own: archives know the derived classes
/// only.
///
/// A recursive lock of the node's own guards what is kept, so `transform` and `changed` may be called on
/// several threads at once; setters of derived classes may not.
///
/// Example:
/// @code
/// class Mirror : public PlacedNode {
/// public:
///     using PlacedNode::PlacedNode;
///     std::string archiveClassName() const override { return "Mirror"; }
///     std::shared_ptr<IMGImage> copy() const override { return std::make_shared<Mirror>(sources()); }
///
/// protected:
///     NSAffineTransform computedTransform() const override {
///         NSAffineTransform mirrored;
///         mirrored.scaleXBy(-1, 1);
///         return mirrored;
///     }
/// };
/// const NSAffineTransform transform = Mirror().transform();
/// @endcode
class IMAGING_EXPORT PlacedNode : public IMGImage {
public:
    PlacedNode();
    using IMGImage::IMGImage;
    ~PlacedNode() override;

    NSAffineTransform transform() const override;

    /// Drops the transform, lets go of the lock, and then tells the observers.
    void changed() override;

    /// The source's. Throws an NSException (NSRangeException) where an archive gave the node none.
    std::shared_ptr<CCImage> untransformedImage() override;

    std::shared_ptr<IMGImage> copy() const override = 0;
    std::string archiveClassName() const override = 0;

protected:
    /// The transform for the present values. Called with the lock held, which is recursive: it may ask the
    /// source, always from the top down, and other functions of this node. Where it throws nothing is kept.
    virtual NSAffineTransform computedTransform() const = 0;

private:
    mutable std::recursive_mutex m_lock;
    mutable std::optional<NSAffineTransform> m_cached_transform;
};

} // namespace Imaging
