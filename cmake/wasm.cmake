# Toolchain for WebAssembly: Debian's clang 14 and the libraries of the same version. The programs of
# that version are named, since the libraries of another would take their place.
set(CMAKE_MODULE_PATH ${CMAKE_CURRENT_LIST_DIR})
set(CMAKE_SYSTEM_NAME WASI)
set(CMAKE_SYSTEM_PROCESSOR wasm32)
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_CXX_COMPILER_TARGET wasm32-wasi)
set(CMAKE_CXX_FLAGS_INIT "-msimd128 -fno-exceptions -fno-rtti")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
