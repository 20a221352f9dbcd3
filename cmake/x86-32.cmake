# 32-bit x86 on a 64-bit host with multilib compilers: the product's own platform (i686 with SSE2).
# Either compiler: cmake --toolchain cmake/x86-32.cmake [-DCMAKE_CXX_COMPILER=clang++] ...
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_CXX_FLAGS_INIT "-m32 -march=i686 -msse2 -mfpmath=sse")
# pkg-config and find_library look among the 32-bit files first.
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)
set(CMAKE_CROSSCOMPILING_EMULATOR "")
