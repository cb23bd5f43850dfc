#pragma once

#include "Platform/Foundation/Data.h"
#include "Platform/Graphics/BitmapImageRep.h"
#include "Platform/Graphics/Color.h"
#include "Tools/Command/Options.h"

#include <cstdint>
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

/// Where a picture goes and how, the same for every subcommand that draws one. Its fields are filled by its
/// options, of which those of `whereOptions` come first in the table.
struct PictureOutput {
    /// Whether the subcommand writes PDF and SVG too.
    bool takesPages = false;

    std::string path{};
    OutputFormat format{};                 ///< by the option, or the suffix of the path
    std::optional<std::int64_t> quality{}; ///< 1 to 100; 90 where it was not given
    Platform::NSColor background{};        ///< behind what is drawn
    bool asStored = false;                 ///< drawn without regard to the way up that pictures declare

    /// -o, which has to be given, and --format; `what` is "picture" or the like.
    OptionTable whereOptions(const std::string& what, const std::string& typeName);

    /// --background; otherwise transparent, or white where the format has no alpha.
    OptionTable backgroundOptions();

    /// --quality, of formats that have one, and --no-orient.
    OptionTable howOptions();

    /// The same as -o by itself. Throws a UsageError when the suffix names no format, and what
    /// `checkOutputPath` throws.
    void setPath(const std::string& file);

    /// Encodes a bitmap and writes it, without alpha where all of it is opaque. Throws a Failure.
    void write(const Platform::NSBitmapImageRep& bitmap) const;
};

/// A path that has to be given and `checkOutputPath` finds good.
Binding intoOutputPath(std::string& path);

/// Throws a UsageError when the path is empty, and a Failure when it cannot be written because its folder is
/// missing or it is a folder itself; so that long work is not done in vain.
void checkOutputPath(const std::string& path);

/// The path as it is shown in messages.
std::string shownPath(const std::string& path);

/// Writes a file so that nobody ever sees half of it, also when the command is interrupted. Throws a Failure.
void writeOutput(Platform::ByteView data, const std::string& path);

/// True when both names lead to the same file.
bool isSameFile(const std::string& a, const std::string& b);

} // namespace Imaging::Tool
