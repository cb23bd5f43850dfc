#include "Tests/Fuzz/ArchivedNode.h"
#include "Tests/Fuzz/Fuzz.h"

/// Archives of an object of our own, and whatever else the library knows the classes of.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Imaging::Platform::NSArchivableClass<Fuzz::ArchivedNode> registration("FuzzedNode");
    Imaging::Platform::looksLikePropertyList({data, size});
    try {
        Imaging::Platform::unarchiveObjectWithData({data, size});
    } catch (const Imaging::Platform::NSException&) { // damaged, and refused
    }
    return 0;
}
