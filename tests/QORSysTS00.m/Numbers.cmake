include(${CMAKE_CURRENT_LIST_DIR}/TestLocales.cmake)

# The C library's locales and the language core's answers are those of LocaleCalls.h and StringEnvironment.h.
qor_add_test(VELNumConvertTest
  SOURCES
    LocaleCalls.cpp
    StringEnvironment.cpp
    VELNumConvertTest.cpp
  LINK QORSysTS_static)
target_compile_definitions(VELNumConvertTest PRIVATE QOR_TEST_LOCALES="${QOR_TEST_LOCALES}")
add_dependencies(VELNumConvertTest qor_test_locales)
qor_wrap(VELNumConvertTest ${string_environment} ${locale_calls})

qor_add_test(NumberFormatTest
  SOURCES
    HeapLog.cpp
    NumberFormatTest.cpp
    NumberShortageTest.cpp
    StringEnvironment.cpp
  LINK QORSysTS_static
  ONE_THREAD)
target_compile_definitions(NumberFormatTest PRIVATE QOR_TEST_LOCALES="${QOR_TEST_LOCALES}")
add_dependencies(NumberFormatTest qor_test_locales)
qor_wrap(NumberFormatTest ${string_environment} malloc realloc free _Z13VELDebugBreaki)
