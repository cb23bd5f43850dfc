#pragma once

#include "Show/Show.h"
#include "Tools/Command/Values.h"
#include "Tools/Pictures/Operations.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// What people say about a film: on the command line, in a show file for all of it, and there for single
/// pictures; each of it may be left out. The parse functions throw a UsageError that begins with `option`.
namespace Imaging::Tool {

/// Frames in a number of seconds.
struct FrameRate {
    std::int64_t numerator = 25;
    std::int64_t denominator = 1;
};

/// "25", "12.5" or "30000/1001", reduced; above 0 and up to 1000, in numbers of at most 7 digits. The decimal
/// numbers by which the rates of NTSC go mean these: 23.976 is 24000/1001.
FrameRate parseFrameRate(std::string_view text, const std::string& option);
std::string textOf(FrameRate rate);

/// A time from 0 to 86400 seconds.
double parseDuration(std::string_view text, const std::string& option);

/// "WxH", each up to 16384.
PixelSize parseFrameSize(std::string_view text, const std::string& option);

/// A colour that lets nothing through, as a film's.
Platform::NSColor parseOpaqueColor(const std::string& text, const std::string& option);

/// A whole number from 0.
std::uint64_t parseSeed(std::string_view text, const std::string& option);

/// What is said for a whole film.
struct ShowSettings {
    std::optional<PixelSize> size;
    std::optional<FrameRate> rate;
    std::optional<Platform::NSColor> background;
    std::optional<Fit> fit;
    std::optional<double> hold;
    std::optional<std::string> transition; ///< one that TransitionChoice takes
    std::optional<double> duration;
    std::optional<Easing> easing;
    std::optional<bool> loop;
    std::optional<bool> asStored;
    std::optional<std::uint64_t> seed;

    /// These, and what they leave out from others.
    ShowSettings completedBy(const ShowSettings& others) const;
};

/// A picture and what is said for it alone.
struct ShowEntry {
    std::string name; ///< a file or URL
    std::vector<Step> steps;
    std::optional<double> hold;
    std::optional<Fit> fit;
    std::optional<Transition> transition;
    std::optional<double> duration;
    std::optional<Easing> easing;
};

/// The film, with defaults for what nobody said: frames of 1920x1080, 25 in a second; each picture kept in
/// shape on black for 3 seconds; dissolves of 1 second that begin and end softly; seed 1.
Show makeShow(const ShowSettings& settings, const std::vector<ShowEntry>& entries);

} // namespace Imaging::Tool
