# qor_add_test(<name> SOURCES <files...> [LINK <libs...>] [PRIVATE_INCLUDE <dirs...>] [PROPERTIES <test properties...>]
#              [EXHAUSTIVE] [ONE_THREAD])
#
# A GoogleTest program whose tests CTest runs one process each, so that once-per-process state is fresh in every test.
# tests/support gives it its `main` and child processes. EXHAUSTIVE tests go through so much input that they are
# optimised in every build. ONE_THREAD tests start no second thread: ThreadSanitizer's build does without them.
find_package(GTest REQUIRED)
include(GoogleTest)

add_library(qor_test_support OBJECT ${PROJECT_SOURCE_DIR}/tests/support/Child.cpp
  ${PROJECT_SOURCE_DIR}/tests/support/SanitizerDefaults.cpp)
target_include_directories(qor_test_support PUBLIC ${PROJECT_SOURCE_DIR}/tests/support)
target_link_libraries(qor_test_support PUBLIC GTest::gmock GTest::gtest)

function(qor_add_test name)
  cmake_parse_arguments(ARG "EXHAUSTIVE;ONE_THREAD" "" "SOURCES;LINK;PRIVATE_INCLUDE;PROPERTIES" ${ARGN})
  if(ARG_ONE_THREAD AND QORSYSTS_SANITIZE STREQUAL "thread")
    # Nothing builds it, but what is said about the target later on has a target.
    add_executable(${name} EXCLUDE_FROM_ALL ${ARG_SOURCES})
  else()
    add_executable(${name} ${ARG_SOURCES})
    gtest_discover_tests(${name} DISCOVERY_TIMEOUT 120 PROPERTIES TIMEOUT 300 ${ARG_PROPERTIES})
  endif()
  target_include_directories(${name} PRIVATE
    ${PROJECT_SOURCE_DIR}/SystemTS/QORSysTS00.m/LocalInterfaces ${ARG_PRIVATE_INCLUDE})
  target_link_libraries(${name} PRIVATE ${ARG_LINK} qor_test_support)
  # Tests are many and run once: they are built for a quick build. Sanitizers look at the library; of them the tests
  # themselves bear what comes at no great cost.
  if(QORSYSTS_SANITIZE AND NOT ARG_EXHAUSTIVE)
    target_compile_options(${name} PRIVATE -O0 -g1)
  else()
    target_compile_options(${name} PRIVATE -O1 -g1)
  endif()
  if(QORSYSTS_SANITIZE MATCHES "undefined")
    target_compile_options(${name} PRIVATE -fno-sanitize=undefined)
  endif()
endfunction()

# qor_wrap(<target> <symbols...>): the target's own __wrap_<symbol> stands in for each symbol that the libraries' objects
# call; __real_<symbol> is the true one. Works with the static forms of the libraries only.
function(qor_wrap target)
  foreach(symbol ${ARGN})
    target_link_options(${target} PRIVATE -Wl,--wrap=${symbol})
  endforeach()
endfunction()
