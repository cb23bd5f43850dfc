// Walks over boxes of the ISO base media format: a length, four letters, and that many bytes.

#include "Platform/Codecs/Formats/IsoBoxes.h"

#include "Platform/Codecs/Support/CodecSupport.h"

namespace Imaging::Platform {

bool takeBox(ByteView& bytes, IsoBox& box) {
    constexpr std::size_t shortHeader = 8;
    constexpr std::size_t longHeader = 16;
    if (bytes.size() < shortHeader) return false;
    box.type = {static_cast<const char*>(static_cast<const void*>(bytes.data() + 4)), 4};
    std::uint64_t size = bigEndian(bytes, 0, 4);
    std::size_t header = shortHeader;
    if (size == 1) { // the length has 64 bits and follows
        if (bytes.size() < longHeader) return false;
        size = bigEndian(bytes, shortHeader, 8);
        header = longHeader;
    }
    if (size == 0) size = bytes.size(); // to the end
    if (size < header) return false;
    box.isComplete = size <= bytes.size();
    const auto there = static_cast<std::size_t>(box.isComplete ? size : bytes.size());
    box.contents = bytes.subspan(header, there - header);
    bytes = bytes.subspan(there);
    return true;
}

ByteView findBox(ByteView bytes, std::string_view type) {
    IsoBox box;
    while (takeBox(bytes, box)) {
        if (box.type == type) return box.contents;
    }
    return {};
}

} // namespace Imaging::Platform
