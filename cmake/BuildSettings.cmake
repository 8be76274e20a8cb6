# What every target of the tree is compiled with.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "Build type" FORCE)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_ARCHIVE_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/lib)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/bin)

find_program(CCACHE_PROGRAM ccache)
if(CCACHE_PROGRAM AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Of what is compiled with a precompiled header it keeps nothing unless told that no source uses macros to tell time.
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${CCACHE_PROGRAM})
endif()

add_compile_options(-Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor)
option(QORSYSTS_WARNINGS_AS_ERRORS "Treat compiler warnings as errors" ON)
if(QORSYSTS_WARNINGS_AS_ERRORS)
  add_compile_options(-Werror)
endif()

if(QORSYSTS_SANITIZE)
  add_compile_options(-fsanitize=${QORSYSTS_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${QORSYSTS_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Instrumented code makes g++ suspect the C++ library's own headers; the plain build judges.
    add_compile_options(-Wno-maybe-uninitialized -Wno-stringop-overflow)
  endif()
endif()

if(QORSYSTS_BUILD_FUZZERS)
  # The libraries report to libFuzzer where it has been; the targets themselves link it with -fsanitize=fuzzer.
  add_compile_options(-fsanitize=fuzzer-no-link)
endif()

if(QORSYSTS_COVERAGE)
  add_compile_options(--coverage -fprofile-update=atomic)
  add_link_options(--coverage)
endif()
