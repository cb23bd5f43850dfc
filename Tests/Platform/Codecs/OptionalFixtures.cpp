#include "Tests/Platform/Codecs/LaterFixtures.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>

#ifdef IMAGING_WITH_HEIF
#include <libheif/heif.h>
#endif
#ifdef IMAGING_WITH_JXL
#include <jxl/encode.h>
#endif

/// LeakSanitizer's own hook: the encoder that makes HEIC for the tests leaks some of its settings.
extern "C" const char* __lsan_default_suppressions(); // NOLINT(bugprone-reserved-identifier)
extern "C" const char* __lsan_default_suppressions() { return "leak:libx265"; }

namespace Imaging::Platform::Fixtures {

namespace {

[[maybe_unused]] void require(bool condition) {
    if (!condition) throw std::runtime_error("the fixture could not be made");
}

} // namespace

#ifdef IMAGING_WITH_HEIF

namespace {

/// Of more than 8 bits in one plane: with separate ones the library's AV1 encoder fails.
heif_image* heifImage(const RawHeif& picture, const Samples& samples) {
    const auto width = static_cast<int>(picture.width);
    const auto height = static_cast<int>(picture.height);
    const bool isWide = picture.bits > 8;
    const std::size_t perPixel = picture.hasAlpha ? 4 : 3;
    const heif_chroma chroma = isWide             ? heif_chroma_interleaved_RRGGBB_LE
                               : picture.hasAlpha ? heif_chroma_interleaved_RGBA
                                                  : heif_chroma_interleaved_RGB;
    heif_image* image = nullptr;
    require(heif_image_create(width, height, heif_colorspace_RGB, chroma, &image).code == heif_error_Ok);
    constexpr auto plane = heif_channel_interleaved;
    require(heif_image_add_plane(image, plane, width, height, picture.bits).code == heif_error_Ok);
    int stride = 0;
    std::uint8_t* const to = heif_image_get_plane(image, plane, &stride);
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const std::size_t y = i / perPixel / picture.width;
        NSData bytes;
        appendLittle(bytes, samples[i], isWide ? 2 : 1);
        std::copy(bytes.begin(), bytes.end(),
                  to + y * static_cast<std::size_t>(stride) +
                      (i - y * picture.width * perPixel) * bytes.size());
    }
    return image;
}

} // namespace

NSData rawHeif(const RawHeif& picture, const Samples& samples) {
    heif_context* context = heif_context_alloc();
    heif_encoder* encoder = nullptr;
    const heif_compression_format format = picture.isHevc ? heif_compression_HEVC : heif_compression_AV1;
    require(heif_context_get_encoder_for_format(context, format, &encoder).code == heif_error_Ok);
    require(heif_encoder_set_lossless(encoder, 1).code == heif_error_Ok);
    heif_encoder_set_parameter(encoder, "chroma", "444");
    heif_image* image = heifImage(picture, samples);
    // Without the identity matrix, RGB would be lost in YCbCr.
    heif_color_profile_nclx* nclx = heif_nclx_color_profile_alloc();
    nclx->matrix_coefficients = heif_matrix_coefficients_RGB_GBR;
    nclx->full_range_flag = 1;
    require(heif_image_set_nclx_color_profile(image, nclx).code == heif_error_Ok);
    heif_encoding_options* options = heif_encoding_options_alloc();
    options->output_nclx_profile = nclx;
    options->save_two_colr_boxes_when_ICC_and_nclx_available = 1;
    if (!picture.profile.empty()) {
        heif_image_set_raw_color_profile(image, "prof", picture.profile.data(), picture.profile.size());
    }
    heif_image_handle* handle = nullptr;
    require(heif_context_encode_image(context, image, encoder, options, &handle).code == heif_error_Ok);
    if (!picture.exif.empty()) {
        heif_context_add_exif_metadata(context, handle, picture.exif.data(),
                                       static_cast<int>(picture.exif.size()));
    }
    NSData bytes;
    heif_writer writer{};
    writer.writer_api_version = 1;
    writer.write = [](heif_context*, const void* data, std::size_t size, void* user) {
        appendBytes(*static_cast<NSData*>(user), {static_cast<const std::uint8_t*>(data), size});
        return heif_error{heif_error_Ok, heif_suberror_Unspecified, ""};
    };
    require(heif_context_write(context, &writer, &bytes).code == heif_error_Ok);
    heif_image_handle_release(handle);
    heif_encoding_options_free(options);
    heif_nclx_color_profile_free(nclx);
    heif_image_release(image);
    heif_encoder_release(encoder);
    heif_context_free(context);
    return bytes;
}

#endif

#ifdef IMAGING_WITH_JXL

NSData rawJxl(const RawJxl& picture, const Samples& samples) {
    JxlEncoder* encoder = JxlEncoderCreate(nullptr);
    const bool isGray = picture.samplesPerPixel < 3;
    const bool hasAlpha = picture.samplesPerPixel % 2 == 0;
    JxlBasicInfo info;
    JxlEncoderInitBasicInfo(&info);
    info.xsize = picture.width;
    info.ysize = picture.height;
    info.bits_per_sample = static_cast<std::uint32_t>(picture.bits);
    info.num_color_channels = isGray ? 1 : 3;
    info.num_extra_channels = hasAlpha ? 1 : 0;
    info.alpha_bits = hasAlpha ? info.bits_per_sample : 0;
    info.orientation = static_cast<JxlOrientation>(picture.orientation);
    info.uses_original_profile = JXL_TRUE;
    require(JxlEncoderSetBasicInfo(encoder, &info) == JXL_ENC_SUCCESS);
    if (picture.profile.empty()) {
        JxlColorEncoding color;
        JxlColorEncodingSetToSRGB(&color, isGray ? JXL_TRUE : JXL_FALSE);
        require(JxlEncoderSetColorEncoding(encoder, &color) == JXL_ENC_SUCCESS);
    } else {
        require(JxlEncoderSetICCProfile(encoder, picture.profile.data(), picture.profile.size()) ==
                JXL_ENC_SUCCESS);
    }
    if (!picture.exif.empty()) {
        require(JxlEncoderUseBoxes(encoder) == JXL_ENC_SUCCESS);
        NSData box(4, 0);
        appendBytes(box, picture.exif);
        require(JxlEncoderAddBox(encoder, "Exif", box.data(), box.size(), JXL_FALSE) == JXL_ENC_SUCCESS);
        JxlEncoderCloseBoxes(encoder);
    }
    JxlEncoderFrameSettings* settings = JxlEncoderFrameSettingsCreate(encoder, nullptr);
    JxlEncoderSetFrameLossless(settings, JXL_TRUE);
    const auto perPixel = static_cast<std::uint32_t>(picture.samplesPerPixel);
    const JxlPixelFormat format = {perPixel, JXL_TYPE_UINT16, JXL_LITTLE_ENDIAN, 0};
    NSData bytes;
    for (const std::uint16_t sample : samples)
        appendLittle(bytes, sample * (picture.bits == 8 ? 257U : 1U), 2);
    require(JxlEncoderAddImageFrame(settings, &format, bytes.data(), bytes.size()) == JXL_ENC_SUCCESS);
    JxlEncoderCloseInput(encoder);
    NSData result(std::size_t{1} << 20);
    std::uint8_t* next = result.data();
    std::size_t left = result.size();
    require(JxlEncoderProcessOutput(encoder, &next, &left) == JXL_ENC_SUCCESS);
    result.resize(result.size() - left);
    JxlEncoderDestroy(encoder);
    return result;
}

#endif

} // namespace Imaging::Platform::Fixtures
