#pragma once

#include <cstddef>
#include <cstdint>

/// A look at a property list before the library that parses it sees it, not part of the library's
/// interface. That parser calls itself for every level of nesting, makes a copy of whatever a binary
/// property list refers to more than once, and takes quadratic time over some text; so data that was made
/// to hurt is turned away first. None of the functions that do so recurses, and their time and memory stay in
/// proportion to the data's length.
namespace Imaging::Platform {

/// Containers in containers. Keyed archives are flat: theirs nest four deep.
inline constexpr std::size_t maximumPropertyListDepth = 512;

/// Keys in one dictionary, which the parser finds by walking through them.
inline constexpr std::uint32_t maximumPropertyListKeys = 4096;

/// How many values a binary property list of the given length may have when shared ones are counted as
/// often as they are referred to. Every reference takes a byte at least, so only sharing whole containers
/// gets beyond the length. The constant lets short data that contains itself be recognised as that.
constexpr std::uint64_t maximumPropertyListValues(std::uint64_t length) { return 4 * length + 2048; }

/// How many bytes of strings and data, counted in the same way.
constexpr std::uint64_t maximumPropertyListBytes(std::uint64_t length) { return 64 * length + (64ULL << 20); }

/// How many bytes the parser may move while it replaces character references in XML: for each reference
/// the text that contains it.
constexpr std::uint64_t maximumPropertyListMoves(std::uint64_t length) {
    return 4096 * length + (4ULL << 30);
}

} // namespace Imaging::Platform
