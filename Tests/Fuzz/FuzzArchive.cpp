#include "Tests/Fuzz/ArchivedNode.h"
#include "Tests/Fuzz/Fuzz.h"

/// Archives of an object of our own, and whatever else the library knows the classes of.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Platform::NSArchivableClass<Fuzz::ArchivedNode> registration("FuzzedNode");
    Platform::looksLikePropertyList({data, size});
    try {
        Platform::unarchiveObjectWithData({data, size});
    } catch (const Platform::NSException&) { // damaged, and refused
    }
    return 0;
}
