# Code pages. The language core is the tests' own; locales are those of TestLocales.cmake.
include(TestLocales.cmake)
set(language_calls
  _Z11InitNLSCorePKcb _Z13GetEnvNLSDataP12VELSysNLSEnv _Z21RegisterNLSChangeHookPFvRK12VELSysNLSEnvE
  _Z26VELGetMultiByteCharMaxSizev _Z18GetNLSInformationA15VELSysNLSFiltercRiPP13VELSysNLSNode
  _ZN13VELSysCLocale29GetLocaleStringFromLangStringEPKcPcj _Z23VELSysCLocaleEnvironGetPc)

qor_add_test(VELSysCodePageTest SOURCES VELSysCodePageTest.cpp LanguageCalls.cpp LINK QORSysTS_static ONE_THREAD)

# Every one- and two-byte text and every unit, against iconv itself.
qor_add_test(VELSysCodePageIConvTest
  SOURCES VELSysCodePageIConvTest.cpp VELSysCodePageResumedTest.cpp LanguageCalls.cpp
  LINK QORSysTS_static
  EXHAUSTIVE ONE_THREAD)

# What the C library answers can be the tests', too.
qor_add_test(VELSysCodePageMessagesTest
  SOURCES VELSysCodePageMessagesTest.cpp VELSysCodePageLocaleTest.cpp LanguageCalls.cpp
  LINK QORSysTS_static
  ONE_THREAD)
qor_wrap(VELSysCodePageMessagesTest iconv mbrtowc)

qor_add_test(VELSysCodePageEnvironmentTest
  SOURCES VELSysCodePageEnvironmentTest.cpp VELSysCodePageShortageTest.cpp LanguageCalls.cpp FailingNew.cpp HeapLog.cpp
  LINK QORSysTS_static)
qor_wrap(VELSysCodePageEnvironmentTest
  malloc realloc free _Z13VELDebugBreaki _Znwm _Znam _ZnwmRKSt9nothrow_t _ZnamRKSt9nothrow_t _ZN14VELSysCodePageD2Ev
  _ZN17VELSysTSDataQueue8PushLastEPvi _ZN3VEL8internal22TellDebuggerOfCodePageEb)

qor_add_test(VELSysCodePageThreadsTest SOURCES VELSysCodePageThreadsTest.cpp LanguageCalls.cpp LINK QORSysTS_static)

# Strings and characters in an environment of several bytes a character whose longest is said to be 1.
qor_add_test(CodePageStringsTest SOURCES CodePageStringsTest.cpp LanguageCalls.cpp LINK QORSysTS_static ONE_THREAD)

foreach(name VELSysCodePageTest VELSysCodePageIConvTest VELSysCodePageMessagesTest VELSysCodePageEnvironmentTest
             VELSysCodePageThreadsTest CodePageStringsTest)
  qor_wrap(${name} ${language_calls})
  target_compile_definitions(${name} PRIVATE QOR_TEST_LOCALES="${QOR_TEST_LOCALES}")
  add_dependencies(${name} qor_test_locales)
endforeach()
