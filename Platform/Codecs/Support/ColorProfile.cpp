#include "Platform/Codecs/Support/CodecSupport.h"

#include <lcms2.h>
#include <lcms2_plugin.h>

#include <algorithm>
#include <cstdlib>
#include <limits>

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

struct CloseProfile {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, CloseProfile>;

/// A table of colours may claim half a gigabyte in a profile of a hundred bytes, and lcms2 takes it before it
/// sees that the bytes are not there. No allocation is larger than this, plus the widening of bytes to
/// floats.
constexpr std::uint64_t uncountedProfileMemory = 4U << 20;

/// A context takes its own memory before it has user data.
std::uint64_t limitOf(cmsContext context) {
    const auto* limit = static_cast<const std::uint64_t*>(cmsGetContextUserData(context));
    return limit == nullptr ? uncountedProfileMemory : *limit;
}

void* limitedMalloc(cmsContext context, cmsUInt32Number size) {
    return size > limitOf(context) ? nullptr : std::malloc(size);
}

void limitedFree(cmsContext, void* memory) { std::free(memory); }

void* limitedRealloc(cmsContext context, void* memory, cmsUInt32Number size) {
    return size > limitOf(context) ? nullptr : std::realloc(memory, size);
}

struct DeleteContext {
    void operator()(cmsContext context) const { cmsDeleteContext(context); }
};
using Context = std::unique_ptr<std::remove_pointer_t<cmsContext>, DeleteContext>;

Context limitedContext(std::uint64_t& limit) {
    cmsPluginMemHandler memory{};
    memory.base = {cmsPluginMagicNumber, LCMS_VERSION, cmsPluginMemHandlerSig, nullptr};
    memory.MallocPtr = limitedMalloc;
    memory.FreePtr = limitedFree;
    memory.ReallocPtr = limitedRealloc;
    return Context(cmsCreateContext(&memory, &limit));
}

/// lcms2 writes the time of making, which would make every file differ from the last one.
NSData savedProfile(const Profile& profile) {
    cmsUInt32Number size = 0;
    if (profile == nullptr || cmsSaveProfileToMem(profile.get(), nullptr, &size) == 0) throw std::bad_alloc();
    NSData bytes(size);
    if (cmsSaveProfileToMem(profile.get(), bytes.data(), &size) == 0) throw std::bad_alloc();
    constexpr std::uint8_t time[] = {0x07, 0xe8, 0, 1, 0, 1,
                                     0,    0,    0, 0, 0, 0}; // 2024-01-01 (ICC.1:2010, 4.2)
    std::copy(std::begin(time), std::end(time), bytes.begin() + 24);
    return bytes;
}

void writeText(const Profile& profile, cmsTagSignature tag, const char* text) {
    const std::unique_ptr<cmsMLU, void (*)(cmsMLU*)> words(cmsMLUalloc(nullptr, 1), cmsMLUfree);
    cmsMLUsetASCII(words.get(), "en", "US", text);
    cmsWriteTag(profile.get(), tag, words.get());
}

NSData makeStandardProfile(SampleColor color) {
    if (color == SampleColor::RGB) {
        const Profile profile(cmsCreate_sRGBProfile());
        if (profile != nullptr) writeText(profile, cmsSigProfileDescriptionTag, "sRGB IEC61966-2.1");
        return savedProfile(profile);
    }
    // The parts of the curve of sRGB (IEC 61966-2-1): ((x + 0.055) / 1.055)^2.4, and x / 12.92 below 0.04045.
    const cmsFloat64Number parameters[] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    const std::unique_ptr<cmsToneCurve, void (*)(cmsToneCurve*)> curve(
        cmsBuildParametricToneCurve(nullptr, 4, parameters), cmsFreeToneCurve);
    const Profile profile(cmsCreateGrayProfile(cmsD50_xyY(), curve.get()));
    if (profile != nullptr) writeText(profile, cmsSigProfileDescriptionTag, "Gray with the sRGB curve");
    return savedProfile(profile);
}

} // namespace

bool convertsColors(ByteView bytes, SampleColor color) {
    if (bytes.size() > std::numeric_limits<cmsUInt32Number>::max()) return false;
    std::uint64_t limit = uncountedProfileMemory + std::uint64_t{bytes.size()} * 4;
    const Context context = limitedContext(limit);
    if (context == nullptr) throw std::bad_alloc();
    const auto size = static_cast<cmsUInt32Number>(bytes.size());
    const Profile from(cmsOpenProfileFromMemTHR(context.get(), bytes.data(), size));
    const Profile to(cmsCreate_sRGBProfileTHR(context.get()));
    if (from == nullptr || to == nullptr) return false;
    const cmsUInt32Number samples = color == SampleColor::RGB ? TYPE_RGB_8 : TYPE_GRAY_8;
    const std::unique_ptr<void, void (*)(cmsHTRANSFORM)> conversion(
        cmsCreateTransformTHR(context.get(), from.get(), samples, to.get(), TYPE_RGB_8, INTENT_PERCEPTUAL,
                              cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE),
        cmsDeleteTransform);
    return conversion != nullptr;
}

const NSData& standardProfile(SampleColor color) {
    // Never destroyed, so that static objects may encode pictures while they are destroyed.
    static const NSData& rgb = *new NSData(makeStandardProfile(SampleColor::RGB));
    static const NSData& gray = *new NSData(makeStandardProfile(SampleColor::White));
    return color == SampleColor::RGB ? rgb : gray;
}

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
