#include "Tests/Platform/Codecs/LaterFixtures.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <stdexcept>

#include <gif_lib.h>
#include <openjpeg.h>
#include <webp/encode.h>

namespace Imaging::Platform::Fixtures {

namespace {

void require(bool condition) {
    if (!condition) throw std::runtime_error("the fixture could not be made");
}

ColorMapObject* colorMap(const std::vector<Rgb>& colors) {
    ColorMapObject* map = GifMakeMapObject(static_cast<int>(colors.size()), nullptr);
    require(map != nullptr);
    for (std::size_t i = 0; i < colors.size(); ++i)
        map->Colors[i] = {colors[i][0], colors[i][1], colors[i][2]};
    return map;
}

int appendGif(GifFileType* file, const GifByteType* from, int count) {
    appendBytes(*static_cast<NSData*>(file->UserData), {from, static_cast<std::size_t>(count)});
    return count;
}

void putGifExtensions(GifFileType* file, const RawGif& picture) {
    if (!picture.profile.empty()) {
        EGifPutExtensionLeader(file, APPLICATION_EXT_FUNC_CODE);
        EGifPutExtensionBlock(file, 11, "ICCRGBG1012");
        for (std::size_t at = 0; at < picture.profile.size(); at += 200) {
            const std::size_t size = std::min<std::size_t>(200, picture.profile.size() - at);
            EGifPutExtensionBlock(file, static_cast<int>(size), picture.profile.data() + at);
        }
        EGifPutExtensionTrailer(file);
    }
    if (picture.transparent < 0) return;
    const std::array<GifByteType, 4> control = {1, 0, 0, static_cast<GifByteType>(picture.transparent)};
    EGifPutExtension(file, GRAPHICS_EXT_FUNC_CODE, 4, control.data());
}

void putGifPixels(GifFileType* file, const RawGif& picture, const Samples& indices) {
    ColorMapObject* own = picture.ownColors.empty() ? nullptr : colorMap(picture.ownColors);
    const auto width = static_cast<int>(picture.width);
    require(EGifPutImageDesc(file, static_cast<int>(picture.left), static_cast<int>(picture.top), width,
                             static_cast<int>(picture.height), picture.interlaced, own) == GIF_OK);
    if (own != nullptr) GifFreeMapObject(own);
    std::vector<std::size_t> order;
    if (picture.interlaced) {
        for (const auto& [first, step] : {std::pair{0, 8}, {4, 8}, {2, 4}, {1, 2}}) {
            for (auto y = static_cast<std::size_t>(first); y < picture.height;
                 y += static_cast<std::size_t>(step)) {
                order.push_back(y);
            }
        }
    } else {
        for (std::size_t y = 0; y < picture.height; ++y) order.push_back(y);
    }
    for (const std::size_t y : order) {
        NSData row(indices.begin() + static_cast<std::ptrdiff_t>(y * picture.width),
                   indices.begin() + static_cast<std::ptrdiff_t>((y + 1) * picture.width));
        require(EGifPutLine(file, row.data(), width) == GIF_OK);
    }
}

} // namespace

void appendLittle(NSData& to, std::uint64_t value, int count) {
    for (int i = 0; i < count; ++i) to.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

void appendBig(NSData& to, std::uint64_t value, int count) {
    for (int i = count - 1; i >= 0; --i) to.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}

void appendBytes(NSData& to, ByteView bytes) {
    std::copy(bytes.begin(), bytes.end(), std::back_inserter(to));
}

NSData rawGif(const RawGif& picture, const Samples& indices) {
    NSData bytes;
    int error = 0;
    GifFileType* file = EGifOpen(&bytes, appendGif, &error);
    require(file != nullptr);
    EGifSetGifVersion(file, true);
    ColorMapObject* colors = picture.colors.empty() ? nullptr : colorMap(picture.colors);
    const std::uint32_t width = picture.screenWidth == 0 ? picture.width : picture.screenWidth;
    const std::uint32_t height = picture.screenHeight == 0 ? picture.height : picture.screenHeight;
    require(EGifPutScreenDesc(file, static_cast<int>(width), static_cast<int>(height), 8, 0, colors) ==
            GIF_OK);
    if (colors != nullptr) GifFreeMapObject(colors);
    for (int i = 0; i < picture.pictures; ++i) {
        putGifExtensions(file, picture);
        putGifPixels(file, picture, indices);
    }
    require(EGifCloseFile(file, &error) == GIF_OK);
    return bytes;
}

NSData rawBmp(const RawBmp& picture, const NSData& pixels) {
    NSData info;
    appendLittle(info, picture.headerSize, 4);
    const int side = picture.headerSize == 12 ? 2 : 4;
    appendLittle(info, static_cast<std::uint32_t>(picture.width), side);
    appendLittle(info, static_cast<std::uint32_t>(picture.height), side);
    appendLittle(info, 1, 2);
    appendLittle(info, static_cast<std::uint64_t>(picture.bits), 2);
    if (picture.headerSize > 16) {
        appendLittle(info, picture.compression, 4);
        appendLittle(info, pixels.size(), 4);
        appendLittle(info, static_cast<std::uint32_t>(picture.perMetreX), 4);
        appendLittle(info, static_cast<std::uint32_t>(picture.perMetreY), 4);
        appendLittle(info, picture.colorsUsed, 4);
        appendLittle(info, 0, 4);
    }
    for (const std::uint32_t mask : picture.masks) appendLittle(info, mask, 4); // in the header or behind it
    info.resize(std::max<std::size_t>(info.size(), picture.headerSize));
    for (const Rgb& color : picture.colors) {
        for (const std::size_t i : {2U, 1U, 0U}) info.push_back(color[i]);
        if (picture.headerSize != 12) info.push_back(0);
    }
    info.insert(info.end(), picture.gap, 0xee);
    if (!picture.profile.empty()) {
        NSData place;
        appendLittle(place, 0x4d424544, 4);
        std::copy(place.begin(), place.end(), info.begin() + 56);
        place.clear();
        appendLittle(place, info.size() + pixels.size(), 4);
        appendLittle(place, picture.profile.size(), 4);
        std::copy(place.begin(), place.end(), info.begin() + 112);
    }
    NSData bytes = {'B', 'M'};
    appendLittle(bytes, 14 + info.size() + pixels.size() + picture.profile.size(), 4);
    appendLittle(bytes, 0, 4);
    appendLittle(bytes, 14 + info.size(), 4);
    appendBytes(bytes, info);
    appendBytes(bytes, pixels);
    appendBytes(bytes, picture.profile);
    return bytes;
}

NSData bmpRows(const RawBmp& picture, const std::vector<std::uint32_t>& pixels) {
    const auto width = static_cast<std::size_t>(picture.width);
    const auto height = static_cast<std::size_t>(std::abs(picture.height));
    NSData bytes;
    for (std::size_t i = 0; i < height; ++i) {
        const std::size_t y = picture.height < 0 ? i : height - 1 - i;
        NSData row;
        unsigned pending = 0;
        int count = 0;
        for (std::size_t x = 0; x < width; ++x) {
            const std::uint32_t pixel = pixels[y * width + x];
            if (picture.bits >= 8) {
                appendLittle(row, pixel, picture.bits / 8);
                continue;
            }
            pending = pending << picture.bits | pixel;
            count += picture.bits;
            if (count < 8 && x + 1 < width) continue;
            row.push_back(static_cast<std::uint8_t>(pending << (8 - count)));
            pending = 0;
            count = 0;
        }
        row.resize((row.size() + 3) / 4 * 4, 0xaa);
        appendBytes(bytes, row);
    }
    return bytes;
}

NSData rawWebp(const RawWebp& picture, const Samples& samples) {
    const NSData bytes(samples.begin(), samples.end());
    const auto width = static_cast<int>(picture.width);
    const auto height = static_cast<int>(picture.height);
    WebPConfig config;
    WebPPicture source;
    require(WebPConfigInit(&config) != 0 && WebPPictureInit(&source) != 0);
    config.lossless = picture.quality < 0 ? 1 : 0;
    config.exact = 1; // colours stay where alpha is 0
    config.quality = picture.quality < 0 ? 50.0F : static_cast<float>(picture.quality);
    source.use_argb = config.lossless;
    source.width = width;
    source.height = height;
    require((picture.hasAlpha ? WebPPictureImportRGBA(&source, bytes.data(), width * 4)
                              : WebPPictureImportRGB(&source, bytes.data(), width * 3)) != 0);
    NSData plain;
    source.custom_ptr = &plain;
    source.writer = [](const std::uint8_t* data, std::size_t size, const WebPPicture* from) {
        appendBytes(*static_cast<NSData*>(from->custom_ptr), {data, size});
        return 1;
    };
    require(WebPEncode(&config, &source) != 0);
    WebPPictureFree(&source);
    if (picture.profile.empty() && picture.exif.empty()) return plain;
    // The extended layout (RFC 9649, 2.7): flags and size, the profile, the picture's own chunks, the record.
    NSData chunks = {'W', 'E', 'B', 'P', 'V', 'P', '8', 'X', 10, 0, 0, 0};
    const int flags =
        (picture.profile.empty() ? 0 : 0x20) | (picture.hasAlpha ? 0x10 : 0) | (picture.exif.empty() ? 0 : 8);
    appendLittle(chunks, static_cast<std::uint64_t>(flags), 4);
    appendLittle(chunks, picture.width - 1, 3);
    appendLittle(chunks, picture.height - 1, 3);
    const auto add = [&](const char* name, const NSData& data) {
        if (data.empty()) return;
        chunks.insert(chunks.end(), name, name + 4);
        appendLittle(chunks, data.size(), 4);
        appendBytes(chunks, data);
        if (data.size() % 2 != 0) chunks.push_back(0);
    };
    add("ICCP", picture.profile);
    appendBytes(chunks, ByteView(plain).subspan(plain.size() >= 30 && plain[15] == 'X' ? 30 : 12));
    add("EXIF", picture.exif);
    NSData result = {'R', 'I', 'F', 'F'};
    appendLittle(result, chunks.size(), 4);
    appendBytes(result, chunks);
    return result;
}

namespace {

struct MemoryFile {
    NSData bytes;
    std::size_t position = 0;
};

opj_stream_t* memoryStream(MemoryFile& file) {
    opj_stream_t* stream = opj_stream_default_create(OPJ_FALSE);
    opj_stream_set_user_data(stream, &file, nullptr);
    opj_stream_set_write_function(stream, [](void* from, OPJ_SIZE_T count, void* user) {
        auto& to = *static_cast<MemoryFile*>(user);
        to.bytes.resize(std::max(to.bytes.size(), to.position + count));
        std::memcpy(to.bytes.data() + to.position, from, count);
        to.position += count;
        return count;
    });
    opj_stream_set_seek_function(stream, [](OPJ_OFF_T at, void* user) {
        static_cast<MemoryFile*>(user)->position = static_cast<std::size_t>(at);
        return OPJ_TRUE;
    });
    opj_stream_set_skip_function(stream, [](OPJ_OFF_T count, void* user) {
        static_cast<MemoryFile*>(user)->position += static_cast<std::size_t>(count);
        return count;
    });
    return stream;
}

opj_image_t* jpeg2000Image(const RawJpeg2000& picture, const Samples& samples) {
    std::vector<opj_image_cmptparm_t> parameters(static_cast<std::size_t>(picture.components));
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const std::uint32_t step = i == 1 || i == 2 ? picture.reduction : 1;
        parameters[i].dx = parameters[i].dy = step;
        parameters[i].w = (picture.width + step - 1) / step;
        parameters[i].h = (picture.height + step - 1) / step;
        parameters[i].prec = static_cast<OPJ_UINT32>(picture.bits);
        parameters[i].sgnd = picture.isSigned ? 1 : 0;
    }
    opj_image_t* image = opj_image_create(static_cast<OPJ_UINT32>(picture.components), parameters.data(),
                                          static_cast<OPJ_COLOR_SPACE>(picture.colorSpace));
    require(image != nullptr);
    image->x1 = picture.width;
    image->y1 = picture.height;
    const int shift = picture.isSigned ? 1 << (picture.bits - 1) : 0;
    for (std::size_t i = 0; i < parameters.size(); ++i) {
        const opj_image_comp_t& component = image->comps[i];
        for (std::size_t y = 0; y < component.h; ++y) {
            for (std::size_t x = 0; x < component.w; ++x) {
                const std::size_t pixel = y * component.dy * picture.width + x * component.dx;
                component.data[y * component.w + x] = samples[pixel * parameters.size() + i] - shift;
            }
        }
    }
    if (picture.alpha >= 0) image->comps[picture.alpha].alpha = 1;
    return image;
}

/// Puts a profile in place of the colour box's enumerated space, which openjpeg does not.
void setColorBox(NSData& bytes, const NSData& profile) {
    const auto find = [&](std::string_view name) {
        return std::search(bytes.begin(), bytes.end(), name.begin(), name.end()) - bytes.begin() - 4;
    };
    NSData box;
    appendBig(box, 8 + 3 + profile.size(), 4);
    const NSData start = {'c', 'o', 'l', 'r', 2, 0, 0};
    appendBytes(box, start);
    appendBytes(box, profile);
    const auto at = bytes.begin() + find("colr");
    bytes.insert(bytes.erase(at, at + 15), box.begin(), box.end());
    const auto header = bytes.begin() + find("jp2h");
    NSData size;
    appendBig(size, header[2] * 256U + header[3] + box.size() - 15, 4);
    std::copy(size.begin(), size.end(), header);
}

} // namespace

NSData rawJpeg2000(const RawJpeg2000& picture, const Samples& samples) {
    opj_image_t* image = jpeg2000Image(picture, samples);
    opj_cparameters_t parameters;
    opj_set_default_encoder_parameters(&parameters);
    parameters.numresolution = std::min(picture.width, picture.height) < 8 ? 1 : 3;
    parameters.tcp_numlayers = 1;
    parameters.cp_disto_alloc = 1;
    parameters.tcp_mct = 0;
    if (picture.tile != 0) {
        parameters.tile_size_on = OPJ_TRUE;
        parameters.cp_tdx = parameters.cp_tdy = static_cast<int>(picture.tile);
    }
    MemoryFile file;
    opj_stream_t* stream = memoryStream(file);
    opj_codec_t* codec = opj_create_compress(picture.isFile ? OPJ_CODEC_JP2 : OPJ_CODEC_J2K);
    require(opj_setup_encoder(codec, &parameters, image) != 0 &&
            opj_start_compress(codec, image, stream) != 0 && opj_encode(codec, stream) != 0 &&
            opj_end_compress(codec, stream) != 0);
    opj_stream_destroy(stream);
    opj_destroy_codec(codec);
    opj_image_destroy(image);
    if (!picture.profile.empty()) setColorBox(file.bytes, picture.profile);
    if (picture.colorSpace == OPJ_CLRSPC_CMYK) { // which the library leaves unsaid
        const std::string_view name = "colr";
        *(std::search(file.bytes.begin(), file.bytes.end(), name.begin(), name.end()) + 10) = 12;
    }
    return std::move(file.bytes);
}

} // namespace Imaging::Platform::Fixtures
