include(${CMAKE_CURRENT_LIST_DIR}/TestLocales.cmake)

# The operations of the thread-safe and of the narrow string; their environment is chosen as in StringStorage.cmake.
qor_add_test(OtherStringOperationsTest
  SOURCES
    HeapLog.cpp
    NarrowStringChangeTest.cpp
    NarrowStringLineTest.cpp
    NarrowStringOperationsTest.cpp
    NarrowStringWarningsTest.cpp
    OtherStringsLocaleTest.cpp
    OtherStringsShortageTest.cpp
    StringEnvironment.cpp
    ThreadSafeStringOperationsTest.cpp
    ThreadSafeStringSearchTest.cpp
  LINK QORSysTS_static
  ONE_THREAD)
target_compile_definitions(OtherStringOperationsTest PRIVATE QOR_TEST_LOCALES="${QOR_TEST_LOCALES}")
add_dependencies(OtherStringOperationsTest qor_test_locales)
qor_wrap(OtherStringOperationsTest ${string_environment} malloc realloc free _Z13VELDebugBreaki
  _ZN3VEL8internal15PrintStackTraceEv)
