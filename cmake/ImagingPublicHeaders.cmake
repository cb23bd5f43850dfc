# The headers that users of the library include: those that stand at the top of a room, since folders below it are
# internal, and so is the painter as a whole. They are installed, and a test compiles each alone.

file(GLOB IMAGING_PUBLIC_HEADERS CONFIGURE_DEPENDS RELATIVE "${PROJECT_SOURCE_DIR}"
  "${PROJECT_SOURCE_DIR}/Imaging/*.h"
  "${PROJECT_SOURCE_DIR}/Show/*.h"
  "${PROJECT_SOURCE_DIR}/Platform/*/*.h")
list(FILTER IMAGING_PUBLIC_HEADERS EXCLUDE REGEX "^Platform/Painter/")
