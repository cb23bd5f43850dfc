#pragma once

// Internal: the node classes that archives may name. Not installed.

namespace Imaging {

/// Makes every node class of the library known to unarchivers. One list instead of a static object in each
/// class's own file, so that a statically linked program knows them all.
void registerArchiveClasses();

} // namespace Imaging
