// Also tests: Platform/Codecs/ColorProfileName.cpp

#include "Platform/Codecs/Support/ColorProfile.h"
#include "Platform/Codecs/ColorProfileName.h"
#include "Tests/Platform/Codecs/CodecFixtures.h"

#include <gtest/gtest.h>
#include <lcms2.h>

#include <algorithm>

namespace Imaging::Platform {

namespace {

using namespace Fixtures;

/// A profile described by the text in American English.
NSData profileNamed(const wchar_t* text) {
    const cmsHPROFILE profile = cmsCreate_sRGBProfile();
    cmsMLU* description = cmsMLUalloc(nullptr, 1);
    cmsMLUsetWide(description, "en", "US", text);
    cmsWriteTag(profile, cmsSigProfileDescriptionTag, description);
    cmsMLUfree(description);
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    NSData bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

TEST(ColorProfile, NamesAProfileByItsDescription) {
    EXPECT_EQ(colorProfileName(profileNamed(L"Wide gamut 7")), "Wide gamut 7");
}

TEST(ColorProfile, KnowsTheNameOfTheSRGBProfileOfItsLibrary) {
    EXPECT_EQ(colorProfileName(Fixtures::sRGBProfile()), "sRGB built-in");
}

TEST(ColorProfile, GivesNamesInUTF8) {
    // One character each of two, three and four bytes; the last is a pair in the profile's UTF-16, so that
    // its text is shorter in characters than in units.
    EXPECT_EQ(colorProfileName(profileNamed(L"\u00c9\u4e2d")), "\xc3\x89\xe4\xb8\xad");
    EXPECT_EQ(colorProfileName(profileNamed(L"a\xd83d\xde00z")), "a\xf0\x9f\x98\x80z");
}

TEST(ColorProfile, HasNoNameWhereItsTextIsBroken) {
    NSData profile = profileNamed(L"a\xd83d\xde00z");
    const NSData secondHalf = {0xde, 0x00};
    const auto found = std::search(profile.begin(), profile.end(), secondHalf.begin(), secondHalf.end());
    ASSERT_NE(found, profile.end());
    found[0] = 0; // a letter instead of a pair's second half
    found[1] = 'B';
    EXPECT_EQ(colorProfileName(profile), "");
}

TEST(ColorProfile, HasNoNameForBytesThatAreNoProfile) {
    EXPECT_EQ(colorProfileName({}), "");
    EXPECT_EQ(colorProfileName(NSData(200, 7)), "");
    const NSData whole = Fixtures::sRGBProfile();
    EXPECT_EQ(colorProfileName(ByteView(whole).first(100)), "");
}

TEST(StandardProfile, IsTheSameEveryTimeAndNamed) {
    EXPECT_EQ(colorProfileName(standardProfile(SampleColor::RGB)), "sRGB IEC61966-2.1");
    EXPECT_EQ(colorProfileName(standardProfile(SampleColor::White)), "Gray with the sRGB curve");
    EXPECT_EQ(standardProfile(SampleColor::Black), standardProfile(SampleColor::White));
    EXPECT_EQ(matchingProfile(standardProfile(SampleColor::RGB), SampleColor::RGB),
              standardProfile(SampleColor::RGB));
}

TEST(StandardProfile, GoesIntoFilesOfPicturesThatHaveNone) {
    const SourcePicture rgb(2, 1, 8, SampleColor::RGB, false, {1, 2, 3, 4, 5, 6});
    const SourcePicture gray(2, 1, 8, SampleColor::White, false, {1, 2});
    for (const char* format : {"TIFF", "JPEG"}) {
        EXPECT_EQ(readHeader(format, encode(format, rgb)).colorProfile, standardProfile(SampleColor::RGB));
        EXPECT_EQ(readHeader(format, encode(format, gray)).colorProfile, standardProfile(SampleColor::White));
    }
    const NSData chunk = {'s', 'R', 'G', 'B'};
    for (const SourcePicture* picture : {&rgb, &gray}) {
        const NSData png = encode("PNG", *picture);
        EXPECT_NE(std::search(png.begin(), png.end(), chunk.begin(), chunk.end()), png.end());
    }
}

TEST(MatchingProfile, LeavesOutProfilesThatLie) {
    const NSData honest = sRGBProfile();
    EXPECT_EQ(matchingProfile(honest, SampleColor::RGB), honest);
    EXPECT_TRUE(matchingProfile(honest, SampleColor::White).empty());
    EXPECT_TRUE(matchingProfile(profileStub("CMYK"), SampleColor::RGB).empty());
    // Gray samples, says the header, and the tags are those of RGB.
    EXPECT_TRUE(matchingProfile(profileStub("GRAY"), SampleColor::White).empty());
    EXPECT_TRUE(matchingProfile(ByteView(honest).first(200), SampleColor::RGB).empty());
    // The list of tags claims more than there can be.
    NSData many = honest;
    std::fill_n(many.begin() + 128, 4, std::uint8_t{0xff});
    EXPECT_TRUE(matchingProfile(many, SampleColor::RGB).empty());
}

TEST(MatchingProfile, IsNotFooledByATableThatWouldTakeHalfAGigabyte) {
    // A device profile with one tag: a table of 16 bits with 200 points for each of three colours, and no
    // points.
    NSData profile = sRGBProfile();
    profile.resize(128);
    const auto number = [&](std::uint32_t value) {
        for (int shift = 24; shift >= 0; shift -= 8)
            profile.push_back(static_cast<std::uint8_t>(value >> shift));
    };
    number(1);
    number(0x41324230); // "A2B0"
    number(144);
    number(60);
    number(0x6d667432); // "mft2"
    number(0);
    number(3U << 24 | 3U << 16 | 200U << 8);                    // inputs, outputs, points
    for (int i = 0; i < 9; ++i) number(i % 4 == 0 ? 65536 : 0); // the identity
    number(2U << 16 | 2);                                       // entries of the curves
    number(0x0000ffff);
    std::fill_n(profile.begin(), 2, std::uint8_t{0});
    profile[2] = static_cast<std::uint8_t>(profile.size() >> 8);
    profile[3] = static_cast<std::uint8_t>(profile.size());
    EXPECT_TRUE(matchingProfile(profile, SampleColor::RGB).empty());
}

} // namespace

} // namespace Imaging::Platform
