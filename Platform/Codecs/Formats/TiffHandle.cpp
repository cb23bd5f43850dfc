// libtiff's file functions over bytes in memory, and its messages as our exceptions. Files are walked before
// libtiff sees them, since it takes memory for what a file only claims.

#include "Platform/Codecs/Formats/TiffHandle.h"

#include "Platform/Codecs/Codec.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <limits>

namespace Imaging::Platform {

namespace {

TiffMemory& memoryOf(thandle_t handle) { return *static_cast<TiffMemory*>(handle); }

std::uint64_t sizeOf(const TiffMemory& memory) {
    return memory.output != nullptr ? memory.output->size() : memory.input.size();
}

tmsize_t readMemory(thandle_t handle, void* to, tmsize_t count) {
    TiffMemory& memory = memoryOf(handle);
    const ByteView bytes = memory.output != nullptr ? ByteView(*memory.output) : memory.input;
    if (count <= 0 || memory.position >= bytes.size()) return 0;
    const std::uint64_t there =
        std::min<std::uint64_t>(static_cast<std::uint64_t>(count), bytes.size() - memory.position);
    std::memcpy(to, bytes.data() + memory.position, there);
    memory.position += there;
    return static_cast<tmsize_t>(there);
}

/// Exceptions must not pass through the library.
bool extend(NSData& bytes, std::uint64_t size) noexcept {
    try {
        if (size > bytes.size()) bytes.resize(size);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

tmsize_t writeMemory(thandle_t handle, void* from, tmsize_t count) {
    TiffMemory& memory = memoryOf(handle);
    if (memory.output == nullptr || count <= 0) return 0;
    std::uint64_t end = 0;
    if (__builtin_add_overflow(memory.position, static_cast<std::uint64_t>(count), &end)) return -1;
    if (!extend(*memory.output, end)) return -1;
    std::memcpy(memory.output->data() + memory.position, from, static_cast<std::size_t>(count));
    memory.position = end;
    return count;
}

toff_t seekMemory(thandle_t handle, toff_t offset, int whence) {
    TiffMemory& memory = memoryOf(handle);
    if (whence == SEEK_CUR) offset += memory.position; // wraps for steps backwards, as it should
    if (whence == SEEK_END) offset += sizeOf(memory);
    return memory.position = offset;
}

int closeMemory(thandle_t) { return 0; }

toff_t memorySize(thandle_t handle) { return sizeOf(memoryOf(handle)); }

int mapMemory(thandle_t handle, void** base, toff_t* size) {
    const TiffMemory& memory = memoryOf(handle);
    if (memory.output != nullptr) return 0;
    *base = const_cast<std::uint8_t*>(memory.input.data()); // which is only read
    *size = memory.input.size();
    return 1;
}

void unmapMemory(thandle_t, void*, toff_t) {}

void note(TiffLog& log, bool replaces, const char* module, const char* format, va_list arguments) {
    if (!replaces && log.message[0] != 0) return;
    const int length =
        std::snprintf(log.message, sizeof(log.message), "%s: ", module == nullptr ? "" : module);
    const auto used = std::min(static_cast<std::size_t>(std::max(length, 0)), sizeof(log.message) - 1);
    std::vsnprintf(log.message + used, sizeof(log.message) - used, format, arguments);
}

int onError(TIFF*, void* user, const char* module, const char* format, va_list arguments) {
    auto& log = *static_cast<TiffLog*>(user);
    note(log, !log.hasErrors, module, format, arguments);
    log.hasErrors = true;
    log.hasDamage = true;
    return 1; // nobody else is told
}

/// The fax and JPEG decoders fill in what is missing, or leave it out, and merely warn. Their words are
/// recognised here.
int onWarning(TIFF*, void* user, const char* module, const char* format, va_list arguments) {
    auto& log = *static_cast<TiffLog*>(user);
    char text[sizeof(log.message)];
    va_list copy;
    va_copy(copy, arguments);
    std::vsnprintf(text, sizeof(text), format, copy);
    va_end(copy);
    const auto says = [&](const char* word) { return std::strstr(text, word) != nullptr; };
    const bool guesses = says("remature") || says("mismatch") || says("orrupt") || says("mproper");
    const bool isDamage = guesses && !says("extraneous");
    note(log, isDamage && !log.hasDamage, module, format, arguments);
    log.hasDamage = log.hasDamage || isDamage;
    return 1;
}

/// Numbers of the file's byte order; everything outside the bytes is a file cut short.
class TiffNumbers {
public:
    TiffNumbers(ByteView bytes, bool bigEndian) : m_bytes(bytes), m_big_endian(bigEndian) {}

    std::uint64_t read(std::uint64_t offset, std::size_t count) const {
        if (offset > m_bytes.size() || m_bytes.size() - offset < count) failForShortTiff();
        std::uint64_t value = 0;
        for (std::size_t i = 0; i < count; ++i) {
            value = value << 8 | m_bytes[offset + (m_big_endian ? i : count - 1 - i)];
        }
        return value;
    }

private:
    ByteView m_bytes;
    bool m_big_endian;
};

std::uint64_t bytesOfType(std::uint64_t type) {
    constexpr std::uint8_t sizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};
    return type < std::size(sizes) ? sizes[type] : 0;
}

/// Tags that the standard describes, and the colour profile. Programs put all kinds of things into others,
/// which libtiff leaves out when they are not in the data.
bool isNeeded(std::uint64_t tag) { return tag < 32768 || tag == TIFFTAG_ICCPROFILE; }

} // namespace

TiffHandle openTiff(TiffMemory& memory, TiffLog& log, const char* mode, std::uint64_t maximumAllocation) {
    const std::unique_ptr<TIFFOpenOptions, void (*)(TIFFOpenOptions*)> options(TIFFOpenOptionsAlloc(),
                                                                               TIFFOpenOptionsFree);
    if (options == nullptr) return nullptr;
    constexpr auto most = static_cast<std::uint64_t>(std::numeric_limits<tmsize_t>::max());
    TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(),
                                        static_cast<tmsize_t>(std::min(maximumAllocation, most)));
    TIFFOpenOptionsSetErrorHandlerExtR(options.get(), onError, &log);
    TIFFOpenOptionsSetWarningHandlerExtR(options.get(), onWarning, &log);
    return TiffHandle(TIFFClientOpenExt("TIFF", mode, &memory, readMemory, writeMemory, seekMemory,
                                        closeMemory, memorySize, mapMemory, unmapMemory, options.get()));
}

void checkTiffDirectory(ByteView bytes) {
    if (bytes.size() < 8) failForShortTiff();
    const TiffNumbers numbers(bytes, bytes[0] == 'M');
    // BigTIFF (43) widens offsets and counts to 64 bits; the layouts are otherwise the same.
    const bool isBig = numbers.read(2, 2) == 43;
    const std::size_t word = isBig ? 8 : 4;
    const std::size_t countSize = isBig ? 8 : 2;
    const std::uint64_t directory = numbers.read(word, word);
    const std::uint64_t entries = numbers.read(directory, countSize);
    std::uint64_t claimed = 0;
    for (std::uint64_t i = 0; i < entries; ++i) {
        const std::uint64_t entry = directory + countSize + i * (4 + 2 * word);
        const std::uint64_t tag = numbers.read(entry, 2);
        const std::uint64_t size = bytesOfType(numbers.read(entry + 2, 2));
        const std::uint64_t count = numbers.read(entry + 4, word);
        const std::uint64_t value = numbers.read(entry + 4 + word, word);
        if (size == 0 || count <= word / size) continue; // the value itself, and not where it is
        const std::uint64_t most = bytes.size();
        const std::uint64_t wanted = count > most / size ? most + 1 : count * size;
        if (isNeeded(tag) && (wanted > most || value > most - wanted)) failForShortTiff();
        claimed += std::min(wanted, most);
        if (claimed > 4 * most) {
            throw CodecException(NSErrorCode::CorruptData,
                                 "the TIFF data is damaged (its tags claim more bytes than it has)");
        }
    }
}

void failForShortTiff() {
    throw CodecException(NSErrorCode::CorruptData,
                         "the TIFF data ends before the picture is complete; the file may be cut short");
}

} // namespace Imaging::Platform
