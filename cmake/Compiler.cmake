# Compiler, language level, warnings, sanitizers and caching for every target of the project.

if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
    message(FATAL_ERROR "GCC ${CMAKE_CXX_COMPILER_VERSION} miscompiles coroutine temporaries. "
        "Use clang 19 or newer: ./run and ./test install and select it.")
endif()

set(CMAKE_CXX_STANDARD 23)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_PCH_INSTANTIATE_TEMPLATES ON)

find_program(CCACHE ccache)
if(CCACHE)
    set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env
        CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime ${CCACHE})
endif()

set(LARKSPUR_SANITIZE "" CACHE STRING "Sanitizers to build with, for example address,undefined")

add_library(larkspur_compiler INTERFACE)
target_compile_options(larkspur_compiler INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror)
if(CMAKE_SYSTEM_PROCESSOR MATCHES "x86_64|AMD64")
    # simdjson's on-demand parser picks its kernel at compile time: SSE 4.2 (2008) instead of plain bytes.
    target_compile_options(larkspur_compiler INTERFACE -march=westmere)
endif()
if(CMAKE_CXX_COMPILER_ID MATCHES "Clang")
    target_compile_options(larkspur_compiler INTERFACE "SHELL:-Xclang -fno-pch-timestamp")
    if(NOT APPLE)
        target_link_options(larkspur_compiler INTERFACE -fuse-ld=lld)
    endif()
endif()
if(LARKSPUR_SANITIZE)
    target_compile_options(larkspur_compiler INTERFACE
        -fsanitize=${LARKSPUR_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(larkspur_compiler INTERFACE -fsanitize=${LARKSPUR_SANITIZE})
endif()
