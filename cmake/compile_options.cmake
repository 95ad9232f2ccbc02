# The options that every target here is compiled with.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(VESK_WERROR)
  add_compile_options(-Werror)
endif()

# Every bit is part of the sound: both compilers fuse where the source says so and nowhere else.
add_compile_options(-ffp-contract=off)

# No path of the build machine in the binaries.
add_compile_options(-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
