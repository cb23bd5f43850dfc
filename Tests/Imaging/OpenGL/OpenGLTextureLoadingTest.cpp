// Also tests: Imaging/OpenGLTexture.cpp
// Also tests: Imaging/OpenGL/TileUpload.cpp

#include "Tests/Imaging/OpenGL/TextureFixtures.h"

using namespace ImagingTests;
using Imaging::OpenGLTexture;
using testing::Contains;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

namespace {

class OpenGLTextureLoading : public RecorderTest {
protected:
    static void loadAll(OpenGLTexture& texture) {
        texture.loadTextureWithImage(nullptr, 0, texture.textureCount());
    }
};

} // namespace

TEST_F(OpenGLTextureLoading, RemembersWhatTheFirstContextCanDo) {
    begin({.rectangles = true, .largestSide = 256});
    EXPECT_TRUE(OpenGLTexture::supportsTextureRectangleExtension());
    EXPECT_EQ(OpenGLTexture::maxHardwareTextureRectangleSize(), 256);
    gl = std::make_shared<RecordingCommands>(factsOf({.rectangles = false, .largestSide = 64}));
    OpenGLCommands::setCurrent(gl);
    EXPECT_TRUE(OpenGLTexture::supportsTextureRectangleExtension());
    EXPECT_EQ(OpenGLTexture::maxHardwareTextureRectangleSize(), 256);
    OpenGLTexture::forgetHardwareAnswers();
    EXPECT_FALSE(OpenGLTexture::supportsTextureRectangleExtension());
    EXPECT_EQ(OpenGLTexture::maxHardwareTextureRectangleSize(), 64);
}

TEST_F(OpenGLTextureLoading, TakesAssumedAnswersUntilTheyAreForgotten) {
    OpenGLTexture::assumeHardwareAnswers(false, 64);
    EXPECT_FALSE(OpenGLTexture::supportsTextureRectangleExtension());
    EXPECT_EQ(OpenGLTexture::maxTextureRectangleSize(), 64);
    OpenGLTexture::forgetHardwareAnswers();
    EXPECT_TRUE(OpenGLTexture::supportsTextureRectangleExtension());
    EXPECT_EQ(OpenGLTexture::maxTextureRectangleSize(), 512);
}

TEST_F(OpenGLTextureLoading, AsksForClientStorageEachTime) {
    EXPECT_FALSE(OpenGLTexture::supportsTextureClientStorage());
    OpenGLCommands::setCurrent(std::make_shared<RecordingCommands>(factsOf({.clientStorage = true})));
    EXPECT_TRUE(OpenGLTexture::supportsTextureClientStorage());
    OpenGLCommands::setCurrent(gl);
    EXPECT_FALSE(OpenGLTexture::supportsTextureClientStorage());
}

TEST_F(OpenGLTextureLoading, HasNoTileAboveFiveHundredAndTwelvePixelsASide) {
    for (const auto& [hardware, expected] : {std::pair{2048, 512}, {8192, 512}, {512, 512}, {256, 256}}) {
        begin({.largestSide = hardware});
        EXPECT_EQ(OpenGLTexture::maxTextureRectangleSize(), expected);
        EXPECT_EQ(OpenGLTexture::maxHardwareTextureRectangleSize(), hardware);
    }
}

TEST_F(OpenGLTextureLoading, AsksForTheSizeOfTheTexturesThatItUses) {
    OpenGLFacts facts = factsOf({.rectangles = true, .largestSide = 300});
    facts.maximumTextureSize = 200;
    gl = std::make_shared<RecordingCommands>(facts);
    OpenGLCommands::setCurrent(gl);
    EXPECT_EQ(OpenGLTexture::maxHardwareTextureRectangleSize(), 300);
    begin({.rectangles = false, .largestSide = 200});
    EXPECT_EQ(OpenGLTexture::maxHardwareTextureRectangleSize(), 200);
}

TEST_F(OpenGLTextureLoading, HasAsManyTilesAsItsSizeTakes) {
    int x = 0;
    int y = 0;
    const OpenGLTexture withExtension(1000, 600);
    withExtension.getTextureCountX(&x, &y);
    EXPECT_EQ(std::pair(x, y), std::pair(2, 2));
    EXPECT_EQ(withExtension.textureCount(), 4U);
    begin({.rectangles = false});
    const OpenGLTexture without(1000, 600);
    without.getTextureCountX(&x, nullptr);
    without.getTextureCountX(nullptr, &y);
    EXPECT_EQ(std::pair(x, y), std::pair(6, 4));
    EXPECT_EQ(without.textureCount(), 24U);
    EXPECT_EQ(without.pixelsWide(), 1000U);
    EXPECT_EQ(without.pixelsHigh(), 600U);
    EXPECT_EQ(OpenGLTexture(512, 300).textureCount(), 4U) << "300 = 256 + 32 + 8 + 4 without the extension";
}

TEST_F(OpenGLTextureLoading, IssuesNothingUntilItIsLoaded) {
    {
        const OpenGLTexture sized(40, 30);
        OpenGLTexture texture(alphaFirst(distinctPicture(5, 4)));
        texture.drawImage();
    }
    EXPECT_THAT(gl->lines(), IsEmpty());
}

TEST_F(OpenGLTextureLoading, UploadsABitmapTileByTileDownTheColumns) {
    begin({.rectangles = true, .largestSide = 4});
    const Grid grid = Pixels::Random(401).grid(6, 7);
    {
        OpenGLTexture texture(alphaFirst(grid, 12));
        loadAll(texture);
        EXPECT_THAT(gl->takeLines(), ElementsAreArray(joined(
                                         {{"glEnable(" + rectangle + ")", "glGenTextures(4)"},
                                          uploadLines(rectangle, 1, 9, 4, 4), // rows of 6 pixels and 3 more
                                          uploadLines(rectangle, 2, 9, 4, 3),
                                          uploadLines(rectangle, 3, 9, 2, 4),
                                          uploadLines(rectangle, 4, 9, 2, 3),
                                          {"glDisable(" + rectangle + ")"}})));
        ASSERT_EQ(gl->uploads().size(), 4U);
        EXPECT_EQ(gl->uploads()[0].pixels, alphaFirstBytes(grid, 0, 0, 4, 4));
        EXPECT_EQ(gl->uploads()[1].pixels, alphaFirstBytes(grid, 0, 4, 4, 3));
        EXPECT_EQ(gl->uploads()[2].pixels, alphaFirstBytes(grid, 4, 0, 2, 4));
        EXPECT_EQ(gl->uploads()[3].pixels, alphaFirstBytes(grid, 4, 4, 2, 3));
    }
    EXPECT_THAT(gl->takeLines(), ElementsAre("glDeleteTextures({1, 2, 3, 4})"));
}

TEST_F(OpenGLTextureLoading, UploadsPowersOfTwoWithoutTheExtension) {
    begin({.rectangles = false, .largestSide = 4});
    const Grid grid = Pixels::Random(402).grid(3, 5);
    OpenGLTexture texture(alphaFirst(grid));
    loadAll(texture);
    EXPECT_THAT(gl->takeLines(), ElementsAreArray(joined({{"glEnable(" + flat + ")", "glGenTextures(4)"},
                                                          uploadLines(flat, 1, 3, 2, 4),
                                                          uploadLines(flat, 2, 3, 2, 1),
                                                          uploadLines(flat, 3, 3, 1, 4),
                                                          uploadLines(flat, 4, 3, 1, 1),
                                                          {"glDisable(" + flat + ")"}})));
    EXPECT_EQ(gl->uploads()[1].pixels, alphaFirstBytes(grid, 0, 4, 2, 1));
    EXPECT_EQ(gl->uploads()[3].pixels, alphaFirstBytes(grid, 2, 4, 1, 1));
}

TEST_F(OpenGLTextureLoading, LoadsTheTilesOfARangeByTheirNumberAlongTheRows) {
    begin({.rectangles = true, .largestSide = 4});
    OpenGLTexture texture(alphaFirst(distinctPicture(12, 8))); // three across, two down
    texture.loadTextureWithImage(nullptr, 1, 2);
    // The second and third tile of the upper row are the third and fifth name.
    EXPECT_THAT(gl->takeLines(), ElementsAreArray(joined({{"glEnable(" + rectangle + ")", "glGenTextures(6)"},
                                                          uploadLines(rectangle, 3, 12, 4, 4),
                                                          uploadLines(rectangle, 5, 12, 4, 4),
                                                          {"glDisable(" + rectangle + ")"}})));
    texture.loadTextureWithImage(nullptr, 3, 3); // the first of the lower row is the second name
    EXPECT_THAT(gl->takeLines(), ElementsAreArray(joined({{"glEnable(" + rectangle + ")"},
                                                          uploadLines(rectangle, 2, 12, 4, 4),
                                                          {"glDisable(" + rectangle + ")"}})))
        << "names are generated once";
    texture.loadTextureWithImage(nullptr, 6, 9);
    EXPECT_THAT(gl->takeLines(), ElementsAre("glEnable(" + rectangle + ")", "glDisable(" + rectangle + ")"));
}

TEST_F(OpenGLTextureLoading, LoadsEveryTileOfARangeThatEndsPastTheLast) {
    begin({.rectangles = true, .largestSide = 4});
    OpenGLTexture texture(alphaFirst(distinctPicture(9, 5)));
    texture.loadTextureWithImage(nullptr, 0, texture.textureCount());
    EXPECT_EQ(gl->uploads().size(), 6U);
}

TEST_F(OpenGLTextureLoading, HandsTheBitmapsMemoryOverWhereThereIsClientStorage) {
    begin({.rectangles = true, .clientStorage = true, .largestSide = 4});
    OpenGLTexture texture(alphaFirst(distinctPicture(4, 3), 4));
    loadAll(texture);
    Lines upload = uploadLines(rectangle, 1, 5, 4, 3);
    upload.insert(
        upload.begin() + 1,
        {"glTextureRangeAPPLE(" + rectangle + ", 60, pixels)", // 3 rows of 20 bytes
         "glTexParameteri(" + rectangle + ", GL_TEXTURE_STORAGE_HINT_APPLE, GL_STORAGE_CACHED_APPLE)"});
    upload.insert(upload.begin() + 4, "glPixelStorei(GL_UNPACK_CLIENT_STORAGE_APPLE, 1)");
    EXPECT_THAT(gl->takeLines(), ElementsAreArray(joined({{"glEnable(" + rectangle + ")", "glGenTextures(1)"},
                                                          upload,
                                                          {"glDisable(" + rectangle + ")"}})));
}

TEST_F(OpenGLTextureLoading, DropsTheMemoryRangeForDrawnTilesWhereThereIsClientStorage) {
    begin({.rectangles = true, .clientStorage = true, .largestSide = 4});
    const OpenGLTexture texture(pictureNode(distinctPicture(4, 3)), 4, 3);
    Lines upload = uploadLines(rectangle, 1, 4, 4, 3);
    upload.insert(upload.begin() + 1, "glTextureRangeAPPLE(" + rectangle + ", 0, NULL)");
    upload.insert(upload.begin() + 3, "glPixelStorei(GL_UNPACK_CLIENT_STORAGE_APPLE, 1)");
    EXPECT_THAT(gl->takeLines(), ElementsAreArray(joined({{"glEnable(" + rectangle + ")", "glGenTextures(1)"},
                                                          upload,
                                                          {"glDisable(" + rectangle + ")"}})));
}

TEST_F(OpenGLTextureLoading, IssuesNothingOfClientStorageWithoutIt) {
    OpenGLTexture texture(alphaFirst(distinctPicture(4, 3)));
    loadAll(texture);
    const OpenGLTexture drawn(pictureNode(distinctPicture(4, 3)), 4, 3);
    EXPECT_THAT(gl->lines(), Not(Contains(HasSubstr("APPLE"))));
}

TEST_F(OpenGLTextureLoading, KeepsTheBitmapForItsLife) {
    const std::shared_ptr<NSBitmapImageRep> bitmap = alphaFirst(distinctPicture(5, 4));
    {
        const OpenGLTexture texture(bitmap);
        EXPECT_EQ(bitmap.use_count(), 2);
    }
    EXPECT_EQ(bitmap.use_count(), 1);
}

TEST_F(OpenGLTextureLoading, DrawsANodeForEachTileTheFirstRowOnTop) {
    begin({.rectangles = true, .largestSide = 4});
    const Grid grid = distinctPicture(6, 7);
    const OpenGLTexture texture(pictureNode(grid), 6, 7);
    EXPECT_THAT(gl->takeLines(), ElementsAreArray(joined({{"glEnable(" + rectangle + ")", "glGenTextures(4)"},
                                                          uploadLines(rectangle, 1, 4, 4, 4),
                                                          uploadLines(rectangle, 2, 4, 4, 3),
                                                          uploadLines(rectangle, 3, 2, 2, 4),
                                                          uploadLines(rectangle, 4, 2, 2, 3),
                                                          {"glDisable(" + rectangle + ")"}})));
    ASSERT_EQ(gl->uploads().size(), 4U);
    EXPECT_EQ(gl->uploads()[0].pixels, alphaFirstBytes(grid, 0, 0, 4, 4));
    EXPECT_EQ(gl->uploads()[1].pixels, alphaFirstBytes(grid, 0, 4, 4, 3));
    EXPECT_EQ(gl->uploads()[2].pixels, alphaFirstBytes(grid, 4, 0, 2, 4));
    EXPECT_EQ(gl->uploads()[3].pixels, alphaFirstBytes(grid, 4, 4, 2, 3));
}

TEST_F(OpenGLTextureLoading, ScalesANodeToThePixelsOfTheTexture) {
    begin({.rectangles = true, .largestSide = 2});
    // Red over blue on the left, green over white on the right.
    Grid grid(8, 4);
    for (int y = 0; y < 4; ++y) {
        for (int x = 0; x < 8; ++x) {
            const bool isTop = y < 2;
            grid.at(x, y) =
                x < 4 ? (isTop ? Pixels::red : Pixels::blue) : (isTop ? Pixels::green : Pixels::white);
        }
    }
    Grid expected(4, 2);
    for (int x = 0; x < 4; ++x) {
        for (int y = 0; y < 2; ++y) expected.at(x, y) = grid.at(2 * x, 2 * y);
    }
    const OpenGLTexture texture(pictureNode(grid), 4, 2);
    ASSERT_EQ(gl->uploads().size(), 2U);
    EXPECT_EQ(gl->uploads()[0].pixels, alphaFirstBytes(expected, 0, 0, 2, 2));
    EXPECT_EQ(gl->uploads()[1].pixels, alphaFirstBytes(expected, 2, 0, 2, 2));
}

TEST_F(OpenGLTextureLoading, SwitchesTexturingOffWhenDrawingThrows) {
    class Refusing : public TestNode {
        IMGBounds imageBounds() const override { throw NSException("refused", "no extent"); }
    };
    EXPECT_THROW(OpenGLTexture(std::make_shared<Refusing>(), 3, 3), NSException);
    EXPECT_THAT(gl->takeLines(), ElementsAre("glEnable(" + rectangle + ")", "glGenTextures(1)",
                                             "glBindTexture(" + rectangle + ", 1)",
                                             "glDisable(" + rectangle + ")", "glDeleteTextures({1})"));
}

TEST_F(OpenGLTextureLoading, CallsTheAssertionHandlerWhereThereIsNoPixel) {
    OpenGLTexture texture(5, 4);
    EXPECT_THROW(loadAll(texture), NSException);
    const ToleratedAssertions tolerated;
    gl->takeLines();
    loadAll(texture);
    ASSERT_EQ(tolerated.failures().size(), 1U);
    EXPECT_EQ(tolerated.failures()[0].file, "Imaging/OpenGLTexture");
    EXPECT_EQ(tolerated.failures()[0].description, "Invalid parameter not satisfying: pBuffer != NULL");
    EXPECT_THAT(gl->takeLines(),
                ElementsAre("glEnable(" + rectangle + ")", "glBindTexture(" + rectangle + ", 1)",
                            "glDisable(" + rectangle + ")"));
}

TEST_F(OpenGLTextureLoading, CopiesEveryTileFromTheFrameBuffer) {
    begin({.rectangles = true, .largestSide = 4});
    OpenGLTexture texture(alphaFirst(distinctPicture(6, 7)));
    loadAll(texture);
    gl->takeLines();
    texture.loadTextureWithFrameBuffer();
    const auto copy = [](int name, const std::string& area) {
        return Lines{"glBindTexture(" + rectangle + ", " + std::to_string(name) + ")",
                     "glPushAttrib(GL_CURRENT_BIT)",
                     "glCopyTexSubImage2D(" + rectangle + ", 0, 0, 0, " + area + ")", "glPopAttrib()"};
    };
    EXPECT_THAT(gl->takeLines(), ElementsAreArray(joined({{"glEnable(" + rectangle + ")"},
                                                          copy(1, "0, 0, 4, 4"),
                                                          copy(2, "0, 4, 4, 3"),
                                                          copy(3, "4, 0, 2, 4"),
                                                          copy(4, "4, 4, 2, 3"),
                                                          {"glDisable(" + rectangle + ")"}})));
}

TEST_F(OpenGLTextureLoading, GeneratesNamesForTheFrameBufferToo) {
    {
        OpenGLTexture texture(5, 4);
        texture.loadTextureWithFrameBuffer();
        EXPECT_EQ(gl->takeLines()[1], "glGenTextures(1)");
    }
    EXPECT_THAT(gl->takeLines(), ElementsAre("glDeleteTextures({1})"));
}

TEST_F(OpenGLTextureLoading, DoesNothingForAPictureWithoutWidthOrHeight) {
    for (const bool rectangles : {true, false}) {
        begin({.rectangles = rectangles});
        for (const auto& [width, height] : {std::pair{0, 5}, {5, 0}, {0, 0}, {-3, 5}}) {
            OpenGLTexture texture(width, height);
            texture.loadTextureWithImage(nullptr, 0, 9);
            texture.loadTextureWithFrameBuffer();
            texture.drawImage();
        }
        EXPECT_THAT(gl->takeLines(), IsEmpty());
    }
}

TEST_F(OpenGLTextureLoading, BeginsTilesByTheBitmapsOwnSize) {
    begin({.rectangles = true, .largestSide = 4});
    const Grid grid = Pixels::Random(403).grid(8, 8);
    const std::shared_ptr<NSBitmapImageRep> bitmap = alphaFirst(grid);
    bitmap->setSize({4, 2}); // points; the second tile begins at half of that
    OpenGLTexture texture(bitmap);
    loadAll(texture);
    EXPECT_EQ(gl->uploads()[1].pixels, alphaFirstBytes(grid, 0, 1, 4, 4));
    EXPECT_EQ(gl->uploads()[2].pixels, alphaFirstBytes(grid, 2, 0, 4, 4));
}

TEST_F(OpenGLTextureLoading, ReadsInsideTheBitmapWhateverItsOwnSizeIs) {
    begin({.rectangles = true, .largestSide = 4});
    const Grid grid = Pixels::Random(404).grid(8, 8);
    for (const NSSize size : {NSSize{800, 900}, NSSize{-8, -8}, NSSize{NAN, INFINITY}}) {
        const std::shared_ptr<NSBitmapImageRep> bitmap = alphaFirst(grid);
        bitmap->setSize(size);
        OpenGLTexture texture(bitmap);
        loadAll(texture);
        const bool beyond = size.width > 8;
        EXPECT_EQ(gl->uploads()[gl->uploads().size() - 2].pixels,
                  alphaFirstBytes(grid, beyond ? 4 : 0, 0, 4, 4));
    }
}

TEST_F(OpenGLTextureLoading, RefusesBitmapsThatOpenGLCannotReadInPlace) {
    EXPECT_THROW(OpenGLTexture(std::shared_ptr<NSBitmapImageRep>()), NSException);
    Imaging::Platform::NSBitmapDescription description;
    description.pixelsWide = description.pixelsHigh = 4;
    description.samplesPerPixel = 3;
    description.hasAlpha = false;
    EXPECT_THROW(OpenGLTexture(NSBitmapImageRep::bitmapWithDescription(description)), NSException);
    description = {};
    description.pixelsWide = description.pixelsHigh = 4;
    description.bytesPerRow = 18;
    EXPECT_THROW(OpenGLTexture(NSBitmapImageRep::bitmapWithDescription(description)), NSException);
    description.bytesPerRow = 0;
    description.isPlanar = true;
    EXPECT_THROW(OpenGLTexture(NSBitmapImageRep::bitmapWithDescription(description)), NSException);
}

TEST_F(OpenGLTextureLoading, LogsNamesThatAreLostWithoutAContext) {
    auto texture = std::make_unique<OpenGLTexture>(alphaFirst(distinctPicture(5, 4)));
    loadAll(*texture);
    OpenGLCommands::setCurrent(nullptr);
    texture.reset();
    EXPECT_THAT(takeLog(), ElementsAre(StartsWith("an OpenGL texture was let go of")));
    begin({});
}

TEST_F(OpenGLTextureLoading, LogsErrorsAndGoesOn) {
    OpenGLTexture texture(alphaFirst(distinctPicture(5, 4)));
    gl->answerWithError(Imaging::Platform::OpenGL::Error::OutOfMemory);
    loadAll(texture);
    EXPECT_EQ(gl->uploads().size(), 1U);
    EXPECT_THAT(takeLog(), ElementsAre("gl error Imaging/GraphicsUtilities 285 1285"));
}

TEST(OpenGLTextureAlone, NeedsAContext) {
    OpenGLTexture::forgetHardwareAnswers();
    EXPECT_THROW(OpenGLTexture(4, 4), NSException);
}
