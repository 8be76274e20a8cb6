qor_add_test(VELSysTraceRotateTest
  SOURCES RotatedFiles.cpp VELSysTraceRotateLifeTest.cpp VELSysTraceRotateTest.cpp
  LINK QORSysTS_static ONE_THREAD)
qor_wrap(VELSysTraceRotateTest rename write open opendir faccessat stat64)

qor_add_test(TraceRotateShortageTest
  SOURCES FailingNew.cpp HeapLog.cpp StringEnvironment.cpp TraceRotateShortageTest.cpp
  LINK QORSysTS_static ONE_THREAD)
qor_wrap(TraceRotateShortageTest ${string_environment} malloc realloc free _Z13VELDebugBreaki _Znwm _Znam
         _ZnwmRKSt9nothrow_t _ZnamRKSt9nothrow_t)

qor_add_test(QORSysTSTraceTest SOURCES QORSysTSTraceTest.cpp LINK QORSysTS_static ONE_THREAD)
qor_wrap(QORSysTSTraceTest open)
