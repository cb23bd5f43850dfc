#pragma once

#include "Platform/Codecs/Codec.h"
#include "Platform/Codecs/CodecRegistry.h"

#include <atomic>
#include <memory>
#include <string>
#include <utility>

namespace ImagingTests {

/// Stands in for a format's codec until the end of the scope and counts what it is asked.
class CountedCodec {
public:
    explicit CountedCodec(const std::string& format)
        : m_original(Imaging::Platform::codecForFormat(format)),
          m_counter(std::make_shared<Counter>(m_original)) {
        Imaging::Platform::registerCodec(m_counter);
    }
    ~CountedCodec() { Imaging::Platform::registerCodec(m_original); }
    CountedCodec(const CountedCodec&) = delete;
    CountedCodec& operator=(const CountedCodec&) = delete;

    int encodings() const { return m_counter->encodings; }
    int decodings() const { return m_counter->decodings; }
    void failToEncode() { m_counter->failing = true; }

private:
    struct Counter : Imaging::Platform::Codec {
        explicit Counter(std::shared_ptr<const Codec> its) : original(std::move(its)) {}
        std::shared_ptr<const Codec> original;
        mutable std::atomic<int> encodings = 0;
        mutable std::atomic<int> decodings = 0;
        std::atomic<bool> failing = false;

        std::string_view formatName() const override { return original->formatName(); }
        bool recognises(Imaging::Platform::ByteView bytes) const override {
            return original->recognises(bytes);
        }
        Imaging::Platform::PictureHeader readHeader(Imaging::Platform::ByteView bytes) const override {
            return original->readHeader(bytes);
        }
        Imaging::Platform::DecodedPicture
        decode(Imaging::Platform::ByteView bytes,
               const Imaging::Platform::PictureLimits& limits) const override {
            ++decodings;
            return original->decode(bytes, limits);
        }
        Imaging::Platform::NSData encode(const Imaging::Platform::PictureView& picture,
                                         const Imaging::Platform::EncodeOptions& options) const override {
            ++encodings;
            if (failing)
                throw Imaging::Platform::CodecException(Imaging::Platform::NSErrorCode::CorruptData,
                                                        "as asked");
            return original->encode(picture, options);
        }
    };

    std::shared_ptr<const Imaging::Platform::Codec> m_original;
    std::shared_ptr<Counter> m_counter;
};

} // namespace ImagingTests
