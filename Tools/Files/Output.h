#pragma once

#include "Platform/Foundation/Data.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/Color.h"
#include "Tools/Command/Options.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// Where results go: a file, or "-" for standard output.
namespace Imaging::Tool {

/// Files of one page of vectors.
enum class PageFormat { None, PDF, SVG };

/// A format that pictures can be written in.
struct OutputFormat {
    int fileType = 0; ///< Platform::NSBitmapImageFileType, where it is no page
    bool hasAlpha = true;
    bool hasQuality = false;
    PageFormat page = PageFormat::None;
};

/// The arguments that say where a picture goes and how, the same for every subcommand that draws one.
struct PictureOutput {
    std::string path;
    std::string format;     ///< empty: by the suffix of the path
    std::string quality;    ///< empty: 90
    std::string background; ///< empty: transparent, or white where there is no alpha
    bool asStored = false;  ///< drawn without regard to the way up that pictures declare
    bool takesPages =
        false; ///< whether the subcommand writes PDF and SVG too; to be set before anything else

    /// -o and --format; `what` is "picture" or the like.
    OptionTable whereOptions(const std::string& what, const std::string& typeName);

    /// --background.
    OptionTable backgroundOptions();

    /// --quality and --no-orient.
    OptionTable howOptions();

    /// The format. Throws a UsageError when the path is missing, neither the format nor the suffix is one
    /// that can be written, or a quality was given where there is none or that is none.
    OutputFormat checkedFormat() const;

    /// The colour to put behind what is drawn. Throws a UsageError when it was given as something else.
    Platform::NSColor backgroundFor(const OutputFormat& chosen) const;

    /// Encodes a bitmap and writes it, without alpha where all of it is opaque. Throws a Failure.
    void write(const Platform::NSBitmapImageRep& bitmap) const;
};

/// The colour of a bitmap of 8-bit red, green, blue and alpha alone; null where not all of it is opaque, or
/// memory runs out.
std::shared_ptr<Platform::NSBitmapImageRep> withoutNeedlessAlpha(const Platform::NSBitmapImageRep& bitmap);

/// Throws a UsageError when the path is empty, and a Failure when it cannot be written because its folder is
/// missing or it is a folder itself; so that long work is not done in vain.
void checkOutputPath(const std::string& path);

/// The path as it is shown in messages.
std::string shownPath(const std::string& path);

/// Writes a file so that nobody ever sees half of it, also when the command is interrupted. Throws a Failure.
void writeOutput(Platform::ByteView data, const std::string& path);

/// Throws a Failure when not everything could be written.
void writeStandardOutput(std::string_view text);

/// True when both names lead to the same file.
bool isSameFile(const std::string& a, const std::string& b);

} // namespace Imaging::Tool
