# What every target of ours is compiled with.
add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wconversion)
if(VESK_WERROR)
  add_compile_options(-Werror)
endif()

# The numbers are the sound: fuse where the source says so and nowhere else, with either compiler.
add_compile_options(-ffp-contract=off)

# No path of the building machine in what we build.
add_compile_options(-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/=)
