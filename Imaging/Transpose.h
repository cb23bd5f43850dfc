#pragma once

#include "Imaging/Image.h"
#include "Imaging/PlacedNode.h"

#include <cstdint>
#include <memory>
#include <string>

namespace Imaging {

/// The eight symmetries of a rectangle, about its centre, y upward and angles counter-clockwise.
enum IMGTransposeType : std::int32_t {
    FLIP_VERTICAL = 0,     ///< (x, -y)
    FLIP_HORIZONTAL = 1,   ///< (-x, y)
    FLIP_ANTIDIAGONAL = 2, ///< (-y, -x)
    FLIP_DIAGONAL = 3,     ///< (y, x)
    ROTATE_0 = 4,          ///< (x, y)
    ROTATE_90 = 5,         ///< (-y, x)
    ROTATE_180 = 6,        ///< (-x, -y)
    ROTATE_270 = 7,        ///< (y, -x)
};

/// Further steps that users apply to a type. They continue the types' numbers, so that one look at a number
/// tells which of the two it is.
enum IMGTransposeModification : std::int32_t {
    MODIFY_ROTATE_CLOCKWISE = 8,        ///< a quarter turn clockwise
    MODIFY_ROTATE_COUNTERCLOCKWISE = 9, ///< a quarter turn counter-clockwise
    MODIFY_FLIP_HORIZONTAL = 10,        ///< left and right change places
    MODIFY_FLIP_VERTICAL = 11,          ///< top and bottom change places
};

/// Turns or mirrors its one source (at index 0) about the centre of the source's bounding rectangle. Like the
/// other transform operations it touches no pixels; it throws where an archive gave it no source.
///
/// Example:
/// @code
/// const auto picture = std::make_shared<IMGImage>();
/// const auto upright = IMGTransposeOp::transposeOfType(ROTATE_270, picture);
/// upright->modifyType(MODIFY_FLIP_HORIZONTAL);
/// @endcode
class IMAGING_EXPORT IMGTransposeOp : public PlacedNode {
public:
    static std::shared_ptr<IMGTransposeOp> transposeOfType(std::int32_t type,
                                                           std::shared_ptr<IMGImage> sourceImage);

    /// The type whose mapping is that of `type` followed by a modification's. A number that is no
    /// modification or no type calls the assertion handler; when that returns, the result is the table's
    /// entry at type + 8 · (modification - 8), or `type` itself where the table has none there.
    static std::int32_t type(std::int32_t type, std::int32_t modifiedBy);

    /// The type that undoes one. A number that is no type calls the assertion handler, and is the result when
    /// that returns.
    static std::int32_t reversedType(std::int32_t type);

    /// The type is not checked: one that is unknown acts as ROTATE_0.
    IMGTransposeOp(std::int32_t type, std::shared_ptr<IMGImage> sourceImage);

    /// Archived under "type"; FLIP_VERTICAL where that is absent.
    explicit IMGTransposeOp(Platform::NSCoder& coder);
    ~IMGTransposeOp() override;

    std::int32_t type() const { return m_type; }

    /// Sends `changed`, unless the type is the present one.
    void setType(std::int32_t type);

    /// The type that a modification of the present one gives.
    std::int32_t nextType(std::int32_t modification) const;

    /// Takes on that type.
    void modifyType(std::int32_t modification);

    std::shared_ptr<IMGImage> copy() const override;
    std::string archiveClassName() const override;
    void encodeWithCoder(Platform::NSCoder& coder) const override;

    bool needsSource() const override { return true; }

    /// The type's name, or its number where it has none.
    std::string parameterDescription() const override;

    /// What users call the operation, in their language (key "transpose").
    std::string name() const;

protected:
    /// Asks the source for its bounds.
    NSAffineTransform computedTransform() const override;

private:
    std::int32_t m_type;
};

} // namespace Imaging
