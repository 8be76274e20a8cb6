include(${CMAKE_CURRENT_LIST_DIR}/TestLocales.cmake)

qor_add_test(UnicodeStringOperationsTest
  SOURCES
    FailingNew.cpp
    HeapLog.cpp
    StepTest.cpp
    StringCaseTest.cpp
    StringChangeTest.cpp
    StringCompareTest.cpp
    StringEnvironment.cpp
    StringGrowthTest.cpp
    StringIterationTest.cpp
    StringOperationsShortageTest.cpp
    StringRandomChangeTest.cpp
    StringReplaceTest.cpp
    StringSearchTest.cpp
    StringStreamTest.cpp
    StringStripTest.cpp
    WildMatchTest.cpp
  LINK QORSysTS_static
  ONE_THREAD)
target_compile_definitions(UnicodeStringOperationsTest PRIVATE QOR_TEST_LOCALES="${QOR_TEST_LOCALES}")
add_dependencies(UnicodeStringOperationsTest qor_test_locales)
# The tests choose the environment's code page themselves, and every request for memory can be refused.
qor_wrap(UnicodeStringOperationsTest
  _Z13GetEnvNLSDataP12VELSysNLSEnv _Z21RegisterNLSChangeHookPFvRK12VELSysNLSEnvE _Z26VELGetMultiByteCharMaxSizev
  _ZN13VELSysCLocale29GetLocaleStringFromLangStringEPKcPcj
  malloc free realloc _Znwm _Znam _ZnwmRKSt9nothrow_t _ZnamRKSt9nothrow_t
  _Z13VELDebugBreaki)
