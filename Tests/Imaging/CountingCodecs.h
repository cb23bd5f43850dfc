#pragma once

#include "Platform/Codecs/Codec.h"

#include <atomic>
#include <memory>
#include <string>
#include <utility>

namespace ImagingTests {

/// Stands in for a format's codec until the end of the scope and counts what it is asked.
class CountedCodec {
public:
    explicit CountedCodec(const std::string& format)
        : m_original(Platform::codecForFormat(format)), m_counter(std::make_shared<Counter>(m_original)) {
        Platform::registerCodec(m_counter);
    }
    ~CountedCodec() { Platform::registerCodec(m_original); }
    CountedCodec(const CountedCodec&) = delete;
    CountedCodec& operator=(const CountedCodec&) = delete;

    int encodings() const { return m_counter->encodings; }
    int decodings() const { return m_counter->decodings; }
    void failToEncode() { m_counter->failing = true; }

private:
    struct Counter : Platform::Codec {
        explicit Counter(std::shared_ptr<const Codec> its) : original(std::move(its)) {}
        std::shared_ptr<const Codec> original;
        mutable std::atomic<int> encodings = 0;
        mutable std::atomic<int> decodings = 0;
        std::atomic<bool> failing = false;

        std::string_view formatName() const override { return original->formatName(); }
        bool recognises(Platform::ByteView bytes) const override { return original->recognises(bytes); }
        Platform::PictureHeader readHeader(Platform::ByteView bytes) const override {
            return original->readHeader(bytes);
        }
        Platform::DecodedPicture decode(Platform::ByteView bytes,
                                        const Platform::PictureLimits& limits) const override {
            ++decodings;
            return original->decode(bytes, limits);
        }
        Platform::NSData encode(const Platform::PictureView& picture,
                                const Platform::EncodeOptions& options) const override {
            ++encodings;
            if (failing) throw Platform::CodecException(Platform::NSErrorCode::CorruptData, "as asked");
            return original->encode(picture, options);
        }
    };

    std::shared_ptr<const Platform::Codec> m_original;
    std::shared_ptr<Counter> m_counter;
};

} // namespace ImagingTests
