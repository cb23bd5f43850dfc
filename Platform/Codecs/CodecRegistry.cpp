// The formats that there are: a list under a lock, of which every question takes a copy, since codecs are
// foreign code.

#include "Platform/Codecs/CodecRegistry.h"

#include "Platform/Codecs/Formats/BuiltInCodecs.h"

#include <algorithm>
#include <mutex>
#include <utility>
#include <vector>

namespace Imaging::Platform {

namespace {

struct RegisteredCodec {
    std::string formatName;
    std::shared_ptr<const Codec> codec;
};

struct Registry {
    std::mutex lock;
    std::vector<RegisteredCodec> codecs; // in the order in which they are asked
};

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

} // namespace Imaging::Platform
