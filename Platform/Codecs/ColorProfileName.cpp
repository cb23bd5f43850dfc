// The name of a profile: lcms2 finds the text, and its wide characters become UTF-8 here.

#include "Platform/Codecs/ColorProfileName.h"

#include <lcms2.h>

#include <limits>
#include <memory>
#include <vector>

namespace Imaging::Platform {

namespace {

void appendUtf8(std::string& text, std::uint32_t character) {
    const auto append = [&](std::uint32_t byte) { text.push_back(static_cast<char>(byte)); };
    if (character < 0x80) {
        append(character);
    } else if (character < 0x800) {
        append(0xc0 | (character >> 6));
        append(0x80 | (character & 0x3f));
    } else if (character < 0x10000) {
        append(0xe0 | (character >> 12));
        append(0x80 | ((character >> 6) & 0x3f));
        append(0x80 | (character & 0x3f));
    } else {
        append(0xf0 | (character >> 18));
        append(0x80 | ((character >> 12) & 0x3f));
        append(0x80 | ((character >> 6) & 0x3f));
        append(0x80 | (character & 0x3f));
    }
}

/// Profiles store UTF-16. lcms2 joins its pairs to characters but leaves the length as it was, so that behind
/// the text there is something arbitrary for each pair; hence the count of units.
std::string utf8FromText(const std::vector<wchar_t>& text, std::size_t units) {
    constexpr std::uint32_t replacement = 0xfffd;
    std::string utf8;
    std::size_t used = 0;
    for (std::size_t i = 0; used < units && text[i] != 0; ++i) {
        const std::uint32_t character = static_cast<char32_t>(text[i]);
        const bool isCharacter = character <= 0x10ffff && (character < 0xd800 || character >= 0xe000);
        appendUtf8(utf8, isCharacter ? character : replacement);
        used += character < 0x10000 ? 1 : 2;
    }
    return utf8;
}

} // namespace

std::string colorProfileName(ByteView profile) {
    if (profile.size() > std::numeric_limits<cmsUInt32Number>::max()) return {};
    const auto size = static_cast<cmsUInt32Number>(profile.size());
    const std::unique_ptr<void, cmsBool (*)(cmsHPROFILE)> opened(cmsOpenProfileFromMem(profile.data(), size),
                                                                 cmsCloseProfile);
    if (opened == nullptr) return {};
    const auto describe = [&](wchar_t* text, cmsUInt32Number bytes) {
        return cmsGetProfileInfo(opened.get(), cmsInfoDescription, "en", "US", text, bytes);
    };
    const cmsUInt32Number needed = describe(nullptr, 0);
    if (needed < sizeof(wchar_t)) return {};
    std::vector<wchar_t> text(needed / sizeof(wchar_t)); // with a zero at the end
    describe(text.data(), needed);
    return utf8FromText(text, text.size() - 1);
}

} // namespace Imaging::Platform
