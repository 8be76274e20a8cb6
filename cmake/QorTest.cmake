# qor_add_test(<name> SOURCES <files...> [LINK <libs...>] [PRIVATE_INCLUDE <dirs...>] [PROPERTIES <test properties...>]
#              [EXHAUSTIVE] [ONE_THREAD])
#
# A GoogleTest program whose tests run in a process each, so that once-per-process state is fresh in every test. CTest
# knows and starts each of them; in a sanitizer's build, where the start of a program takes longer than most tests, it
# knows the program alone, which makes the processes itself. tests/support gives it its `main` and child processes.
# EXHAUSTIVE tests go through so much input that they are optimised in every build. ONE_THREAD tests start no second
# thread: ThreadSanitizer's build does without them.
find_package(GTest REQUIRED)
include(GoogleTest)

# Tests are many and run once: they are built for a quick build. Sanitizers look at the library; of them the tests
# themselves bear what comes at no great cost.
function(qor_set_test_options target optimisation)
  target_compile_options(${target} PRIVATE ${optimisation} -g1)
  if(QORSYSTS_SANITIZE MATCHES "undefined")
    target_compile_options(${target} PRIVATE -fno-sanitize=undefined)
  endif()
endfunction()

# CTest reads it before it starts a test.
set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY TEST_INCLUDE_FILES
  ${PROJECT_SOURCE_DIR}/cmake/QorTestEnvironment.cmake)

# Programs are position independent in another way than libraries. What every test includes is parsed once for all of
# them; what is parsed can be taken by what is compiled with the same options only.
add_library(qor_test_support OBJECT ${PROJECT_SOURCE_DIR}/tests/support/Child.cpp
  ${PROJECT_SOURCE_DIR}/tests/support/ProcessPerTest.cpp ${PROJECT_SOURCE_DIR}/tests/support/SanitizerDefaults.cpp)
set_target_properties(qor_test_support PROPERTIES POSITION_INDEPENDENT_CODE OFF)
target_compile_options(qor_test_support PRIVATE -fPIE)
target_include_directories(qor_test_support PUBLIC ${PROJECT_SOURCE_DIR}/tests/support)
target_link_libraries(qor_test_support PUBLIC GTest::gmock GTest::gtest)
target_precompile_headers(qor_test_support PRIVATE <gmock/gmock.h> <gtest/gtest.h>)
qor_set_test_options(qor_test_support -O0)

function(qor_add_test name)
  cmake_parse_arguments(ARG "EXHAUSTIVE;ONE_THREAD" "" "SOURCES;LINK;PRIVATE_INCLUDE;PROPERTIES" ${ARGN})
  if(ARG_ONE_THREAD AND QORSYSTS_SANITIZE STREQUAL "thread")
    # Nothing builds it, but what is said about the target later on has a target.
    add_executable(${name} EXCLUDE_FROM_ALL ${ARG_SOURCES})
  else()
    add_executable(${name} ${ARG_SOURCES})
    if(QORSYSTS_SANITIZE)
      add_test(NAME ${name} COMMAND ${name} --process-per-test)
      set_tests_properties(${name} PROPERTIES TIMEOUT 1500 ${ARG_PROPERTIES})
    else()
      gtest_discover_tests(${name} DISCOVERY_TIMEOUT 120 PROPERTIES TIMEOUT 300 ${ARG_PROPERTIES})
    endif()
  endif()
  target_include_directories(${name} PRIVATE
    ${PROJECT_SOURCE_DIR}/SystemTS/QORSysTS00.m/LocalInterfaces ${ARG_PRIVATE_INCLUDE})
  target_link_libraries(${name} PRIVATE ${ARG_LINK} qor_test_support)
  if(ARG_EXHAUSTIVE)
    qor_set_test_options(${name} -O1)
  else()
    qor_set_test_options(${name} -O0)
    target_precompile_headers(${name} REUSE_FROM qor_test_support)
  endif()
endfunction()

# qor_wrap(<target> <symbols...>): the target's own __wrap_<symbol> stands in for each symbol that the libraries' objects
# call; __real_<symbol> is the true one. Works with the static forms of the libraries only.
function(qor_wrap target)
  foreach(symbol ${ARGN})
    target_link_options(${target} PRIVATE -Wl,--wrap=${symbol})
  endforeach()
endfunction()
