# Builds for 64-bit Windows with Debian's mingw-w64. The posix variant, because only that one has std::thread; its
# runtime libraries are linked statically, so that the program needs no DLLs of the compiler.

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(triple x86_64-w64-mingw32)
set(CMAKE_C_COMPILER ${triple}-gcc-posix)
set(CMAKE_CXX_COMPILER ${triple}-g++-posix)
set(CMAKE_ASM_COMPILER ${triple}-gcc-posix)
set(CMAKE_RC_COMPILER ${triple}-windres)
set(CMAKE_AR ${triple}-gcc-ar-posix CACHE FILEPATH "")
set(CMAKE_RANLIB ${triple}-gcc-ranlib-posix CACHE FILEPATH "")

set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")

# Nothing of the host may be used for the target.
set(ROTIKA_QT_WINDOWS "" CACHE PATH "Prefix of Qt built for Windows")
set(ROTIKA_ARCHIVE_WINDOWS "" CACHE PATH "Prefix of libarchive built for Windows")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES ROTIKA_QT_WINDOWS ROTIKA_ARCHIVE_WINDOWS)
set(CMAKE_FIND_ROOT_PATH /usr/${triple} ${ROTIKA_QT_WINDOWS} ${ROTIKA_ARCHIVE_WINDOWS})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

# Qt's code generators run on the host: they come from the host's Qt of the same version.
set(QT_HOST_PATH /usr CACHE PATH "Prefix of the host's Qt")
set(QT_HOST_PATH_CMAKE_DIR /usr/lib/x86_64-linux-gnu/cmake CACHE PATH "CMake packages of the host's Qt")
