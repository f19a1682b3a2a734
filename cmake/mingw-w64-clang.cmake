# Cross-compiling for 64-bit Windows with clang and the libraries of Debian's mingw-w64. Shows that the code does not depend
# on one compiler; releases are built with GCC (mingw-w64.cmake).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(CMAKE_C_COMPILER clang-14)
set(CMAKE_CXX_COMPILER clang++-14)
set(CMAKE_C_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_AR x86_64-w64-mingw32-ar)
set(CMAKE_RANLIB x86_64-w64-mingw32-ranlib)

set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

# GCC's C++ library; clang alone finds only the variant without threads.
set(gcc /usr/lib/gcc/x86_64-w64-mingw32/12-posix)
set(CMAKE_CXX_FLAGS_INIT
    "-isystem ${gcc}/include/c++ -isystem ${gcc}/include/c++/x86_64-w64-mingw32 -isystem ${gcc}/include/c++/backward")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -L${gcc} -Wl,--no-insert-timestamp")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static -L${gcc} -Wl,--no-insert-timestamp")
# The C++ library before its dependencies; clang would use the opposite order.
set(CMAKE_CXX_STANDARD_LIBRARIES "-lstdc++ -latomic -lgcc_eh -lpthread -lkernel32 -luser32 -lgdi32 -lshell32 -lole32 -ladvapi32"
    CACHE STRING "")

set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine)
