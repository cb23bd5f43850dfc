# The library that is installed, its package files, and the archive that the tests and benchmarks link.

include(CMakePackageConfigHelpers)
include(ImagingPublicHeaders)

add_library(Imaging $<TARGET_OBJECTS:ImagingObjects>)
add_library(Imaging::Imaging ALIAS Imaging)
imaging_compile_options(Imaging)
target_compile_features(Imaging PUBLIC cxx_std_20)
target_include_directories(Imaging PUBLIC
  "$<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>"
  "$<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/imaging>")
target_link_libraries(Imaging PRIVATE ${IMAGING_LINK_LIBRARIES})
# Nothing refers to the list of the classes that archives name (Imaging/Archive), so whoever links an archive of
# objects asks for it by its symbol. A shared library has it anyhow.
set(IMAGING_NEEDED_SYMBOLS "-Wl,-u,imaging_archive_classes")
if(NOT BUILD_SHARED_LIBS)
  target_link_options(Imaging INTERFACE "${IMAGING_NEEDED_SYMBOLS}")
endif()
set_target_properties(Imaging PROPERTIES VERSION ${PROJECT_VERSION} SOVERSION 0 LINKER_LANGUAGE CXX)

install(TARGETS Imaging EXPORT ImagingTargets
  LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
  ARCHIVE DESTINATION "${CMAKE_INSTALL_LIBDIR}")
foreach(header IN LISTS IMAGING_PUBLIC_HEADERS)
  get_filename_component(folder "${header}" DIRECTORY)
  install(FILES "${header}" DESTINATION "${CMAKE_INSTALL_INCLUDEDIR}/imaging/${folder}")
endforeach()

file(GLOB resources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/Resources/*.png")
install(FILES ${resources} DESTINATION "${CMAKE_INSTALL_DATADIR}/Imaging/Resources")

set(package_folder "${CMAKE_INSTALL_LIBDIR}/cmake/Imaging")
install(EXPORT ImagingTargets NAMESPACE Imaging:: DESTINATION "${package_folder}")
configure_package_config_file(cmake/ImagingConfig.cmake.in ImagingConfig.cmake
  INSTALL_DESTINATION "${package_folder}")
write_basic_package_version_file(ImagingConfigVersion.cmake COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/ImagingConfig.cmake" "${PROJECT_BINARY_DIR}/ImagingConfigVersion.cmake"
  DESTINATION "${package_folder}")

# A program with the static library links what that was built on, by its shared libraries, without asking pkg-config
# for --static: that would ask for archives of all that lies below them, which Debian does not have.
set(IMAGING_PC_PACKAGES "cairo pangocairo fontconfig libjpeg libpng libtiff-4 lcms2 libexif libplist-2.0 libhwy \
libwebp libwebpdemux libopenjp2 polyclipping epoxy libcurl")
if(IMAGING_WITH_HEIF)
  string(APPEND IMAGING_PC_PACKAGES " libheif")
endif()
if(IMAGING_WITH_JXL)
  string(APPEND IMAGING_PC_PACKAGES " libjxl")
endif()
if(BUILD_SHARED_LIBS)
  set(IMAGING_PC_REQUIRES "Requires.private")
  set(IMAGING_PC_LIBS "-lImaging")
else()
  set(IMAGING_PC_REQUIRES "Requires")
  set(IMAGING_PC_LIBS "${IMAGING_NEEDED_SYMBOLS} -lImaging -lgif -pthread")
endif()
configure_file(cmake/imaging.pc.in imaging.pc @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/imaging.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")

if(IMAGING_BUILD_TESTS OR IMAGING_BUILD_BENCHMARKS)
  add_library(ImagingInternal STATIC $<TARGET_OBJECTS:ImagingObjects>)
  target_compile_features(ImagingInternal PUBLIC cxx_std_20)
  target_include_directories(ImagingInternal PUBLIC "${PROJECT_SOURCE_DIR}")
  target_link_libraries(ImagingInternal PUBLIC ${IMAGING_LINK_LIBRARIES})
  target_link_options(ImagingInternal INTERFACE "${IMAGING_NEEDED_SYMBOLS}")
  set_target_properties(ImagingInternal PROPERTIES LINKER_LANGUAGE CXX)
endif()
