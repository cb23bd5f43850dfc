#pragma once

// Internal: the line numbers that failed assertions of the library report. Not installed.

/// An assertion handler receives the source and the line of what failed. Programs tell assertions apart by
/// them: they let some pass, count them, or match them in logs. So the numbers are fixed values and no
/// `__LINE__`, which would change with every edit above; a number never changes once it has been released,
/// and a new assertion takes one that its source does not have yet. In the order of the names.
namespace Imaging::AssertionLines {

// Imaging/Convolution
inline constexpr int convolutionKernelSize = 344;

// Imaging/GraphicsUtilities
inline constexpr int glError = 285;

// Imaging/Image
inline constexpr int imageBounds = 378;

// Imaging/Mask
inline constexpr int maskHeight = 185;
inline constexpr int maskLayout = 183;
inline constexpr int maskWidth = 184;

// Imaging/Transpose
inline constexpr int transposeModification = 94;
inline constexpr int transposeModifiedType = 95;
inline constexpr int transposeReversedType = 107;

} // namespace Imaging::AssertionLines
