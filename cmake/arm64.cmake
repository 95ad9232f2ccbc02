# Toolchain for 64-bit ARM with Linux: Debian's g++-aarch64-linux-gnu; programs run under qemu-user.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)  # needed by GoogleTest
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
# With the libraries of its own processor that Debian installs beside the others: those of the cross
# compiler, by way of -L, hang as soon as a program starts a thread.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64)
# Debian's libraries of both processors stand side by side.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(ENV{PKG_CONFIG_LIBDIR} /usr/lib/aarch64-linux-gnu/pkgconfig:/usr/share/pkgconfig)
