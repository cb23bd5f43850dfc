#include "Platform/Codecs/Support/ExifOrientation.h"
#include "Tests/Fuzz/Fuzz.h"

#include <cmath>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const Imaging::Platform::ExifFacts facts = Imaging::Platform::readExif({data, size});
    const bool isSane = facts.orientation >= 1 && facts.orientation <= 8 && facts.resolutionX >= 0 &&
                        facts.resolutionY >= 0 && std::isfinite(facts.resolutionX) &&
                        std::isfinite(facts.resolutionY);
    if (!isSane) std::abort();
    return 0;
}
