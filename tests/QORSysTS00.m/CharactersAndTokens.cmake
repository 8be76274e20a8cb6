include(${CMAKE_CURRENT_LIST_DIR}/TestLocales.cmake)

# The environment is chosen as in StringStorage.cmake, and every request for memory can be refused. What the converter
# gives can be longer than any character of the code pages that are there.
qor_add_test(CharactersAndTokensTest
  SOURCES
    FailingNew.cpp
    FakeConverter.cpp
    HeapLog.cpp
    QORCharTest.cpp
    QORSysTSCodePageTest.cpp
    QORTokenTest.cpp
    QORUnicodeCharTest.cpp
    StringEnvironment.cpp
    VELSysStrTest.cpp
    VLStringTest.cpp
  LINK QORSysTS_static
  ONE_THREAD)
target_compile_definitions(CharactersAndTokensTest PRIVATE QOR_TEST_LOCALES="${QOR_TEST_LOCALES}")
add_dependencies(CharactersAndTokensTest qor_test_locales)
qor_wrap(CharactersAndTokensTest
  _Z13GetEnvNLSDataP12VELSysNLSEnv _Z21RegisterNLSChangeHookPFvRK12VELSysNLSEnvE _Z26VELGetMultiByteCharMaxSizev
  _ZN13VELSysCLocale29GetLocaleStringFromLangStringEPKcPcj
  malloc free realloc _Znwm _Znam _ZnwmRKSt9nothrow_t _ZnamRKSt9nothrow_t
  _Z13VELDebugBreaki
  _ZNK14VELSysCodePage18ConvertUTF16ToMBCSEPKtiPcPi _ZNK14VELSysCodePage27GetNextMultiByteCharAsUTF32ERjRPKcRm)

qor_add_test(VELSysCodePageCharactersTest SOURCES VELSysCodePageCharactersTest.cpp LINK QORSysTS_static ONE_THREAD)
