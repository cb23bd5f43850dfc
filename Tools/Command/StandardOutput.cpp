// Writes to the descriptor itself, whatever it is: a file is continued where the shell left it.

#include "Tools/Command/StandardOutput.h"

#include "Tools/Command/Messages.h"

#include <cstdint>

namespace Imaging::Tool {

void writeStandardOutput(Platform::ByteView data) {
    Platform::NSError error;
    if (!Platform::writeToFileAtomically(data, "/dev/fd/1", &error))
        throw Failure("standard output", error.message);
}

void writeStandardOutput(std::string_view text) {
    const auto* bytes = static_cast<const std::uint8_t*>(static_cast<const void*>(text.data()));
    writeStandardOutput(Platform::ByteView{bytes, text.size()});
}

} // namespace Imaging::Tool
