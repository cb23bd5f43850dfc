#include "Platform/Codecs/Support/CodecSupport.h"

#include <algorithm>
#include <mutex>

namespace Imaging::Platform {

namespace {

struct RegisteredCodec {
    std::string formatName;
    std::shared_ptr<const Codec> codec;
};

struct Registry {
    std::mutex lock;
    std::vector<RegisteredCodec> codecs; // in the order in which they are asked
    PictureLimits limits;
};

/// In the order in which they are asked, which matters to nobody: no bytes begin like two formats.
std::vector<std::shared_ptr<const Codec>> builtInCodecs() {
    return {
        makeJpegCodec(),     makePngCodec(), makeTiffCodec(), makeGifCodec(), makeBmpCodec(), makeWebpCodec(),
#ifdef IMAGING_WITH_HEIF
        makeHeifCodec(),
#endif
#ifdef IMAGING_WITH_JXL
        makeJxlCodec(),
#endif
        makeJpeg2000Codec(),
    };
}

/// Made at the first use and never destroyed, so that static objects of any file may decode pictures while
/// they are constructed and destroyed.
Registry& registry() {
    static Registry& instance = *[] {
        auto* made = new Registry;
        for (const auto& codec : builtInCodecs()) {
            made->codecs.push_back({std::string(codec->formatName()), codec});
        }
        return made;
    }();
    return instance;
}

/// A copy, because codecs are foreign code and must not be called under the lock.
std::vector<RegisteredCodec> registeredCodecs() {
    Registry& all = registry();
    const std::lock_guard guard(all.lock);
    return all.codecs;
}

std::shared_ptr<const Codec> requiredCodecForData(ByteView bytes) {
    if (bytes.empty()) throw CodecException(NSErrorCode::UnsupportedFormat, "there is no data");
    std::shared_ptr<const Codec> codec = codecForData(bytes);
    if (codec == nullptr) {
        std::string known;
        for (const RegisteredCodec& entry : registeredCodecs()) {
            known += (known.empty() ? "" : ", ") + entry.formatName;
        }
        throw CodecException(NSErrorCode::UnsupportedFormat,
                             "the data is not a picture of a known format (" + known + ")");
    }
    return codec;
}

} // namespace

CodecException::CodecException(NSErrorCode code, std::string_view reason)
    : NSException(NSGenericException, reason), m_code(code) {}

Codec::~Codec() = default;

void Codec::check(ByteView bytes, const PictureLimits& limits) const { decode(bytes, limits); }

PictureLimits pictureLimits() {
    Registry& all = registry();
    const std::lock_guard guard(all.lock);
    return all.limits;
}

void setPictureLimits(const PictureLimits& limits) {
    Registry& all = registry();
    const std::lock_guard guard(all.lock);
    all.limits = limits;
}

std::shared_ptr<const Codec> codecForData(ByteView bytes) {
    for (const RegisteredCodec& entry : registeredCodecs()) {
        if (entry.codec->recognises(bytes)) return entry.codec;
    }
    return nullptr;
}

std::shared_ptr<const Codec> codecForFormat(std::string_view formatName) {
    for (const RegisteredCodec& entry : registeredCodecs()) {
        if (entry.formatName == formatName) return entry.codec;
    }
    return nullptr;
}

void registerCodec(std::shared_ptr<const Codec> codec) {
    if (codec == nullptr) throw NSException(NSInvalidArgumentException, "a codec must not be null");
    std::string name(codec->formatName());
    std::shared_ptr<const Codec> replaced; // destroyed after the lock is given up, being foreign code
    Registry& all = registry();
    const std::lock_guard guard(all.lock);
    const auto same = std::find_if(all.codecs.begin(), all.codecs.end(),
                                   [&](const RegisteredCodec& entry) { return entry.formatName == name; });
    if (same != all.codecs.end()) {
        replaced = std::move(same->codec);
        all.codecs.erase(same);
    }
    all.codecs.insert(all.codecs.begin(), {std::move(name), std::move(codec)});
}

DecodedPicture decodePicture(ByteView bytes) {
    return requiredCodecForData(bytes)->decode(bytes, pictureLimits());
}

PictureHeader readPictureHeader(ByteView bytes) { return requiredCodecForData(bytes)->readHeader(bytes); }

std::size_t checkPictureLimits(const PictureHeader& header, const PictureLimits& limits) {
    const std::string size = std::to_string(header.width) + " x " + std::to_string(header.height);
    if (header.width == 0 || header.height == 0) {
        throw CodecException(NSErrorCode::CorruptData,
                             "the picture is " + size + " pixels, which is nothing");
    }
    const std::uint64_t pixels = std::uint64_t{header.width} * header.height; // 32 by 32 bits always fit
    if (pixels > limits.maximumPixels) {
        throw CodecException(NSErrorCode::TooLarge, "the picture is " + size +
                                                        " pixels, more than the limit of " +
                                                        std::to_string(limits.maximumPixels) + " pixels");
    }
    const std::optional<std::uint64_t> bytes = checkedProduct({pixels, header.bytesPerPixel()});
    if (!bytes || *bytes > limits.maximumBytes) {
        throw CodecException(NSErrorCode::TooLarge, "the picture of " + size +
                                                        " pixels takes more memory than the limit of " +
                                                        std::to_string(limits.maximumBytes) + " bytes");
    }
    return header.width * header.bytesPerPixel();
}

} // namespace Imaging::Platform
