# Run by `cmake --install`: ends the installation before its first copy when one of built_files is
# missing or empty, and prints what this build leaves out.
set(missing)
foreach(file IN LISTS built_files)
  set(size 0)
  if(EXISTS "${file}")
    file(SIZE "${file}" size)
  endif()
  if(size EQUAL 0)
    cmake_path(GET file FILENAME name)
    list(APPEND missing "${name}")
  endif()
endforeach()
if(missing)
  list(JOIN missing ", " missing)
  # A line that begins with a blank is not broken.
  message(FATAL_ERROR " vesk: nothing was installed, not built: ${missing}; first "
    "run: cmake --build \"${build_folder}\" --target vesk_installation")
endif()
foreach(sentence IN LISTS left_out)
  message(STATUS "${sentence}")
endforeach()
