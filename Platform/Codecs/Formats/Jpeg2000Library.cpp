// openjpeg's streams over bytes in memory. Its callbacks must not throw, so they note what went wrong.

#include "Platform/Codecs/Formats/Jpeg2000Library.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <limits>
#include <new>

namespace Imaging::Platform {

namespace {

constexpr std::size_t bufferSize = std::size_t{1} << 20;

Jpeg2000Memory& memoryOf(void* user) { return *static_cast<Jpeg2000Memory*>(user); }

/// openjpeg takes -1 for the end, whatever was asked for.
OPJ_SIZE_T readMemory(void* to, OPJ_SIZE_T count, void* user) {
    Jpeg2000Memory& memory = memoryOf(user);
    const std::size_t there = std::min(memory.input.size() - memory.position, count);
    if (there == 0) return static_cast<OPJ_SIZE_T>(-1); // the end
    std::memcpy(to, memory.input.data() + memory.position, there);
    memory.position += there;
    return there;
}

/// Exceptions must not pass through the library.
bool extend(NSData& bytes, std::size_t size) noexcept {
    try {
        if (size > bytes.size()) bytes.resize(size);
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

OPJ_SIZE_T writeMemory(void* from, OPJ_SIZE_T count, void* user) {
    Jpeg2000Memory& memory = memoryOf(user);
    if (!extend(*memory.output, memory.position + count)) return static_cast<OPJ_SIZE_T>(-1);
    std::memcpy(memory.output->data() + memory.position, from, count);
    memory.position += count;
    return count;
}

/// A file that is written grows when it is sought beyond its end; one that is read does not.
OPJ_BOOL seekMemory(OPJ_OFF_T to, void* user) {
    Jpeg2000Memory& memory = memoryOf(user);
    if (to < 0) return OPJ_FALSE;
    const auto position = static_cast<std::size_t>(to);
    const bool isThere =
        memory.output != nullptr ? extend(*memory.output, position) : position <= memory.input.size();
    if (isThere) memory.position = position;
    return isThere ? OPJ_TRUE : OPJ_FALSE;
}

OPJ_OFF_T skipMemory(OPJ_OFF_T count, void* user) {
    const auto before = static_cast<OPJ_OFF_T>(memoryOf(user).position);
    if (count < 0 || count > std::numeric_limits<OPJ_OFF_T>::max() - before) return -1;
    return seekMemory(before + count, user) == OPJ_TRUE ? count : -1;
}

void note(Jpeg2000Log& log, const char* message) {
    if (log.message[0] == 0) std::strncpy(log.message, message, sizeof(log.message) - 1);
}

void onError(const char* message, void* user) {
    auto& log = *static_cast<Jpeg2000Log*>(user);
    if (!log.hasErrors) log.message[0] = 0; // it tells more than a warning
    note(log, message);
    log.hasErrors = true;
}

void onWarning(const char* message, void* user) {
    auto& log = *static_cast<Jpeg2000Log*>(user);
    note(log, message);
    log.hasWarnings = true;
}

void onInformation(const char*, void*) {}

} // namespace

Jpeg2000Stream openJpeg2000Stream(Jpeg2000Memory& memory) {
    const bool reads = memory.output == nullptr;
    Jpeg2000Stream stream(opj_stream_create(bufferSize, reads ? OPJ_TRUE : OPJ_FALSE));
    if (stream == nullptr) throw std::bad_alloc();
    opj_stream_set_user_data(stream.get(), &memory, nullptr);
    opj_stream_set_user_data_length(stream.get(), memory.input.size());
    opj_stream_set_read_function(stream.get(), readMemory);
    opj_stream_set_write_function(stream.get(), writeMemory);
    opj_stream_set_seek_function(stream.get(), seekMemory);
    opj_stream_set_skip_function(stream.get(), skipMemory);
    return stream;
}

void listenTo(const Jpeg2000Handle& codec, Jpeg2000Log& log) {
    if (codec == nullptr) throw std::bad_alloc();
    opj_set_error_handler(codec.get(), onError, &log);
    opj_set_warning_handler(codec.get(), onWarning, &log);
    opj_set_info_handler(codec.get(), onInformation, nullptr);
}

} // namespace Imaging::Platform
