# Cross-builds for 64-bit Windows with clang, its own C++ library and the universal C run time, all of which come in one
# package that scripts/second-compiler.sh fetches.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

# It would choose the oldest Windows by itself; the library says which one it is written for.
set(target -target x86_64-windows-gnu -U_WIN32_WINNT)
set(CMAKE_C_COMPILER $ENV{WINUTIL_ZIG} cc ${target})
set(CMAKE_CXX_COMPILER $ENV{WINUTIL_ZIG} c++ ${target})
set(CMAKE_AR x86_64-w64-mingw32-ar)
set(CMAKE_RANLIB x86_64-w64-mingw32-ranlib)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_OBJCOPY x86_64-w64-mingw32-objcopy)
set(CMAKE_STRIP x86_64-w64-mingw32-strip)

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
