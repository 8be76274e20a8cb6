qor_add_test(QORSysTSLinkedAbstractCtnrTest
  SOURCES QORSysTSLinkedAbstractCtnrFTSTest.cpp QORSysTSLinkedAbstractCtnrTest.cpp
  LINK QORSysTS_static)
qor_wrap(QORSysTSLinkedAbstractCtnrTest pthread_mutex_lock pthread_mutex_unlock)

# Strings as elements: the tests choose the environment's code page themselves.
qor_add_test(ListFamilyTest
  SOURCES
    ArrayAllocations.cpp
    ListElementsTest.cpp
    ListFamilyTest.cpp
    ListIteratorTest.cpp
    ListModelTest.cpp
    NodeAllocations.cpp
    ../QORSysTS00.m/StringEnvironment.cpp
  LINK QORSysTS_static
  PRIVATE_INCLUDE ${PROJECT_SOURCE_DIR}/tests/QORSysTS00.m
  ONE_THREAD)
qor_wrap(ListFamilyTest
  _Z13GetEnvNLSDataP12VELSysNLSEnv _Z21RegisterNLSChangeHookPFvRK12VELSysNLSEnvE _Z26VELGetMultiByteCharMaxSizev
  _ZN13VELSysCLocale29GetLocaleStringFromLangStringEPKcPcj)

qor_add_test(SetFamilyTest
  SOURCES ArrayAllocations.cpp NodeAllocations.cpp SetFamilyTest.cpp
  LINK QORSysTS_static
  ONE_THREAD)
