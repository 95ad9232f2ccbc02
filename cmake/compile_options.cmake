# The options that every target here is compiled with.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(CMAKE_SYSTEM_NAME STREQUAL WASI)
  # Sizes have 32 bits there: indices of 64 narrow wherever memory is addressed.
  add_compile_options(-Wno-shorten-64-to-32)
endif()
if(VESK_WERROR)
  add_compile_options(-Werror)
endif()

# Every bit is part of the sound: both compilers fuse where the source says so and nowhere else.
add_compile_options(-ffp-contract=off)

# No path of the build machine in the binaries.
add_compile_options(-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
