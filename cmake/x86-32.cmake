# 32-bit x86 on a 64-bit host with multilib compilers: the product's own platform (i686 with SSE2).
# Either compiler: cmake --toolchain cmake/x86-32.cmake [-DCMAKE_CXX_COMPILER=clang++] ...
# What it builds runs on the host as it stands, so this is not cross-compiling: no system name, no emulator.
set(CMAKE_CXX_FLAGS_INIT "-m32 -march=i686 -msse2 -mfpmath=sse")
# find_library looks among the 32-bit files first.
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
