# Compiler options that every target of the project shares.

find_package(Threads REQUIRED)

add_library(rotika_options INTERFACE)
target_compile_options(rotika_options INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # False positives of GCC 12 inside std::basic_string at -O2 and above. The sanitizers find real faults of these
    # kinds.
    target_compile_options(rotika_options INTERFACE -Wno-restrict -Wno-maybe-uninitialized)
else()
    # Clang's -Wconversion includes signedness, GCC's does not; the code follows GCC's.
    target_compile_options(rotika_options INTERFACE -Wno-sign-conversion)
endif()
target_link_libraries(rotika_options INTERFACE Threads::Threads)
if(ROTIKA_SANITIZE)
    target_compile_options(rotika_options INTERFACE -fsanitize=${ROTIKA_SANITIZE} -fno-sanitize-recover=all
                                                    -fno-omit-frame-pointer -g1)
    # Functions of libraries loaded at run time are called through types that the sanitizer cannot match.
    if(ROTIKA_SANITIZE MATCHES undefined AND NOT CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
        target_compile_options(rotika_options INTERFACE -fno-sanitize=function)
    endif()
    target_link_options(rotika_options INTERFACE -fsanitize=${ROTIKA_SANITIZE})
endif()
if(ROTIKA_HARDEN)
    # Not -fPIE, with which the program gets copies of Qt's variables that Qt itself does not use.
    target_compile_options(rotika_options INTERFACE
        -fPIC -fstack-protector-strong -fstack-clash-protection -fcf-protection -D_FORTIFY_SOURCE=2
        -Wformat -Werror=format-security -ffile-prefix-map=${CMAKE_SOURCE_DIR}/=)
    target_link_options(rotika_options INTERFACE -pie LINKER:-z,relro,-z,now)
endif()
if(WIN32)
    target_compile_definitions(rotika_options INTERFACE UNICODE _UNICODE WIN32_LEAN_AND_MEAN NOMINMAX
                                                        _WIN32_WINNT=0x0A00)
    target_link_options(rotika_options INTERFACE -static $<$<CONFIG:Release>:-s>)
endif()

# rotika_precompile(target [<header>...]): precompiles the headers that most files include, and the given ones. Every
# file must still include what it uses: "./dev tidy" builds without precompiled headers.
function(rotika_precompile target)
    target_precompile_headers(${target} PRIVATE
        <algorithm> <array> <atomic> <chrono> <cstdint> <filesystem> <functional> <map> <memory> <mutex> <optional>
        <string> <string_view> <thread> <utility> <vector> ${ARGN})
endfunction()
