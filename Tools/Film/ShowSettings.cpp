// Reads the values that a film is described by, and makes a film of them with defaults for what nobody said.

#include "Tools/Film/ShowSettings.h"

#include "Tools/Command/Messages.h"
#include "Tools/Film/ShowWords.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <numeric>

namespace Imaging::Tool {

namespace {

constexpr std::int64_t maximumRate = 1000;
constexpr std::int64_t maximumTerm = 9'999'999;
constexpr double maximumDuration = 86400;
constexpr std::int64_t maximumFrameSide = 16384;

struct NamedRate {
    std::string_view text;
    FrameRate rate;
};

/// Rates of NTSC in the decimals by which people know them.
constexpr std::array ntscRates = {
    NamedRate{"23.976", {24000, 1001}},  NamedRate{"23.98", {24000, 1001}}, NamedRate{"29.97", {30000, 1001}},
    NamedRate{"47.952", {48000, 1001}},  NamedRate{"47.95", {48000, 1001}}, NamedRate{"59.94", {60000, 1001}},
    NamedRate{"119.88", {120000, 1001}},
};

/// Digits alone, from 1 to `maximumTerm`.
std::optional<std::int64_t> termIn(std::string_view text) {
    std::int64_t term = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), term);
    const bool isWhole = failure == std::errc() && end == text.data() + text.size();
    return isWhole && term >= 1 && term <= maximumTerm ? std::optional(term) : std::nullopt;
}

/// "12.5" as 125/10, so that no rate is ever rounded to a binary fraction.
std::optional<FrameRate> decimalIn(std::string_view text) {
    const std::size_t point = text.find('.');
    std::string digits(text.substr(0, point));
    std::int64_t denominator = 1;
    if (point != std::string_view::npos) {
        const std::string_view decimals = text.substr(point + 1);
        if (digits.empty() || decimals.empty() || decimals.size() > 6) return std::nullopt;
        digits += decimals;
        for (std::size_t i = 0; i < decimals.size(); ++i) denominator *= 10;
    }
    const auto numerator = termIn(digits);
    return numerator.has_value() ? std::optional(FrameRate{*numerator, denominator}) : std::nullopt;
}

std::optional<FrameRate> rateIn(std::string_view text) {
    for (const NamedRate& known : ntscRates) {
        if (known.text == text) return known.rate;
    }
    const std::size_t slash = text.find('/');
    if (slash == std::string_view::npos) return decimalIn(text);
    const auto numerator = termIn(text.substr(0, slash));
    const auto denominator = termIn(text.substr(slash + 1));
    if (!numerator.has_value() || !denominator.has_value()) return std::nullopt;
    return FrameRate{*numerator, *denominator};
}

template<class Value>
void complete(std::optional<Value>& value, const std::optional<Value>& other) {
    if (!value.has_value()) value = other;
}

} // namespace

FrameRate parseFrameRate(std::string_view text, const std::string& option) {
    const auto rate = rateIn(text);
    if (rate.has_value() && rate->numerator <= maximumRate * rate->denominator) {
        const std::int64_t common = std::gcd(rate->numerator, rate->denominator);
        return {rate->numerator / common, rate->denominator / common};
    }
    throw UsageError(option + ": '" + std::string(text) +
                     "' is no number of frames per second above 0 and up to " + std::to_string(maximumRate) +
                     "; give one such as 25, 23.976 or 30000/1001");
}

std::string textOf(FrameRate rate) {
    return std::to_string(rate.numerator) +
           (rate.denominator == 1 ? "" : "/" + std::to_string(rate.denominator));
}

double parseDuration(std::string_view text, const std::string& option) {
    double seconds = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), seconds);
    const bool isNumber = failure == std::errc() && end == text.data() + text.size();
    if (isNumber && seconds >= 0 && seconds <= maximumDuration) return seconds;
    throw UsageError(option + ": '" + std::string(text) + "' is not a number of seconds from 0 to 86400");
}

PixelSize parseFrameSize(std::string_view text, const std::string& option) {
    const PixelSize size = parseWholeSize(text, option);
    if (std::max(size.width, size.height) <= maximumFrameSide) return size;
    throw UsageError(option + ": '" + std::string(text) +
                     "' is too large for a frame; each side takes at most " +
                     std::to_string(maximumFrameSide) + " pixels");
}

Platform::NSColor parseOpaqueColor(const std::string& text, const std::string& option) {
    const Platform::NSColor color = parseColor(text, option);
    if (color.alphaComponent() >= 1) return color;
    throw UsageError(option + ": '" + text +
                     "' lets something through, which a film cannot; give an opaque colour");
}

std::uint64_t parseSeed(std::string_view text, const std::string& option) {
    return static_cast<std::uint64_t>(parseNumber(text, option, 0, std::numeric_limits<std::int64_t>::max()));
}

ShowSettings ShowSettings::completedBy(const ShowSettings& others) const {
    ShowSettings all = *this;
    complete(all.size, others.size);
    complete(all.rate, others.rate);
    complete(all.background, others.background);
    complete(all.fit, others.fit);
    complete(all.hold, others.hold);
    complete(all.transition, others.transition);
    complete(all.duration, others.duration);
    complete(all.easing, others.easing);
    complete(all.loop, others.loop);
    complete(all.asStored, others.asStored);
    complete(all.seed, others.seed);
    return all;
}

Show makeShow(const ShowSettings& settings, const std::vector<ShowEntry>& entries) {
    Show show;
    show.size = settings.size.value_or(show.size);
    const FrameRate rate = settings.rate.value_or(FrameRate{show.rateNumerator, show.rateDenominator});
    show.rateNumerator = rate.numerator;
    show.rateDenominator = rate.denominator;
    show.background = settings.background.value_or(show.background);
    show.loop = settings.loop.value_or(show.loop);
    show.asStored = settings.asStored.value_or(show.asStored);
    const TransitionChoice choice = parseTransitionChoice(settings.transition.value_or("dissolve"),
                                                          "--transition", settings.seed.value_or(1));
    for (const ShowEntry& entry : entries) {
        ShowPicture picture;
        picture.name = entry.name;
        picture.steps = entry.steps;
        picture.hold = entry.hold.value_or(settings.hold.value_or(picture.hold));
        picture.fit = entry.fit.value_or(settings.fit.value_or(picture.fit));
        ShowTransition& next = picture.next;
        next.transition = entry.transition.has_value() ? *entry.transition : choice.at(show.pictures.size());
        next.duration = entry.duration.value_or(settings.duration.value_or(next.duration));
        next.easing = entry.easing.value_or(settings.easing.value_or(next.easing));
        show.pictures.push_back(std::move(picture));
    }
    return show;
}

} // namespace Imaging::Tool
