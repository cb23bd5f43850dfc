#include "Tests/Platform/Codecs/CodecFixtures.h"

#include <gtest/gtest.h>
#include <lcms2.h>
#include <tiffio.h>
#include <zlib.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <stdexcept>

#include <jpeglib.h>
#include <png.h>

namespace Imaging::Platform::Fixtures {

namespace {

void appendNumber(NSData& to, std::uint64_t value, int bytes, bool bigEndian) {
    for (int i = 0; i < bytes; ++i) {
        const int shift = 8 * (bigEndian ? bytes - 1 - i : i);
        to.push_back(static_cast<std::uint8_t>(value >> shift));
    }
}

void append(NSData& to, ByteView bytes) { std::copy(bytes.begin(), bytes.end(), std::back_inserter(to)); }

/// Rows as files have them: samples packed from the left, rows beginning with a new byte, 16 bits big-endian
/// or in the machine's order.
NSData packedRows(const Samples& samples, std::size_t perRow, int bits, bool bigEndian) {
    NSData bytes;
    for (std::size_t first = 0; first < samples.size(); first += perRow) {
        unsigned int pending = 0;
        int count = 0;
        for (std::size_t i = first; i < first + perRow; ++i) {
            if (bits >= 8) {
                appendNumber(bytes, samples[i], bits / 8, bigEndian);
                continue;
            }
            pending = pending << bits | samples[i];
            count += bits;
            if (count == 8 || i + 1 == first + perRow) {
                bytes.push_back(static_cast<std::uint8_t>(pending << (8 - count)));
                pending = 0;
                count = 0;
            }
        }
    }
    return bytes;
}

const std::shared_ptr<const Codec>& requireCodec(const std::shared_ptr<const Codec>& codec) {
    if (codec == nullptr) throw std::runtime_error("no such codec");
    return codec;
}

NSData savedProfile(cmsHPROFILE profile) {
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    NSData bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

} // namespace

Samples pattern(std::uint32_t width, std::uint32_t height, int samplesPerPixel, std::uint32_t max) {
    Samples samples;
    std::uint32_t state = 12345 + width * 7 + height;
    for (std::size_t i = 0; i < std::size_t{width} * height * static_cast<std::size_t>(samplesPerPixel);
         ++i) {
        state = state * 1664525 + 1013904223;
        // The ends of the range are the values that go wrong most easily.
        const std::uint32_t kind = state >> 29;
        const std::uint32_t middle = (state >> 8) % (max + 1);
        samples.push_back(static_cast<std::uint16_t>(kind == 0 ? 0 : kind == 1 ? max : middle));
    }
    return samples;
}

Samples premultipliedPattern(std::uint32_t width, std::uint32_t height, int samplesPerPixel,
                             std::uint32_t max) {
    Samples samples = pattern(width, height, samplesPerPixel, max);
    const auto step = static_cast<std::size_t>(samplesPerPixel);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const std::uint16_t alpha = samples[i / step * step + step - 1];
        if (samples[i] > alpha) samples[i] = static_cast<std::uint16_t>(samples[i] % (alpha + 1U));
    }
    return samples;
}

Samples samplesOf(const DecodedPicture& picture) {
    const PictureHeader& header = picture.header;
    EXPECT_EQ(picture.bytesPerRow, header.width * header.bytesPerPixel());
    EXPECT_EQ(picture.pixels.size(), picture.bytesPerRow * header.height);
    Samples samples(picture.pixels.size() / static_cast<std::size_t>(header.bitsPerSample / 8));
    for (std::size_t i = 0; i < samples.size(); ++i) {
        if (header.bitsPerSample == 8) {
            samples[i] = picture.pixels.data()[i];
        } else {
            std::memcpy(&samples[i], picture.pixels.data() + 2 * i, 2);
        }
    }
    return samples;
}

SourcePicture::SourcePicture(std::uint32_t width, std::uint32_t height, int bits, SampleColor color,
                             bool hasAlpha, const Samples& samples, std::size_t padding) {
    header.width = width;
    header.height = height;
    header.bitsPerSample = bits;
    header.color = color;
    header.hasAlpha = hasAlpha;
    const std::size_t perRow = std::size_t{width} * static_cast<std::size_t>(header.samplesPerPixel());
    const std::size_t rowBytes = perRow * static_cast<std::size_t>(bits / 8);
    bytesPerRow = rowBytes + padding;
    // The last row ends where the memory does, so that reading its padding would be noticed.
    bytes.assign(bytesPerRow * (height - 1) + rowBytes, 0xee);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        std::uint8_t* to =
            bytes.data() + i / perRow * bytesPerRow + i % perRow * static_cast<std::size_t>(bits / 8);
        if (bits == 8) {
            *to = static_cast<std::uint8_t>(samples[i]);
        } else {
            std::memcpy(to, &samples[i], 2);
        }
    }
}

DecodedPicture decode(std::string_view format, ByteView bytes, const PictureLimits& limits) {
    return requireCodec(codecForFormat(format))->decode(bytes, limits);
}

PictureHeader readHeader(std::string_view format, ByteView bytes) {
    return requireCodec(codecForFormat(format))->readHeader(bytes);
}

NSData encode(std::string_view format, const SourcePicture& picture, double quality) {
    return requireCodec(codecForFormat(format))->encode(picture.view(), {quality});
}

Refusal refusalOfDecoding(std::string_view format, ByteView bytes, const PictureLimits& limits) {
    return refusalOf([&] { decode(format, bytes, limits); });
}

void expectEqualHeaders(const PictureHeader& a, const PictureHeader& b) {
    EXPECT_EQ(a.formatName, b.formatName);
    EXPECT_EQ(a.width, b.width);
    EXPECT_EQ(a.height, b.height);
    EXPECT_EQ(a.bitsPerSample, b.bitsPerSample);
    EXPECT_EQ(a.color, b.color);
    EXPECT_EQ(a.hasAlpha, b.hasAlpha);
    EXPECT_EQ(a.orientation, b.orientation);
    EXPECT_EQ(a.resolutionX, b.resolutionX);
    EXPECT_EQ(a.resolutionY, b.resolutionY);
    EXPECT_EQ(a.colorProfile, b.colorProfile);
}

NSData sRGBProfile() { return savedProfile(cmsCreate_sRGBProfile()); }

NSData grayProfile() {
    cmsToneCurve* curve = cmsBuildGamma(nullptr, 2.2);
    const cmsHPROFILE profile = cmsCreateGrayProfile(cmsD50_xyY(), curve);
    cmsFreeToneCurve(curve);
    return savedProfile(profile);
}

NSData profileStub(const char (&colorSpace)[5]) {
    NSData profile = sRGBProfile();
    std::copy_n(colorSpace, 4, profile.begin() + 16);
    return profile;
}

NSData exifRecord(const ExifRecord& record) {
    const bool big = record.bigEndian;
    struct Entry {
        int tag;
        int type; // 3 SHORT, 5 RATIONAL
        std::uint32_t value;
    };
    std::vector<Entry> entries;
    if (record.orientation) entries.push_back({0x0112, 3, static_cast<std::uint32_t>(*record.orientation)});
    if (record.resolution) {
        entries.push_back({0x011a, 5, 0});
        entries.push_back({0x011b, 5, 0});
    }
    if (record.unit) entries.push_back({0x0128, 3, static_cast<std::uint32_t>(*record.unit)});
    NSData bytes(2, static_cast<std::uint8_t>(big ? 'M' : 'I'));
    appendNumber(bytes, 42, 2, big);
    appendNumber(bytes, 8, 4, big);
    appendNumber(bytes, entries.size(), 2, big);
    for (const Entry& entry : entries) {
        appendNumber(bytes, static_cast<std::uint64_t>(entry.tag), 2, big);
        appendNumber(bytes, static_cast<std::uint64_t>(entry.type), 2, big);
        appendNumber(bytes, 1, 4, big);
        if (entry.type == 3) {
            appendNumber(bytes, entry.value, 2, big);
            appendNumber(bytes, 0, 2, big);
        } else {
            appendNumber(bytes, 8 + 2 + 12 * entries.size() + 4, 4, big); // behind the directory
        }
    }
    appendNumber(bytes, 0, 4, big);
    if (record.resolution) {
        appendNumber(bytes, record.resolution->first, 4, big);
        appendNumber(bytes, record.resolution->second, 4, big);
    }
    return bytes;
}

NSData exifMarker(const ExifRecord& record) {
    NSData marker = {'E', 'x', 'i', 'f', 0, 0};
    append(marker, exifRecord(record));
    return marker;
}

Samples flatBlocks(std::uint32_t width, std::uint32_t height, int samplesPerPixel) {
    Samples samples;
    for (std::uint32_t y = 0; y < height; ++y) {
        for (std::uint32_t x = 0; x < width; ++x) {
            for (int s = 0; s < samplesPerPixel; ++s) {
                const std::uint32_t block = y / 8 * 5 + x / 8;
                samples.push_back(
                    static_cast<std::uint16_t>((block * 61 + static_cast<std::uint32_t>(s) * 97 + 3) % 256));
            }
        }
    }
    return samples;
}

namespace {

J_COLOR_SPACE plainSpace(int components) {
    return components == 1   ? JCS_GRAYSCALE
           : components == 3 ? JCS_RGB
           : components == 4 ? JCS_CMYK
                             : JCS_UNKNOWN;
}

/// DC, then two scans for each AC coefficient: all bits but the last, and the last.
std::vector<jpeg_scan_info> singleCoefficientScans(int count) {
    std::vector<jpeg_scan_info> scans = {{1, {0, 0, 0, 0}, 0, 0, 0, 0}};
    for (int coefficient = 1; coefficient < 64; ++coefficient) {
        scans.push_back({1, {0, 0, 0, 0}, coefficient, coefficient, 0, 1});
        scans.push_back({1, {0, 0, 0, 0}, coefficient, coefficient, 1, 0});
    }
    scans.resize(static_cast<std::size_t>(count));
    return scans;
}

void describeJpeg(jpeg_compress_struct& info, const RawJpeg& picture) {
    info.image_width = picture.width;
    info.image_height = picture.height;
    info.input_components = picture.components;
    info.in_color_space = plainSpace(picture.components);
    jpeg_set_defaults(&info);
    J_COLOR_SPACE space = plainSpace(picture.components);
    if (picture.transformed) space = picture.components == 3 ? JCS_YCbCr : JCS_YCCK;
    jpeg_set_colorspace(&info, space);
    jpeg_set_quality(&info, 100, TRUE);
    for (int i = 0; i < picture.components; ++i) {
        info.comp_info[i].h_samp_factor = 1;
        info.comp_info[i].v_samp_factor = 1;
    }
    info.arith_code = picture.arithmetic ? TRUE : FALSE;
    if (picture.progressive) jpeg_simple_progression(&info);
    info.density_unit = static_cast<UINT8>(picture.densityUnit);
    info.X_density = static_cast<UINT16>(picture.density);
    info.Y_density = static_cast<UINT16>(picture.density * 2);
    const bool couldHaveJfif = picture.components == 1 || (picture.components == 3 && picture.transformed);
    info.write_JFIF_header = picture.jfif && couldHaveJfif ? TRUE : FALSE;
    if (!picture.adobe) info.write_Adobe_marker = FALSE;
}

} // namespace

NSData rawJpeg(const RawJpeg& picture, const Samples& samples) {
    jpeg_compress_struct info{};
    jpeg_error_mgr errors{};
    info.err = jpeg_std_error(&errors); // ends the test program on errors, which there should be none of
    jpeg_create_compress(&info);
    unsigned char* output = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&info, &output, &size);
    describeJpeg(info, picture);
    const auto scans = singleCoefficientScans(std::max(picture.singleScans, 1));
    if (picture.singleScans > 0) {
        info.scan_info = scans.data();
        info.num_scans = static_cast<int>(scans.size());
    }
    jpeg_start_compress(&info, TRUE);
    if (!picture.profile.empty()) {
        jpeg_write_icc_profile(&info, picture.profile.data(),
                               static_cast<unsigned int>(picture.profile.size()));
    }
    for (const auto& [marker, data] : picture.markers) {
        jpeg_write_marker(&info, marker, data.data(), static_cast<unsigned int>(data.size()));
    }
    NSData bytes(samples.begin(), samples.end());
    const std::size_t rowBytes = std::size_t{picture.width} * static_cast<std::size_t>(picture.components);
    while (info.next_scanline < info.image_height) {
        JSAMPROW row = bytes.data() + info.next_scanline * rowBytes;
        jpeg_write_scanlines(&info, &row, 1);
    }
    jpeg_finish_compress(&info);
    NSData result(output, output + size);
    jpeg_destroy_compress(&info);
    std::free(output);
    return result;
}

NSData pngChunk(const PngChunk& chunk) {
    NSData checked(chunk.first.begin(), chunk.first.end());
    append(checked, chunk.second);
    NSData bytes;
    appendNumber(bytes, chunk.second.size(), 4, true);
    append(bytes, checked);
    appendNumber(bytes, crc32(0, checked.data(), static_cast<uInt>(checked.size())), 4, true);
    return bytes;
}

NSData zlibPacked(ByteView bytes) {
    uLongf size = compressBound(bytes.size());
    NSData packed(size);
    compress2(packed.data(), &size, bytes.data(), bytes.size(), 9);
    packed.resize(size);
    return packed;
}

PngChunk numbersChunk(std::string type, std::initializer_list<std::uint32_t> words, const NSData& rest) {
    NSData data;
    for (const std::uint32_t word : words) appendNumber(data, word, 4, true);
    append(data, rest);
    return {std::move(type), data};
}

PngChunk profileChunk(ByteView profile) {
    NSData data = {'p', 0, 0}; // name, its end, deflate
    append(data, zlibPacked(profile));
    return {"iCCP", data};
}

namespace {

std::size_t pngSamplesPerRow(const RawPng& picture) {
    constexpr std::size_t samplesPerPixel[] = {1, 0, 3, 1, 2, 0, 4};
    return picture.width * samplesPerPixel[picture.colorType];
}

} // namespace

NSData rawPng(const RawPng& picture, const Samples& samples) {
    NSData bytes = {0x89, 'P', 'N', 'G', '\r', '\n', 0x1a, '\n'};
    const NSData kind = {static_cast<std::uint8_t>(picture.depth),
                         static_cast<std::uint8_t>(picture.colorType), 0, 0, 0};
    append(bytes, pngChunk(numbersChunk("IHDR", {picture.width, picture.height}, kind)));
    for (const PngChunk& chunk : picture.beforePixels) append(bytes, pngChunk(chunk));
    const NSData rows = packedRows(samples, pngSamplesPerRow(picture), picture.depth, true);
    NSData filtered;
    const std::size_t rowBytes = rows.size() / picture.height;
    for (std::size_t y = 0; y < picture.height; ++y) {
        filtered.push_back(0); // no filter
        append(filtered, ByteView(rows).subspan(y * rowBytes, rowBytes));
    }
    append(bytes, pngChunk({"IDAT", zlibPacked(filtered)}));
    for (const PngChunk& chunk : picture.afterPixels) append(bytes, pngChunk(chunk));
    append(bytes, pngChunk({"IEND", {}}));
    return bytes;
}

NSData interlacedPng(const RawPng& picture, const Samples& samples) {
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop info = png_create_info_struct(png);
    NSData result;
    png_set_write_fn(
        png, &result,
        [](png_structp writer, png_bytep from, std::size_t count) {
            append(*static_cast<NSData*>(png_get_io_ptr(writer)), {from, count});
        },
        [](png_structp) {});
    png_set_IHDR(png, info, picture.width, picture.height, picture.depth, picture.colorType,
                 PNG_INTERLACE_ADAM7, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_write_info(png, info);
    NSData rows = packedRows(samples, pngSamplesPerRow(picture), picture.depth, true);
    std::vector<png_bytep> pointers;
    for (std::size_t y = 0; y < picture.height; ++y) {
        pointers.push_back(rows.data() + y * (rows.size() / picture.height));
    }
    png_write_image(png, pointers.data());
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return result;
}

namespace {

struct TiffFile {
    NSData bytes;
    std::size_t position = 0;
};

TIFF* openTiffFile(TiffFile& file, const char* mode) {
    const auto read = [](thandle_t handle, void* to, tmsize_t count) -> tmsize_t {
        auto& from = *static_cast<TiffFile*>(handle);
        if (from.position >= from.bytes.size()) return 0;
        const std::size_t there =
            std::min(static_cast<std::size_t>(count), from.bytes.size() - from.position);
        std::memcpy(to, from.bytes.data() + from.position, there);
        from.position += there;
        return static_cast<tmsize_t>(there);
    };
    const auto write = [](thandle_t handle, void* from, tmsize_t count) -> tmsize_t {
        auto& to = *static_cast<TiffFile*>(handle);
        const std::size_t end = to.position + static_cast<std::size_t>(count);
        if (end > to.bytes.size()) to.bytes.resize(end);
        std::memcpy(to.bytes.data() + to.position, from, static_cast<std::size_t>(count));
        to.position = end;
        return count;
    };
    const auto seek = [](thandle_t handle, toff_t offset, int whence) -> toff_t {
        auto& moved = *static_cast<TiffFile*>(handle);
        if (whence == SEEK_END) offset += moved.bytes.size();
        if (whence == SEEK_CUR) offset += moved.position;
        return moved.position = offset;
    };
    return TIFFClientOpen(
        "fixture", mode, &file, read, write, seek, [](thandle_t) { return 0; },
        [](thandle_t handle) -> toff_t { return static_cast<TiffFile*>(handle)->bytes.size(); }, nullptr,
        nullptr);
}

void describeTiff(TIFF* tiff, const RawTiff& picture) {
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, picture.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, picture.height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, picture.bits);
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, picture.samplesPerPixel);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC, picture.photometric);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, picture.separate ? PLANARCONFIG_SEPARATE : PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, picture.compression);
    if (picture.predictor != 1) TIFFSetField(tiff, TIFFTAG_PREDICTOR, picture.predictor);
    if (!picture.extraSamples.empty()) {
        TIFFSetField(tiff, TIFFTAG_EXTRASAMPLES, static_cast<int>(picture.extraSamples.size()),
                     picture.extraSamples.data());
    }
    if (picture.tile != 0) {
        TIFFSetField(tiff, TIFFTAG_TILEWIDTH, picture.tile);
        TIFFSetField(tiff, TIFFTAG_TILELENGTH, picture.tile);
    } else {
        TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP,
                     picture.rowsPerStrip == 0 ? picture.height : picture.rowsPerStrip);
    }
    if (!picture.subsampling.empty()) {
        TIFFSetField(tiff, TIFFTAG_YCBCRSUBSAMPLING, picture.subsampling[0], picture.subsampling[1]);
    }
    if (picture.jpegFromRgb) TIFFSetField(tiff, TIFFTAG_JPEGCOLORMODE, JPEGCOLORMODE_RGB);
    if (picture.compression == COMPRESSION_JPEG) TIFFSetField(tiff, TIFFTAG_JPEGQUALITY, 100);
    if (picture.sampleFormat != 0) TIFFSetField(tiff, TIFFTAG_SAMPLEFORMAT, picture.sampleFormat);
    if (!picture.colorMap.empty()) {
        const std::size_t colors = picture.colorMap.size() / 3;
        TIFFSetField(tiff, TIFFTAG_COLORMAP, picture.colorMap.data(), picture.colorMap.data() + colors,
                     picture.colorMap.data() + 2 * colors);
    }
}

void describeTiffAppearance(TIFF* tiff, const RawTiff& picture) {
    if (picture.orientation != 0) TIFFSetField(tiff, TIFFTAG_ORIENTATION, picture.orientation);
    if (picture.resolutionX != 0) {
        TIFFSetField(tiff, TIFFTAG_XRESOLUTION, static_cast<double>(picture.resolutionX));
        TIFFSetField(tiff, TIFFTAG_YRESOLUTION, static_cast<double>(picture.resolutionY));
    }
    if (picture.unit != 0) TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, picture.unit);
    if (!picture.profile.empty()) {
        TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(picture.profile.size()),
                     picture.profile.data());
    }
}

/// The samples of one strip or tile, with tiles filled up with a value that must never be seen.
Samples pieceSamples(const RawTiff& picture, const Samples& samples, std::uint32_t left, std::uint32_t top,
                     std::uint32_t width, std::uint32_t height, int plane) {
    const auto perPixel = static_cast<std::size_t>(picture.samplesPerPixel);
    Samples piece;
    for (std::uint32_t y = top; y < top + height; ++y) {
        for (std::uint32_t x = left; x < left + width; ++x) {
            for (std::size_t s = 0; s < perPixel; ++s) {
                if (picture.separate && s != static_cast<std::size_t>(plane)) continue;
                const bool isInside = x < picture.width && y < picture.height;
                piece.push_back(isInside ? samples[(std::size_t{y} * picture.width + x) * perPixel + s] : 1);
            }
        }
    }
    return piece;
}

void writePieces(TIFF* tiff, const RawTiff& picture, const Samples& samples, int plane) {
    const std::uint32_t stripRows = picture.rowsPerStrip == 0 ? picture.height : picture.rowsPerStrip;
    const std::uint32_t width = picture.tile != 0 ? picture.tile : picture.width;
    const std::uint32_t height = picture.tile != 0 ? picture.tile : stripRows;
    const auto sample = static_cast<std::uint16_t>(plane);
    for (std::uint32_t y = 0; y < picture.height; y += height) {
        for (std::uint32_t x = 0; x < picture.width; x += width) {
            const std::uint32_t rows = picture.tile != 0 ? height : std::min(height, picture.height - y);
            const Samples piece = pieceSamples(picture, samples, x, y, width, rows, plane);
            // libtiff takes 16-bit samples in the machine's order and swaps them itself.
            NSData bytes = packedRows(piece, piece.size() / rows, picture.bits, false);
            const auto size = static_cast<tmsize_t>(bytes.size());
            const tmsize_t written =
                picture.tile != 0
                    ? TIFFWriteEncodedTile(tiff, TIFFComputeTile(tiff, x, y, 0, sample), bytes.data(), size)
                    : TIFFWriteEncodedStrip(tiff, TIFFComputeStrip(tiff, y, sample), bytes.data(), size);
            if (written != size) throw std::runtime_error("the fixture could not be written");
        }
    }
}

} // namespace

NSData rawTiff(const RawTiff& picture, const Samples& samples) {
    TiffFile file;
    TIFF* tiff = openTiffFile(file, picture.mode.c_str());
    describeTiff(tiff, picture);
    describeTiffAppearance(tiff, picture);
    for (int plane = 0; plane < (picture.separate ? picture.samplesPerPixel : 1); ++plane) {
        writePieces(tiff, picture, samples, plane);
    }
    TIFFClose(tiff);
    return std::move(file.bytes);
}

std::uint32_t tiffDataOffset(std::size_t entries) {
    return static_cast<std::uint32_t>(8 + 2 + 12 * entries + 4);
}

NSData tiffOfEntries(const std::vector<TiffEntry>& entries, const NSData& data) {
    NSData bytes = {'I', 'I', 42, 0, 8, 0, 0, 0};
    appendNumber(bytes, entries.size(), 2, false);
    for (const TiffEntry& entry : entries) {
        appendNumber(bytes, entry.tag, 2, false);
        appendNumber(bytes, entry.type, 2, false);
        appendNumber(bytes, entry.count, 4, false);
        appendNumber(bytes, entry.value, 4, false);
    }
    appendNumber(bytes, 0, 4, false);
    append(bytes, data);
    return bytes;
}

int tiffTag(ByteView bytes, std::uint32_t tag, int absent) {
    TiffFile file{{bytes.begin(), bytes.end()}};
    TIFF* tiff = openTiffFile(file, "r");
    std::uint16_t value = 0;
    const bool found = TIFFGetField(tiff, tag, &value) != 0;
    TIFFClose(tiff);
    return found ? value : absent;
}

std::vector<int> tiffExtraSamples(ByteView bytes) {
    TiffFile file{{bytes.begin(), bytes.end()}};
    TIFF* tiff = openTiffFile(file, "r");
    std::uint16_t count = 0;
    std::uint16_t* kinds = nullptr;
    std::vector<int> found;
    if (TIFFGetField(tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds) != 0) found.assign(kinds, kinds + count);
    TIFFClose(tiff);
    return found;
}

} // namespace Imaging::Platform::Fixtures
