#pragma once

#include "Platform/Foundation/Data.h"

#include <string_view>

namespace Imaging::Platform {

/// A box of the family of formats that JPEG 2000, HEIF and JPEG XL belong to: a length, a type of four
/// letters and contents, which for some types are boxes again.
struct IsoBox {
    std::string_view type;
    ByteView contents;
    bool isComplete = true; ///< whether the bytes reach to where the box says it ends
};

/// Takes the first box off the bytes, or answers false when there is none. A box that says it is longer than
/// the bytes gets what there is of it.
bool takeBox(ByteView& bytes, IsoBox& box);

/// The contents of the first box of a type, or nothing. Boxes within boxes are not searched.
ByteView findBox(ByteView bytes, std::string_view type);

} // namespace Imaging::Platform
