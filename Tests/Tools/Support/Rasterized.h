#pragma once

#include "Tests/Tools/Support/Command.h"
#include "Tests/Tools/Support/TestPictures.h"

#include <string>

/// Pages as programs of others show them, one pixel a point unless another number is given.
namespace TestSupport {

/// The first page of a PDF, by pdftocairo. Both write their result as page.png into the folder.
Picture pictureOfPDF(const std::string& path, const TemporaryFolder& folder, int pixelsAPoint = 1);

/// By rsvg-convert.
Picture pictureOfSVG(const std::string& path, const TemporaryFolder& folder);

/// "200 x 100 pts", as pdfinfo says it; "" where it says nothing.
std::string pageSizeOfPDF(const std::string& path);

/// How many of the pictures' pixels differ by more than a tolerance in red, green, blue (each multiplied by
/// alpha) or alpha. All, when their sizes do.
int countDifferent(const Picture& a, const Picture& b, int tolerance);

} // namespace TestSupport
