# What CMake needs to know of WebAssembly with WASI.
set(CMAKE_EXECUTABLE_SUFFIX .wasm)
