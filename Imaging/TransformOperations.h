#pragma once

#include "Imaging/Image.h"
#include "Imaging/PlacedNode.h"

#include <memory>
#include <string>

/// Nodes that draw their one source (at index 0) under a transform. They touch no pixels: whoever draws them
/// applies the transform, and their bounds are the source's with it. `copy` and `untransformedImage` throw an
/// NSException (NSRangeException) where an archive gave such a node no source.
///
/// Example:
/// @code
/// const auto picture = std::make_shared<IMGImage>();
/// const auto turned = IMGRotationOp::rotationByDegrees(30, NSMakePoint(50, 25), picture);
/// const auto placed = IMGTranslationOp::translationBy(NSMakePoint(100, 0), turned);
/// @endcode
namespace Imaging {

/// Any affine transform.
class IMAGING_EXPORT IMGAffineTransformOp : public IMGImage {
public:
    /// The transform is copied.
    static std::shared_ptr<IMGAffineTransformOp> transformBy(const NSAffineTransform& transform,
                                                             std::shared_ptr<IMGImage> sourceImage);
    IMGAffineTransformOp(const NSAffineTransform& transform, std::shared_ptr<IMGImage> sourceImage);

    /// Archived under "transform"; the identity where that is absent.
    explicit IMGAffineTransformOp(Platform::NSCoder& coder);
    ~IMGAffineTransformOp() override;

    /// A copy; the identity where the node has none.
    NSAffineTransform affineTransform() const;

    /// Keeps the object itself, so that what the caller does to it later shows in the next draw, though it is
    /// announced to nobody. Nothing happens when it is equal by value to the present one; otherwise `changed`
    /// is sent. Null stands for no transform.
    void setAffineTransform(std::shared_ptr<NSAffineTransform> transform);

    NSAffineTransform transform() const override;
    std::shared_ptr<CCImage> untransformedImage() override;

    /// The copy has a transform of its own.
    std::shared_ptr<IMGImage> copy() const override;
    std::string archiveClassName() const override;
    void encodeWithCoder(Platform::NSCoder& coder) const override;

    /// The transform's six entries.
    std::string parameterDescription() const override;

    /// What users call the operation, in their language (key "transform").
    std::string name() const;

private:
    std::shared_ptr<NSAffineTransform> m_transform;
};

/// A rotation about a point.
class IMAGING_EXPORT IMGRotationOp : public PlacedNode {
public:
    /// Degrees count counter-clockwise; `origin` is the centre, in the source's space.
    static std::shared_ptr<IMGRotationOp> rotationByDegrees(float degrees, NSPoint around,
                                                            std::shared_ptr<IMGImage> sourceImage);
    IMGRotationOp(float degrees, NSPoint origin, std::shared_ptr<IMGImage> sourceImage);

    /// Archived under "angle-degrees" and "origin"; 0 and the zero point where those are absent.
    explicit IMGRotationOp(Platform::NSCoder& coder);
    ~IMGRotationOp() override;

    float rotationDegrees() const { return m_rotation; }

    /// Takes only an angle that is less than 0.0001 away from the present one (the difference formed in 32
    /// bits) and then sends `changed`; any other value is ignored, since documents depend on it. Whoever
    /// wants another angle makes another node.
    void setRotationDegrees(float degrees);

    NSPoint origin() const { return m_origin; }

    /// Sends `changed`, unless the point equals the present one exactly.
    void setOrigin(NSPoint origin);

    std::shared_ptr<IMGImage> copy() const override;
    std::string archiveClassName() const override;
    void encodeWithCoder(Platform::NSCoder& coder) const override;

    /// The degrees and the centre.
    std::string parameterDescription() const override;

    /// What users call the operation, in their language (key "rotation").
    std::string name() const;

protected:
    NSAffineTransform computedTransform() const override;

private:
    float m_rotation;
    NSPoint m_origin;
};

/// A shift.
class IMAGING_EXPORT IMGTranslationOp : public PlacedNode {
public:
    static std::shared_ptr<IMGTranslationOp> translationBy(NSPoint translation,
                                                           std::shared_ptr<IMGImage> sourceImage);
    IMGTranslationOp(NSPoint translation, std::shared_ptr<IMGImage> sourceImage);

    /// Archived under "translation"; the zero point where that is absent.
    explicit IMGTranslationOp(Platform::NSCoder& coder);
    ~IMGTranslationOp() override;

    /// To the right and upward.
    NSPoint translation() const { return m_translation; }

    /// Sends `changed`, unless the point equals the present one exactly.
    void setTranslation(NSPoint translation);

    std::shared_ptr<IMGImage> copy() const override;
    std::string archiveClassName() const override;
    void encodeWithCoder(Platform::NSCoder& coder) const override;

    /// The shift.
    std::string parameterDescription() const override;

    /// What users call the operation, in their language (key "translation").
    std::string name() const;

protected:
    NSAffineTransform computedTransform() const override;

private:
    NSPoint m_translation;
};

} // namespace Imaging
