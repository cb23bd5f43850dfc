#include "Tests/Platform/Codecs/CodecFixtures.h"

#include <gtest/gtest.h>
#include <lcms2.h>

#include <algorithm>

namespace Platform {

namespace {

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

} // namespace

} // namespace Platform
