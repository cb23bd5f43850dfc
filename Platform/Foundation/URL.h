#pragma once

#include "Platform/Foundation/Export.h"

#include <optional>
#include <string>
#include <string_view>

namespace Imaging::Platform {

/// An absolute URL. A value; safe on every thread.
///
/// Example:
/// @code
/// const NSURL url = NSURL::fileURLWithPath("/tmp/a picture.png");
/// const std::string text = url.absoluteString(); // file:///tmp/a%20picture.png
/// @endcode
class IMAGING_EXPORT NSURL {
public:
    /// A URL from its text, or nullopt when the text has no scheme or cannot be one.
    static std::optional<NSURL> URLWithString(std::string_view text);

    /// The `file:` URL of a path; a relative path is taken from the current folder. Characters that a URL
    /// cannot hold are percent-encoded.
    static NSURL fileURLWithPath(std::string_view path);

    const std::string& absoluteString() const { return m_text; }

    /// The scheme in lower case.
    const std::string& scheme() const { return m_scheme; }

    bool isFileURL() const { return m_scheme == "file"; }

    /// The path with percent-encoding undone; of a `file:` URL this is the path in the file system.
    std::string path() const;

private:
    NSURL(std::string text, std::string scheme) : m_text(std::move(text)), m_scheme(std::move(scheme)) {}

    std::string m_text;
    std::string m_scheme;
};

} // namespace Imaging::Platform
