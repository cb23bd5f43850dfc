// Encodes what was drawn and writes it in place of what was there, at once or not at all; and the options
// that say where to and how.

#include "Tools/Files/Output.h"

#include "Show/OpaqueBitmap.h"
#include "Tools/Command/Messages.h"
#include "Tools/Command/Process.h"
#include "Tools/Command/StandardOutput.h"
#include "Tools/Command/Values.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <memory>

namespace Imaging::Tool {

using Platform::ByteView;
using Platform::NSBitmapImageRep;
using Platform::NSData;
using Platform::NSError;

namespace {

struct Suffix {
    std::string_view word;
    OutputFormat format;
};

constexpr OutputFormat jpeg = {.fileType = Platform::NSJPEGFileType, .hasAlpha = false, .hasQuality = true};
constexpr OutputFormat png = {.fileType = Platform::NSPNGFileType};
constexpr OutputFormat tiff = {.fileType = Platform::NSTIFFFileType};
constexpr OutputFormat jpeg2000 = {.fileType = Platform::NSJPEG2000FileType, .hasQuality = true};
constexpr OutputFormat gif = {.fileType = Platform::NSGIFFileType};
constexpr OutputFormat bmp = {.fileType = Platform::NSBMPFileType};
constexpr OutputFormat pdf = {.page = PageFormat::PDF};
constexpr OutputFormat svg = {.page = PageFormat::SVG};
constexpr std::array suffixes = {Suffix{"jpg", jpeg}, Suffix{"jpeg", jpeg},    Suffix{"png", png},
                                 Suffix{"tif", tiff}, Suffix{"tiff", tiff},    Suffix{"gif", gif},
                                 Suffix{"bmp", bmp},  Suffix{"jp2", jpeg2000}, Suffix{"pdf", pdf},
                                 Suffix{"svg", svg}};

std::optional<OutputFormat> formatNamed(std::string word) {
    for (char& c : word) {
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    for (const Suffix& suffix : suffixes) {
        if (suffix.word == word) return suffix.format;
    }
    return std::nullopt;
}

std::vector<std::string> formatWords(const std::string& prefix, bool withPages) {
    std::vector<std::string> words;
    for (const Suffix& suffix : suffixes) {
        if (withPages || suffix.format.page == PageFormat::None)
            words.push_back(prefix + std::string(suffix.word));
    }
    return words;
}

/// The format that was asked for by `option`, if the subcommand writes it.
OutputFormat permitted(const OutputFormat& format, const std::string& option, bool withPages) {
    if (withPages || format.page == PageFormat::None) return format;
    throw UsageError(option + ": only 'imaging draw' writes PDF and SVG; write a picture such as .png here");
}

OutputFormat parseFormat(const std::string& text, const std::string& option, bool withPages) {
    if (const auto format = formatNamed(text)) return permitted(*format, option + " " + text, withPages);
    const std::vector<std::string> known = formatWords("", withPages);
    throw UsageError(option + ": '" + text + "' cannot be written; known are " + enumeration(known) +
                     suggestion(text, known));
}

OutputFormat formatOfPath(const std::string& path, bool withPages) {
    if (path == "-")
        throw UsageError("-o -: standard output has no suffix to tell the format by; add --format");
    const std::string suffix = std::filesystem::path(path).extension().string();
    if (const auto format = suffix.empty() ? std::nullopt : formatNamed(suffix.substr(1)))
        return permitted(*format, "-o " + path, withPages);
    throw UsageError("-o " + path + ": the suffix names no format that can be written; those that work are " +
                     enumeration(formatWords(".", withPages)) + ", or add --format");
}

/// Writing into devices and pipes may block for ever, so only files are written without interruption.
bool isFileOrNothing(const std::string& path) {
    std::error_code failure;
    const auto status = std::filesystem::status(path, failure);
    return !std::filesystem::exists(status) || std::filesystem::is_regular_file(status);
}

} // namespace

std::string shownPath(const std::string& path) { return path == "-" ? "standard output" : path; }

Binding intoOutputPath(std::string& path) {
    const auto check = [](const std::string& text, const std::string&) {
        checkOutputPath(text);
        return text;
    };
    return orElse(into(path, check), [] { checkOutputPath(""); });
}

OptionTable PictureOutput::whereOptions(const std::string& what, const std::string& typeName) {
    const auto named = [this](const std::string& text, const std::string& option) {
        return parseFormat(text, option, takesPages);
    };
    return {{"-o,--output", typeName, "The " + what + " to write; its suffix names the format",
             intoOutputPath(path)},
            {"--format", "FORMAT",
             takesPages ? "jpg, png, tiff, gif, bmp, jp2, pdf or svg, whatever\nthe suffix says"
                        : "jpg, png, tiff, gif, bmp or jp2, whatever the\nsuffix says",
             orElse(into(format, named), [this] { format = formatOfPath(path, takesPages); })}};
}

OptionTable PictureOutput::backgroundOptions() {
    const auto byFormat = [this] {
        background = format.hasAlpha ? Platform::NSColor::clearColor() : Platform::NSColor::whiteColor();
    };
    return {{"--background", "COLOR",
             "The colour behind it: #rgb, #rrggbb, #rrggbbaa,\n"
             "transparent, or a name such as white, black, gray or\n"
             "navy. By default transparent, and white for JPEG",
             orElse(into(background, parseColor), byFormat)}};
}

OptionTable PictureOutput::howOptions() {
    const auto percent = [this](const std::string& text, const std::string& option) {
        if (format.hasQuality) return parseNumber(text, option, 1, 100);
        throw UsageError(option + ": only JPEG and JPEG 2000 have a quality; leave it out or write a .jpg");
    };
    return {{"--quality", "N", "Of a JPEG or JPEG 2000, 1 to 100 (90)", into(quality, percent)},
            {"--no-orient", "",
             "Draw pictures as they are stored, whatever way up\n"
             "they declare",
             raise(asStored)}};
}

void PictureOutput::setPath(const std::string& file) {
    checkOutputPath(file);
    path = file;
    format = formatOfPath(file, takesPages);
}

void PictureOutput::write(const NSBitmapImageRep& bitmap) const {
    Platform::NSImageProperties properties;
    properties[std::string(Platform::NSImageCompressionFactor)] =
        static_cast<double>(quality.value_or(90)) / 100.0;
    const std::shared_ptr<NSBitmapImageRep> opaque = withoutNeedlessAlpha(bitmap);
    const NSBitmapImageRep& written = opaque != nullptr ? *opaque : bitmap;
    NSError error;
    const std::optional<NSData> data = written.representationUsingType(format.fileType, properties, &error);
    if (!data.has_value()) throw Failure(shownPath(path), error.message);
    writeOutput(*data, path);
}

void checkOutputPath(const std::string& path) {
    if (path.empty()) throw UsageError("the output is missing: -o FILE, or -o - for standard output");
    if (path == "-") return;
    std::error_code failure;
    const std::filesystem::path output(path);
    if (std::filesystem::is_directory(output, failure)) throw Failure(path, "this is a folder, not a file");
    const std::filesystem::path folder = output.parent_path();
    if (folder.empty() || std::filesystem::is_directory(folder, failure)) return;
    throw Failure(path, "the folder does not exist; make it first");
}

void writeOutput(ByteView data, const std::string& path) {
    if (path == "-") return writeStandardOutput(data);
    NSError error;
    bool written = false;
    if (isFileOrNothing(path)) {
        const UninterruptedScope scope;
        written = Platform::writeToFileAtomically(data, path, &error);
    } else {
        written = Platform::writeToFileAtomically(data, path, &error);
    }
    if (!written) throw Failure(shownPath(path), error.message);
}

bool isSameFile(const std::string& a, const std::string& b) {
    std::error_code failure;
    return std::filesystem::equivalent(a, b, failure) && !failure;
}

} // namespace Imaging::Tool
