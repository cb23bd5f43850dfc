#pragma once

#include "Platform/Codecs/Codec.h"
#include "Platform/Foundation/Data.h"

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What there is to be told about a file, and how it is told.
namespace Imaging::Tool {

/// What was found out about one file, or about one picture of a graph.
struct PictureFacts {
    std::string name;  ///< as it was given; empty for a picture that is inside an archive
    std::string error; ///< why it cannot be used; empty when it can
    std::optional<Platform::PictureHeader> header;

    bool isGraph = false; ///< then there are these instead of a header
    std::string rootClass;
    std::size_t nodes = 0;
    std::vector<PictureFacts> pictures;
};

/// The facts about an input that was read. What is wrong with it is in the facts.
PictureFacts factsOf(const Platform::NSData& bytes, const std::string& name);

/// A table with a line for each picture, and the pictures of a graph below it. Files with errors are left
/// out.
std::string tableOf(const std::vector<PictureFacts>& all);

/// A JSON array with an object for each file, those with errors too. Bytes that are not UTF-8 become U+FFFD.
std::string jsonOf(const std::vector<PictureFacts>& all);

/// What EXIF's number says in words: what is done to the stored picture to see it the right way up.
std::string_view orientationInWords(int orientation);

} // namespace Imaging::Tool
