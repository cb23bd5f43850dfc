#include "Platform/Codecs/Support/ExifOrientation.h"

#include "Tests/Platform/Codecs/CodecFixtures.h"

#include <gtest/gtest.h>

namespace Imaging::Platform {

namespace {

using namespace Fixtures;

TEST(Exif, ReadsEveryOrientationInBothByteOrders) {
    for (const bool bigEndian : {false, true}) {
        for (int orientation = 1; orientation <= 8; ++orientation) {
            EXPECT_EQ(readExif(exifRecord({bigEndian, orientation, {}, {}})).orientation, orientation);
        }
    }
}

TEST(Exif, TakesOrientationsOutOfRangeForUpright) {
    for (const int orientation : {0, 9, 255, 65535}) {
        EXPECT_EQ(readExif(exifRecord({false, orientation, {}, {}})).orientation, 1);
    }
}

TEST(Exif, ReadsResolutionInInchesAndCentimetres) {
    const ExifFacts inches = readExif(exifRecord({true, {}, {{601, 2}}, 2}));
    EXPECT_DOUBLE_EQ(inches.resolutionX, 300.5);
    EXPECT_DOUBLE_EQ(inches.resolutionY, 300.5);
    const ExifFacts centimetres = readExif(exifRecord({false, {}, {{100, 1}}, 3}));
    EXPECT_DOUBLE_EQ(centimetres.resolutionX, 254);
}

TEST(Exif, TakesResolutionWithoutAUnitAsPerInch) {
    EXPECT_DOUBLE_EQ(readExif(exifRecord({false, {}, {{96, 1}}, {}})).resolutionY, 96);
}

TEST(Exif, IgnoresResolutionsThatMakeNoSense) {
    EXPECT_EQ(readExif(exifRecord({false, {}, {{96, 0}}, 2})).resolutionX, 0);
    EXPECT_EQ(readExif(exifRecord({false, {}, {{0, 1}}, 2})).resolutionX, 0);
    EXPECT_EQ(readExif(exifRecord({false, {}, {{96, 1}}, 1})).resolutionX, 0);
}

TEST(Exif, SaysNothingThatTheRecordDoesNotSay) {
    const ExifFacts facts = readExif(exifRecord({}));
    EXPECT_EQ(facts.orientation, 1);
    EXPECT_EQ(facts.resolutionX, 0);
    EXPECT_EQ(facts.resolutionY, 0);
}

TEST(Exif, SurvivesARecordCutAnywhere) {
    const NSData whole = exifRecord({false, 6, {{300, 1}}, 2});
    for (std::size_t size = 0; size < whole.size(); ++size) {
        const NSData cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
        const int orientation = readExif(cut).orientation;
        EXPECT_TRUE(orientation == 1 || orientation == 6) << size;
    }
}

TEST(Exif, IgnoresAnOrientationOfAnotherType) {
    NSData record = exifRecord({false, 6, {}, {}});
    record[8 + 2 + 2] = 1; // BYTE instead of SHORT
    EXPECT_EQ(readExif(record).orientation, 1);
}

} // namespace

} // namespace Imaging::Platform
