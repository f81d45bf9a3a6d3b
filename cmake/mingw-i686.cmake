# The target: 32-bit Windows on x86, with GCC's mingw-w64 cross compiler and its POSIX threads.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)

set(triplet i686-w64-mingw32)
set(CMAKE_C_COMPILER ${triplet}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triplet}-g++-posix)
set(CMAKE_RC_COMPILER ${triplet}-windres)

# SSE2 is the baseline, so that floating-point results are the same on every processor.
set(baseline "-march=pentium4 -mtune=generic -mfpmath=sse")
set(CMAKE_C_FLAGS_INIT "${baseline}")
set(CMAKE_CXX_FLAGS_INIT "${baseline}")

# Libraries and headers come from the target's folders; programs from the host.
set(CMAKE_FIND_ROOT_PATH /usr/${triplet})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
