#include "Platform/Codecs/Support/CodecSupport.h"
#include "Tests/Fuzz/Fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Platform::ByteView bytes(data, size);
    Platform::colorProfileName(bytes);
    Platform::matchingProfile(bytes, Platform::SampleColor::RGB);
    Platform::matchingProfile(bytes, Platform::SampleColor::White);
    return 0;
}
