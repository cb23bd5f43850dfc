#include "Platform/Pixels/PictureLimits.h"

#include "Platform/Foundation/Exception.h"
#include "Platform/Pixels/Rows/PixelImage.h"

#include <gtest/gtest.h>

using namespace Imaging::Platform;

namespace {

class PictureLimitsTest : public testing::Test {
protected:
    ~PictureLimitsTest() override { setPictureLimits(m_before); }

private:
    PictureLimits m_before = pictureLimits();
};

} // namespace

TEST_F(PictureLimitsTest, AreThoseThatWereSetLast) {
    setPictureLimits({12, 3000});
    EXPECT_EQ(pictureLimits().maximumPixels, 12U);
    EXPECT_EQ(pictureLimits().maximumBytes, 3000U);
}

TEST_F(PictureLimitsTest, HoldForPicturesThatAreDrawnToThePixelAndToTheByte) {
    setPictureLimits({12, 48});
    EXPECT_EQ(PixelImage::transparent(3, 4)->height(), 4);
    EXPECT_THROW(PixelImage::transparent(13, 1), NSException);
    setPictureLimits({1000, 47});
    EXPECT_THROW(PixelImage::transparent(3, 4), NSException);
    EXPECT_THROW(PixelImage::uninitialised(4, 3), NSException);
}
