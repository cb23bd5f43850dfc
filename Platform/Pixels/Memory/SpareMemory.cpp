// A short list of mappings under a lock, the latest one last. The system may take their pages back
// meanwhile, so nothing is lost by keeping them.

#include "Platform/Pixels/Memory/SpareMemory.h"

#include <algorithm>
#include <mutex>
#include <sys/mman.h>
#include <vector>

namespace Imaging::Platform {

namespace {

constexpr std::size_t mostMappings = 4;
constexpr std::size_t mostBytes = std::size_t{256} << 20;

struct Mapping {
    std::uint8_t* bytes;
    std::size_t length;
};

/// The mappings that are kept, the latest one last.
struct Spare {
    std::mutex lock;
    std::vector<Mapping> mappings;
    std::size_t total = 0;
};

Spare& spare() {
    static Spare& instance = *[] {
        auto* const made = new Spare; // never freed: buffers may outlive static objects
        made->mappings.reserve(mostMappings);
        return made;
    }();
    return instance;
}

} // namespace

std::uint8_t* takeSpareMemory(std::size_t& length) {
    const std::lock_guard guard(spare().lock);
    std::vector<Mapping>& mappings = spare().mappings;
    const auto fits = [&](const Mapping& one) {
        return one.length >= length && one.length <= length + length / 4;
    };
    const auto found = std::find_if(mappings.rbegin(), mappings.rend(), fits);
    if (found == mappings.rend()) return nullptr;
    const Mapping taken = *found;
    mappings.erase(std::next(found).base());
    spare().total -= taken.length;
    length = taken.length;
    return taken.bytes;
}

void giveSpareMemory(std::uint8_t* bytes, std::size_t length) {
    // Nobody needs what is in it, so the system need not save it either.
    const bool isKept = length <= mostBytes && madvise(bytes, length, MADV_FREE) == 0;
    if (!isKept) {
        munmap(bytes, length);
        return;
    }
    const std::lock_guard guard(spare().lock);
    std::vector<Mapping>& mappings = spare().mappings;
    while (mappings.size() == mostMappings || (!mappings.empty() && spare().total + length > mostBytes)) {
        munmap(mappings.front().bytes, mappings.front().length); // the one that was of no use for longest
        spare().total -= mappings.front().length;
        mappings.erase(mappings.begin());
    }
    mappings.push_back({bytes, length});
    spare().total += length;
}

void releaseSpareMemory() {
    const std::lock_guard guard(spare().lock);
    for (const Mapping& one : spare().mappings) munmap(one.bytes, one.length);
    spare().mappings.clear();
    spare().total = 0;
}

} // namespace Imaging::Platform
