// From a bitmap's profile to sRGB, against the colorimetry that the profiles state.
// Also tests: Platform/Graphics/Pictures/BitmapRows.cpp

#include "Platform/Pixels/Rows/ColorConversion.h"

#include "Platform/Graphics/Pictures/BitmapRows.h"
#include "Tests/Platform/Graphics/DrawnPictures.h"

#include <gtest/gtest.h>
#include <lcms2.h>

#include <array>
#include <cmath>
#include <optional>
#include <thread>

using namespace Imaging::Platform;
using namespace Pixels;

namespace {

using Vector = std::array<double, 3>;
using Matrix = std::array<Vector, 3>; // rows

struct Chromaticity {
    double x;
    double y;
};

/// An RGB colour space by its primaries, all with the white point D65.
struct Primaries {
    Chromaticity red;
    Chromaticity green;
    Chromaticity blue;
};

constexpr Chromaticity d65{0.3127, 0.3290};
constexpr Primaries ofSRGB{{0.64, 0.33}, {0.30, 0.60}, {0.15, 0.06}};
constexpr Primaries ofDisplayP3{{0.680, 0.320}, {0.265, 0.690}, {0.150, 0.060}};
constexpr Primaries ofAdobeRGB{{0.64, 0.33}, {0.21, 0.71}, {0.15, 0.06}};

Vector times(const Matrix& m, const Vector& v) {
    Vector result{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) result[i] += m[i][j] * v[j];
    }
    return result;
}

Matrix inverseOf(const Matrix& m) {
    const auto minor = [&](std::size_t i, std::size_t j) {
        return m[(i + 1) % 3][(j + 1) % 3] * m[(i + 2) % 3][(j + 2) % 3] -
               m[(i + 1) % 3][(j + 2) % 3] * m[(i + 2) % 3][(j + 1) % 3];
    };
    const double determinant = m[0][0] * minor(0, 0) + m[0][1] * minor(0, 1) + m[0][2] * minor(0, 2);
    Matrix result{};
    for (std::size_t i = 0; i < 3; ++i) {
        for (std::size_t j = 0; j < 3; ++j) result[j][i] = minor(i, j) / determinant;
    }
    return result;
}

/// Linear RGB to XYZ: the primaries scaled so that together they are the white point.
Matrix toXYZ(const Primaries& p) {
    Matrix m{};
    const std::array<Chromaticity, 3> all = {p.red, p.green, p.blue};
    for (std::size_t j = 0; j < 3; ++j) {
        m[0][j] = all[j].x / all[j].y;
        m[1][j] = 1;
        m[2][j] = (1 - all[j].x - all[j].y) / all[j].y;
    }
    const Vector white{d65.x / d65.y, 1, (1 - d65.x - d65.y) / d65.y};
    const Vector scale = times(inverseOf(m), white);
    for (Vector& row : m) {
        for (std::size_t j = 0; j < 3; ++j) row[j] *= scale[j];
    }
    return m;
}

double linearOfSRGB(double v) { return v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4); }
double encodedSRGB(double v) {
    const double c = std::clamp(v, 0.0, 1.0);
    return c <= 0.0031308 ? c * 12.92 : 1.055 * std::pow(c, 1 / 2.4) - 0.055;
}

/// What a colour becomes in sRGB, 0 to 255, beyond its gamut the nearest that each sample can be.
Vector inSRGB(const Primaries& primaries, std::optional<double> gamma, const Vector& color) {
    Vector linear{};
    for (std::size_t i = 0; i < 3; ++i) {
        linear[i] = gamma.has_value() ? std::pow(color[i] / 255, *gamma) : linearOfSRGB(color[i] / 255);
    }
    const Vector result = times(inverseOf(toXYZ(ofSRGB)), times(toXYZ(primaries), linear));
    return {encodedSRGB(result[0]) * 255, encodedSRGB(result[1]) * 255, encodedSRGB(result[2]) * 255};
}

NSData saved(cmsHPROFILE profile) {
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    NSData bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

cmsToneCurve* curveOfSRGB() {
    const cmsFloat64Number parameters[5] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    return cmsBuildParametricToneCurve(nullptr, 4, parameters);
}

/// A matrix profile; without a gamma, with sRGB's own curve.
NSData rgbProfile(const Primaries& primaries, std::optional<double> gamma = std::nullopt) {
    cmsToneCurve* const curve = gamma.has_value() ? cmsBuildGamma(nullptr, *gamma) : curveOfSRGB();
    cmsToneCurve* curves[3] = {curve, curve, curve};
    const cmsCIExyY white{d65.x, d65.y, 1};
    const cmsCIExyYTRIPLE all{{primaries.red.x, primaries.red.y, 1},
                              {primaries.green.x, primaries.green.y, 1},
                              {primaries.blue.x, primaries.blue.y, 1}};
    const cmsHPROFILE profile = cmsCreateRGBProfile(&white, &all, curves);
    cmsFreeToneCurve(curve);
    return saved(profile);
}

NSData grayProfile(double gamma) {
    cmsToneCurve* const curve = cmsBuildGamma(nullptr, gamma);
    const cmsHPROFILE profile = cmsCreateGrayProfile(cmsD50_xyY(), curve);
    cmsFreeToneCurve(curve);
    return saved(profile);
}

/// What the ink table below makes of inks from 0 to 1: light that is left, without hue, in L* of 0 to 100.
double lightnessLeft(const std::array<double, 4>& inks) {
    return 100 * (1 - inks[3]) * (1 - (inks[0] + inks[1] + inks[2]) / 6);
}

cmsInt32Number sampleInks(const cmsUInt16Number in[], cmsUInt16Number out[], void*) {
    const cmsCIELab lab{lightnessLeft({in[0] / 65535.0, in[1] / 65535.0, in[2] / 65535.0, in[3] / 65535.0}),
                        0, 0};
    cmsFloat2LabEncoded(out, &lab);
    return 1;
}

/// An output profile for four inks whose table follows `lightnessLeft`.
NSData inkProfile() {
    const cmsHPROFILE profile = cmsCreateProfilePlaceholder(nullptr);
    cmsSetProfileVersion(profile, 4.3);
    cmsSetDeviceClass(profile, cmsSigOutputClass);
    cmsSetColorSpace(profile, cmsSigCmykData);
    cmsSetPCS(profile, cmsSigLabData);
    cmsWriteTag(profile, cmsSigMediaWhitePointTag, cmsD50_XYZ());
    cmsPipeline* const pipeline = cmsPipelineAlloc(nullptr, 4, 3);
    cmsStage* const table = cmsStageAllocCLut16bit(nullptr, 9, 4, 3, nullptr);
    cmsStageSampleCLut16bit(table, sampleInks, nullptr, 0);
    cmsPipelineInsertStage(pipeline, cmsAT_BEGIN, cmsStageAllocToneCurves(nullptr, 4, nullptr));
    cmsPipelineInsertStage(pipeline, cmsAT_END, table);
    cmsPipelineInsertStage(pipeline, cmsAT_END, cmsStageAllocToneCurves(nullptr, 3, nullptr));
    cmsWriteTag(profile, cmsSigAToB0Tag, pipeline);
    cmsWriteTag(profile, cmsSigAToB1Tag, pipeline);
    cmsPipelineFree(pipeline);
    return saved(profile);
}

/// The gray in sRGB of a lightness, whatever the white point is adapted to.
double grayOfLightness(double lightness) {
    const double f = (lightness + 16) / 116;
    const double y = f > 6.0 / 29 ? f * f * f : 3 * 6.0 / 29 * 6.0 / 29 * (f - 4.0 / 29);
    return encodedSRGB(y) * 255;
}

struct BitmapOptions {
    int bits = 8;
    int samples = 3;
    bool alpha = false;
    bool planar = false;
    std::string_view space = NSCalibratedRGBColorSpace;
    unsigned format = 0;
};

/// A bitmap of pixels in a row, each given by its stored samples.
std::shared_ptr<NSBitmapImageRep> bitmapOfSamples(const BitmapOptions& options,
                                                  const std::vector<std::array<std::uint16_t, 5>>& pixels,
                                                  const std::optional<NSData>& profile) {
    NSBitmapDescription description;
    description.pixelsWide = static_cast<std::int64_t>(pixels.size());
    description.pixelsHigh = 1;
    description.bitsPerSample = options.bits;
    description.samplesPerPixel = options.samples;
    description.hasAlpha = options.alpha;
    description.isPlanar = options.planar;
    description.colorSpaceName = options.space;
    description.bitmapFormat = options.format;
    auto bitmap = NSBitmapImageRep::bitmapWithDescription(description);
    for (std::size_t x = 0; x < pixels.size(); ++x) {
        bitmap->setPixelAt(static_cast<std::int64_t>(x), 0, pixels[x]);
    }
    if (profile.has_value()) bitmap->setProperty(NSImageColorSyncProfileData, *profile);
    return bitmap;
}

/// What is drawn of a bitmap at its own size.
Grid drawn(const std::shared_ptr<NSBitmapImageRep>& bitmap) {
    const auto width = static_cast<int>(bitmap->pixelsWide());
    NSImage image(NSMakeSize(static_cast<float>(width), 1));
    image.addRepresentation(bitmap);
    return shownBy(image, width, 1);
}

void expectNear(Rgba actual, const Vector& expected, double tolerance, const std::string& what) {
    EXPECT_NEAR(actual.r, expected[0], tolerance) << what;
    EXPECT_NEAR(actual.g, expected[1], tolerance) << what;
    EXPECT_NEAR(actual.b, expected[2], tolerance) << what;
}

std::uint16_t wide(double v) { return static_cast<std::uint16_t>(std::lround(v * 257)); }
std::uint16_t narrow(double v) { return static_cast<std::uint16_t>(std::lround(v)); }

/// Colours all over a space's gamut.
std::vector<Vector> manyColors() {
    std::vector<Vector> colors;
    for (const double r : {0.0, 21.0, 94.0, 180.0, 255.0}) {
        for (const double g : {0.0, 30.0, 128.0, 255.0}) {
            for (const double b : {0.0, 64.0, 201.0, 255.0}) colors.push_back({r, g, b});
        }
    }
    return colors;
}

} // namespace

TEST(ColorConversion, TheReferenceArithmeticOfTheseTestsKnowsTheRedOfDisplayP3) {
    const Vector shown = inSRGB(ofDisplayP3, std::nullopt, {232, 51, 34});
    EXPECT_NEAR(shown[0], 253, 1);
    EXPECT_NEAR(shown[1], 2, 1);
    EXPECT_NEAR(shown[2], 1, 1);
}

TEST(ColorConversion, TheRedOfDisplayP3IsDrawnAsItsSRGB) {
    const NSData profile = rgbProfile(ofDisplayP3);
    const Vector expected{253, 2, 1};
    const Rgba narrowSamples = drawn(bitmapOfSamples({}, {{232, 51, 34}}, profile)).at(0, 0);
    expectNear(narrowSamples, expected, 1, "8 bits");
    EXPECT_EQ(narrowSamples.a, 255);
    expectNear(drawn(bitmapOfSamples({.bits = 16}, {{wide(232), wide(51), wide(34)}}, profile)).at(0, 0),
               expected, 1, "16 bits");
    expectNear(drawn(bitmapOfSamples({.planar = true}, {{232, 51, 34}}, profile)).at(0, 0), expected, 1,
               "planar");
}

TEST(ColorConversion, ColoursWithAlphaAreConvertedBeforeTheyAreMultipliedByIt) {
    // Samples of 8 bits are rounded when they are multiplied and again when they are divided by the alpha.
    constexpr double tolerance = 1.5;
    const NSData profile = rgbProfile(ofDisplayP3);
    for (const int alpha : {255, 200, 128, 60}) {
        const double part = alpha / 255.0;
        const std::string what = "alpha " + std::to_string(alpha);
        const Vector color{200, 90, 140};
        Vector expected = inSRGB(ofDisplayP3, std::nullopt, color);
        for (double& sample : expected) sample *= part;
        const auto a = static_cast<std::uint16_t>(alpha);
        const auto check = [&](const BitmapOptions& options, std::array<std::uint16_t, 5> pixel) {
            const Rgba shown = drawn(bitmapOfSamples(options, {pixel}, profile)).at(0, 0);
            expectNear(shown, expected, options.bits == 8 ? tolerance : 1,
                       what + ", " + std::to_string(options.bits) + " bits");
            EXPECT_EQ(shown.a, alpha);
        };
        check({.samples = 4, .alpha = true}, {narrow(200 * part), narrow(90 * part), narrow(140 * part), a});
        check({.samples = 4, .alpha = true, .format = NSAlphaNonpremultipliedBitmapFormat},
              {200, 90, 140, a});
        check({.samples = 4, .alpha = true, .format = NSAlphaFirstBitmapFormat},
              {a, narrow(200 * part), narrow(90 * part), narrow(140 * part)});
        check({.bits = 16, .samples = 4, .alpha = true, .planar = true},
              {wide(200 * part), wide(90 * part), wide(140 * part), wide(alpha)});
    }
    const auto clear = bitmapOfSamples({.samples = 4, .alpha = true}, {{0, 0, 0, 0}}, profile);
    EXPECT_EQ(drawn(clear).at(0, 0), transparent);
}

TEST(ColorConversion, EveryColourOfAWideSpaceIsWhatItsMatrixSays) {
    struct Space {
        std::string name;
        Primaries primaries;
        std::optional<double> gamma;
    };
    double worst = 0;
    for (const Space& space :
         {Space{"P3", ofDisplayP3, std::nullopt}, Space{"wide green", ofAdobeRGB, 2.2}}) {
        const std::vector<Vector> colors = manyColors();
        std::vector<std::array<std::uint16_t, 5>> pixels;
        for (const Vector& c : colors) pixels.push_back({narrow(c[0]), narrow(c[1]), narrow(c[2])});
        const Grid shown = drawn(bitmapOfSamples({}, pixels, rgbProfile(space.primaries, space.gamma)));
        for (std::size_t i = 0; i < colors.size(); ++i) {
            const Vector expected = inSRGB(space.primaries, space.gamma, colors[i]);
            const Rgba actual = shown.at(static_cast<int>(i), 0);
            expectNear(actual, expected, 1, space.name + " pixel " + std::to_string(i));
            worst = std::max({worst, std::abs(actual.r - expected[0]), std::abs(actual.g - expected[1]),
                              std::abs(actual.b - expected[2])});
        }
    }
    RecordProperty("largest_error", std::to_string(worst));
}

TEST(ColorConversion, GrayOfAnotherGammaBecomesTheGrayThatLooksTheSame) {
    std::vector<std::array<std::uint16_t, 5>> pixels;
    for (int v = 0; v < 256; ++v) pixels.push_back({static_cast<std::uint16_t>(v)});
    const BitmapOptions options{.samples = 1, .space = NSCalibratedWhiteColorSpace};
    const Grid shown = drawn(bitmapOfSamples(options, pixels, grayProfile(1.8)));
    for (int v = 0; v < 256; ++v) {
        const double gray = encodedSRGB(std::pow(v / 255.0, 1.8)) * 255;
        expectNear(shown.at(v, 0), {gray, gray, gray}, 1, "gray " + std::to_string(v));
    }
    const BitmapOptions withAlpha{.samples = 2, .alpha = true, .space = NSCalibratedWhiteColorSpace};
    const double half = encodedSRGB(std::pow(200 / 255.0, 1.8)) * 128;
    expectNear(drawn(bitmapOfSamples(withAlpha, {{100, 128}}, grayProfile(1.8))).at(0, 0), {half, half, half},
               1.5, "gray with alpha");
}

TEST(ColorConversion, InksFollowTheirTable) {
    const NSData profile = inkProfile();
    const std::vector<std::array<std::uint16_t, 5>> inks = {
        {0, 0, 0, 0}, {0, 0, 0, 255}, {255, 0, 0, 0}, {0, 255, 255, 0}, {255, 255, 255, 0}, {128, 0, 64, 96}};
    for (const int bits : {8, 16}) {
        for (const bool planar : {false, true}) {
            std::vector<std::array<std::uint16_t, 5>> pixels = inks;
            for (auto& pixel : pixels) {
                for (std::uint16_t& sample : pixel) sample = bits == 16 ? wide(sample) : sample;
            }
            const BitmapOptions options{
                .bits = bits, .samples = 4, .planar = planar, .space = NSDeviceCMYKColorSpace};
            const Grid shown = drawn(bitmapOfSamples(options, pixels, profile));
            for (std::size_t i = 0; i < inks.size(); ++i) {
                const double gray = grayOfLightness(lightnessLeft(
                    {inks[i][0] / 255.0, inks[i][1] / 255.0, inks[i][2] / 255.0, inks[i][3] / 255.0}));
                expectNear(shown.at(static_cast<int>(i), 0), {gray, gray, gray}, 2,
                           "inks " + std::to_string(i) + ", " + std::to_string(bits) + " bits");
            }
        }
    }
}

TEST(ColorConversion, TheProfileOfSRGBChangesNothing) {
    Random random(361);
    std::vector<std::array<std::uint16_t, 5>> pixels;
    for (int i = 0; i < 2000; ++i) {
        const Rgba p = random.pixel();
        pixels.push_back({p.r, p.g, p.b, p.a});
    }
    const BitmapOptions options{.samples = 4, .alpha = true};
    const Grid plain = drawn(bitmapOfSamples(options, pixels, std::nullopt));
    EXPECT_TRUE(areAlike(drawn(bitmapOfSamples(options, pixels, rgbProfile(ofSRGB))), plain));
    EXPECT_TRUE(areAlike(drawn(bitmapOfSamples(options, pixels, saved(cmsCreate_sRGBProfile()))), plain));
    EXPECT_EQ(ColorConversion::toSRGB(rgbProfile(ofSRGB), ColorConversion::Samples::RGB), nullptr);
    EXPECT_NE(ColorConversion::toSRGB(rgbProfile(ofDisplayP3), ColorConversion::Samples::RGB), nullptr);
}

TEST(ColorConversion, ProfilesThatDoNotFitOrCannotBeReadAreIgnored) {
    const std::vector<std::array<std::uint16_t, 5>> pixels = {{232, 51, 34}, {1, 2, 3}, {255, 128, 0}};
    const Grid plain = drawn(bitmapOfSamples({}, pixels, std::nullopt));
    const NSData good = rgbProfile(ofDisplayP3);
    EXPECT_FALSE(areAlike(drawn(bitmapOfSamples({}, pixels, good)), plain));
    for (const NSData& profile : {grayProfile(1.8), inkProfile(), NSData{}, NSData(3000, 0x41)}) {
        EXPECT_TRUE(areAlike(drawn(bitmapOfSamples({}, pixels, profile)), plain)) << profile.size();
    }
    const BitmapOptions gray{.samples = 1, .space = NSCalibratedWhiteColorSpace};
    EXPECT_TRUE(areAlike(drawn(bitmapOfSamples(gray, {{77}}, good)), Grid(1, 1, {77, 77, 77, 255})));
}

TEST(ColorConversion, BrokenProfilesNeverDoHarm) {
    Random random(362);
    const std::vector<std::array<std::uint16_t, 5>> pixels = {{232, 51, 34}};
    for (const NSData& good : {rgbProfile(ofDisplayP3), rgbProfile(ofAdobeRGB, 2.2)}) {
        for (std::size_t length = 0; length < good.size(); length += 23) {
            const NSData part(good.begin(), good.begin() + static_cast<std::ptrdiff_t>(length));
            EXPECT_EQ(drawn(bitmapOfSamples({}, pixels, part)).at(0, 0).a, 255);
        }
        for (int round = 0; round < 60; ++round) {
            NSData changed = good;
            for (int i = random.integer(1, 6); i > 0; --i) {
                changed[static_cast<std::size_t>(random.integer(0, static_cast<int>(good.size()) - 1))] =
                    static_cast<std::uint8_t>(random.integer(0, 255));
            }
            EXPECT_EQ(drawn(bitmapOfSamples({}, pixels, changed)).at(0, 0).a, 255);
        }
    }
}

TEST(ColorConversion, HappensOnceForManyDraws) {
    // What is drawn later does not follow the bitmap, so it cannot have been converted again.
    const auto bitmap = bitmapOfSamples({}, {{232, 51, 34}}, rgbProfile(ofDisplayP3));
    NSImage image(NSMakeSize(1, 1));
    image.addRepresentation(bitmap);
    const Grid first = shownBy(image, 1, 1);
    expectNear(first.at(0, 0), {253, 2, 1}, 1, "first");
    bitmap->setPixelAt(0, 0, {0, 0, 0});
    EXPECT_TRUE(areAlike(shownBy(image, 1, 1), first));
    EXPECT_EQ(bitmap->valueForProperty(NSImageColorSyncProfileData).has_value(), true);
    image.recache();
    expectNear(shownBy(image, 1, 1).at(0, 0), {0, 0, 0}, 0, "after recache");
}

TEST(ColorConversion, LevelsAndBandsAreConvertedToo) {
    NSBitmapDescription description;
    description.pixelsWide = 640;
    description.pixelsHigh = 480;
    description.samplesPerPixel = 3;
    description.hasAlpha = false;
    const auto bitmap = NSBitmapImageRep::bitmapWithDescription(description);
    for (int y = 0; y < 480; ++y) {
        for (int x = 0; x < 640; ++x) bitmap->setPixelAt(x, y, {232, 51, 34});
    }
    bitmap->setProperty(NSImageColorSyncProfileData, rgbProfile(ofDisplayP3));
    NSImage image(NSMakeSize(640, 480));
    image.addRepresentation(bitmap);
    for (const auto& [width, height] : std::vector<std::pair<int, int>>{{80, 60}, {640, 480}, {213, 160}}) {
        const Grid shown = shownBy(image, width, height);
        expectNear(shown.at(0, 0), {253, 2, 1}, 1, "the first pixel");
        EXPECT_TRUE(areAlike(shown, Grid(width, height, shown.at(0, 0))));
    }
}
