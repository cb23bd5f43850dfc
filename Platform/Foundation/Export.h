#pragma once

/// Marks what the shared library shows to its users; everything else is built with hidden visibility.
/// Only the attribute of GCC and Clang is needed on the systems that the library is built for.
#define IMAGING_EXPORT __attribute__((visibility("default")))

namespace Imaging::Platform {}

#ifndef IMAGING_NO_PLATFORM_ALIAS
/// The name that this namespace had in 0.1, for programs that were written for it. Those that have a
/// `Platform` of their own define IMAGING_NO_PLATFORM_ALIAS before they include anything of the library's.
namespace Platform = Imaging::Platform; // NOLINT(misc-unused-alias-decls)
#endif
