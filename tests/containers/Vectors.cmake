qor_add_test(QORSysTSArrayListAbstractCtnrTest
  SOURCES QORSysTSArrayListAbstractCtnrFTSTest.cpp QORSysTSArrayListAbstractCtnrTest.cpp ArrayAllocations.cpp
  LINK QORSysTS_static)
qor_wrap(QORSysTSArrayListAbstractCtnrTest pthread_mutex_lock pthread_mutex_unlock)

# Strings as elements: the tests choose the environment's code page themselves.
qor_add_test(VectorFamilyTest
  SOURCES
    ArrayAllocations.cpp
    VectorElementsTest.cpp
    VectorFamilyTest.cpp
    VectorIteratorTest.cpp
    VectorModelTest.cpp
    ../QORSysTS00.m/StringEnvironment.cpp
  LINK QORSysTS_static
  PRIVATE_INCLUDE ${PROJECT_SOURCE_DIR}/SystemTS/containers ${PROJECT_SOURCE_DIR}/tests/QORSysTS00.m
  ONE_THREAD)
qor_wrap(VectorFamilyTest
  _Z13GetEnvNLSDataP12VELSysNLSEnv _Z21RegisterNLSChangeHookPFvRK12VELSysNLSEnvE _Z26VELGetMultiByteCharMaxSizev
  _ZN13VELSysCLocale29GetLocaleStringFromLangStringEPKcPcj
  qsort)
