// The eight symmetries and the tables over them. A type's mapping is about (0, 0); the node moves it to the
// middle of its source's bounds.

#include "Imaging/Transpose.h"

#include "Imaging/CCImage.h"
#include "Imaging/Drawing/AssertionLines.h"
#include "Platform/Foundation/AssertionHandler.h"
#include "Platform/Foundation/LocalizedString.h"

#include <array>
#include <utility>

namespace Imaging {

namespace {

constexpr const char* sourceName = "Imaging/Transpose";
constexpr const char* typeCondition = "type >= FLIP_VERTICAL && type <= ROTATE_270";

constexpr std::int64_t typeCount = 8;

/// A row for each modification, a column for each type.
constexpr std::array<std::int32_t, 4 * typeCount> modifiedTypes = {
    2, 3, 1, 0, 7, 4, 5, 6, // clockwise
    3, 2, 0, 1, 5, 6, 7, 4, // counter-clockwise
    6, 4, 7, 5, 1, 3, 0, 2, // left and right
    4, 6, 5, 7, 0, 2, 1, 3, // top and bottom
};

constexpr std::array<std::int32_t, typeCount> reversedTypes = {0, 1, 2, 3, 4, 7, 6, 5};

bool isType(std::int32_t type) { return type >= FLIP_VERTICAL && type <= ROTATE_270; }

/// Adds a type's mapping about (0, 0) to what acts after it. The steps stand in the reverse of the order in
/// which they act on a point.
void prependSteps(NSAffineTransform& transform, std::int32_t type) {
    switch (type) {
    case FLIP_VERTICAL:
        transform.scaleXBy(1, -1);
        break;
    case FLIP_HORIZONTAL:
        transform.scaleXBy(-1, 1);
        break;
    case FLIP_ANTIDIAGONAL:
        transform.rotateByDegrees(270);
        transform.scaleXBy(1, -1);
        break;
    case FLIP_DIAGONAL:
        transform.scaleXBy(1, -1);
        transform.rotateByDegrees(270);
        break;
    case ROTATE_90:
        transform.rotateByDegrees(90);
        break;
    case ROTATE_180:
        transform.rotateByDegrees(180);
        break;
    case ROTATE_270:
        transform.rotateByDegrees(270);
        break;
    default:
        break;
    }
}

} // namespace

std::shared_ptr<IMGTransposeOp> IMGTransposeOp::transposeOfType(std::int32_t type,
                                                                std::shared_ptr<IMGImage> sourceImage) {
    return std::make_shared<IMGTransposeOp>(type, std::move(sourceImage));
}

std::int32_t IMGTransposeOp::type(std::int32_t type, std::int32_t modifiedBy) {
    if (modifiedBy < MODIFY_ROTATE_CLOCKWISE || modifiedBy > MODIFY_FLIP_VERTICAL) {
        Platform::parameterAssertionFailed("modification_type >= MODIFY_ROTATE_CLOCKWISE && "
                                           "modification_type <= MODIFY_FLIP_VERTICAL",
                                           sourceName, AssertionLines::transposeModification);
    }
    if (!isType(type))
        Platform::parameterAssertionFailed(typeCondition, sourceName, AssertionLines::transposeModifiedType);
    const std::int64_t row = std::int64_t{modifiedBy} - MODIFY_ROTATE_CLOCKWISE;
    const std::int64_t index = type + row * typeCount;
    if (index < 0 || index >= std::ssize(modifiedTypes)) return type;
    return modifiedTypes[static_cast<std::size_t>(index)];
}

std::int32_t IMGTransposeOp::reversedType(std::int32_t type) {
    if (isType(type)) return reversedTypes[static_cast<std::size_t>(type)];
    Platform::parameterAssertionFailed(typeCondition, sourceName, AssertionLines::transposeReversedType);
    return type;
}

IMGTransposeOp::IMGTransposeOp(std::int32_t type, std::shared_ptr<IMGImage> sourceImage)
    : PlacedNode(std::move(sourceImage)), m_type(type) {}

IMGTransposeOp::IMGTransposeOp(Platform::NSCoder& coder)
    : PlacedNode(coder), m_type(static_cast<std::int32_t>(coder.decodeInt("type"))) {}

IMGTransposeOp::~IMGTransposeOp() = default;

void IMGTransposeOp::setType(std::int32_t type) {
    if (type == m_type) return;
    m_type = type;
    changed();
}

std::int32_t IMGTransposeOp::nextType(std::int32_t modification) const { return type(m_type, modification); }

void IMGTransposeOp::modifyType(std::int32_t modification) { setType(nextType(modification)); }

NSAffineTransform IMGTransposeOp::computedTransform() const {
    const NSRect bounds = sourceAtIndex(0)->imageBoundsRect();
    const auto centreX = static_cast<float>(bounds.origin.x + bounds.size.width * 0.5);
    const auto centreY = static_cast<float>(bounds.origin.y + bounds.size.height * 0.5);
    NSAffineTransform transposed;
    transposed.translateXBy(centreX, centreY);
    prependSteps(transposed, m_type);
    transposed.translateXBy(-centreX, -centreY);
    return transposed;
}

std::shared_ptr<IMGImage> IMGTransposeOp::copy() const {
    return std::make_shared<IMGTransposeOp>(m_type, sourceAtIndex(0));
}

std::string IMGTransposeOp::archiveClassName() const { return "IMGTransposeOp"; }

void IMGTransposeOp::encodeWithCoder(Platform::NSCoder& coder) const {
    IMGImage::encodeWithCoder(coder);
    coder.encodeInt(m_type, "type");
}

std::string IMGTransposeOp::parameterDescription() const {
    static constexpr std::array<const char*, typeCount> names = {
        "FLIP_VERTICAL", "FLIP_HORIZONTAL", "FLIP_ANTIDIAGONAL", "FLIP_DIAGONAL",
        "ROTATE_0",      "ROTATE_90",       "ROTATE_180",        "ROTATE_270"};
    return isType(m_type) ? names[static_cast<std::size_t>(m_type)] : "type " + std::to_string(m_type);
}

std::string IMGTransposeOp::name() const { return Platform::localizedStringForKey("transpose"); }

} // namespace Imaging
