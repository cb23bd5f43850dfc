// Reads the markers of a codestream without decoding anything, to tell how much memory openjpeg will take
// for it: a header of a hundred bytes can claim millions of tiles.

#include "Platform/Codecs/Formats/Jpeg2000Codestream.h"

#include "Platform/Codecs/Support/CodecSupport.h"

#include <algorithm>
#include <limits>

namespace Imaging::Platform {

namespace {

constexpr std::string_view formatName = "JPEG 2000";

// Markers that begin segments.
constexpr std::uint64_t sizes = 0xff51;
constexpr std::uint64_t codingStyle = 0xff52;
constexpr std::uint64_t componentCodingStyle = 0xff53;
constexpr std::uint64_t tilePart = 0xff90;
constexpr std::uint64_t tileData = 0xff93;
constexpr std::uint64_t endOfCodestream = 0xffd9;
constexpr std::uint64_t startOfCodestream = 0xff4f;
constexpr std::uint64_t lowestMarker = 0xff00;

// Where the segment of sizes, which comes right behind the start, has its numbers.
constexpr std::size_t gridRight = 8;
constexpr std::size_t gridBottom = 12;
constexpr std::size_t gridLeft = 16;
constexpr std::size_t gridTop = 20;
constexpr std::size_t gridTileWidth = 24;
constexpr std::size_t gridTileHeight = 28;
constexpr std::size_t gridTileLeft = 32;
constexpr std::size_t gridTileTop = 36;
constexpr std::size_t componentCount = 40;

/// openjpeg 2.5's records, rounded up: of a tile, of a tile's component, and of a precinct with its trees in
/// three bands.
constexpr std::uint64_t bytesPerTile = 6000;
constexpr std::uint64_t bytesPerTileComponent = 1200;
constexpr std::uint64_t bytesPerPrecinct = 600;

constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();

std::uint64_t ceilingOf(std::uint64_t value, std::uint64_t divisor) {
    return (value + divisor - 1) / divisor;
}

class Walker {
public:
    explicit Walker(ByteView bytes) : m_bytes(bytes) {}

    Jpeg2000Codestream walk();

private:
    std::uint64_t number(std::size_t offset, std::size_t count) const {
        if (offset > m_bytes.size() || m_bytes.size() - offset < count) failForShortData(formatName);
        return bigEndian(m_bytes, offset, count);
    }
    void readSizes();
    void readComponents(std::uint64_t count);
    void readCodingStyle(std::size_t at, std::size_t end, std::uint64_t style);
    void walkSegments();
    std::size_t readSegment(std::uint64_t marker, std::size_t at);

    ByteView m_bytes;
    Jpeg2000Codestream m_result;
    std::size_t m_part_end = 0;
    std::uint64_t m_most_precincts = 0; // of one component of the whole picture
};

void Walker::readComponents(std::uint64_t count) {
    constexpr std::size_t first = 42;
    number(first, count * 3); // all of them are there
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t at = first + i * 3;
        Jpeg2000Codestream::Component component;
        component.bits = static_cast<std::uint32_t>(number(at, 1) & 0x7f) + 1; // the other bit: signed
        component.stepX = static_cast<std::uint32_t>(number(at + 1, 1));
        component.stepY = static_cast<std::uint32_t>(number(at + 2, 1));
        if (component.stepX == 0 || component.stepY == 0)
            failForDamage(formatName, "a component has no samples");
        m_result.components.push_back(component);
    }
}

void Walker::readSizes() {
    if (number(0, 2) != startOfCodestream || number(2, 2) != sizes) {
        failForDamage(formatName, "its size is missing");
    }
    const std::uint64_t right = number(gridRight, 4);
    const std::uint64_t bottom = number(gridBottom, 4);
    const std::uint64_t left = number(gridLeft, 4);
    const std::uint64_t top = number(gridTop, 4);
    const std::uint64_t tileWidth = number(gridTileWidth, 4);
    const std::uint64_t tileHeight = number(gridTileHeight, 4);
    const std::uint64_t tileLeft = number(gridTileLeft, 4);
    const std::uint64_t tileTop = number(gridTileTop, 4);
    const std::uint64_t count = number(componentCount, 2);
    const bool makesSense = left < right && top < bottom && tileWidth > 0 && tileHeight > 0 &&
                            tileLeft <= left && tileTop <= top && count > 0;
    if (!makesSense) failForDamage(formatName, "its size makes no sense");
    readComponents(count);
    const auto& step = m_result.components.front();
    m_result.width = static_cast<std::uint32_t>(ceilingOf(right, step.stepX) - ceilingOf(left, step.stepX));
    m_result.height = static_cast<std::uint32_t>(ceilingOf(bottom, step.stepY) - ceilingOf(top, step.stepY));
    // 32 by 32 bits always fit.
    m_result.tiles = ceilingOf(right - tileLeft, tileWidth) * ceilingOf(bottom - tileTop, tileHeight);
}

/// The resolutions and, where the style says so, the exponents of their precincts' sizes, from the smallest
/// resolution on.
void Walker::readCodingStyle(std::size_t at, std::size_t end, std::uint64_t style) {
    constexpr std::size_t fixed = 5; // levels, width and height of blocks, their style, the transform
    const std::uint64_t levels = number(at, 1);
    if ((style & 1) == 0 || levels > 32) return;
    std::uint64_t precincts = 0;
    for (std::uint64_t i = 0; i <= levels && at + fixed + i < end; ++i) {
        const std::uint64_t exponents = number(at + fixed + i, 1);
        const std::uint64_t halvings = levels - i;
        const std::uint64_t across = ceilingOf(m_result.width, 1ULL << (halvings + (exponents & 15)));
        const std::uint64_t down = ceilingOf(m_result.height, 1ULL << (halvings + (exponents >> 4)));
        precincts += across * down;
    }
    m_most_precincts = std::max(m_most_precincts, precincts);
}

/// Answers where the next marker is.
std::size_t Walker::readSegment(std::uint64_t marker, std::size_t at) {
    const std::size_t length = number(at + 2, 2);
    const std::size_t end = at + 2 + length;
    number(end, 0); // all of it is there
    if (marker == tilePart) {
        const std::uint64_t size = number(at + 6, 4);
        m_part_end = size == 0 ? std::max(m_bytes.size(), end + 2) - 2 : at + static_cast<std::size_t>(size);
    }
    if (marker == codingStyle) readCodingStyle(at + 9, end, number(at + 4, 1));
    if (marker == componentCodingStyle) {
        const std::size_t indexSize = m_result.components.size() < 257 ? 1 : 2;
        readCodingStyle(at + 5 + indexSize, end, number(at + 4 + indexSize, 1));
    }
    return end;
}

void Walker::walkSegments() {
    std::size_t at = 2;
    for (;;) {
        const std::uint64_t marker = number(at, 2);
        if (marker == endOfCodestream) return;
        if (marker < lowestMarker) failForDamage(formatName, "its segments make no sense");
        if (marker != tileData) {
            at = readSegment(marker, at);
            continue;
        }
        if (m_part_end <= at) failForDamage(formatName, "its tiles make no sense");
        at = m_part_end;
    }
}

Jpeg2000Codestream Walker::walk() {
    readSizes();
    walkSegments();
    const std::uint64_t count = m_result.components.size();
    const auto forTiles = checkedProduct({m_result.tiles, bytesPerTile + bytesPerTileComponent * count});
    const auto forPrecincts = checkedProduct({m_most_precincts, bytesPerPrecinct, count});
    const bool fits = forTiles && forPrecincts && *forTiles < most / 2 && *forPrecincts < most / 2;
    m_result.structureBytes = fits ? *forTiles + *forPrecincts : most;
    return std::move(m_result);
}

} // namespace

Jpeg2000Codestream readJpeg2000Codestream(ByteView bytes) { return Walker(bytes).walk(); }

} // namespace Imaging::Platform
