#include "Platform/Codecs/ColorProfileName.h"
#include "Platform/Codecs/Support/ColorProfile.h"
#include "Tests/Fuzz/Fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Imaging::Platform::ByteView bytes(data, size);
    Imaging::Platform::colorProfileName(bytes);
    Imaging::Platform::matchingProfile(bytes, Imaging::Platform::SampleColor::RGB);
    Imaging::Platform::matchingProfile(bytes, Imaging::Platform::SampleColor::White);
    return 0;
}
