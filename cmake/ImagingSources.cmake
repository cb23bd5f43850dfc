# Sources are found where they stand, so that a new file is part of the build by being there. Builds look again
# each time.

# imaging_sources(TARGET FOLDER...): every source below these folders of the project.
function(imaging_sources target)
  foreach(folder IN LISTS ARGN)
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${PROJECT_SOURCE_DIR}/${folder}/*.cpp")
    target_sources(${target} PRIVATE ${sources})
  endforeach()
endfunction()

# imaging_leave_out(TARGET NAME): not the source of this name.
function(imaging_leave_out target name)
  get_target_property(sources ${target} SOURCES)
  list(FILTER sources EXCLUDE REGEX "/${name}$")
  set_target_properties(${target} PROPERTIES SOURCES "${sources}")
endfunction()
