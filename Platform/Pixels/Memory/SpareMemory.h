#pragma once

// Internal: memory of large pixel buffers that were freed, kept for the next ones. Not installed.

#include <cstddef>
#include <cstdint>

namespace Imaging::Platform {

/// A mapping of at least `length` bytes, and of no more than a quarter more, that was freed earlier; `length`
/// becomes its own. Its bytes are of any value. Null when there is none. Any thread.
std::uint8_t* takeSpareMemory(std::size_t& length);

/// Keeps a mapping for later, or unmaps it where enough is kept: four mappings and 256 MiB at most. What is
/// kept the system may take back by itself whenever it is short of memory. Any thread.
void giveSpareMemory(std::uint8_t* bytes, std::size_t length);

/// Unmaps all that is kept. Any thread.
void releaseSpareMemory();

} // namespace Imaging::Platform
