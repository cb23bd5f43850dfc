#pragma once

/// Marks what the shared library shows to its users; everything else is built with hidden visibility.
/// Only the attribute of GCC and Clang is needed on the systems that the library is built for.
#define IMAGING_EXPORT __attribute__((visibility("default")))
