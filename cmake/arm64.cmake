# Debian's cross compiler for arm64. Programs run under user-mode emulation: tests, and those that the build runs. They
# use the C library of the arm64 packages (-L /). That of the cross compiler is another version, and a program that
# loads parts of both can hang.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L /)
