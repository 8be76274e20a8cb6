# The tests choose the environment's code page themselves.
set(string_environment
  _Z13GetEnvNLSDataP12VELSysNLSEnv _Z21RegisterNLSChangeHookPFvRK12VELSysNLSEnvE _Z26VELGetMultiByteCharMaxSizev
  _ZN13VELSysCLocale29GetLocaleStringFromLangStringEPKcPcj)

qor_add_test(StringStorageTest
  SOURCES
    HeapLog.cpp
    QORInterUnicodeStringTest.cpp
    QORInterUnicodeStringViewTest.cpp
    QORStringTest.cpp
    QORSysTSUnicodeStringTest.cpp
    QORUnicodeStringTest.cpp
    StringEnvironment.cpp
    StringShortageTest.cpp
    VELStringPoolTest.cpp
    VELStringTest.cpp
  LINK QORSysTS_static)
qor_wrap(StringStorageTest ${string_environment} malloc realloc free _Z13VELDebugBreaki _ZN3VEL8internal15PrintStackTraceEv)

qor_add_test(StringPinTest SOURCES StringPinTest.cpp LINK QORSysTS_static)
qor_wrap(StringPinTest dladdr dlopen dlerror)

qor_add_test(StringThreadsTest SOURCES StringThreadsTest.cpp StringEnvironment.cpp LINK QORSysTS_static)
qor_wrap(StringThreadsTest ${string_environment})

# Loads the shared library itself, so it links none.
qor_add_test(StringLibraryTest SOURCES StringLibraryTest.cpp LINK ${CMAKE_DL_LIBS})
target_compile_definitions(StringLibraryTest PRIVATE STRING_LIBRARY="$<TARGET_FILE:QORSysTS>")
add_dependencies(StringLibraryTest QORSysTS)
