#pragma once

// Internal: whole convolutions on two threads, by vector code where a kernel lies within the picture. The
// result is bit for bit that of the workers of ConvolutionPlain.h. Not installed.

#include "Imaging/Pixels/ConvolutionPlain.h"

namespace Imaging {

// Each takes a record with the pictures and the kernel, whose first line and step are not used, and the
// samples of a pixel (1 to 4). Each throws std::bad_alloc before anything is written.

/// convolve2, then copy_edges on the calling thread. Instead of single rows, bands of some rows are dealt out
/// to the threads in turn, since rows of a band share the source rows that have been made ready for them.
void convolveRectangle(const Convolve2Record& record, int samplesPerPixel);

/// convolve1a and convolve1b on what that gives. Instead of single columns, which share cache lines, blocks
/// of columns are dealt out to the threads in turn. A thread filters a row of its block along the row, keeps
/// it for as long as the kernel reaches, and so makes its columns in one walk; the picture between never
/// exists whole.
void convolveSeparably(const Convolve1Record& record, int samplesPerPixel);

} // namespace Imaging
