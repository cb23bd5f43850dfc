// Numbers for people: few digits, no sign of a zero, the same in every locale.

#include "Imaging/Words.h"

#include <array>
#include <charconv>
#include <cmath>
#include <limits>

namespace Imaging {

std::string inWords(float number) {
    if (std::fabs(number) <= std::numeric_limits<float>::min()) number = 0;
    std::array<char, 32> digits{};
    const auto [end, failure] =
        std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::general, 7);
    return {digits.data(), end};
}

std::string inWords(Platform::NSPoint point) { return inWords(point.x) + "," + inWords(point.y); }

std::string inWords(Platform::NSSize size) { return inWords(size.width) + "x" + inWords(size.height); }

std::string inWords(Platform::NSRect rect) { return inWords(rect.origin) + " " + inWords(rect.size); }

std::string inWords(const Platform::NSAffineTransform& transform) {
    const auto m = transform.transformStruct();
    std::string text;
    for (const float entry : {m.m11, m.m12, m.m21, m.m22, m.tX, m.tY}) {
        text += (text.empty() ? "" : " ") + inWords(entry);
    }
    return "[" + text + "]";
}

} // namespace Imaging
