#pragma once

#include "Imaging/Image.h"

#include <memory>
#include <mutex>
#include <optional>
#include <string>

/// Nodes that draw their one source (at index 0) under a transform. They touch no pixels: whoever draws them
/// applies the transform, and their bounds are the source's with it. `copy` and `untransformedImage` throw an
/// NSException (NSRangeException) where an archive gave such a node no source.
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

    /// What users call the operation, in their language (key "transform").
    std::string name() const;

private:
    std::shared_ptr<NSAffineTransform> m_transform;
};

/// A rotation about a point.
///
/// The transform is computed once and kept until the next `changed`. A lock of the node's own guards what is
/// kept, so `transform` and `changed` may be called on several threads at once; the setters may not.
class IMAGING_EXPORT IMGRotationOp : public IMGImage {
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

    NSAffineTransform transform() const override;
    void changed() override;
    std::shared_ptr<CCImage> untransformedImage() override;
    std::shared_ptr<IMGImage> copy() const override;
    std::string archiveClassName() const override;
    void encodeWithCoder(Platform::NSCoder& coder) const override;

    /// What users call the operation, in their language (key "rotation").
    std::string name() const;

private:
    mutable std::recursive_mutex m_lock;
    mutable std::optional<NSAffineTransform> m_cached_transform;
    float m_rotation;
    NSPoint m_origin;
};

/// A shift. Its transform is kept and locked like a rotation's.
class IMAGING_EXPORT IMGTranslationOp : public IMGImage {
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

    NSAffineTransform transform() const override;
    void changed() override;
    std::shared_ptr<CCImage> untransformedImage() override;
    std::shared_ptr<IMGImage> copy() const override;
    std::string archiveClassName() const override;
    void encodeWithCoder(Platform::NSCoder& coder) const override;

    /// What users call the operation, in their language (key "translation").
    std::string name() const;

private:
    mutable std::recursive_mutex m_lock;
    mutable std::optional<NSAffineTransform> m_cached_transform;
    NSPoint m_translation;
};

} // namespace Imaging
