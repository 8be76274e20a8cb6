# The shared converter registry.
set(iconv_calls
  iconv_open iconv_close _ZN17VELSysTSDataQueue16CreateEmptyQueueEii _ZN17VELSysTSDataQueue9PushFirstEPvi
  _ZN17VELSysTSDataQueue7PopLastEPPvi _ZN8QORMutexC1Eiii _ZN8QORMutexD1Ev
  malloc realloc free _Z13VELDebugBreaki _Znwm _Znam _ZnwmRKSt9nothrow_t _ZnamRKSt9nothrow_t)

qor_add_test(VELSysIConvTSWrapTest
  SOURCES VELSysIConvTSWrapTest.cpp VELSysIConvTSWrapEndTest.cpp IConvCalls.cpp FailingNew.cpp HeapLog.cpp
  LINK QORSysTS_static)
qor_wrap(VELSysIConvTSWrapTest ${iconv_calls})

qor_add_test(VELSysIConvTSWrapThreadsTest
  SOURCES VELSysIConvTSWrapThreadsTest.cpp IConvCalls.cpp FailingNew.cpp HeapLog.cpp
  LINK QORSysTS_static)
qor_wrap(VELSysIConvTSWrapThreadsTest ${iconv_calls})
