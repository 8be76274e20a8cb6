# The operations of the thread-safe and of the narrow string; their environment is chosen as in StringStorage.cmake.
qor_add_test(OtherStringOperationsTest
  SOURCES
    HeapLog.cpp
    NarrowStringChangeTest.cpp
    NarrowStringLineTest.cpp
    NarrowStringOperationsTest.cpp
    NarrowStringWarningsTest.cpp
    OtherStringsShortageTest.cpp
    StringEnvironment.cpp
    ThreadSafeStringOperationsTest.cpp
    ThreadSafeStringSearchTest.cpp
  LINK QORSysTS_static)
qor_wrap(OtherStringOperationsTest ${string_environment} malloc free _Z13VELDebugBreaki
  _ZN3VEL8internal15PrintStackTraceEv)
