#pragma once

#include "Imaging/Image.h"

#include <optional>

namespace Imaging {

/// A base for nodes of a fixed size: their extent is the rectangle of that size at (0, 0), whatever their
/// sources cover. A class for the code alone, which programs may use for nodes of their own: archives know
/// the derived classes only, and each of them archives the size, or not, under a key of its own.
///
/// Example:
/// @code
/// class Empty : public SizedNode {
/// public:
///     using SizedNode::SizedNode;
///     std::string archiveClassName() const override { return "Empty"; }
///     std::shared_ptr<IMGImage> copy() const override { return std::make_shared<Empty>(sources()); }
/// };
/// const NSSize none = Empty().size();
/// @endcode
class IMAGING_EXPORT SizedNode : public IMGImage {
public:
    /// Of the zero size, as with all inherited constructors, until `setSize`.
    SizedNode();
    using IMGImage::IMGImage;
    ~SizedNode() override;

    NSSize size() const { return m_size; }

    /// The rectangle of the size at (0, 0), under the identity.
    IMGBounds imageBounds() const override;

    /// For itself the same rectangle under the transform; for others what the sources answer.
    std::optional<IMGBounds> boundsForImage(const IMGImage& image,
                                            const NSAffineTransform& transform) const override;
    using IMGImage::boundsForImage;

    std::shared_ptr<IMGImage> copy() const override = 0;
    std::string archiveClassName() const override = 0;

protected:
    explicit SizedNode(NSSize size, Sources sources = {});

    /// Sends no `changed`: that is for the derived class to say.
    void setSize(NSSize size) { m_size = size; }

    /// The rectangle of the size at (0, 0).
    NSRect wholeRect() const;

private:
    NSSize m_size;
};

} // namespace Imaging
