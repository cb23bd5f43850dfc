// The content tells pictures and archives apart, never the name.

#include "Show/PictureLoading.h"

#include "Imaging/CachedImage.h"
#include "Platform/Codecs/Codec.h"
#include "Platform/Foundation/Exception.h"
#include "Platform/Foundation/KeyedArchiver.h"
#include "Platform/Foundation/URLLoading.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/Image.h"

#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>

namespace Imaging {

using Platform::NSData;
using Platform::NSError;
using Platform::NSException;
using Platform::NSInvalidArgumentException;

namespace {

NSData contentsOfURL(const std::string& location) {
    const std::optional<Platform::NSURL> url = Platform::NSURL::URLWithString(location);
    if (!url.has_value()) {
        throw NSException(
            NSInvalidArgumentException,
            "this is not a URL; spaces and special characters in one are written as %20 and the like");
    }
    NSError error;
    std::optional<NSData> data = Platform::dataWithContentsOfURL(*url, &error);
    if (!data.has_value()) throw NSException(NSInvalidArgumentException, error.message);
    return std::move(*data);
}

} // namespace

bool isURL(const std::string& location) {
    const std::size_t colon = location.find(':');
    if (colon == std::string::npos || colon == 0) return false;
    const std::string_view rest = std::string_view(location).substr(colon + 1);
    const std::string_view scheme = std::string_view(location).substr(0, colon);
    const bool isWord = std::all_of(scheme.begin(), scheme.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '+' ||
               c == '-' || c == '.';
    });
    return isWord && (rest.starts_with("//") || (scheme == "file" && rest.starts_with('/')));
}

NSData contentsOf(const std::string& location) {
    if (isURL(location)) return contentsOfURL(location);
    NSError error;
    auto data = Platform::dataWithContentsOfFile(location, Platform::pictureLimits().maximumBytes, &error);
    if (!data.has_value()) throw NSException(NSInvalidArgumentException, error.message);
    return std::move(*data);
}

std::shared_ptr<IMGImage> nodeWithBytes(const NSData& bytes) {
    if (Platform::looksLikePropertyList(bytes)) return Platform::unarchiveObjectOfClass<IMGImage>(bytes);
    NSError error;
    auto bitmap = Platform::NSBitmapImageRep::imageRepWithData(bytes, &error);
    if (bitmap == nullptr) throw NSException(NSInvalidArgumentException, error.message);
    const auto picture = std::make_shared<Platform::NSImage>(bitmap->size());
    picture->addRepresentation(std::move(bitmap));
    return imagingImage(picture);
}

std::shared_ptr<IMGImage> nodeWithContentsOf(const std::string& location) {
    return nodeWithBytes(contentsOf(location));
}

} // namespace Imaging
