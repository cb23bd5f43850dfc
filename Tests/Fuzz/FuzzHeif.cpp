#include "Tests/Fuzz/Fuzz.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Fuzz::decode("HEIF", {data, size});
    return 0;
}
