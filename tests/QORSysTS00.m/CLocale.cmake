# C locales of threads. What the C library is asked, the tests record, and let fail on demand.
include(TestLocales.cmake)
set(locale_calls
  uselocale newlocale duplocale freelocale setlocale localeconv nl_langinfo nl_langinfo_l strerror swprintf
  _ZN15QORResourceLock9WriteLockEv _ZN15QORResourceLock11WriteUnlockEv _Z23VELSysCLocaleEnvironGetPc
  _Z51VELSysNeutralCoreApplicationGetEnvironmentVariableAPKc _ZnamRKSt9nothrow_t _ZdaPv)

qor_add_test(VELSysCLocaleTest
  SOURCES
    LConvTest.cpp
    LocaleCalls.cpp
    LocaleThreadsTest.cpp
    NLSTraceTest.cpp
    ThreadLCFallbackTest.cpp
    ThreadLCTest.cpp
    VELSysCLocaleTest.cpp
  LINK QORSysTS_static)
target_compile_definitions(VELSysCLocaleTest PRIVATE QOR_TEST_LOCALES="${QOR_TEST_LOCALES}")
add_dependencies(VELSysCLocaleTest qor_test_locales)
qor_wrap(VELSysCLocaleTest ${locale_calls})
