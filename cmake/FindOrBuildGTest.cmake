# Provides GTest::gtest and GTest::gtest_main: the system's for a native build; for Windows, which Debian has no
# binaries for, built from Debian's source package.

if(NOT CMAKE_CROSSCOMPILING)
    find_package(GTest REQUIRED)
    return()
endif()

set(ROTIKA_GTEST_SOURCE /usr/src/googletest CACHE PATH "Sources of GoogleTest")
if(NOT EXISTS ${ROTIKA_GTEST_SOURCE}/CMakeLists.txt)
    message(FATAL_ERROR "No GoogleTest sources in ${ROTIKA_GTEST_SOURCE} (Debian package googletest)")
endif()
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
add_subdirectory(${ROTIKA_GTEST_SOURCE} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
