// Walks over a binary property list as its parser will, but with a list of its own in place of recursion,
// and adds up what the parser would make.

#include "Platform/Foundation/Archive/BinaryPropertyListGuard.h"

#include "Platform/Foundation/Archive/KeyedArchiveFormat.h"

#include <algorithm>
#include <string_view>

namespace Imaging::Platform {

namespace {

constexpr std::string_view binaryMagic = "bplist00";
constexpr std::size_t trailerSize = 32;

[[noreturn]] void damaged(const char* what) {
    throwDamagedArchive(std::string("the binary property list is damaged: ") + what);
}

/// One value as its marker describes it.
struct Value {
    std::uint64_t position = 0;   ///< where its bytes or references begin
    std::uint64_t references = 0; ///< of an array or dictionary: how many
    std::uint64_t bytes = 0;      ///< of any other: how many the parser copies
};

/// Walks from the root as the parser will, into every reference, as far as the limits go. The path from the
/// root is kept in a list of its own, so that its length is bounded by a number and not by the stack. A
/// container inside itself shows as one that nests too deep.
class BinaryWalk {
public:
    explicit BinaryWalk(ByteView data) : m_data(data) { readTrailer(); }

    void run() {
        visit(m_root);
        while (!m_path.empty()) {
            Level& level = m_path.back();
            if (level.next == level.value.references) {
                m_path.pop_back();
                continue;
            }
            visit(bigEndian(level.value.position + level.next++ * m_reference_size, m_reference_size));
        }
    }

private:
    struct Level {
        Value value;
        std::uint64_t next = 0;
    };

    /// The bytes must be known to lie in the data.
    std::uint64_t bigEndian(std::uint64_t position, std::uint64_t size) const {
        std::uint64_t number = 0;
        for (const std::uint8_t byte : m_data.subspan(position, size)) number = number << 8 | byte;
        return number;
    }

    void readTrailer() {
        if (m_data.size() < binaryMagic.size() + trailerSize) damaged("it is cut short");
        const std::uint64_t trailer = m_data.size() - trailerSize;
        m_offset_size = m_data[trailer + 6];
        m_reference_size = m_data[trailer + 7];
        m_values = bigEndian(trailer + 8, 8);
        m_root = bigEndian(trailer + 16, 8);
        m_table = bigEndian(trailer + 24, 8);
        const auto isSize = [](std::uint64_t size) { return size >= 1 && size <= 8; };
        if (!isSize(m_offset_size) || !isSize(m_reference_size)) damaged("its trailer makes no sense");
        if (m_table < binaryMagic.size() || m_table >= trailer) damaged("its offset table is not in it");
        if (m_values > (trailer - m_table) / m_offset_size) damaged("its offset table is cut short");
    }

    /// Counts the value and, when it is a container with something in it, goes into it.
    void visit(std::uint64_t number) {
        if (number >= m_values) damaged("a reference leads nowhere");
        const Value value = readValue(bigEndian(m_table + number * m_offset_size, m_offset_size));
        m_bytes += value.bytes;
        if (++m_visited > maximumPropertyListValues(m_data.size()) ||
            m_bytes > maximumPropertyListBytes(m_data.size())) {
            throwDamagedArchive("the property list repeats its parts too often");
        }
        if (value.references == 0) return;
        if (m_path.size() == maximumPropertyListDepth) {
            throwDamagedArchive("the property list nests too deeply, or a part of it contains itself");
        }
        m_path.push_back({value, 0});
    }

    Value readValue(std::uint64_t position) const {
        if (position < binaryMagic.size() || position >= m_table) damaged("a value lies outside of it");
        const unsigned type = m_data[position] >> 4;
        const unsigned low = m_data[position] & 0x0F;
        ++position;
        switch (type) {
        case 0x0:
            return scalar(position, 0, low == 8 || low == 9);
        case 0x1:
            return scalar(position, std::uint64_t{1} << low, low <= 4);
        case 0x2:
            return scalar(position, std::uint64_t{1} << low, low == 2 || low == 3);
        case 0x3:
            return scalar(position, 8, low == 3);
        case 0x8:
            return scalar(position, low + 1, low < 8);
        default:
            return sizedValue(type, low, position);
        }
    }

    Value scalar(std::uint64_t position, std::uint64_t bytes, bool known) const {
        if (!known) damaged("it holds a value of an unknown kind");
        requireBytes(position, bytes, 1);
        return {position, 0, bytes};
    }

    /// Data, text or a container: the count is in the marker, or in a number that follows.
    Value sizedValue(unsigned type, unsigned low, std::uint64_t position) const {
        const std::uint64_t count = low == 0x0F ? readCount(position) : low;
        switch (type) {
        case 0x4:
        case 0x5:
            requireBytes(position, count, 1);
            return {position, 0, count};
        // Two bytes of UTF-16 become at most three of UTF-8.
        case 0x6:
            requireBytes(position, count, 2);
            return {position, 0, count * 3};
        case 0xA:
            requireBytes(position, count, m_reference_size);
            return {position, count, 0};
        case 0xD:
            if (count > maximumPropertyListKeys) throwDamagedArchive("a dictionary has too many keys");
            requireBytes(position, count, 2 * m_reference_size);
            return {position, 2 * count, 0};
        default:
            damaged("it holds a value of an unknown kind");
        }
    }

    std::uint64_t readCount(std::uint64_t& position) const {
        requireBytes(position, 1, 1);
        const unsigned marker = m_data[position++];
        if (marker >> 4 != 1 || (marker & 0x0F) > 3) damaged("a count is not a number");
        const std::uint64_t size = std::uint64_t{1} << (marker & 0x0F);
        requireBytes(position, size, 1);
        const std::uint64_t count = bigEndian(position, size);
        position += size;
        return count;
    }

    /// Values end where the offset table begins.
    void requireBytes(std::uint64_t position, std::uint64_t count, std::uint64_t size) const {
        if (position > m_table || count > (m_table - position) / size) damaged("a value is cut short");
    }

    ByteView m_data;
    std::uint64_t m_offset_size = 0;
    std::uint64_t m_reference_size = 0;
    std::uint64_t m_values = 0;
    std::uint64_t m_root = 0;
    std::uint64_t m_table = 0;
    std::uint64_t m_visited = 0;
    std::uint64_t m_bytes = 0;
    std::vector<Level> m_path;
};

} // namespace

bool looksLikeBinaryPropertyList(ByteView data) {
    return data.size() >= binaryMagic.size() &&
           std::equal(binaryMagic.begin(), binaryMagic.end(), data.begin());
}

void checkBinaryPropertyList(ByteView data) { BinaryWalk(data).run(); }

} // namespace Imaging::Platform
