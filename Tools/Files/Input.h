#pragma once

#include "Imaging/Image.h"
#include "Platform/Foundation/Data.h"
#include "Show/PictureLoading.h"

#include <memory>
#include <string>

/// What the names on the command line stand for: files, URLs, and "-" for standard input. All throw a Failure
/// with the name as it was given.
namespace Imaging::Tool {

/// True for "-".
bool isStandardInput(const std::string& name);

/// The name as it is shown in messages.
std::string shownName(const std::string& name);

/// All bytes, read once, so that pipes work too. Never more than the limits on pictures or transfers.
Platform::NSData readInput(const std::string& name);

/// The same for the path of a file, whatever it looks like.
Platform::NSData readFile(const std::string& path);

/// The node of a picture, decoded from its bytes, or the root of an archived graph; which of them is told by
/// the content. Pictures of a graph that could not be had are not noticed here.
std::shared_ptr<Imaging::IMGImage> nodeWithBytes(const Platform::NSData& bytes, const std::string& name);

/// The same for an input. The encoded bytes are not kept.
std::shared_ptr<Imaging::IMGImage> loadNode(const std::string& name);

} // namespace Imaging::Tool
