# How every target of this project is compiled.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_AUTOMOC ON)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${CCACHE_PROGRAM}")
endif()

# Line numbers are all that a back trace needs; full debug information makes every compilation and link of a debug build
# much slower. For a debugger: cmake --preset debug -DCMAKE_CXX_FLAGS_DEBUG="-g -O0"
if(CMAKE_CXX_FLAGS_DEBUG STREQUAL "-g")
    set(CMAKE_CXX_FLAGS_DEBUG "-g1")
endif()

add_library(korvo_compiler INTERFACE)
target_compile_options(korvo_compiler INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wcast-align -Wold-style-cast
    # Without it g++ 12 builds symmetric transfer between coroutines as recursion, and a long loop overflows the stack.
    -foptimize-sibling-calls
    # Paths in assertions and debug information stay relative: no build folder ends up in a binary.
    "-ffile-prefix-map=${CMAKE_SOURCE_DIR}/="
    $<$<BOOL:${KORVO_WARNINGS_AS_ERRORS}>:-Werror>)
target_compile_definitions(korvo_compiler INTERFACE
    QT_NO_KEYWORDS_FOREACH QT_NO_FOREACH QT_NO_CAST_TO_ASCII QT_NO_CAST_FROM_ASCII QT_NO_URL_CAST_FROM_STRING
    QT_DISABLE_DEPRECATED_BEFORE=0x060400)
if(KORVO_SANITIZE)
    target_compile_options(korvo_compiler INTERFACE "-fsanitize=${KORVO_SANITIZE}" -fno-omit-frame-pointer
                           -fno-sanitize-recover=all
                           # clang 14 cannot lay out coroutines with it.
                           $<$<CXX_COMPILER_ID:Clang>:-fno-sanitize=function>)
    target_link_options(korvo_compiler INTERFACE "-fsanitize=${KORVO_SANITIZE}")
endif()
if(CMAKE_BUILD_TYPE STREQUAL "Release")
    set(CMAKE_INTERPROCEDURAL_OPTIMIZATION ON)
    # What Debian hardens its packages with: dpkg-buildflags --get CXXFLAGS and LDFLAGS with hardening=+all. Not -fPIE,
    # which Qt's libraries don't bear in an executable: they ask for -fPIC, and g++ links that as PIE here.
    target_compile_options(korvo_compiler INTERFACE -fstack-protector-strong -fstack-clash-protection -fcf-protection
                           -Wformat -Werror=format-security)
    target_compile_definitions(korvo_compiler INTERFACE _FORTIFY_SOURCE=2)
    target_link_options(korvo_compiler INTERFACE -Wl,--as-needed -Wl,-z,relro,-z,now)
endif()
