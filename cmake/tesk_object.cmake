# An object file as the host loads it: one export, the marker section, its path in a package.
#   tesk_add_object(target OBJECT_NAME name~ PACKAGE folder SOURCES ... LIBRARIES ...)
# The host's calls stay undefined, or imported by name, until the object is loaded.
function(tesk_add_object target)
  cmake_parse_arguments(ARG "" "OBJECT_NAME;PACKAGE" "SOURCES;LIBRARIES" ${ARGN})
  if(NOT ARG_PACKAGE)
    set(ARG_PACKAGE ${PROJECT_BINARY_DIR}/package)
  endif()
  add_library(${target} MODULE ${ARG_SOURCES})
  target_link_libraries(${target} PRIVATE ${ARG_LIBRARIES})
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR})
  set_target_properties(${target} PROPERTIES
    PREFIX "" SUFFIX ".tkx64" OUTPUT_NAME "${ARG_OBJECT_NAME}"
    LIBRARY_OUTPUT_DIRECTORY ${ARG_PACKAGE}/externals)
  set(cmake ${PROJECT_SOURCE_DIR}/cmake)
  if(WIN32)
    # Linked with a static C++ runtime, and without a time stamp.
    target_sources(${target} PRIVATE ${cmake}/factory_marker.rc)
    target_link_options(${target} PRIVATE -static -s -Wl,--no-insert-timestamp)
  else()
    target_sources(${target} PRIVATE ${cmake}/factory_marker.cpp)
    target_link_options(${target} PRIVATE -Wl,--version-script=${cmake}/object.map)
    set_target_properties(${target} PROPERTIES LINK_DEPENDS ${cmake}/object.map)
  endif()
endfunction()
