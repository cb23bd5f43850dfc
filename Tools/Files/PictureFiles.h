#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Imaging::Tool {

/// Whether one name comes before another for people: digits count as numbers ("IMG_2" before "IMG_10"), and
/// ASCII letters of both cases alike. Names that are only alike are ordered byte by byte.
bool comesBefore(std::string_view a, std::string_view b);

/// Whether an input is the name of a folder, and neither a URL nor standard input.
bool isFolder(const std::string& input);

/// The pictures in a folder, which are told by their content, in natural order and with the folder's name in
/// front. Hidden files, folders and anything but ordinary files are left out, and so is the file `except`.
/// Throws a Failure when the folder cannot be read or has no pictures.
std::vector<std::string> picturesInFolder(const std::string& folder, const std::string& except);

} // namespace Imaging::Tool
