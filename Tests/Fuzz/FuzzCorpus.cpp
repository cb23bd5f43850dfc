// Writes the corpora that the fuzz targets start from: tiny files of every kind that a reader knows.

#include "Tests/Fuzz/ArchivedNode.h"
#include "Tests/Platform/Codecs/LaterFixtures.h"

#include <cstdio>
#include <filesystem>

#include <tiffio.h>

namespace {

using namespace Imaging::Platform;
using namespace Imaging::Platform::Fixtures;

class CorpusWriter {
public:
    explicit CorpusWriter(std::string folder) : m_folder(std::move(folder)) {}

    void write(const std::string& target, const std::string& name, const NSData& bytes) {
        std::filesystem::create_directories(m_folder + "/" + target);
        if (!writeToFileAtomically(bytes, m_folder + "/" + target + "/" + name)) m_has_failed = true;
    }
    bool hasFailed() const { return m_has_failed; }

private:
    std::string m_folder;
    bool m_has_failed = false;
};

void writeJpegs(CorpusWriter& corpus) {
    RawJpeg picture;
    picture.width = 9;
    picture.height = 7;
    for (const int components : {1, 3, 4}) {
        picture.components = components;
        for (const bool progressive : {false, true}) {
            picture.progressive = progressive;
            const std::string name = std::to_string(components) + (progressive ? "-progressive" : "-plain");
            corpus.write("Jpeg", name, rawJpeg(picture, pattern(9, 7, components, 255)));
        }
    }
    picture.transformed = true;
    corpus.write("Jpeg", "ycck", rawJpeg(picture, pattern(9, 7, 4, 255)));
    picture.components = 3;
    picture.arithmetic = true;
    picture.markers = {{0xe1, exifMarker({true, 6, {{300, 1}}, 2})}};
    picture.profile = sRGBProfile();
    corpus.write("Jpeg", "records", rawJpeg(picture, pattern(9, 7, 3, 255)));
}

void writePngs(CorpusWriter& corpus) {
    const RawPng plain = {5, 3, 8, 6, {}, {}};
    corpus.write("Png", "plain", rawPng(plain, pattern(5, 3, 4, 255)));
    corpus.write("Png", "interlaced", interlacedPng(plain, pattern(5, 3, 4, 255)));
    corpus.write(
        "Png", "wide",
        rawPng({5, 3, 16, 2, {numbersChunk("pHYs", {3000, 3000}, {1})}, {}}, pattern(5, 3, 3, 65535)));
    const RawPng palette = {5, 3, 2, 3, {{"PLTE", {1, 2, 3, 4, 5, 6, 7, 8, 9, 1, 1, 1}}, {"tRNS", {9, 99}}},
                            {}};
    corpus.write("Png", "palette", rawPng(palette, pattern(5, 3, 1, 3)));
    const RawPng records = {
        1, 1, 1, 0, {profileChunk(grayProfile())}, {{"eXIf", exifRecord({true, 6, {}, {}})}}};
    corpus.write("Png", "records", rawPng(records, {1}));
}

void writeTiffs(CorpusWriter& corpus) {
    RawTiff picture;
    picture.width = 9;
    picture.height = 5;
    picture.rowsPerStrip = 2;
    corpus.write("Tiff", "strips", rawTiff(picture, pattern(9, 5, 3, 255)));
    picture.separate = true;
    picture.mode = "w8b";
    picture.bits = 16;
    picture.compression = COMPRESSION_LZW;
    corpus.write("Tiff", "planes", rawTiff(picture, pattern(9, 5, 3, 65535)));
    picture = RawTiff{};
    picture.width = 9;
    picture.height = 5;
    picture.samplesPerPixel = 1;
    picture.photometric = PHOTOMETRIC_MINISWHITE;
    picture.bits = 1;
    for (const int compression : {COMPRESSION_CCITTFAX4, COMPRESSION_CCITTFAX3, COMPRESSION_PACKBITS}) {
        picture.compression = compression;
        corpus.write("Tiff", "bits-" + std::to_string(compression), rawTiff(picture, pattern(9, 5, 1, 1)));
    }
    picture.bits = 8;
    picture.tile = 16;
    picture.compression = COMPRESSION_ADOBE_DEFLATE;
    corpus.write("Tiff", "tiles", rawTiff(picture, pattern(9, 5, 1, 255)));
    picture.tile = 0;
    picture.compression = COMPRESSION_JPEG;
    picture.photometric = PHOTOMETRIC_MINISBLACK;
    corpus.write("Tiff", "jpeg", rawTiff(picture, pattern(9, 5, 1, 255)));
}

void writeGifs(CorpusWriter& corpus) {
    RawGif picture;
    picture.width = 5;
    picture.height = 3;
    picture.colors = {{1, 2, 3}, {40, 50, 60}, {255, 0, 7}, {9, 99, 199}};
    corpus.write("Gif", "plain", rawGif(picture, pattern(5, 3, 1, 3)));
    picture.interlaced = true;
    picture.transparent = 1;
    picture.screenWidth = 9;
    picture.screenHeight = 9;
    picture.left = 2;
    picture.pictures = 2;
    corpus.write("Gif", "everything", rawGif(picture, pattern(5, 3, 1, 3)));
}

void writeBmps(CorpusWriter& corpus) {
    const Samples samples = pattern(5, 3, 1, 1);
    const std::vector<std::uint32_t> pixels(samples.begin(), samples.end());
    RawBmp picture;
    picture.width = 5;
    picture.height = 3;
    for (const int bits : {1, 4, 8, 16, 24, 32}) {
        picture.bits = bits;
        picture.colors.assign(bits <= 8 ? 2 : 0, {9, 8, 7});
        corpus.write("Bmp", "bits-" + std::to_string(bits), rawBmp(picture, bmpRows(picture, pixels)));
    }
    picture.headerSize = 124;
    picture.compression = 3;
    picture.masks = {0xff0000, 0xff00, 0xff, 0xff000000};
    corpus.write("Bmp", "fields", rawBmp(picture, bmpRows(picture, pixels)));
    picture = RawBmp{};
    picture.width = 5;
    picture.height = 3;
    picture.colors.assign(6, {1, 2, 3});
    picture.bits = 8;
    picture.compression = 1;
    corpus.write("Bmp", "runs-8", rawBmp(picture, {5, 1, 0, 0, 0, 3, 1, 2, 3, 0, 0, 2, 1, 1, 1, 4, 0, 1}));
    picture.bits = 4;
    picture.compression = 2;
    corpus.write("Bmp", "runs-4", rawBmp(picture, {5, 0x12, 0, 0, 0, 5, 0x34, 0x51, 0x10, 0, 0, 1}));
}

void writeLaterFormats(CorpusWriter& corpus) {
    const NSData exif = exifRecord({true, 6, {{300, 1}}, 2});
    corpus.write("Webp", "lossless", rawWebp({5, 3, true, -1, {}, {}}, pattern(5, 3, 4, 255)));
    corpus.write("Webp", "lossy", rawWebp({5, 3, true, 60, {}, exif}, pattern(5, 3, 4, 255)));
    RawJpeg2000 picture;
    picture.width = 9;
    picture.height = 5;
    corpus.write("Jpeg2000", "file", rawJpeg2000(picture, pattern(9, 5, 3, 255)));
    picture.isFile = false;
    picture.components = 1;
    picture.colorSpace = 2;
    picture.tile = 8;
    corpus.write("Jpeg2000", "codestream", rawJpeg2000(picture, pattern(9, 5, 1, 255)));
#ifdef IMAGING_WITH_HEIF
    corpus.write("Heif", "avif", rawHeif({16, 16, 8, false, false, {}, exif}, flatBlocks(16, 16, 3)));
    corpus.write("Heif", "heic", rawHeif({16, 16, 8, false, true, {}, {}}, flatBlocks(16, 16, 3)));
#endif
#ifdef IMAGING_WITH_JXL
    RawJxl xl;
    xl.width = 9;
    xl.height = 5;
    corpus.write("Jxl", "codestream", rawJxl(xl, pattern(9, 5, 3, 255)));
    xl.samplesPerPixel = 2;
    xl.exif = exif;
    corpus.write("Jxl", "container", rawJxl(xl, pattern(9, 5, 2, 255)));
#endif
}

void writeRecords(CorpusWriter& corpus) {
    corpus.write("Exif", "big", exifRecord({true, 6, {{300, 1}}, 2}));
    corpus.write("Exif", "little", exifRecord({false, 3, {{118, 1}}, 3}));
    // Its directory follows itself for ever.
    corpus.write("Exif", "loop",
                 {'I', 'I', 42, 0, 8, 0, 0, 0, 1, 0, 0x69, 0x87, 4, 0, 1, 0, 0, 0, 8, 0, 0, 0, 8, 0, 0, 0});
    corpus.write("Profile", "rgb", sRGBProfile());
    corpus.write("Profile", "gray", grayProfile());
    corpus.write("Profile", "inks", profileStub("CMYK"));
}

void writeArchives(CorpusWriter& corpus) {
    Fuzz::ArchivedNode root;
    root.child = std::make_shared<Fuzz::ArchivedNode>();
    root.child->name = "child";
    root.child->data = {1, 2, 3};
    root.children = {root.child, std::make_shared<Fuzz::ArchivedNode>()};
    root.weight = 1.5F;
    corpus.write("Archive", "binary", archivedDataWithRootObject(root));
    corpus.write("Archive", "xml", archivedDataWithRootObject(root, NSPropertyListFormat::XML));
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: FuzzCorpus FOLDER\n");
        return 2;
    }
    CorpusWriter corpus(argv[1]);
    writeJpegs(corpus);
    writePngs(corpus);
    writeTiffs(corpus);
    writeGifs(corpus);
    writeBmps(corpus);
    writeLaterFormats(corpus);
    writeRecords(corpus);
    writeArchives(corpus);
    return corpus.hasFailed() ? 1 : 0;
}
