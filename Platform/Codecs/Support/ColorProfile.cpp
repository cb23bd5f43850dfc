// Profiles by way of lcms2, which is told apart from its memory: a profile of a hundred bytes may claim half
// a gigabyte.

#include "Platform/Codecs/Support/ColorProfile.h"

#include <lcms2.h>
#include <lcms2_plugin.h>

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace Imaging::Platform {

namespace {

// Offsets of fields in the header of an ICC profile (ICC.1:2010, 7.2).
constexpr std::size_t profileHeaderSize = 128;
constexpr std::size_t profileColorSpace = 16;
constexpr std::size_t profileTime = 24;
constexpr std::size_t profileSignature = 36;

bool hasFourLetters(ByteView bytes, std::size_t offset, std::string_view letters) {
    return std::equal(letters.begin(), letters.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
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
    std::copy(std::begin(time), std::end(time), bytes.begin() + profileTime);
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

NSData matchingProfile(ByteView profile, SampleColor color) {
    if (profile.size() < profileHeaderSize || !hasFourLetters(profile, profileSignature, "acsp")) return {};
    const std::string_view space = color == SampleColor::RGB ? "RGB " : "GRAY";
    if (!hasFourLetters(profile, profileColorSpace, space) || !convertsColors(profile, color)) return {};
    return {profile.begin(), profile.end()};
}

const NSData& standardProfile(SampleColor color) {
    // Never destroyed, so that static objects may encode pictures while they are destroyed.
    static const NSData& rgb = *new NSData(makeStandardProfile(SampleColor::RGB));
    static const NSData& gray = *new NSData(makeStandardProfile(SampleColor::White));
    return color == SampleColor::RGB ? rgb : gray;
}

NSData profileToWrite(const PictureHeader& header) {
    NSData own = matchingProfile(header.colorProfile, header.color);
    return own.empty() ? standardProfile(header.color) : own;
}

NSData rgbProfileToWrite(const PictureHeader& header) {
    if (header.color == SampleColor::RGB) return profileToWrite(header);
    const bool hasOwn = !matchingProfile(header.colorProfile, header.color).empty();
    return hasOwn ? NSData() : standardProfile(SampleColor::RGB);
}

} // namespace Imaging::Platform
