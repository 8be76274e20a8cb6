# The argument store and the command line of the process.
qor_add_test(VELSysTSArgTest
  SOURCES FailingNew.cpp HeapLog.cpp StringEnvironment.cpp VELSysTSArgTest.cpp VELSysTSArgShortageTest.cpp
  LINK QORSysTS_static ONE_THREAD)
qor_wrap(VELSysTSArgTest ${string_environment} malloc realloc free _Z13VELDebugBreaki
         _Znwm _Znam _ZnwmRKSt9nothrow_t _ZnamRKSt9nothrow_t)

qor_add_test(VELSysTSArgThreadsTest SOURCES StringEnvironment.cpp VELSysTSArgThreadsTest.cpp LINK QORSysTS_static)
qor_wrap(VELSysTSArgThreadsTest ${string_environment})

qor_add_test(VELSysGetCmdLineArgsTest
  SOURCES FailingNew.cpp HeapLog.cpp VELSysGetCmdLineArgsTest.cpp LINK QORSysTS_static)
qor_wrap(VELSysGetCmdLineArgsTest ${string_environment} malloc realloc free _Z13VELDebugBreaki
         _Znwm _Znam _ZnwmRKSt9nothrow_t _ZnamRKSt9nothrow_t _Z14VELSysTSSetArgiPPc open read)
