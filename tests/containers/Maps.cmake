# Strings as keys and values: the tests choose the environment's code page themselves.
qor_add_test(MapFamilyTest
  SOURCES
    ArrayAllocations.cpp
    MapFamilyTest.cpp
    MapHashTest.cpp
    MapMemoryTest.cpp
    MapModelTest.cpp
    NodeAllocations.cpp
    ../QORSysTS00.m/StringEnvironment.cpp
  LINK QORSysTS_static
  PRIVATE_INCLUDE ${PROJECT_SOURCE_DIR}/SystemTS/containers ${PROJECT_SOURCE_DIR}/tests/QORSysTS00.m
  ONE_THREAD)
qor_wrap(MapFamilyTest
  _Z13GetEnvNLSDataP12VELSysNLSEnv _Z21RegisterNLSChangeHookPFvRK12VELSysNLSEnvE _Z26VELGetMultiByteCharMaxSizev
  _ZN13VELSysCLocale29GetLocaleStringFromLangStringEPKcPcj)
